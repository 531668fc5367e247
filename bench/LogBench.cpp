// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This benchmark compares a kept log line, with a writer that drops it, with the same line made the
// plain way. It also measures a line that reaches no writer and no buffer.
#include "LogWrapper.h"
#include "NullWriter.h"

#include <benchmark/benchmark.h>
#include <sys/time.h>

#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace pavo::bench {
namespace {

constexpr std::size_t linesMax = 201;

// The plain way is vsnprintf, localtime, strftime and a bounded deque.
__attribute__((format(printf, 1, 2))) void plainLine(const char* format, ...) {
  static std::deque<std::string> lines;
  static std::mutex mutex;
  char text[513] = {};
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, 512, format, arguments);
  va_end(arguments);
  timeval now{};
  ::gettimeofday(&now, nullptr);
  std::tm local{};
  ::tzset();
  ::localtime_r(&now.tv_sec, &local);
  char date[50] = {};
  std::strftime(date, sizeof date, "%F %X", &local);
  char stamp[100] = {};
  std::snprintf(stamp, sizeof stamp, "%s.%03d", date, static_cast<int>(now.tv_usec / 1000));
  std::string line = std::string("    ") + stamp + " [PAVO]" + text;
  const std::lock_guard lock(mutex);
  while (lines.size() >= linesMax) {
    lines.pop_front();
  }
  lines.push_back(line);
}

void keptLine(benchmark::State& state) {
  LogWrapper::getInstance().setLogWriter(std::make_unique<NullWriter>());
  for (auto _ : state) {
    LogWrapper::log(LogLevel::High, logTag, "Manager::getProfile > %s", "Get 7 token=12");
  }
}
BENCHMARK(keptLine)->Name("KeptLine");

void plainKeptLine(benchmark::State& state) {
  for (auto _ : state) {
    plainLine("Manager::getProfile > %s", "Get 7 token=12");
  }
}
BENCHMARK(plainKeptLine)->Name("PlainLine");

void unkeptLine(benchmark::State& state) {
  LogWrapper::getInstance().setLogWriter(nullptr);
  for (auto _ : state) {
    LogWrapper::log(LogLevel::Verbose, logTag, "processing event number: %d, handling %d for %d", 1,
                    2, 3);
  }
}
BENCHMARK(unkeptLine)->Name("UnkeptLine");

}  // namespace
}  // namespace pavo::bench
