// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogLevel.h"
#include "base/EventFd.h"

namespace pavo {

// Makes an eventfd. When the system has none, an error line says so and the process ends.
UniqueFd makeWakeFd();

// Reads a non-blocking descriptor until it is empty or its peer has closed it. Any other failure is
// logged at the given level.
void drainFd(int fd, LogLevel errorLevel);

}  // namespace pavo
