// The beginning of a connection: the socket, and the hellos both ways. For the messaging library
// and for the service libraries.
#pragma once

#include <optional>
#include <string>

#include "modem/UniqueFd.h"
#include "wire/Frame.h"
#include "wire/Hello.h"

namespace ovix {

inline constexpr int helloTimeoutMs = 1000;

// Not blocking; closed when nobody listens there.
modem::UniqueFd connectToSocket(const std::string& path);

// Says hello and hears the answer, and keeps in frames what came right behind it. Empty when there
// is no answer within helloTimeoutMs, or none that is one, or when stopFd (-1 for none) becomes
// readable.
std::optional<modem::HelloAnswer> greet(int fd, modem::Hello hello, modem::FrameReader& frames,
                                        int stopFd = -1);

}  // namespace ovix
