#include "RunningServer.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

namespace modem {

namespace {

// For the signal handler; set while a server runs.
Server* runningServer = nullptr;

void onTerminate(int) { runningServer->stop(); }

void handleSignals(Server& server) {
  runningServer = &server;
  struct sigaction action = {};
  action.sa_handler = onTerminate;
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  // Whoever reads the ready line may be gone when it is written.
  signal(SIGPIPE, SIG_IGN);
}

void tellReady(int fd, const std::string& socketPath) {
  const std::string line = "pavo-modem: listening on " + socketPath + "\n";
  if (write(fd, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    tellPeople("cannot write to descriptor " + std::to_string(fd) + ": " + std::strerror(errno));
  }
}

}  // namespace

void tellPeople(const std::string& line) { std::cerr << "pavo-modem: " + line << std::endl; }

void runServer(Server& server, ClientHandler& handler, const std::string& socketPath, int readyFd) {
  handleSignals(server);
  tellReady(readyFd, socketPath);
  server.run(handler);
}

}  // namespace modem
