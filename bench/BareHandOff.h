// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// BareHandOff measures the cost of the library's hand-off with nothing else in it. The eventfd is
// written under the slot mutex. The worker waits in epoll, drains to EAGAIN, answers and notifies
// under the mutex.
#pragma once

#include "base/UniqueFd.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace pavo::bench {

class BareHandOff {
 public:
  BareHandOff();
  BareHandOff(const BareHandOff&) = delete;
  BareHandOff& operator=(const BareHandOff&) = delete;
  ~BareHandOff();

  // Makes one round trip.
  int call(int request);

 private:
  static constexpr int none = -1;
  static constexpr int stop = -2;

  void run();

  UniqueFd epollFd;
  UniqueFd requestFd;
  std::mutex mutex;
  std::condition_variable answered;
  int request = none;
  int response = none;
  std::thread worker;
};

}  // namespace pavo::bench
