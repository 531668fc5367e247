// Keeps what others can bring about at will from filling the log: of such lines one a second is
// let through, and the next one says how many were left out.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace modem {

class LineLimit {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds pause{1};

  // What is to be written of a line that comes up now; empty when it is left out.
  std::optional<std::string> admit(const std::string& line, Clock::time_point now = Clock::now());

 private:
  std::optional<Clock::time_point> lastWritten;
  size_t leftOut = 0;
};

}  // namespace modem
