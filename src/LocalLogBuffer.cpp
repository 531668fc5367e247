#include "LocalLogBuffer.h"

#include "Fork.h"

#include <sys/time.h>

#include <cstdio>
#include <ctime>
#include <utility>

namespace pavo {

namespace {

// A mutex that is never destroyed and that a forked child finds free.
Mutex& makeProcessMutex() {
  Mutex& mutex = *new Mutex;
  keepFreeAcrossFork(mutex);
  return mutex;
}

constexpr const char* processBufferName = "PAVO";
constexpr int processBufferCapacity = 200;
constexpr std::size_t dateBytes = 50;
constexpr std::size_t stampBytes = 100;

// The date and time of one second. Lines come in bursts, and the conversion costs more than all the
// rest of a line.
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
    // localtime_r need not read TZ again by itself, so tzset does. One thread at a time: the C
    // library locks its time zone, but no race detector sees that. Never destroyed, as the buffer.
    static Mutex& timeZoneMutex = makeProcessMutex();
    const MutexLock lock(timeZoneMutex);
    ::tzset();
  }
  if (::localtime_r(&second, &local) != nullptr) {
    cached.length = std::strftime(cached.text, sizeof cached.text, "%F %X", &local);
  }
}

// Writes "<date> <time>.<milliseconds>" and returns its length. A time that does not convert leaves
// the date and time empty and is tried again with the next line.
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
  // One move of the text to make room, then the pieces in front of it.
  constexpr std::size_t indent = 4;
  line.insert(0, indent + stampLength + 2 + name.size() + 1, ' ');
  line.replace(indent, stampLength, stamp, stampLength);
  line[indent + stampLength + 1] = '[';
  line.replace(indent + stampLength + 2, name.size(), name);
  line[indent + stampLength + 2 + name.size()] = ']';

  // Freed when the lock is gone.
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
