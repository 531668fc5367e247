// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reading and writing of JSON values.
#pragma once

#include "modem/common/Error.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace modem {

// Returns a whole number from 0 to `max`. Throws Error, which names `what`, for any other value.
uint64_t numberFromJson(const nlohmann::json& value, uint64_t max, const std::string& what);

// Returns a whole number from 1 to `max`, as numberFromJson does.
uint32_t countFromJson(const nlohmann::json& value, uint64_t max, const std::string& what);

// Returns the value on one line. Bytes that are not UTF-8 are replaced, so this cannot fail.
std::string dumpLine(const nlohmann::json& value);

std::string hexOf(std::span<const uint8_t> bytes);

// Appends `name` to a list of known names that an error text shows.
void appendName(std::string& known, std::string_view name);

// Parses the text of a file and returns read(value). Throws Error with the path before the problem.
template <typename Read>
auto readJson(const std::string& path, const std::string& text, const Read& read) {
  try {
    return read(nlohmann::json::parse(text));
  } catch (const std::exception& error) {
    throw Error(path + ": " + error.what());
  }
}

}  // namespace modem
