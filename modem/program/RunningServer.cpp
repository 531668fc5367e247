// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/program/RunningServer.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

namespace modem {

namespace {

// Read by the signal handler.
std::atomic<Server*> runningServer = nullptr;
static_assert(std::atomic<Server*>::is_always_lock_free);

void onTerminate(int) { runningServer.load()->stop(); }

void setTerminationHandler(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
}

// SIGTERM and SIGINT end the server while this object lives, and are ignored afterwards, because
// the process is ending by then. The handler runs on this thread, the only one of the process. So
// it has returned before the signals are ignored, and the pointer is cleared after that.
class TerminationBySignals {
 public:
  explicit TerminationBySignals(Server& server) {
    runningServer = &server;
    setTerminationHandler(onTerminate);
  }
  TerminationBySignals(const TerminationBySignals&) = delete;
  TerminationBySignals& operator=(const TerminationBySignals&) = delete;
  ~TerminationBySignals() {
    setTerminationHandler(SIG_IGN);
    runningServer = nullptr;
  }
};

void writeReadyLine(int fd, const std::string& socketPath) {
  const std::string line = "pavo-modem: listening on " + socketPath + "\n";
  if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    writeLog("cannot write to descriptor " + std::to_string(fd) + ": " + std::strerror(errno));
  }
}

}  // namespace

void writeLog(const std::string& line) { std::cerr << "pavo-modem: " + line << std::endl; }

void runServer(Server& server, ClientHandler& handler, const std::string& socketPath, int readyFd) {
  const TerminationBySignals termination(server);
  // The reader of the ready line may have gone before it is written.
  signal(SIGPIPE, SIG_IGN);
  writeReadyLine(readyFd, socketPath);
  server.run(handler);
}

}  // namespace modem
