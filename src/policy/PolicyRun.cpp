// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Policies.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace pavo::policy {

void Run::log(LineLevel level, const char* format, ...) const {
  // The library's log cuts lines long before this length.
  std::array<char, 1024> line;
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line.data(), line.size(), format, arguments);
  va_end(arguments);
  observer.log(level, line.data());
}

}  // namespace pavo::policy
