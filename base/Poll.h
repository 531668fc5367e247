// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Waits on file descriptors. A signal does not end a wait.
#pragma once

#include <poll.h>

#include <chrono>
#include <span>

namespace pavo {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

// True when a descriptor is ready, false when the deadline has passed.
bool pollUntil(std::span<pollfd> fds, Deadline deadline);

// Waits until a descriptor is ready.
void pollForever(std::span<pollfd> fds);

}  // namespace pavo
