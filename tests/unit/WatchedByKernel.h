// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the library asks the kernel to watch: epoll_ctl as unit tests see it and make it fail.
#pragma once

#include <sys/epoll.h>

#include <array>
#include <atomic>

namespace pavo::test {

// The last event that this thread gave to the kernel, in all its bytes.
inline thread_local std::array<unsigned char, sizeof(epoll_event)> givenEvent{};

// Which registration from now on fails, of any thread and counted from 1; 0 for none.
inline std::atomic<int> failingRegistration{0};

}  // namespace pavo::test
