// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "DebugLine.h"

#include <unistd.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace ovix {

namespace {

// The variable is read while the library is loaded: later the program may change its environment
// while a thread of this library writes a line.
const bool isWanted = std::getenv("OVIX_MODEM_TRACE") != nullptr;

}  // namespace

void writeDebugLine(const char* format, ...) {
  if (!isWanted) {
    return;
  }
  char line[256] = "ovix: ";
  constexpr size_t prefix = 6;
  constexpr size_t room = sizeof line - prefix - 1;  // The newline takes the last place.
  std::va_list arguments;
  va_start(arguments, format);
  const int wanted = std::vsnprintf(line + prefix, room, format, arguments);
  va_end(arguments);
  size_t length = prefix + std::min<size_t>(wanted < 0 ? 0 : static_cast<size_t>(wanted), room - 1);
  line[length++] = '\n';
  // One write, so that lines of several threads do not mix. Its failure cannot be reported.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line, length);
}

}  // namespace ovix
