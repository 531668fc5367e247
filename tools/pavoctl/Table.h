// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Profiles as text for people.
#pragma once

#include "profiles/Profile.h"

#include <string>
#include <vector>

namespace pavoctl {

// Cells in columns, a line for each row.
std::string aligned(const std::vector<std::vector<std::string>>& rows);

// A header and one line for each profile of a JSON array of profiles. The rarer attributes are in
// the column FLAGS, or only in profileText().
std::string profileTable(const Json& profiles);

// One line "name: value" for each member of a profile's JSON.
std::string profileText(const Json& profile);

// "1 profile", "3 profiles".
std::string counted(std::size_t count, const std::string& noun);

// "apnName: a -> b, ...", from changes().
std::string changesText(const Json& changes);

}  // namespace pavoctl
