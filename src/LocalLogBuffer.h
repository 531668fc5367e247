// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// LocalLogBuffer keeps the most recent important log lines in memory, for dumps. It is thread-safe.
#pragma once

#include "base/Mutex.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace pavo {

class LocalLogBuffer {
 public:
  // Room to reserve in a message, so that adding the prefix needs no further allocation.
  static constexpr std::size_t prefixCharsTypical = 40;

  // A buffer with a negative capacity never evicts a line.
  LocalLogBuffer(std::string name, int capacity);
  LocalLogBuffer(const LocalLogBuffer&) = delete;
  LocalLogBuffer& operator=(const LocalLogBuffer&) = delete;

  // Returns the buffer of the process. It is never destroyed, because threads log until the process
  // ends.
  static LocalLogBuffer& getInstance();

  // Keeps "    <date> <time>.<ms> [<name>]<message>". The oldest line is evicted when the buffer
  // holds more lines than its capacity before the new line is added. A full buffer therefore holds
  // one line more than its capacity.
  void addLogWithTimestamp(std::string message) EXCLUDES(mutex);

  // Returns the lines, oldest first.
  std::vector<std::string> getLogs() const EXCLUDES(mutex);
  std::string getName() const { return name; }
  void flush() EXCLUDES(mutex);

 private:
  std::deque<std::string> lines GUARDED_BY(mutex);
  const std::string name;
  const int capacity;
  mutable Mutex mutex;
};

}  // namespace pavo
