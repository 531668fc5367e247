// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <ostream>
#include <string>

namespace pavo {

// Appends the value's name from the table, or its decimal number when the table has none.
template <typename Enum, std::size_t count>
void appendNamed(std::string& text, Enum value, const char* const (&names)[count]) {
  const auto number = static_cast<int>(value);
  if (number >= 0 && static_cast<std::size_t>(number) < count && names[number] != nullptr) {
    text += names[number];
  } else {
    text += std::to_string(number);
  }
}

// Streams the dump text of a value.
template <typename T>
std::ostream& streamText(std::ostream& out, T value) {
  std::string text;
  appendValue(text, value);
  return out << text;
}

}  // namespace pavo
