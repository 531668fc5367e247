// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Keeps the persistent profiles in a file of this user alone, because it holds passwords.
//
// A save writes a new file beside the old one and renames it over the old one. So a process that is
// killed during a save leaves the old state or the new one.
#pragma once

#include "modem/core/ProfileFile.h"

#include <optional>
#include <string>

namespace modem {

class Store {
 public:
  Store(std::string path, size_t capacity);

  // Returns nothing if there is no file yet. Throws Error.
  std::optional<ProfilesByIndex> load() const;

  // Throws Error and leaves the old file in place.
  void save(const ProfilesByIndex& profiles) const;

 private:
  const std::string path;
  const size_t capacity;
};

}  // namespace modem
