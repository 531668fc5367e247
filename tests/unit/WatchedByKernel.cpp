// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "WatchedByKernel.h"

#include <cerrno>
#include <cstring>

// The linker puts these functions in place of the kernel's.
extern "C" {

int __real_epoll_ctl(int epoll, int operation, int fd, epoll_event* event);

int __wrap_epoll_ctl(int epoll, int operation, int fd, epoll_event* event);
int __wrap_epoll_ctl(int epoll, int operation, int fd, epoll_event* event) {
  using pavo::test::failingRegistration;
  if (event != nullptr) {
    std::memcpy(pavo::test::givenEvent.data(), event, sizeof *event);
  }
  if (operation == EPOLL_CTL_ADD && failingRegistration > 0 && --failingRegistration == 0) {
    errno = ENOSPC;
    return -1;
  }
  return __real_epoll_ctl(epoll, operation, fd, event);
}
}
