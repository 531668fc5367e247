// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogWriter.h"

namespace pavo {

// Writes to the modem's diagnostic channel. The writer keeps the channel open for its whole
// lifetime.
class DiagWriter : public LogWriter {
 public:
  DiagWriter();
  DiagWriter(const DiagWriter&) = delete;
  DiagWriter& operator=(const DiagWriter&) = delete;
  ~DiagWriter() override;

  void write(LogLevel level, std::string tag, std::string message) override;
  int convertPrio(LogLevel level) override;
};

}  // namespace pavo
