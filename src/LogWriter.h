// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogLevel.h"

#include <string>

namespace pavo {

// A sink of log lines. Lines come from every thread at any time, even while the library holds its
// locks. Therefore a writer must not call back into the library.
class LogWriter {
 public:
  virtual ~LogWriter() = default;
  virtual void write(LogLevel level, std::string tag, std::string message) = 0;
  // Returns the sink's own number for a level.
  virtual int convertPrio(LogLevel level) = 0;
};

}  // namespace pavo
