// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/common/Json.h"

namespace modem {

using nlohmann::json;

uint64_t numberFromJson(const json& value, uint64_t max, const std::string& what) {
  // A number that a program has put in may be of the signed type although it is not negative.
  const bool isWhole =
      value.is_number_unsigned() || (value.is_number_integer() && value.get<int64_t>() >= 0);
  if (!isWhole || value.get<uint64_t>() > max) {
    throw Error(what + " has to be a whole number from 0 to " + std::to_string(max));
  }
  return value.get<uint64_t>();
}

uint32_t countFromJson(const json& value, uint64_t max, const std::string& what) {
  const uint64_t count = numberFromJson(value, max, what);
  if (count == 0) {
    throw Error(what + " has to be at least 1");
  }
  return static_cast<uint32_t>(count);
}

std::string dumpLine(const json& value) {
  return value.dump(/*indent=*/-1, /*indent_char=*/' ', /*ensure_ascii=*/false,
                    json::error_handler_t::replace);
}

std::string hexOf(std::span<const uint8_t> bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string hex;
  hex.reserve(2 * bytes.size());
  for (const uint8_t byte : bytes) {
    hex.push_back(digits[byte >> 4]);
    hex.push_back(digits[byte & 0xF]);
  }
  return hex;
}

void appendName(std::string& known, std::string_view name) {
  known += known.empty() ? "" : ", ";
  known += name;
}

}  // namespace modem
