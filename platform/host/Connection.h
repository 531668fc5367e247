// One connection to the modem: the socket, hellos exchanged, and what was read from it already.
//
// Where the modem is: the Unix socket named by the environment variable OVIX_MODEM, read anew for
// each attempt; when that is unset or empty, the modem embedded in this process.
//
// "Waited", the client's word in its hello: true when, since a client last asked for a connection,
// an attempt of this process to connect failed or a connection of it was lost. So a library that
// lived through a modem restart is told of it by the modem, once, and one that joins a running
// modem is not. The flag is the process's: of several clients the first to return says it.
// Connections that only probe say false and leave the flag alone.
#pragma once

#include <optional>

#include "modem/Frame.h"
#include "modem/UniqueFd.h"

namespace ovix {

struct Connection {
  modem::UniqueFd socket;     // blocking
  modem::FrameReader frames;  // may hold what came right behind the modem's hello
};

enum class Purpose {
  Probe,   // to find out whether the modem is there, and to notice when it goes
  Client,  // to exchange messages
};

// Empty when the modem cannot be reached now. Takes at most helloTimeoutMs; it ends sooner, empty,
// when stopFd (-1 for none) becomes readable.
inline constexpr int helloTimeoutMs = 1000;
std::optional<Connection> connectToModem(Purpose purpose, int stopFd = -1);

// To be told of every connection that the modem ended.
void noteConnectionLost();

}  // namespace ovix
