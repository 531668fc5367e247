// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// AndroidLog is the Android log of the system tests. This program's __android_log_print takes the
// place of the Android library's, so tests see every line that libpavor.so writes, whatever its
// level.
#pragma once

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {

struct AndroidLogLine {
  int priority;
  std::string tag;
  std::string message;
  // This is the thread that logs.
  std::thread::id thread = std::this_thread::get_id();
};

// This is the log of the process. It is thread-safe. It grows for the length of a test and is
// emptied between tests.
class AndroidLog {
 public:
  static AndroidLog& instance();

  void add(AndroidLogLine line);
  void clear();

  // Returns the position of the next line, for linesSince and waitFor.
  std::size_t end() const;
  std::vector<AndroidLogLine> linesSince(std::size_t position) const;
  std::vector<std::string> messagesSince(std::size_t position) const;
  // Returns how many lines from position on are exactly message.
  std::size_t count(const std::string& message, std::size_t position = 0) const;
  // Waits until there is a line that is exactly message. Returns false when none comes.
  bool waitFor(const std::string& message, std::size_t position = 0) const;

 private:
  struct Lines;
  AndroidLog();
  Lines& lines;
};

}  // namespace pavo::test
