// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// One connection to the modem, on which the hellos have been exchanged.
//
// A client's hello says whether the process "saw an absence": since a client last asked for a
// connection, an attempt of this process to connect failed or a connection of it was lost. So the
// modem announces its profiles once to a library that lived through a restart of the modem, and not
// to one that joins a running modem. The flag is the process's: of several clients the first to
// return reports it. Connections of other purposes report false and leave the flag alone.
#pragma once

#include "Handshake.h"
#include "ovix_client.h"

namespace ovix {

struct ModemConnection {
  pavo::UniqueFd socket;     // blocking
  wire::FrameReader frames;  // may hold bytes that followed the modem's hello
  bool isRefused = false;    // the modem answered, and refused the connection
};

// Connects to the modem at the path; an empty path names the modem embedded in this process. The
// result is the platform's answer to its caller: 0, the code with which the modem refuses, or
// OVIX_CLIENT_SERVICE_ERROR when the modem cannot be reached now. The call takes at most
// helloTimeoutMs. It fails sooner when stopFd (-1 for none) becomes readable.
ovix_client_error_type connectToModem(const std::string& modemPath, wire::Purpose purpose,
                                      ModemConnection& connection, int stopFd = -1);

// Sets the flag above. To be called for every connection that the modem ended.
void noteConnectionLost();

}  // namespace ovix
