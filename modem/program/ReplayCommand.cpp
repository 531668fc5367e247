// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/program/Commands.h"
#include "modem/program/RunningServer.h"
#include "modem/trace/Replay.h"
#include "wire/LocalSocket.h"

namespace modem {

int replay(const ReplayArguments& arguments) {
  std::vector<TraceSession> sessions = readTraceSessions(arguments.tracePath);
  const wire::ListeningSocket listener(arguments.socketPath);
  Server server({.listenFd = listener.get(), .report = writeLog});
  Replay replay(std::move(sessions), server);
  runServer(server, replay, arguments.socketPath, arguments.readyFd);
  writeLog("replayed " + std::to_string(replay.requestsServed()) + " of " +
           std::to_string(replay.requestsOfTrace()) + " requests, " +
           std::to_string(replay.requestsDiffering()) + " differed");
  return replay.requestsDiffering() == 0 ? exitDone : exitRefused;
}

}  // namespace modem
