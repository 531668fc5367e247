// Which subjects a fault is for, as JSON: "message", "indication" or "service".
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "modem/faults/Subject.h"

namespace modem {

// From the only one of the three members that args has; throws Error.
Selector selectorFromJson(const nlohmann::json& args);
void selectorToJson(const Selector& selector, nlohmann::json& out);

// "message" and so on.
std::string selectorName(Subject::Kind kind);

bool isSelected(const Selector& selector, Subject subject);

// The known subjects that it selects; the one that it names, known or not.
std::vector<Subject> subjectsOf(const Selector& selector);

}  // namespace modem
