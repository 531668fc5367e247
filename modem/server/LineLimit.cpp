// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/server/LineLimit.h"

#include <utility>

namespace modem {

std::optional<std::string> LineLimit::admit(const std::string& line, Clock::time_point now) {
  if (lastWritten && now - *lastWritten < pause) {
    ++leftOut;
    return std::nullopt;
  }
  lastWritten = now;
  const size_t count = std::exchange(leftOut, 0);
  return count == 0 ? line : line + " (" + std::to_string(count) + " such lines left out before)";
}

}  // namespace modem
