// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "profiles/Values.h"

#include "Errors.h"
#include "Text.h"
#include "profiles/Names.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <optional>

namespace pavoctl {
namespace {

// A text with = is repeated only up to the =, because the rest may be a password.
[[noreturn]] void refuse(std::string_view option, std::string_view text,
                         std::string_view expected) {
  const auto equals = text.find('=');
  const std::string shown =
      quoted(text.substr(0, equals)) + (equals == std::string_view::npos ? "" : "=...");
  throw UsageError(std::string(option) + ": " + shown + " is not " + std::string(expected));
}

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::optional<std::int64_t> readNumber(std::string_view text) {
  const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const std::string_view digits = isHex ? text.substr(2) : text;
  // from_chars would accept a minus sign after the prefix.
  if (isHex && digits.front() == '-') {
    return std::nullopt;
  }
  std::int64_t number = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, isHex ? 16 : 10);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return number;
}

template <typename Value, typename ByName>
Value parseEnumeration(std::string_view option, std::string_view text, ByName byName,
                       const std::string& names, std::int64_t max) {
  if (const auto value = byName(text)) {
    return *value;
  }
  if (const auto number = readNumber(text); number && *number >= 0 && *number <= max) {
    return static_cast<Value>(*number);
  }
  refuse(option, text, "one of " + names + " or a number from 0 to " + std::to_string(max));
}

}  // namespace

std::int64_t parseNumber(std::string_view option, std::string_view text, std::int64_t min,
                         std::int64_t max) {
  const auto number = readNumber(text);
  if (!number || *number < min || *number > max) {
    refuse(option, text, "a number from " + std::to_string(min) + " to " + std::to_string(max));
  }
  return *number;
}

std::int64_t parseSeconds(std::string_view option, std::string_view text) {
  constexpr double secondsMax = 3600;
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(seconds) ||
      seconds < 0.001 || seconds > secondsMax) {
    refuse(option, text, "a number of seconds above 0 and up to 3600");
  }
  return std::llround(seconds * 1000);
}

bool parseFlag(std::string_view option, std::string_view text) {
  const std::string word = lowerCase(text);
  if (word == "yes" || word == "true" || word == "on" || word == "1") {
    return true;
  }
  if (word == "no" || word == "false" || word == "off" || word == "0") {
    return false;
  }
  refuse(option, text, "yes or no");
}

std::string parseText(std::string_view option, std::string_view text, std::size_t bytesMax) {
  if (text.size() > bytesMax) {
    // The message leaves the text out, because it is long and may be a password.
    throw UsageError(std::string(option) + ": " + std::to_string(text.size()) +
                     " bytes are too long, at most " + std::to_string(bytesMax) + " fit");
  }
  return std::string(text);
}

pavo::AuthType parseAuthType(std::string_view option, std::string_view text) {
  return parseEnumeration<pavo::AuthType>(option, text, authTypeNamed, authTypeNames(), /*max=*/3);
}

pavo::IPType parseIpType(std::string_view option, std::string_view text) {
  return parseEnumeration<pavo::IPType>(option, text, ipTypeNamed, ipTypeNames(), /*max=*/3);
}

pavo::ApnClass parseApnClass(std::string_view option, std::string_view text) {
  return parseEnumeration<pavo::ApnClass>(option, text, apnClassNamed, apnClassNames(),
                                          /*max=*/255);
}

unsigned parseApnTypes(std::string_view option, std::string_view text) {
  if (lowerCase(text) == "none") {
    return pavo::NONE;
  }
  if (const auto number = readNumber(text)) {
    if (*number < 0 || (*number & ~std::int64_t{apnTypesNamed}) != 0) {
      refuse(option, text, "a mask of bits that mean something (0x8FFF)");
    }
    return static_cast<unsigned>(*number);
  }
  auto parts = split(text, "|,");
  // The library's own text form ends in a separator.
  if (parts.size() > 1 && parts.back().empty()) {
    parts.pop_back();
  }
  unsigned mask = 0;
  for (const auto part : parts) {
    const auto type = apnTypeNamed(trimmed(part));
    if (!type) {
      refuse(option, part, "an APN type; those are " + apnTypeNames() + " and NONE");
    }
    mask |= *type;
  }
  return mask;
}

std::string parsePlmn(std::string_view option, std::string_view text) {
  if (!isDigits(text) || text.size() < 5 || text.size() > 6) {
    refuse(option, text, "a network code: 3 digits MCC and 2 or 3 digits MNC, as in 23402");
  }
  return std::string(text);
}

}  // namespace pavoctl
