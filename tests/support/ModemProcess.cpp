// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ModemProcess.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace pavo::test {

ModemProcess::ModemProcess(ModemProcessOptions options)
    : socket(folder.file("modem.sock")), commandLine{PAVO_MODEM_PROGRAM, "--socket", socket} {
  if (options.keepsStore) {
    commandLine.insert(commandLine.end(), {"--store", storePath()});
  }
  if (!options.profiles.is_null()) {
    const std::string file = folder.file("profiles.json");
    std::ofstream(file) << options.profiles;
    commandLine.insert(commandLine.end(), {"--profiles", file});
  }
  commandLine.insert(commandLine.end(), options.arguments.begin(), options.arguments.end());
  if (options.startsAtOnce) {
    start();
  }
}

ModemProcess::~ModemProcess() = default;

void ModemProcess::start() {
  controlClient.reset();
  child = std::make_unique<ChildProcess>(commandLine);
  if (!child->waitForOutput("pavo-modem: listening on ")) {
    throw std::runtime_error("pavo-modem did not start: " + child->errors());
  }
}

void ModemProcess::kill() {
  controlClient.reset();
  child->sendSignal(SIGKILL);
  child->waitForExit();
}

ChildProcess::Exit ModemProcess::terminate() {
  controlClient.reset();
  child->sendSignal(SIGTERM);
  const auto exit = child->waitForExit();
  if (!exit) {
    throw std::runtime_error("pavo-modem does not end on SIGTERM");
  }
  return *exit;
}

bool ModemProcess::isRunning() { return child && child->isRunning(); }

nlohmann::json ModemProcess::control(const std::string& verb, const nlohmann::json& args) {
  if (!controlClient) {
    controlClient = std::make_unique<modem::ControlClient>(socket);
  }
  nlohmann::json reply = controlClient->call(verb, args);
  if (reply["ok"] != true) {
    throw std::runtime_error("the modem refused " + verb + ": " + reply.dump());
  }
  return reply;
}

ModemEnvironment::ModemEnvironment(const std::string& socketPath) {
  setenv("OVIX_MODEM", socketPath.c_str(), /*overwrite=*/1);
}

ModemEnvironment::~ModemEnvironment() { unsetenv("OVIX_MODEM"); }

}  // namespace pavo::test
