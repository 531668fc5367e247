// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The beginning of a connection to the modem: the socket, and a hello in each direction. The
// messaging library and the service libraries use it.
#pragma once

#include "base/UniqueFd.h"
#include "wire/Frame.h"
#include "wire/Hello.h"

#include <optional>
#include <string>

namespace ovix {

inline constexpr int helloTimeoutMs = 1000;

// The result is a non-blocking socket; it is closed when no modem listens at the path.
pavo::UniqueFd openSocket(const std::string& path);

// Sends a hello and receives the answer. Bytes that follow the answer stay in frames. The result is
// empty when no valid answer comes within helloTimeoutMs, or when stopFd (-1 for none) becomes
// readable.
std::optional<wire::HelloAnswer> exchangeHellos(int fd, wire::Hello hello,
                                                wire::FrameReader& frames, int stopFd = -1);

}  // namespace ovix
