// Owns one file descriptor; others are handed the plain int.
#pragma once

#include <unistd.h>

#include <utility>

namespace modem {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int owned) : fd(owned) {}
  UniqueFd(UniqueFd&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
      reset(std::exchange(other.fd, -1));
    }
    return *this;
  }
  UniqueFd(const UniqueFd&) = delete;
  UniqueFd& operator=(const UniqueFd&) = delete;
  ~UniqueFd() { reset(); }

  int get() const { return fd; }
  bool isOpen() const { return fd >= 0; }
  int release() { return std::exchange(fd, -1); }

  void reset(int owned = -1) {
    if (fd >= 0) {
      close(fd);
    }
    fd = owned;
  }

 private:
  int fd = -1;
};

}  // namespace modem
