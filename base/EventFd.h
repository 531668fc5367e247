// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Eventfds, with which one thread wakes another that waits for descriptors.
#pragma once

#include "base/UniqueFd.h"

namespace pavo {

// Makes a non-blocking eventfd. The result is closed, and errno says why, when the system has none.
UniqueFd makeEventFd();

// Adds one to an eventfd. Returns what write(2) did; errno is write's own.
int notifyFd(int fd);

inline constexpr int notifiedBytes = 8;

}  // namespace pavo
