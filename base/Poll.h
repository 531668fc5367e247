// Waiting on file descriptors up to a moment, whatever signals arrive meanwhile.
#pragma once

#include <poll.h>

#include <chrono>
#include <span>

namespace ovix {

using Clock = std::chrono::steady_clock;
using Deadline = Clock::time_point;

// True when one of them is ready, false when the deadline has passed.
bool pollUntil(std::span<pollfd> fds, Deadline deadline);

// The same without a deadline.
void pollForever(std::span<pollfd> fds);

}  // namespace ovix
