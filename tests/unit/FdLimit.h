// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header makes the child process of a death test run out of file descriptors.
#pragma once

#include "LogWrapper.h"
#include "LogWriter.h"
#include "Sequence.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace pavo::test {

// Limits this process to that many more descriptors. It writes "I limited" first, because with the
// undefined-behaviour sanitizer the first call of the log writer needs some descriptors itself.
inline void allowMoreFds(int count) {
  LogWrapper::log(LogLevel::Info, logTag, "limited");
  std::vector<int> opened;
  for (int i = 0; i <= count; ++i) {
    opened.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC));
  }
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = static_cast<rlim_t>(opened.back());
  for (const int fd : opened) {
    close(fd);
  }
  setrlimit(RLIMIT_NOFILE, &limit);
}

// Makes the library write its lines to the standard error, for the parent to read.
inline void logToStandardError() {
  class Writer : public LogWriter {
   public:
    void write(LogLevel level, std::string tag, std::string message) override {
      const char letter = "VDIEFH"[static_cast<int>(level)];
      std::fprintf(stderr, "%s\n", described(letter, tag, message).c_str());
    }
    int convertPrio(LogLevel level) override { return static_cast<int>(level); }
  };
  LogWrapper::getInstance().setLogWriter(std::make_unique<Writer>());
}

// Returns how often the text occurs in the output of the child.
inline std::size_t occurrences(const std::string& output, const std::string& text) {
  std::size_t count = 0;
  for (auto at = output.find(text); at != std::string::npos; at = output.find(text, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace pavo::test
