// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A TerminalProcess is a program on a terminal of its own. A test drives it as a user would.
#pragma once

#include "ChildProcess.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace pavo::test {

// Runs a program with all three standard descriptors on a new pseudo-terminal, from construction
// until it ends; the destructor kills it if it still runs. Not thread-safe.
class TerminalProcess {
 public:
  // @param environment "NAME=value" in addition to this process's; TERM is xterm
  explicit TerminalProcess(std::vector<std::string> arguments,
                           const std::vector<std::string>& environment = {});
  TerminalProcess(const TerminalProcess&) = delete;
  TerminalProcess& operator=(const TerminalProcess&) = delete;
  ~TerminalProcess();

  // Types the keys as at the keyboard: "\r" is Enter, "\t" Tab, "\x03" Ctrl-C, "\x04" Ctrl-D.
  void type(const std::string& keys);
  // Waits until the program has written text after the text that the last successful wait found.
  bool waitForOutput(const std::string& text);
  // Returns all that the program has written, control sequences and echo included.
  const std::string& output();
  // Waits for the end and returns it; returns nothing when the program still runs after patience().
  std::optional<ChildProcess::Exit> waitForExit();
  pid_t pid() const { return processId; }

 private:
  void readAll();

  pid_t processId = -1;
  int fd = -1;
  std::string written;
  std::size_t found = 0;
  std::optional<ChildProcess::Exit> exit;
};

}  // namespace pavo::test
