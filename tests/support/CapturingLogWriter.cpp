// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CapturingLogWriter.h"

#include "LogWrapper.h"
#include "LogWriter.h"

#include <mutex>
#include <utility>

namespace pavo::test {

// The sink shares these lines: another thread may still be writing through it when it is
// uninstalled.
struct CapturingLogWriter::Lines {
  std::mutex mutex;
  std::vector<CapturedLine> lines;
};

class CapturingLogWriter::Sink : public LogWriter {
 public:
  explicit Sink(std::shared_ptr<Lines> target) : captured(std::move(target)) {}

  void write(LogLevel level, std::string tag, std::string message) override {
    const std::lock_guard lock(captured->mutex);
    captured->lines.push_back({level, std::move(tag), std::move(message)});
  }

  int convertPrio(LogLevel level) override { return static_cast<int>(level); }

 private:
  const std::shared_ptr<Lines> captured;
};

CapturingLogWriter::CapturingLogWriter() : captured(std::make_shared<Lines>()) {
  LogWrapper::getInstance().setLogWriter(std::make_unique<Sink>(captured));
}

CapturingLogWriter::~CapturingLogWriter() { LogWrapper::getInstance().setLogWriter(nullptr); }

std::vector<CapturedLine> CapturingLogWriter::lines() const {
  const std::lock_guard lock(captured->mutex);
  return captured->lines;
}

std::vector<std::string> CapturingLogWriter::messages() const {
  std::vector<std::string> texts;
  for (CapturedLine& line : lines()) {
    texts.push_back(std::move(line.message));
  }
  return texts;
}

std::vector<std::string> CapturingLogWriter::messages(LogLevel level) const {
  std::vector<std::string> texts;
  for (CapturedLine& line : lines()) {
    if (line.level == level) {
      texts.push_back(std::move(line.message));
    }
  }
  return texts;
}

void CapturingLogWriter::clear() {
  const std::lock_guard lock(captured->mutex);
  captured->lines.clear();
}

}  // namespace pavo::test
