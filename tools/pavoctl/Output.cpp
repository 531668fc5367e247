// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Output.h"

#include "Errors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

namespace pavoctl {
namespace {

// Of whoever complains.
std::mutex complaints;

void writeComplaint(std::string_view text) {
  std::fprintf(stderr, "pavoctl: %.*s\n", static_cast<int>(text.size()), text.data());
}

bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) >= 0; }

}  // namespace

Output::Output() {
  const bool hasOutput = isOpen(STDOUT_FILENO);
  // With a standard descriptor closed, the next socket would take its number and somebody's
  // messages would go to the modem.
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (!isOpen(standard) && ::open("/dev/null", O_RDWR) != standard) {
      throw Failure("cannot open /dev/null: " + std::string(std::strerror(errno)));
    }
  }
  if (!hasOutput) {
    return;
  }
  fd = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (fd < 0 || null < 0 || ::dup2(null, STDOUT_FILENO) < 0) {
    throw Failure("cannot set up the standard output: " + std::string(std::strerror(errno)));
  }
  ::close(null);
}

Output::~Output() {
  if (fd >= 0) {
    ::close(fd);
  }
}

void Output::line(std::string_view text) const { write(std::string(text) + '\n'); }

void Output::write(std::string_view text) const {
  if (fd < 0) {
    throw OutputFailure("cannot write the output: it is closed");
  }
  while (!text.empty()) {
    const ssize_t written = ::write(fd, text.data(), text.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written < 0) {
      throw OutputFailure("cannot write the output: " + std::string(std::strerror(errno)));
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void complain(std::string_view text) {
  const std::lock_guard lock(complaints);
  writeComplaint(text);
}

void complainAndExit(std::string_view text, int status) {
  // Never unlocked: a process may take a while to end, and its other threads go on meanwhile.
  complaints.lock();
  if (!text.empty()) {
    writeComplaint(text);
  }
  // Not exit: the library's destructors would wait for what the tool has just given up on.
  ::_exit(status);
}

}  // namespace pavoctl
