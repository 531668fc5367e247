#include "modem/core/Store.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/PrivateFile.h"

namespace modem {

Store::Store(std::string storePath, size_t tableCapacity)
    : path(std::move(storePath)), capacity(tableCapacity) {}

std::optional<ProfilesByIndex> Store::load() const {
  auto profiles = readProfileFile(path, capacity);
  if (profiles) {
    makePrivate(path);
    for (const auto& [index, profile] : *profiles) {
      if (!profile.isPersistent()) {
        throw Error(path + ": the profile with index " + std::to_string(index) +
                    " is not persistent, so this is not a store");
      }
    }
  }
  return profiles;
}

void Store::save(const ProfilesByIndex& profiles) const {
  const std::string fresh = path + ".new";
  PrivateFile file = createPrivateFile(fresh);
  if (!file.fd.isOpen()) {
    throw Error(fresh + ": cannot create: " + file.problem);
  }
  writeAll(file.fd.get(), profileFileText(profiles), fresh);
  // Not flushed to the disk: the power that is lost here is the emulated modem's, whose process may
  // be killed at any moment, and not the host's; a flush on a busy disk takes longer than a client
  // waits.
  file.fd.reset();
  if (std::rename(fresh.c_str(), path.c_str()) != 0) {
    throw Error(path + ": cannot replace: " + std::strerror(errno));
  }
}

}  // namespace modem
