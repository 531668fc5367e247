// The effects of faults as JSON, and where each of them makes sense.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "modem/faults/Fault.h"

namespace modem {

// From the only argument in args that names an effect, and those that go with it; throws JsonError.
Effect effectFromJson(const nlohmann::json& args);
void effectToJson(const Effect& effect, nlohmann::json& out);

// "error", "lost" and so on: the argument that asks for it.
std::string effectName(const Effect& effect);

// Whether the argument says something about this effect.
bool isArgumentOf(const Effect& effect, std::string_view argument);

// Whether it makes sense there: a delete's answer has no list to be made too long.
bool canBefall(const Effect& effect, Subject subject);

// The names of all effects that can befall a subject.
std::vector<std::string_view> effectNamesFor(Subject subject);

}  // namespace modem
