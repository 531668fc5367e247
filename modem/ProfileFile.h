// The JSON form of a set of profiles: {"profiles": [{"index": 1, "apn": "internet", ...}, ...]}.
// The profile file that a modem starts with and its store share it.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>

#include "ProfileTable.h"

namespace modem {

// What is wrong with a file, in one line that names the file and the place.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Every profile has an index from 1 to the capacity, its own or else the lowest that no other one
// asks for. Empty when there is no such file; FileError when it cannot be read or is wrong.
std::optional<ProfilesByIndex> readProfileFile(const std::string& path, size_t capacity);

std::string profileFileText(const ProfilesByIndex& profiles);

}  // namespace modem
