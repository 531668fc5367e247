// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header replaces epoll_ctl, so that unit tests see the library's registrations and make them
// fail.
#pragma once

#include <sys/epoll.h>

#include <array>
#include <atomic>

namespace pavo::test {

// This is the last event that this thread gave to the kernel, in all its bytes.
inline thread_local std::array<unsigned char, sizeof(epoll_event)> givenEvent{};

// This number selects the registration that fails, counted from 1 from now on over all threads; 0
// selects none.
inline std::atomic<int> failingRegistration{0};

}  // namespace pavo::test
