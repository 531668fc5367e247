// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogWriter.h"

#include <string>

namespace pavo::bench {

// This writer takes every line and drops it.
class NullWriter : public LogWriter {
 public:
  void write(LogLevel /*level*/, std::string /*tag*/, std::string /*message*/) override {}
  int convertPrio(LogLevel /*level*/) override { return 0; }
};

}  // namespace pavo::bench
