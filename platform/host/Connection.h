// One connection to the modem: the socket, hellos exchanged, and what was read from it already.
//
// "Saw absence", the client's word in its hello: true when, since a client last asked for a
// connection, an attempt of this process to connect failed or a connection of it was lost. So a
// library that lived through a modem restart is told of it by the modem, once, and one that joins a
// running modem is not. The flag is the process's: of several clients the first to return says it.
// Connections that only ask or watch say false and leave the flag alone.
#pragma once

#include "Greeting.h"
#include "ovix_client.h"

namespace ovix {

using modem::Purpose;

struct Connection {
  modem::UniqueFd socket;     // blocking
  modem::FrameReader frames;  // may hold what came right behind the modem's hello
  bool isRefused = false;     // there is none because the modem said so
};

// What the caller of the platform is answered: 0 and a connection to the modem of that path (empty:
// the one embedded in this process), or why there is none: the modem cannot be reached now, or the
// code with which it refuses. Takes at most helloTimeoutMs; it ends sooner, in failure, when stopFd
// (-1 for none) becomes readable.
ovix_client_error_type connectToModem(const std::string& modemPath, Purpose purpose,
                                      Connection& connection, int stopFd = -1);

// To be told of every connection that the modem ended.
void noteConnectionLost();

}  // namespace ovix
