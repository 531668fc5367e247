// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Files that hold passwords, which only their owner may read.
//
// Other users may write to the folder, as to /tmp. Therefore links are not followed: a link that
// another user has placed there would redirect the writes to a file of that user's choice.
#pragma once

#include "base/UniqueFd.h"

#include <string>

namespace pavo {

struct PrivateFile {
  UniqueFd fd;          // for writing; closed when the file cannot be used
  std::string problem;  // the reason why the file cannot be used; empty when it can
};

// Opens the file to append to it, and makes it when it is missing. An existing file has to belong
// to this process's user and to have no second name; its mode becomes 0600. Character devices such
// as /dev/null are opened unchanged. Everything else is refused, also symbolic links such as
// /dev/stderr.
PrivateFile openPrivateFile(const std::string& path);

// Makes a fresh file. An older file of that name is removed.
PrivateFile createPrivateFile(const std::string& path);

// Takes the rights of all other users away from a file that this process's user owns. Other files
// stay unchanged.
void makePrivate(const std::string& path);

}  // namespace pavo
