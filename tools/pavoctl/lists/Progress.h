// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The progress of long work, on a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace pavoctl {

// Writes one line on standard error over and over, and wipes it away at the end. When standard
// error is not a terminal, it writes nothing.
class Progress {
 public:
  Progress(std::string task, std::size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void show(std::size_t done);
  // To be called before any other text is written to the terminal.
  void clear();

 private:
  const std::string task;
  const std::size_t total;
  const bool isTerminal;
  bool isShown = false;
  std::chrono::steady_clock::time_point nextTime{};
};

}  // namespace pavoctl
