// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// How far long work has come, on a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace pavoctl {

// One line on standard error that is written over and over, and wiped away at the end. Says nothing
// when standard error is not a terminal.
class Progress {
 public:
  Progress(std::string task, std::size_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void show(std::size_t done);
  // Before anything else is written to the terminal.
  void clear();

 private:
  const std::string task;
  const std::size_t total;
  const bool isTerminal;
  bool isShown = false;
  std::chrono::steady_clock::time_point nextTime{};
};

}  // namespace pavoctl
