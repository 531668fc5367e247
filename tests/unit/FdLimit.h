// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Running out of file descriptors, in the child process of a death test.
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

// From now on this process gets just that many more descriptors. Writes "I limited" first: with
// the undefined-behaviour sanitizer a first call of the log writer needs some itself.
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

// Has the library's lines written to the standard error, for the parent to read.
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

// How often the text stands in the output of the child.
inline std::size_t occurrences(const std::string& output, const std::string& text) {
  std::size_t count = 0;
  for (auto at = output.find(text); at != std::string::npos; at = output.find(text, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace pavo::test
