// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Letters of ASCII. No locale is consulted, and all other bytes stay as they are.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace pavo {

constexpr char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return lowerCase(c); });
  return lower;
}

}  // namespace pavo
