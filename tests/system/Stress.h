// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header sets how often the tests under load repeat themselves.
#pragma once

namespace pavo::test {

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define PAVO_STRESS_SANITIZED 1
#endif
#endif
// A build with a sanitizer is about this many times slower. It also detects a race in a tenth of
// the rounds.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(PAVO_STRESS_SANITIZED)
inline constexpr int sanitizerFactor = 10;
#else
inline constexpr int sanitizerFactor = 1;
#endif

// Returns the rounds of an ordinary build, or a tenth of them (one at least) with a sanitizer.
constexpr int rounds(int ordinary) {
  return ordinary / sanitizerFactor > 0 ? ordinary / sanitizerFactor : 1;
}

}  // namespace pavo::test
