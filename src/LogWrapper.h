// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// LogWrapper is the only way to log. It formats a line, hands it to the installed writer and keeps
// the important lines in the local log buffer. It works on any thread at any time, even before the
// first and after the last static object of the process, because its one instance is never
// destroyed.
#pragma once

#include "LogLevel.h"
#include "LogWriter.h"
#include "base/Fork.h"
#include "base/Mutex.h"

#include <atomic>
#include <memory>

namespace pavo {

inline constexpr const char* logTag = "PAVO";

class LogWrapper {
 public:
  static constexpr int messageCharsMax = 511;

  static LogWrapper& getInstance();

  // Replaces the current writer. Null means no writer. The replaced writer is destroyed before this
  // returns, unless another thread is writing a line with it at that moment. The process's exit
  // removes the writer.
  void setLogWriter(std::unique_ptr<LogWriter> newWriter) EXCLUDES(mutex);

  // Writes one line and cuts it at messageCharsMax.
  __attribute__((format(printf, 3, 4))) static void log(LogLevel level, const char* tag,
                                                        const char* format, ...) noexcept;

  // Returns whether a line of this level is written or kept. Check this before building a costly
  // argument.
  static bool isLogged(LogLevel level) {
    return isKept(level) || hasWriter.load(std::memory_order_relaxed);
  }

 private:
  LogWrapper();
  static bool isKept(LogLevel level) { return level == LogLevel::Error || level == LogLevel::High; }
  std::shared_ptr<LogWriter> currentWriter(LogLevel level) EXCLUDES(mutex);

  const ProcessMark process;
  Mutex mutex;
  std::shared_ptr<LogWriter> writer GUARDED_BY(mutex);
  // This flag saves the formatting of lines that have no reader. It stands outside the instance, so
  // that checking it is one load.
  static inline std::atomic<bool> hasWriter{false};
};

}  // namespace pavo
