// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <unistd.h>

#include <utility>

namespace pavo {

// Owns one file descriptor. Code that only uses the descriptor takes the int of get().
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int owned) : fd(owned) {}
  UniqueFd(UniqueFd&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(std::exchange(other.fd, -1));
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(); }

  int get() const { return fd; }
  bool isOpen() const { return fd >= 0; }
  int release() { return std::exchange(fd, -1); }

  void reset(int newFd = -1) {
    const int old = std::exchange(fd, newFd);
    if (old >= 0) {
      ::close(old);
    }
  }

 private:
  int fd = -1;
};

}  // namespace pavo
