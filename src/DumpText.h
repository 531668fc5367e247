// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The building blocks of dump texts. The functions append to one string. This is several times
// cheaper than a string stream and gives the same text.
#pragma once

#include <pavo/ProfileTypes.h>

#include <optional>
#include <string>
#include <string_view>

namespace pavo {

// Room to reserve for the attributes of an ordinary profile.
inline constexpr std::size_t dumpCharsTypical = 256;

void appendValue(std::string& text, const std::string& value);
void appendValue(std::string& text, bool value);
void appendValue(std::string& text, int value);
void appendValue(std::string& text, unsigned int value);
void appendValue(std::string& text, unsigned long long value);
void appendValue(std::string& text, AuthType value);
void appendValue(std::string& text, IPType value);
void appendValue(std::string& text, ApnClass value);
void appendValue(std::string& text, ApnTypes value);
void appendValue(std::string& text, FilterMatchType value);

// Appends key, value and a comma.
template <typename T>
void appendEntry(std::string& text, std::string_view key, const T& value) {
  text += key;
  appendValue(text, value);
  text += ',';
}

// Appends the entry when there is a value, and nothing otherwise.
template <typename T>
void appendEntry(std::string& text, std::string_view key, const std::optional<T>& value) {
  if (value) {
    appendEntry(text, key, *value);
  }
}

}  // namespace pavo
