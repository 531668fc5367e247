// The JSON form of a set of profiles: {"profiles": [{"index": 1, "apn": "internet", ...}, ...]}.
// The profile file that a modem starts with and its store share it.
#pragma once

#include <optional>
#include <string>

#include "modem/common/File.h"
#include "modem/core/ProfileTable.h"

namespace modem {

// Every profile has an index from 1 to the capacity, its own or else the lowest that no other one
// asks for. Empty when there is no such file; Error when it cannot be read or is wrong.
std::optional<ProfilesByIndex> readProfileFile(const std::string& path, size_t capacity);

std::string profileFileText(const ProfilesByIndex& profiles);

}  // namespace modem
