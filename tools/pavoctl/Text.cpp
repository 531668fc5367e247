// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Text.h"

#include <cstdio>

namespace pavoctl {

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto appendEscaped = [&](unsigned byte) {
    char escaped[5];
    std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
    result += escaped;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned byte = byteAt(i);
    const bool isC1 =
        byte == 0xC2 && i + 1 < text.size() && byteAt(i + 1) >= 0x80 && byteAt(i + 1) < 0xA0;
    if (isC1) {
      appendEscaped(byte);
      appendEscaped(byteAt(++i));
    } else if (byte < 0x20 || byte == 0x7F) {
      appendEscaped(byte);
    } else {
      result += text[i];
    }
  }
  return result;
}

std::string quoted(std::string_view text) {
  std::string result(1, '\'');
  result += printable(text);
  result += '\'';
  return result;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  while (true) {
    const auto end = text.find_first_of(separators, start);
    parts.push_back(text.substr(start, end == std::string_view::npos ? end : end - start));
    if (end == std::string_view::npos) {
      return parts;
    }
    start = end + 1;
  }
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
  std::string result;
  for (const auto& part : parts) {
    if (!result.empty()) {
      result += separator;
    }
    result += part;
  }
  return result;
}

}  // namespace pavoctl
