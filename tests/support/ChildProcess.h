// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Another process, started and observed by a test.
#pragma once

#include "Deadline.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test {

struct ChildProcessOptions {
  // "NAME=value" in addition to this process's environment; the later one of a name counts.
  std::vector<std::string> environment;
  // Empty: that of this process.
  std::string workingFolder;
  // What the child reads from its standard input.
  std::string input;
};

// Runs a program from construction until it ends; the destructor kills it if it still runs. It
// dies with this process, and with the thread that started it, which therefore should be one that
// lasts. Its output goes to files in memory: it never blocks on a full pipe, and can be read at
// any time.
class ChildProcess {
 public:
  struct Exit {
    // The exit code, or -1 when a signal ended it.
    int code = -1;
    // The signal, or 0.
    int signal = 0;

    bool operator==(const Exit&) const = default;
  };

  // @param arguments the program and its arguments; the program is found through PATH
  // Throws std::system_error when the process cannot be made; a program that cannot be executed
  // ends with code 127.
  explicit ChildProcess(std::vector<std::string> arguments, ChildProcessOptions options = {});
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  pid_t pid() const { return processId; }
  bool isRunning();
  void sendSignal(int signal);
  // How it ended; empty when it still runs after the limit.
  std::optional<Exit> waitForExit(std::chrono::milliseconds limit = patience());

  // All that it has written so far.
  std::string output() const;
  std::string errors() const;
  // Waits until the output contains text; false when it ended without, or took too long.
  bool waitForOutput(const std::string& text, std::chrono::milliseconds limit = patience());

 private:
  void reap(int flags);

  pid_t processId = -1;
  int outputFd = -1;
  int errorsFd = -1;
  std::optional<Exit> exit;
};

}  // namespace pavo::test
