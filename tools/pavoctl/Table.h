// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Profiles as text for people.
#pragma once

#include "profiles/Profile.h"

#include <string>
#include <vector>

namespace pavoctl {

// Returns the cells in aligned columns, with a line for each row.
std::string aligned(const std::vector<std::vector<std::string>>& rows);

// Returns a header and one line for each profile of a JSON array. The rarer attributes stand in the
// column FLAGS, or appear only in profileText().
std::string profileTable(const Json& profiles);

// Returns a line "name: value" for each member of a profile's JSON.
std::string profileText(const Json& profile);

// Returns "1 profile", "3 profiles".
std::string counted(std::size_t count, const std::string& noun);

// Returns "apnName: a -> b, ..." for the result of changes().
std::string changesText(const Json& changes);

}  // namespace pavoctl
