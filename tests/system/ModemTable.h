// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A ModemTable is the modem's profile table as its control channel shows it. The functions compute
// a library client's expected view of it.
#pragma once

#include <pavo/ProfileParams.h>

#include "ModemProcess.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace pavo::test {

// The table holds profiles by index. A profile is an object of the control channel's settings.
using ModemTable = std::map<int, nlohmann::json>;

ModemTable tableOf(ModemProcess& modem);

// Returns the text in lower case, changing ASCII letters only, as the library keeps names.
std::string lowered(std::string text);

// Returns the attributes that a client reads of such a modem profile, the library's two flags
// included.
ProfileParams paramsOf(const nlohmann::json& profile);

// Returns every attribute and both flags as a text for comparison.
std::string textOf(const ProfileParams& params);

// Returns "<index>: <attributes>" for each profile of the table, sorted.
std::vector<std::string> textsOf(const ModemTable& table);

}  // namespace pavo::test
