// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/FileLock.h"
#include "modem/core/ProfileFile.h"
#include "modem/program/Commands.h"
#include "modem/program/RunningServer.h"
#include "modem/service/Service.h"
#include "wire/LocalSocket.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

namespace modem {

namespace {

Service::Options optionsFrom(const ServeArguments& arguments) {
  Service::Options options;
  options.canQuit = true;
  options.modem.capacity = arguments.capacity;
  if (!arguments.profilesPath.empty()) {
    auto profiles = readProfileFile(arguments.profilesPath, arguments.capacity);
    if (!profiles) {
      throw Error(arguments.profilesPath + ": " + std::strerror(ENOENT));
    }
    options.modem.ownProfiles = std::move(*profiles);
  }
  if (!arguments.scriptPath.empty()) {
    options.script = readFaultScript(arguments.scriptPath);
  }
  if (arguments.seed) {
    options.script.seed = arguments.seed;
  }
  if (options.script.seed) {
    // A run with the same seed has to start with the same boot number.
    options.modem.boot = static_cast<uint32_t>(*options.script.seed);
  }
  return options;
}

}  // namespace

int serve(const ServeArguments& arguments) {
  Service::Options options = optionsFrom(arguments);
  // The socket comes first: a modem that cannot have it must not touch the files of the modem that
  // has it.
  const wire::ListeningSocket listener(arguments.socketPath);
  std::optional<pavo::FileLock> storeLock;
  if (!arguments.storePath.empty()) {
    storeLock.emplace(arguments.storePath, "modem");
    options.modem.store = std::make_unique<Store>(arguments.storePath, arguments.capacity);
  }
  if (!arguments.tracePath.empty()) {
    options.trace = std::make_unique<TraceWriter>(arguments.tracePath);
  }
  Server server({.listenFd = listener.get(), .report = writeLog});
  Service service(std::move(options), server);
  runServer(server, service, arguments.socketPath, arguments.readyFd);
  return exitDone;
}

}  // namespace modem
