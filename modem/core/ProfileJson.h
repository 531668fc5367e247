// Profiles as JSON: in the profile file, in the store, on the control channel and in transcripts.
//
// A text is a JSON string, or {"hex": "..."} when its bytes are no UTF-8: the modem keeps texts as
// given and has to get back the same bytes. Enumerations have names and may be given as numbers,
// flags are true, false or a number.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "modem/common/Json.h"
#include "modem/core/Profile.h"

namespace modem {

nlohmann::json toJson(const Profile& profile);

// Takes the members that are settings; the caller deals with the others. Only the forms are
// judged here; checkSettings judges the values.
Profile profileFromJson(const nlohmann::json& object);
bool isSettingName(std::string_view name);

nlohmann::json textToJson(std::string_view text);

}  // namespace modem
