#pragma once

#include "LogLevel.h"

#include <string>

namespace pavo {

// Reads a non-blocking descriptor until nothing is left. An error other than that is logged at the
// given level, and a closed peer ends it too.
void drainFd(int fd, LogLevel errorLevel);

// Adds one to an eventfd. Returns what write(2) did; errno is write's own.
int notifyFd(int fd);

inline constexpr int notifiedBytes = 8;

// What strerror says of an errno, on any thread.
std::string errorText(int error);

}  // namespace pavo
