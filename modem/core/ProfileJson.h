// Profiles as JSON: in the profile file, in the store, on the control channel and in transcripts.
//
// A text is a JSON string, or {"hex": "..."} when its bytes are no UTF-8: the modem keeps texts as
// given and has to get back the same bytes. Enumerations have names and may be given as numbers,
// flags are true, false or a number.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "modem/core/Profile.h"

namespace modem {

// What is wrong with a piece of JSON, in one line that names the member.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

nlohmann::json toJson(const Profile& profile);

// Takes the members that are settings; the caller deals with the others. Only the forms are
// judged here; checkSettings judges the values.
Profile profileFromJson(const nlohmann::json& object);
bool isSettingName(std::string_view name);

nlohmann::json textToJson(std::string_view text);
std::string hexOf(std::span<const uint8_t> bytes);

// A whole number of at most `max`; JsonError names `what` when value is anything else.
uint64_t numberFromJson(const nlohmann::json& value, uint64_t max, const std::string& what);

// The same from 1 on.
uint32_t countFromJson(const nlohmann::json& value, uint64_t max, const std::string& what);

// One line of JSON; whatever is no UTF-8 in it is replaced, so that this cannot fail.
std::string dumpLine(const nlohmann::json& value);

}  // namespace modem
