// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The JSON form of a set of profiles: {"profiles": [{"index": 1, "apn": "internet", ...}, ...]}.
// The modem's profile file and its store have this form.
#pragma once

#include "modem/common/File.h"
#include "modem/core/ProfileTable.h"

#include <optional>
#include <string>

namespace modem {

// Returns nothing if there is no such file. A profile without an index gets the lowest one that no
// other profile has. Throws Error if the file cannot be read or is wrong.
std::optional<ProfilesByIndex> readProfileFile(const std::string& path, size_t capacity);

std::string profileFileText(const ProfilesByIndex& profiles);

}  // namespace modem
