// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "AndroidLog.h"

#include "Deadline.h"

#include <android/log.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace pavo::test {

namespace {

// This is the length of the longest line of the library and some room, to notice a line that is not
// cut.
constexpr std::size_t messageCharsMax = 1023;

}  // namespace

struct AndroidLog::Lines {
  mutable std::mutex mutex;
  std::vector<AndroidLogLine> all;
};

// `lines` is never destroyed, because the library logs until the very end of the process.
AndroidLog::AndroidLog() : lines(*new Lines) {}

AndroidLog& AndroidLog::instance() {
  static AndroidLog& log = *new AndroidLog;
  return log;
}

void AndroidLog::add(AndroidLogLine line) {
  const std::lock_guard lock(lines.mutex);
  lines.all.push_back(std::move(line));
}

void AndroidLog::clear() {
  const std::lock_guard lock(lines.mutex);
  lines.all.clear();
}

std::size_t AndroidLog::end() const {
  const std::lock_guard lock(lines.mutex);
  return lines.all.size();
}

std::vector<AndroidLogLine> AndroidLog::linesSince(std::size_t position) const {
  const std::lock_guard lock(lines.mutex);
  const std::size_t from = std::min(position, lines.all.size());
  return {lines.all.begin() + static_cast<std::ptrdiff_t>(from), lines.all.end()};
}

std::vector<std::string> AndroidLog::messagesSince(std::size_t position) const {
  std::vector<std::string> messages;
  for (AndroidLogLine& line : linesSince(position)) {
    messages.push_back(std::move(line.message));
  }
  return messages;
}

std::size_t AndroidLog::count(const std::string& message, std::size_t position) const {
  const std::lock_guard lock(lines.mutex);
  const std::size_t from = std::min(position, lines.all.size());
  return static_cast<std::size_t>(
      std::count_if(lines.all.begin() + static_cast<std::ptrdiff_t>(from), lines.all.end(),
                    [&](const AndroidLogLine& line) { return line.message == message; }));
}

bool AndroidLog::waitFor(const std::string& message, std::size_t position) const {
  return waitUntil([&] { return count(message, position) > 0; });
}

}  // namespace pavo::test

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  std::array<char, pavo::test::messageCharsMax + 1> text{};
  std::va_list arguments;
  va_start(arguments, fmt);
  const int length = std::vsnprintf(text.data(), text.size(), fmt, arguments);
  va_end(arguments);
  pavo::test::AndroidLog::instance().add({prio, tag, text.data()});
  return length;
}
