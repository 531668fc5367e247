// The JSON form of profiles, in files, on the control channel and in transcripts.
//
// A text is a JSON string, or {"hex": "..."} if its bytes are not UTF-8, because a text has to be
// returned with the same bytes. Enumerations have names and may be given as numbers. Flags are
// true, false or a number.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "modem/common/Json.h"
#include "modem/core/Profile.h"

namespace modem {

nlohmann::json toJson(const Profile& profile);

// Reads the members that are settings and ignores the others. It checks the types of the values;
// checkSettings checks their ranges.
Profile profileFromJson(const nlohmann::json& object);
bool isSettingName(std::string_view name);

nlohmann::json textToJson(std::string_view text);

}  // namespace modem
