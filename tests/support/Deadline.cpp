// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Deadline.h"

#include <thread>

namespace pavo::test {

namespace {

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PAVO_SANITIZED 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(PAVO_SANITIZED)
constexpr std::chrono::milliseconds patienceTime{30'000};
#else
constexpr std::chrono::milliseconds patienceTime{10'000};
#endif

// A condition that takes long to become true is polled less often. Many tests poll another process,
// and every poll takes time from its work.
constexpr std::chrono::milliseconds pollInterval{1};
constexpr std::chrono::milliseconds pollIntervalOfTheLong{5};
constexpr int pollsBeforeItIsLong = 50;

}  // namespace

std::chrono::milliseconds patience() { return patienceTime; }

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  for (int polls = 0; !condition(); ++polls) {
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::this_thread::sleep_for(polls < pollsBeforeItIsLong ? pollInterval : pollIntervalOfTheLong);
  }
  return true;
}

}  // namespace pavo::test
