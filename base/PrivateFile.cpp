// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/PrivateFile.h"

#include "base/ErrorText.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace pavo {

namespace {

constexpr mode_t ownersOnly = 0600;
// The open does not wait for the other end of a pipe that another user has placed there.
constexpr int safely = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

std::string openProblem() {
  return errno == ELOOP ? "it is a symbolic link, which is not followed" : errorText(errno);
}

bool isOwnFile(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1;
}

// The reason why an open file must not be written to; empty when it may.
std::string problemOf(int fd) {
  struct stat status = {};
  if (fstat(fd, &status) != 0) {
    return errorText(errno);
  }
  if (S_ISCHR(status.st_mode)) {
    return "";
  }
  if (!S_ISREG(status.st_mode)) {
    return "it is neither a file nor a character device";
  }
  if (!isOwnFile(status)) {
    return "it belongs to another user or has a second name";
  }
  return fchmod(fd, ownersOnly) == 0 ? "" : errorText(errno);
}

}  // namespace

PrivateFile openPrivateFile(const std::string& path) {
  UniqueFd fd(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | safely, ownersOnly));
  std::string problem = fd.isOpen() ? problemOf(fd.get()) : openProblem();
  if (!problem.empty()) {
    return {UniqueFd(), std::move(problem)};
  }
  // Writes to a terminal block again when it is full.
  fcntl(fd.get(), F_SETFL, O_APPEND);
  return {std::move(fd), ""};
}

PrivateFile createPrivateFile(const std::string& path) {
  if (unlink(path.c_str()) != 0 && errno != ENOENT) {
    return {UniqueFd(), errorText(errno)};
  }
  UniqueFd fd(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | safely, ownersOnly));
  std::string problem = fd.isOpen() ? "" : openProblem();
  return {std::move(fd), std::move(problem)};
}

void makePrivate(const std::string& path) {
  const UniqueFd fd(open(path.c_str(), O_RDONLY | safely));
  struct stat status = {};
  if (fd.isOpen() && fstat(fd.get(), &status) == 0 && isOwnFile(status)) {
    fchmod(fd.get(), ownersOnly);
  }
}

}  // namespace pavo
