// A server as a process has one: with signals that end it, and a line when it listens.
#pragma once

#include <string>

#include "modem/server/Server.h"
#include "wire/LocalSocket.h"

namespace modem {

// A line for people on the standard error.
void writeLog(const std::string& line);

// Serves the socket until SIGTERM, SIGINT or the handler ends it. Afterwards these signals are
// ignored. For a process of one thread.
void runServer(Server& server, ClientHandler& handler, const std::string& socketPath, int readyFd);

}  // namespace modem
