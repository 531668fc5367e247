// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A profile as the tool shows it. The tool prints everything about profiles from one list of
// attributes, and turns it into JSON before it becomes text for people.
#pragma once

#include <pavo/ProfileParams.h>

#include "profiles/Secrets.h"

#include <nlohmann/json.hpp>

#include <string>

namespace pavoctl {

// Keeps the order in which attributes are listed.
using Json = nlohmann::ordered_json;

struct Profile {
  int id = 0;
  pavo::ProfileParams params;
};

// Returns the attributes that are present. Enumerations appear by their names, or as numbers when
// they have none, and the APN types as an array of names. Passwords are masked unless they are to
// be shown.
Json toJson(const pavo::ProfileParams& params, Secrets secrets);
// Returns the id, the attributes, and whether the library created the profile.
Json toJson(const Profile& profile, Secrets secrets);

// Returns {"attribute": {"before": ..., "after": ...}, ...} for each difference. An absent value
// has no member.
Json changes(const Profile& before, const Profile& after, Secrets secrets);

// Returns one attribute's JSON value as text for people.
std::string valueText(const Json& value);

// Returns the JSON in one line, or in several with an indent. Bytes that are not UTF-8 become
// U+FFFD.
std::string dumpJson(const Json& json, int indent = -1);

}  // namespace pavoctl
