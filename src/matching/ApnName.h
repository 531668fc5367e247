// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The form in which APN names are kept and compared.
#pragma once

#include <pavo/ProfileParams.h>

#include <string>

namespace pavo {

// Converts ASCII letters only, whatever the locale, because the modem compares APN names that way.
constexpr char convertToLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string convertToLower(const std::string& text) {
  std::string lower = text;
  for (char& c : lower) {
    c = convertToLower(c);
  }
  return lower;
}

// Returns the first apnNameBytesMax bytes in lower case.
inline std::string normalizeApnName(const std::string& name) {
  return convertToLower(name.size() > apnNameBytesMax ? name.substr(0, apnNameBytesMax) : name);
}

}  // namespace pavo
