// The one way to log: formats a line, hands it to the installed writer and keeps the important ones
// in the local log buffer. Any thread, at any time, also before the first and after the last static
// object of the process: the one instance is never destroyed.
#pragma once

#include "LogLevel.h"
#include "LogWriter.h"
#include "base/Mutex.h"

#include <atomic>
#include <memory>

namespace pavo {

inline constexpr const char* logTag = "PAVO";

class LogWrapper {
 public:
  static constexpr int messageCharsMax = 511;

  static LogWrapper& getInstance();

  // Puts a writer in place of the current one, which is destroyed before this returns unless
  // another thread is writing a line with it right now. Null means no writer. The process's exit
  // removes the writer.
  void setLogWriter(std::unique_ptr<LogWriter> newWriter) EXCLUDES(mutex);

  // Writes one line, cut at messageCharsMax.
  __attribute__((format(printf, 3, 4))) static void log(LogLevel level, const char* tag,
                                                        const char* format, ...) noexcept;

  // Whether a line of this level would reach anybody. Ask before building a costly argument.
  static bool isLogged(LogLevel level) {
    return isKept(level) || hasWriter.load(std::memory_order_relaxed);
  }

 private:
  LogWrapper();
  static bool isKept(LogLevel level) { return level == LogLevel::Error || level == LogLevel::High; }
  std::shared_ptr<LogWriter> currentWriter() EXCLUDES(mutex);

  Mutex mutex;
  std::shared_ptr<LogWriter> writer GUARDED_BY(mutex);
  // Spares a line without a reader its formatting. Outside the instance, so that asking is one
  // load.
  static inline std::atomic<bool> hasWriter{false};
};

}  // namespace pavo
