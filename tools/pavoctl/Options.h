// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Options that verbs share.
#pragma once

#include <pavo/ProfileParams.h>

#include <functional>
#include <string>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace pavoctl {

// The kinds of values for which the completion knows words.
namespace kindOf {
inline constexpr const char* authType = "AUTH";
inline constexpr const char* ipType = "IP-TYPE";
inline constexpr const char* apnTypes = "TYPES";
inline constexpr const char* apnClass = "CLASS";
inline constexpr const char* flag = "yes|no";
}  // namespace kindOf

using Taker = std::function<void(const std::string&)>;

// Adds an option with one value. The value reaches the taker unchanged, even when it is empty or
// begins with a dash. CLI11's own conversions would change some values.
CLI::Option* addValue(CLI::App& app, const std::string& name, const std::string& kind,
                      const std::string& help, Taker take);

// Adds the attributes of a profile. They are the same for every verb that takes them.
void addAttributes(CLI::App& app, pavo::ProfileParams& params);

// Adds --dry-run.
void addDryRun(CLI::App& app, bool& isDryRun);

// Adds a profile's number as the verb's argument.
void addProfileId(CLI::App& app, int& id);

}  // namespace pavoctl
