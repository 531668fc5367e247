// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/FileLock.h"

#include "base/ErrorText.h"
#include "base/PrivateFile.h"

#include <sys/file.h>

#include <cerrno>
#include <stdexcept>
#include <utility>

namespace pavo {

FileLock::FileLock(const std::string& path, const std::string& user) {
  const std::string lockPath = path + ".lock";
  PrivateFile file = openPrivateFile(lockPath);
  if (!file.fd.isOpen()) {
    throw std::runtime_error(lockPath + ": cannot open: " + file.problem);
  }
  fd = std::move(file.fd);
  if (flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
    throw std::runtime_error(path + (errno == EWOULDBLOCK ? ": another " + user + " uses it"
                                                          : ": cannot lock: " + errorText(errno)));
  }
}

}  // namespace pavo
