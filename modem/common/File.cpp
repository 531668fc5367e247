// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/common/File.h"

#include "base/UniqueFd.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace modem {

std::string readFile(const std::string& path) {
  auto text = readFileIfAny(path);
  if (!text) {
    throw Error(path + ": " + std::strerror(ENOENT));
  }
  return std::move(*text);
}

std::optional<std::string> readFileIfAny(const std::string& path) {
  const pavo::UniqueFd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!fd.isOpen() && errno == ENOENT) {
    return std::nullopt;
  }
  std::string text;
  char chunk[4096];
  ssize_t count = -1;
  while (fd.isOpen() && (count = read(fd.get(), chunk, sizeof chunk)) > 0) {
    text.append(chunk, static_cast<size_t>(count));
  }
  if (count < 0) {
    throw Error(path + ": cannot read: " + std::strerror(errno));
  }
  return text;
}

void writeAll(int fd, std::string_view text, const std::string& path) {
  while (!text.empty()) {
    const ssize_t written = write(fd, text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      throw Error(path + ": cannot write: " + std::strerror(errno));
    }
    text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
  }
}

}  // namespace modem
