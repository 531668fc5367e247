// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogWriter.h"

namespace pavo {

// Writes to the Android log.
class AdbWriter : public LogWriter {
 public:
  void write(LogLevel level, std::string tag, std::string message) override;
  int convertPrio(LogLevel level) override;
};

}  // namespace pavo
