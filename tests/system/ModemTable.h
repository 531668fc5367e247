// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The modem's profile table as its control channel shows it, and what a client of the library has
// to see of it.
#pragma once

#include <pavo/ProfileParams.h>

#include "ModemProcess.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace pavo::test {

// Profiles by index; a profile is an object of the control channel's settings.
using ModemTable = std::map<int, nlohmann::json>;

ModemTable tableOf(ModemProcess& modem);

// In lower case, ASCII letters only, as the library keeps names.
std::string lowered(std::string text);

// The attributes that a client reads of a profile that the modem keeps like this, the library's
// two flags included.
ProfileParams paramsOf(const nlohmann::json& profile);

// Every attribute and both flags, for comparison.
std::string textOf(const ProfileParams& params);

// "<index>: <attributes>" for each profile of the table, sorted.
std::vector<std::string> textsOf(const ModemTable& table);

}  // namespace pavo::test
