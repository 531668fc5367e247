// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A ModemProcess is the emulated modem in a process of its own, for one test.
#pragma once

#include "ChildProcess.h"
#include "TemporaryFolder.h"
#include "modem/client/ControlClient.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

namespace pavo::test {

struct ModemProcessOptions {
  // The profiles that the modem made itself: the content of its profiles file, or null for no file.
  nlohmann::json profiles;
  // If true, the modem keeps persistent profiles over a restart.
  bool keepsStore = true;
  // These are further arguments of pavo-modem.
  std::vector<std::string> arguments;
  // If false, the socket's path exists, but the modem does not run yet.
  bool startsAtOnce = true;
};

// Owns the process, which may be stopped and started again, and the folder with the modem's socket
// and files. Point OVIX_MODEM at socketPath() before the library is initialised (see
// ModemEnvironment).
class ModemProcess {
 public:
  explicit ModemProcess(ModemProcessOptions options = {});
  ModemProcess(const ModemProcess&) = delete;
  ModemProcess& operator=(const ModemProcess&) = delete;
  ~ModemProcess();

  const std::string& socketPath() const { return socket; }
  std::string storePath() const { return folder.file("store.json"); }

  // Starts the process and waits until it listens. If it does not listen, this throws
  // std::runtime_error with the output of the process.
  void start();
  // Simulates a power loss with SIGKILL.
  void kill();
  // Ends the process with SIGTERM and returns how it ended.
  ChildProcess::Exit terminate();
  bool isRunning();
  ChildProcess& process() { return *child; }

  // Sends a verb to the modem's control channel; throws std::runtime_error when the modem refuses
  // it.
  nlohmann::json control(const std::string& verb,
                         const nlohmann::json& args = nlohmann::json::object());

 private:
  const TemporaryFolder folder;
  const std::string socket;
  std::vector<std::string> commandLine;
  std::unique_ptr<ChildProcess> child;
  std::unique_ptr<modem::ControlClient> controlClient;
};

// Sets OVIX_MODEM for this process while this object lives. Use it only while the process has one
// thread.
class ModemEnvironment {
 public:
  explicit ModemEnvironment(const std::string& socketPath);
  ModemEnvironment(const ModemEnvironment&) = delete;
  ModemEnvironment& operator=(const ModemEnvironment&) = delete;
  ~ModemEnvironment();
};

}  // namespace pavo::test
