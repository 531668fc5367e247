// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "LogWrapper.h"

#include "LocalLogBuffer.h"
#include "base/Fork.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

namespace pavo {

namespace {

// Removes the writer at process exit, so that the writer can close its channel. A forked child
// shares the channel with its parent and therefore leaves it open.
struct WriterRemover {
  explicit WriterRemover(LogWrapper& wrapper) : wrapper(wrapper) {}
  ~WriterRemover() {
    if (!process.isInForkedChild()) {
      wrapper.setLogWriter(nullptr);
    }
  }
  LogWrapper& wrapper;
  const ProcessMark process;
};

}  // namespace

LogWrapper::LogWrapper() { keepFreeAcrossFork(mutex); }

LogWrapper& LogWrapper::getInstance() {
  // The instance is never destroyed, because the messaging library's threads and late keys log
  // until the process ends.
  static LogWrapper& wrapper = *new LogWrapper;
  static WriterRemover remover(wrapper);
  return wrapper;
}

void LogWrapper::setLogWriter(std::unique_ptr<LogWriter> newWriter) {
  std::shared_ptr<LogWriter> next(std::move(newWriter));
  const MutexLock lock(mutex);
  hasWriter.store(next != nullptr, std::memory_order_relaxed);
  writer.swap(next);
}

std::shared_ptr<LogWriter> LogWrapper::currentWriter(LogLevel level) {
  // The writer's own locks may be held for ever in a forked child, by threads that only its parent
  // has. Only a refused call takes that risk there; the drop of a key and the exit do not.
  if (process.isInForkedChild() && level != LogLevel::Error) {
    return nullptr;
  }
  const MutexLock lock(mutex);
  return writer;
}

void LogWrapper::log(LogLevel level, const char* tag, const char* format, ...) noexcept {
  if (!isLogged(level)) {
    return;
  }
  char text[messageCharsMax + 1];
  std::va_list arguments;
  va_start(arguments, format);
  const int wanted = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  const auto length = static_cast<std::size_t>(
      wanted < 0 ? 0 : (wanted > messageCharsMax ? messageCharsMax : wanted));

  // The handle keeps the writer alive. The mutex is not held while the writer writes.
  if (const std::shared_ptr<LogWriter> sink = getInstance().currentWriter(level)) {
    sink->write(level, tag != nullptr ? tag : "", std::string(text, length));
  }
  if (isKept(level)) {
    std::string message;
    message.reserve(LocalLogBuffer::prefixCharsTypical + length);
    message.assign(text, length);
    LocalLogBuffer::getInstance().addLogWithTimestamp(std::move(message));
  }
}

}  // namespace pavo
