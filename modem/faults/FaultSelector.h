// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The JSON form of selectors: "message", "indication" or "service".
#pragma once

#include "modem/faults/Subject.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace modem {

// Reads the only one of the three members that args has. Throws Error.
Selector selectorFromJson(const nlohmann::json& args);
void selectorToJson(const Selector& selector, nlohmann::json& out);

// Returns the name of a kind, such as "message".
std::string selectorName(Subject::Kind kind);

bool isSelected(const Selector& selector, Subject subject);

// Returns the known subjects that it selects, or the one that it names.
std::vector<Subject> subjectsOf(const Selector& selector);

}  // namespace modem
