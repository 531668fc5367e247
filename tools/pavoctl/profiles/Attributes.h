// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The attributes of a profile as they are given to the tool: as options, as key=value, as JSON.
#pragma once

#include <pavo/ProfileParams.h>

#include "profiles/Profile.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

struct Attribute {
  // What its value may be in JSON besides a text; a text is read like an option's value.
  enum class Form { text, flag, number, enumeration, names };

  const char* key;     // As in the JSON of a profile.
  const char* option;  // Two dashes in front.
  const char* kind;    // Of the option's value.
  std::string help;
  Form form;
  bool (*isPresent)(const pavo::ProfileParams& params);
  bool (*isEqual)(const pavo::ProfileParams& a, const pavo::ProfileParams& b);
  // Throws UsageError, calling the attribute by that name.
  void (*parse)(pavo::ProfileParams& params, std::string_view name, std::string_view value);
  void (*copy)(const pavo::ProfileParams& from, pavo::ProfileParams& to);
};

// In the order in which profiles list them.
const std::vector<Attribute>& allAttributes();

// Gives the attribute a value, once: throws UsageError when it has one.
void setOnce(const Attribute& attribute, pavo::ProfileParams& params, std::string_view name,
             std::string_view value);
// "apnName=internet,homeIPType=V4": the keys of JSON or the options' names, in any letter case. A
// value ends at the next comma. Throws UsageError.
void setFromText(pavo::ProfileParams& params, std::string_view text);
// A profile's JSON; what is no attribute of it is left out of account when the tool prints it with
// a profile, and refused otherwise. Throws UsageError.
pavo::ProfileParams profileFromJson(const Json& json);

// Copies what is present; with keys, of those only.
void copyPresent(const pavo::ProfileParams& from, pavo::ProfileParams& to,
                 std::initializer_list<std::string_view> keys = {});

}  // namespace pavoctl
