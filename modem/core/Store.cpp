// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/Store.h"

#include "base/PrivateFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace modem {

Store::Store(std::string storePath, size_t tableCapacity)
    : path(std::move(storePath)), capacity(tableCapacity) {}

std::optional<ProfilesByIndex> Store::load() const {
  auto profiles = readProfileFile(path, capacity);
  if (profiles) {
    pavo::makePrivate(path);
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
  pavo::PrivateFile file = pavo::createPrivateFile(fresh);
  if (!file.fd.isOpen()) {
    throw Error(fresh + ": cannot create: " + file.problem);
  }
  writeAll(file.fd.get(), profileFileText(profiles), fresh);
  // The file is not flushed to the disk. It has to survive the end of the modem's process, but not
  // a power loss of the host, and a flush on a busy disk takes longer than a client waits.
  file.fd.reset();
  if (std::rename(fresh.c_str(), path.c_str()) != 0) {
    throw Error(path + ": cannot replace: " + std::strerror(errno));
  }
}

}  // namespace modem
