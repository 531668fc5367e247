// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This writer captures the library's log lines in unit tests of single classes.
#pragma once

#include "LogLevel.h"

#include <memory>
#include <string>
#include <vector>

namespace pavo::test {

struct CapturedLine {
  LogLevel level;
  std::string tag;
  std::string message;

  bool operator==(const CapturedLine&) const = default;
};

// Installs itself as the library's log writer and uninstalls itself at the end of its life. Lines
// may be written by any thread.
class CapturingLogWriter {
 public:
  CapturingLogWriter();
  CapturingLogWriter(const CapturingLogWriter&) = delete;
  CapturingLogWriter& operator=(const CapturingLogWriter&) = delete;
  ~CapturingLogWriter();

  std::vector<CapturedLine> lines() const;
  std::vector<std::string> messages() const;
  std::vector<std::string> messages(LogLevel level) const;
  void clear();

 private:
  class Sink;
  struct Lines;

  const std::shared_ptr<Lines> captured;
};

}  // namespace pavo::test
