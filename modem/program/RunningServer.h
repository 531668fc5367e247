// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Runs a server as the only one of a process: signals end it, and a line says when it listens.
#pragma once

#include "modem/server/Server.h"
#include "wire/LocalSocket.h"

#include <string>

namespace modem {

// Writes a line to the standard error.
void writeLog(const std::string& line);

// Serves the socket until SIGTERM, SIGINT or the handler ends it. Afterwards these signals are
// ignored. The process must have only one thread.
void runServer(Server& server, ClientHandler& handler, const std::string& socketPath, int readyFd);

}  // namespace modem
