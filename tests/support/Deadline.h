// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Waiting in tests: for a condition, until a deadline that no healthy run comes near. No test
// sleeps for a time and then hopes.
#pragma once

#include <chrono>
#include <functional>

namespace pavo::test {

// How long a test waits for what has to happen: 10 s, more in builds with a sanitizer. A test that
// waits this long has failed.
std::chrono::milliseconds patience();

// Polls until condition() holds; false when it does not within the limit. Any thread.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds limit = patience());

}  // namespace pavo::test
