// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Claims a file for one process: beside it lies FILE.lock, a PrivateFile that the claiming process
// holds locked. The lock ends with the process, even with one that is killed. The file stays: if it
// were removed, two processes could lock two different files.
#pragma once

#include "base/UniqueFd.h"

#include <string>

namespace pavo {

class FileLock {
 public:
  // Throws std::runtime_error when another process, or another FileLock, has the file. The text
  // calls it "another <user>".
  FileLock(const std::string& path, const std::string& user);

 private:
  UniqueFd fd;
};

}  // namespace pavo
