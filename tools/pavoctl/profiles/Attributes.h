// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The attributes of a profile in the forms in which the tool reads them: options, key=value and
// JSON.
#pragma once

#include <pavo/ProfileParams.h>

#include "profiles/Profile.h"

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

struct Attribute {
  // The JSON type that the value may have besides a text. A text is read like an option's value.
  enum class Form { text, flag, number, enumeration, names };

  const char* key;     // as in the JSON of a profile
  const char* option;  // with two dashes in front
  const char* kind;    // the kind of the option's value
  std::string help;
  Form form;
  bool (*isPresent)(const pavo::ProfileParams& params);
  bool (*isEqual)(const pavo::ProfileParams& a, const pavo::ProfileParams& b);
  // Throws UsageError, and calls the attribute by name in its text.
  void (*parse)(pavo::ProfileParams& params, std::string_view name, std::string_view value);
  void (*copy)(const pavo::ProfileParams& from, pavo::ProfileParams& to);
};

// Returns the attributes in the order in which profiles list them.
const std::vector<Attribute>& allAttributes();

// Sets the attribute's value. Throws UsageError when it has one already.
void setOnce(const Attribute& attribute, pavo::ProfileParams& params, std::string_view name,
             std::string_view value);
// Reads "apnName=internet,homeIPType=V4". The names are those of JSON or of the options, in any
// letter case. A value ends at the next comma. Throws UsageError.
void setFromText(pavo::ProfileParams& params, std::string_view text);
// Reads a profile's JSON. Members that the tool itself prints beside the attributes are ignored.
// Other unknown members are refused. Throws UsageError.
pavo::ProfileParams profileFromJson(const Json& json);

// Copies the attributes that are present. When keys are given, only those are copied.
void copyPresent(const pavo::ProfileParams& from, pavo::ProfileParams& to,
                 std::initializer_list<std::string_view> keys = {});

}  // namespace pavoctl
