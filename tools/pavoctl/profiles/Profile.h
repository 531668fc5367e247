// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A profile as the tool shows it. Everything that the tool prints about profiles, for people and
// for programs, comes from one list of attributes and takes the form of JSON first.
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

// The attributes: absent ones are absent; enumerations are their names (numbers when they have
// none), the APN types an array of names, passwords a mask unless they are to be shown.
Json toJson(const pavo::ProfileParams& params, Secrets secrets);
// The same behind "id", and behind it whether the library created the profile.
Json toJson(const Profile& profile, Secrets secrets);

// {"attribute": {"before": ..., "after": ...}, ...} of what differs; an absent side is absent.
Json changes(const Profile& before, const Profile& after, Secrets secrets);

// One attribute's JSON value as people read it.
std::string valueText(const Json& value);

// One line, or several with an indent. Bytes that are not UTF-8 become U+FFFD.
std::string dumpJson(const Json& json, int indent = -1);

}  // namespace pavoctl
