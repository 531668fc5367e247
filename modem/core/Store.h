// Keeps the persistent profiles in a file.
//
// The file is its owner's alone, for it holds passwords.
//
// A save replaces the file as a whole and returns when the new one would survive a kill of the
// process: it is written beside the old one and renamed over it. A process that dies in the middle
// leaves either the old state or the new one.
#pragma once

#include <optional>
#include <string>

#include "modem/core/ProfileFile.h"

namespace modem {

class Store {
 public:
  Store(std::string path, size_t capacity);

  // Empty when nothing was ever saved; throws Error.
  std::optional<ProfilesByIndex> load() const;

  // Throws Error, and then the old file still stands.
  void save(const ProfilesByIndex& profiles) const;

 private:
  const std::string path;
  const size_t capacity;
};

}  // namespace modem
