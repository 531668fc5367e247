// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/Poll.h"

#include <algorithm>
#include <cerrno>

namespace pavo {

bool pollUntil(std::span<pollfd> fds, Deadline deadline) {
  while (true) {
    // The timeout is rounded up. A wait that ended early would be repeated with a timeout of zero,
    // many times.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    const int timeoutMs = static_cast<int>(std::clamp<int64_t>(left, 0, 1'000'000));
    const int ready = ::poll(fds.data(), fds.size(), timeoutMs);
    if (ready > 0) {
      return true;
    }
    if ((ready == 0 && Clock::now() >= deadline) || (ready < 0 && errno != EINTR)) {
      return false;
    }
  }
}

void pollForever(std::span<pollfd> fds) {
  while (::poll(fds.data(), fds.size(), /*timeout=*/-1) < 0 && errno == EINTR) {
  }
}

}  // namespace pavo
