// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The JSON form of profiles, in files, on the control channel and in transcripts.
//
// A text is a JSON string, or {"hex": "..."} if its bytes are not UTF-8, because a text has to be
// returned with the same bytes. Enumerations have names and may be given as numbers. Flags are
// true, false or a number.
#pragma once

#include "modem/common/Json.h"
#include "modem/core/Profile.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace modem {

nlohmann::json toJson(const Profile& profile);

// Reads the members that are settings and ignores the others. It checks the types of the values;
// checkSettings checks their ranges.
Profile profileFromJson(const nlohmann::json& object);
bool isSettingName(std::string_view name);

nlohmann::json textToJson(std::string_view text);

}  // namespace modem
