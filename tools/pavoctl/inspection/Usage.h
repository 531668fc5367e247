// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The use of the slots of the modem's table.
#pragma once

#include "session/Snapshot.h"

#include <map>
#include <optional>
#include <string>

namespace pavoctl {

// The library does not say how large the table is. When the capacity is given, the free slots are
// reported too. Keys are counted by profile.
Json usageOf(const Snapshot& snapshot, const std::map<int, int>& keys, std::optional<int> capacity);

std::string usageText(const Json& usage);

}  // namespace pavoctl
