// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Tests wait for a condition, until a deadline that no healthy run comes near. No test sleeps for a
// fixed time.
#pragma once

#include <chrono>
#include <functional>

namespace pavo::test {

// Returns how long a test waits for an event that must happen: 10 s, or more in builds with a
// sanitizer. A test that waits this long has failed.
std::chrono::milliseconds patience();

// Polls until condition() holds. Returns false when it does not hold within the limit. Thread-safe.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = patience());

}  // namespace pavo::test
