// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/EventFd.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace pavo {

UniqueFd makeEventFd() { return UniqueFd(::eventfd(/*initval=*/0, EFD_NONBLOCK | EFD_CLOEXEC)); }

int notifyFd(int fd) {
  const std::uint64_t one = 1;
  static_assert(sizeof one == notifiedBytes);
  return static_cast<int>(::write(fd, &one, sizeof one));
}

}  // namespace pavo
