// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A ChildProcess is another process that a test starts and observes.
#pragma once

#include "Deadline.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test {

struct ChildProcessOptions {
  // These "NAME=value" strings are added to this process's environment. The later one of a name
  // counts.
  std::vector<std::string> environment;
  // If this is empty, the child inherits this process's working folder.
  std::string workingFolder;
  // The child reads this text from its standard input.
  std::string input;
};

// Runs a program from construction until it ends. The destructor kills the program if it still
// runs. The program dies with this process, and with the thread that started it, so start it on a
// thread that lasts. Its output goes to files in memory, so it never blocks on a full pipe. The
// output can be read at any time.
class ChildProcess {
 public:
  struct Exit {
    // The exit code, or -1 when a signal ended the process.
    int code = -1;
    // The number of the signal that ended the process, or 0.
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
  // Waits for the end and returns it; returns nothing when the process still runs after the limit.
  std::optional<Exit> waitForExit(std::chrono::milliseconds limit = patience());

  // Returns all that the process has written so far.
  std::string output() const;
  std::string errors() const;
  // Waits until the output contains text. Returns false when the process ended without it or the
  // limit passed.
  bool waitForOutput(const std::string& text, std::chrono::milliseconds limit = patience());

 private:
  void reap(int flags);

  pid_t processId = -1;
  int outputFd = -1;
  int errorsFd = -1;
  std::optional<Exit> exit;
};

}  // namespace pavo::test
