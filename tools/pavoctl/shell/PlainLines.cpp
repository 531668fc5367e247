// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Errors.h"
#include "shell/LineReader.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace pavoctl {
namespace {

class PlainLines : public LineReader {
 public:
  explicit PlainLines(Surroundings around) : surroundings(std::move(around)) {}

  std::optional<std::string> next() override {
    while (true) {
      if (const auto end = pending.find('\n'); end != std::string::npos) {
        std::string line = pending.substr(0, end);
        pending.erase(0, end + 1);
        return line;
      }
      if (isAtEnd || !readMore()) {
        isAtEnd = true;
        return pending.empty() ? std::nullopt : std::optional(std::exchange(pending, ""));
      }
    }
  }

 private:
  bool readMore() {
    const auto nothing = [] {};
    switch (surroundings.waitForInput(nothing, nothing)) {
      case Waited::input:
        break;
      case Waited::interrupt:
      case Waited::end:
        // No line is being typed that an interrupt could drop, so an interrupt ends the input too.
        pending.clear();
        return false;
    }
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count < 0 && errno != EINTR && errno != EAGAIN) {
      throw Failure("cannot read the standard input: " + std::string(std::strerror(errno)));
    }
    if (count > 0) {
      pending.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count != 0;
  }

  const Surroundings surroundings;
  std::string pending;
  bool isAtEnd = false;
};

}  // namespace

std::unique_ptr<LineReader> plainLines(LineReader::Surroundings surroundings) {
  return std::make_unique<PlainLines>(std::move(surroundings));
}

}  // namespace pavoctl
