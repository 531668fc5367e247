// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The emulated modem in a process of its own, for one test.
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
  // Profiles that the modem made itself: the content of its profiles file; null for none.
  nlohmann::json profiles;
  // Keeps persistent profiles over a restart.
  bool keepsStore = true;
  // Further arguments of pavo-modem.
  std::vector<std::string> arguments;
  // false: the socket's path is there, the modem not yet.
  bool startsAtOnce = true;
};

// Owns the folder with the modem's socket and files, and the process, which may come and go.
// Point OVIX_MODEM at socketPath() before the library is initialised (see ModemEnvironment).
class ModemProcess {
 public:
  explicit ModemProcess(ModemProcessOptions options = {});
  ModemProcess(const ModemProcess&) = delete;
  ModemProcess& operator=(const ModemProcess&) = delete;
  ~ModemProcess();

  const std::string& socketPath() const { return socket; }
  std::string storePath() const { return folder.file("store.json"); }

  // Starts it and waits until it listens; throws std::runtime_error with what it wrote when it
  // does not.
  void start();
  // Power loss: SIGKILL.
  void kill();
  // SIGTERM; how it ended.
  ChildProcess::Exit terminate();
  bool isRunning();
  ChildProcess& process() { return *child; }

  // Sends a verb to its control channel; throws std::runtime_error when the modem refuses it.
  nlohmann::json control(const std::string& verb,
                         const nlohmann::json& args = nlohmann::json::object());

 private:
  const TemporaryFolder folder;
  const std::string socket;
  std::vector<std::string> commandLine;
  std::unique_ptr<ChildProcess> child;
  std::unique_ptr<modem::ControlClient> controlClient;
};

// Sets OVIX_MODEM for this process while it lives. Only while the process has one thread.
class ModemEnvironment {
 public:
  explicit ModemEnvironment(const std::string& socketPath);
  ModemEnvironment(const ModemEnvironment&) = delete;
  ModemEnvironment& operator=(const ModemEnvironment&) = delete;
  ~ModemEnvironment();
};

}  // namespace pavo::test
