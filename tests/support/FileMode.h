// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header reads the permissions of a file.
#pragma once

#include <sys/stat.h>

#include <fstream>
#include <string>

namespace pavo::test {

// Returns the permission bits of a file; all ones when there is no such file.
inline mode_t modeOf(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : ~mode_t{0};
}

inline void writeWithMode(const std::string& path, const std::string& text, mode_t mode) {
  std::ofstream(path) << text;
  chmod(path.c_str(), mode);
}

}  // namespace pavo::test
