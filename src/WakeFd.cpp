#include "WakeFd.h"

#include "LogWrapper.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace pavo {

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

int notifyFd(int fd) {
  const std::uint64_t one = 1;
  static_assert(sizeof one == notifiedBytes);
  return static_cast<int>(::write(fd, &one, sizeof one));
}

std::string errorText(int error) { return std::generic_category().message(error); }

}  // namespace pavo
