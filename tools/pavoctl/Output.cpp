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

// Serialises the tool's lines on standard error.
std::mutex complaints;

void writeComplaint(std::string_view text) {
  std::fprintf(stderr, "pavoctl: %.*s\n", static_cast<int>(text.size()), text.data());
}

bool isOpen(int fd) { return ::fcntl(fd, F_GETFD) >= 0; }

}  // namespace

Output::Output() {
  const bool hasOutput = isOpen(STDOUT_FILENO);
  // While a standard descriptor is closed, the next socket would take its number. Text that some
  // code writes to that descriptor would then go to the modem.
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
  // The lock is never released: the process may take a while to end, and its other threads must not
  // write meanwhile.
  complaints.lock();
  if (!text.empty()) {
    writeComplaint(text);
  }
  // exit() would run the library's destructors, and they would wait for the call that the tool has
  // just given up.
  ::_exit(status);
}

}  // namespace pavoctl
