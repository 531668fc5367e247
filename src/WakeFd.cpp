// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "WakeFd.h"

#include "LogWrapper.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace pavo {

UniqueFd makeWakeFd() {
  UniqueFd fd = makeEventFd();
  if (!fd.isOpen()) {
    LogWrapper::log(LogLevel::Error, logTag, "Cannot create eventfd instance");
    std::abort();
  }
  return fd;
}

void drainFd(int fd, LogLevel errorLevel) {
  char buffer[256];
  ssize_t count = 0;
  do {
    count = ::read(fd, buffer, sizeof buffer);
  } while (count > 0);
  if (count < 0 && errno != EAGAIN) {
    LogWrapper::log(errorLevel, logTag, "Error while clearing the read buffer on fd %d", fd);
  }
}

}  // namespace pavo
