#include "modem/core/Store.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/PrivateFile.h"

namespace modem {

namespace {

[[noreturn]] void fail(const std::string& path, const char* what) {
  throw Error(path + ": " + what + ": " + std::strerror(errno));
}

void writeAll(int fd, const std::string& text, const std::string& path) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t written = write(fd, text.data() + done, text.size() - done);
    if (written < 0 && errno != EINTR) {
      fail(path, "cannot write");
    }
    done += written > 0 ? static_cast<size_t>(written) : 0;
  }
}

}  // namespace

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
  // Not flushed to the disk: the power that is lost here is the emulated modem's, whose process may
  // be killed at any moment, and not the host's; a flush on a busy disk takes longer than a client
  // waits.
  file.fd.reset();
  if (std::rename(fresh.c_str(), path.c_str()) != 0) {
    fail(path, "cannot replace");
  }
}

}  // namespace modem
