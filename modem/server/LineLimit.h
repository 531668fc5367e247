// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Limits log lines that other processes can cause at will: it admits one line a second and appends
// the number of omitted lines to the next one.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace modem {

class LineLimit {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds pause{1};

  // Returns the line to write now, or nothing if this line is omitted.
  std::optional<std::string> admit(const std::string& line, Clock::time_point now = Clock::now());

 private:
  std::optional<Clock::time_point> lastWritten;
  size_t leftOut = 0;
};

}  // namespace modem
