// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "LogWatch.h"

#include <android/log.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <mutex>

namespace pavo::test::model {

namespace {

constexpr std::size_t linesMax = 400;

// The lines are never destroyed, because the library logs until the very end of the process.
struct Lines {
  std::mutex mutex;
  std::condition_variable added;
  std::deque<std::string> lines;

  static Lines& instance() {
    static Lines& lines = *new Lines;
    return lines;
  }
};

}  // namespace

void clearLog() {
  Lines& log = Lines::instance();
  const std::lock_guard lock(log.mutex);
  log.lines.clear();
}

std::vector<std::string> recentLog() {
  Lines& log = Lines::instance();
  const std::lock_guard lock(log.mutex);
  return {log.lines.begin(), log.lines.end()};
}

bool awaitLine(const std::string& line, std::chrono::milliseconds limit) {
  Lines& log = Lines::instance();
  std::unique_lock lock(log.mutex);
  return log.added.wait_for(lock, limit, [&] {
    return std::find(log.lines.begin(), log.lines.end(), line) != log.lines.end();
  });
}

}  // namespace pavo::test::model

extern "C" int __android_log_print(int /*priority*/, const char* /*tag*/, const char* format, ...) {
  std::array<char, 600> text{};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  auto& log = pavo::test::model::Lines::instance();
  const std::lock_guard lock(log.mutex);
  log.lines.emplace_back(text.data());
  if (log.lines.size() > pavo::test::model::linesMax) {
    log.lines.pop_front();
  }
  log.added.notify_all();
  return 1;
}
