// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace pavo {

enum class LogLevel : int {
  Verbose = 0,  // the event loop's steps
  Debug = 1,    // construction and destruction, maintenance steps
  Info = 2,     // notable but normal
  Error = 3,    // failures; kept in the local log buffer
  Fatal = 4,    // reserved
  High = 5,     // entry and exit of operations and policies; kept in the local log buffer
};

}  // namespace pavo
