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

// Kinds of values that completion knows words for.
namespace kindOf {
inline constexpr const char* authType = "AUTH";
inline constexpr const char* ipType = "IP-TYPE";
inline constexpr const char* apnTypes = "TYPES";
inline constexpr const char* apnClass = "CLASS";
inline constexpr const char* flag = "yes|no";
}  // namespace kindOf

using Taker = std::function<void(const std::string&)>;

// An option with one value. The value reaches the taker untouched, also an empty one or one that
// begins with a dash; CLI11's own conversions would change some.
CLI::Option* addValue(CLI::App& app, const std::string& name, const std::string& kind,
                      const std::string& help, Taker take);

// The attributes of a profile, the same for every verb that takes them.
void addAttributes(CLI::App& app, pavo::ProfileParams& params);

// Whether only to say what would be done.
void addDryRun(CLI::App& app, bool& isDryRun);

// A profile's number, as the verb's argument.
void addProfileId(CLI::App& app, int& id);

}  // namespace pavoctl
