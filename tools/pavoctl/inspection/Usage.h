// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the slots of the modem's table are taken for.
#pragma once

#include "session/Snapshot.h"

#include <map>
#include <optional>
#include <string>

namespace pavoctl {

// The table's size is not known through the library; with it, the free slots are told too. Keys are
// counted by profile.
Json usageOf(const Snapshot& snapshot, const std::map<int, int>& keys, std::optional<int> capacity);

std::string usageText(const Json& usage);

}  // namespace pavoctl
