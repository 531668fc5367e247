#include "base/Poll.h"

#include <algorithm>
#include <cerrno>

namespace ovix {

bool pollUntil(std::span<pollfd> fds, Deadline deadline) {
  while (true) {
    // Rounded up: a wait that ends early would be repeated with a timeout of zero, over and over.
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

}  // namespace ovix
