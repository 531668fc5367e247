// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "BareHandOff.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

namespace pavo::bench {

BareHandOff::BareHandOff()
    : epollFd(::epoll_create1(EPOLL_CLOEXEC)),
      requestFd(::eventfd(/*initval=*/0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = requestFd.get();
  ::epoll_ctl(epollFd.get(), EPOLL_CTL_ADD, requestFd.get(), &event);
  worker = std::thread([this] { run(); });
}

BareHandOff::~BareHandOff() {
  call(stop);
  worker.join();
}

int BareHandOff::call(int newRequest) {
  std::unique_lock lock(mutex);
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(requestFd.get(), &one, sizeof one);
  request = newRequest;
  answered.wait(lock, [this] { return response != none; });
  return std::exchange(response, none);
}

void BareHandOff::run() {
  bool goOn = true;
  while (goOn) {
    epoll_event events[4];
    const int count = ::epoll_wait(epollFd.get(), events, /*maxevents=*/4, /*timeout=*/-1);
    for (int i = 0; i < count; ++i) {
      std::uint64_t drained = 0;
      while (::read(events[i].data.fd, &drained, sizeof drained) > 0) {
      }
      const std::lock_guard lock(mutex);
      if (request != none) {
        goOn = request != stop;
        response = 0;
        request = none;
      }
      answered.notify_one();
    }
  }
}

}  // namespace pavo::bench
