// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "LocalLogBuffer.h"

#include "base/Fork.h"

#include <sys/time.h>

#include <cstdio>
#include <ctime>
#include <utility>

namespace pavo {

namespace {

// Creates a mutex that is never destroyed and that is free in a forked child.
Mutex& makeProcessMutex() {
  Mutex& mutex = *new Mutex;
  keepFreeAcrossFork(mutex);
  return mutex;
}

constexpr const char* processBufferName = "PAVO";
constexpr int processBufferCapacity = 200;
constexpr std::size_t dateBytes = 50;
constexpr std::size_t stampBytes = 100;

// The date and time of one second as text. Log lines come in bursts, and this conversion costs more
// than all the rest of a line.
struct SecondText {
  std::time_t second;
  std::size_t length;
  char text[dateBytes];
};

void refill(SecondText& cached, std::time_t second) {
  cached.second = second;
  cached.length = 0;
  std::tm local{};
  {
    // localtime_r need not read TZ again, so tzset does it first. Only one thread at a time calls
    // tzset: the C library has a lock for its time zone, but race detectors cannot see it. This
    // mutex is never destroyed, as the buffer is not.
    static Mutex& timeZoneMutex = makeProcessMutex();
    const MutexLock lock(timeZoneMutex);
    ::tzset();
    // localtime_r takes the C library's lock, and a forked child has to find that one free, too.
    if (::localtime_r(&second, &local) == nullptr) {
      return;
    }
  }
  cached.length = std::strftime(cached.text, sizeof cached.text, "%F %X", &local);
}

// Writes "<date> <time>.<milliseconds>" and returns its length. When a time cannot be converted,
// the date and time stay empty, and the next line tries again.
std::size_t formatStamp(char (&stamp)[stampBytes]) {
  thread_local SecondText cached{};
  timeval now{};
  ::gettimeofday(&now, nullptr);
  if (cached.length == 0 || cached.second != now.tv_sec) {
    refill(cached, now.tv_sec);
  }
  std::size_t length = cached.length;
  std::char_traits<char>::copy(stamp, cached.text, length);
  const int milliseconds = static_cast<int>(now.tv_usec / 1000);
  stamp[length++] = '.';
  stamp[length++] = static_cast<char>('0' + milliseconds / 100 % 10);
  stamp[length++] = static_cast<char>('0' + milliseconds / 10 % 10);
  stamp[length++] = static_cast<char>('0' + milliseconds % 10);
  return length;
}

}  // namespace

LocalLogBuffer::LocalLogBuffer(std::string name, int capacity)
    : name(std::move(name)), capacity(capacity) {}

LocalLogBuffer& LocalLogBuffer::getInstance() {
  static LocalLogBuffer& buffer = []() -> LocalLogBuffer& {
    auto& made = *new LocalLogBuffer(processBufferName, processBufferCapacity);
    keepFreeAcrossFork(made.mutex);
    return made;
  }();
  return buffer;
}

void LocalLogBuffer::addLogWithTimestamp(std::string message) {
  char stamp[stampBytes];
  const std::size_t stampLength = formatStamp(stamp);
  std::string line = std::move(message);
  // The text moves once to make room. The pieces are then written in front of it.
  constexpr std::size_t indent = 4;
  line.insert(0, indent + stampLength + 2 + name.size() + 1, ' ');
  line.replace(indent, stampLength, stamp, stampLength);
  line[indent + stampLength + 1] = '[';
  line.replace(indent + stampLength + 2, name.size(), name);
  line[indent + stampLength + 2 + name.size()] = ']';

  // `evicted` is declared before the lock, so that its memory is freed after the unlock.
  std::string evicted;
  const MutexLock lock(mutex);
  while (lines.size() > static_cast<unsigned int>(capacity)) {
    evicted = std::move(lines.front());
    lines.pop_front();
  }
  lines.push_back(std::move(line));
}

std::vector<std::string> LocalLogBuffer::getLogs() const {
  const MutexLock lock(mutex);
  return {lines.begin(), lines.end()};
}

void LocalLogBuffer::flush() {
  std::deque<std::string> flushed;
  const MutexLock lock(mutex);
  lines.swap(flushed);
}

}  // namespace pavo
