// The most recent important log lines, in memory, for dumps. Any thread.
#pragma once

#include "base/Mutex.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace pavo {

class LocalLogBuffer {
 public:
  // Room to reserve in a message so that the line is built without another allocation.
  static constexpr std::size_t prefixCharsTypical = 40;

  // A negative capacity never evicts.
  LocalLogBuffer(std::string name, int capacity);
  LocalLogBuffer(const LocalLogBuffer&) = delete;
  LocalLogBuffer& operator=(const LocalLogBuffer&) = delete;

  // The process's buffer, never destroyed: threads log until the very end.
  static LocalLogBuffer& getInstance();

  // Keeps "    <date> <time>.<ms> [<name>]<message>". The oldest line goes when there are more than
  // the capacity before the new one is added, so the buffer settles at one line above its capacity.
  void addLogWithTimestamp(std::string message) EXCLUDES(mutex);

  // Oldest first.
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
