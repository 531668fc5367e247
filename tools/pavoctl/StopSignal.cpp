// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "StopSignal.h"

#include "Errors.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

namespace pavoctl {
namespace {

bool isStandardInputPipe() {
  struct stat status {};
  return ::fstat(STDIN_FILENO, &status) == 0 &&
         (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

// Returns false at the end of the input.
bool discardInput() {
  std::array<char, 4096> buffer;
  const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  return got > 0 || (got < 0 && (errno == EINTR || errno == EAGAIN));
}

}  // namespace

StopSignal::StopSignal() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    sigaddset(&signals, signal);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  signalFd = ::signalfd(/*fd=*/-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
  if (signalFd < 0) {
    throw Failure("cannot wait for signals: " + std::string(std::strerror(errno)));
  }
}

StopSignal::~StopSignal() { ::close(signalFd); }

void StopSignal::wait() {
  std::array<pollfd, 2> fds{pollfd{signalFd, POLLIN, 0},
                            pollfd{isStandardInputPipe() ? STDIN_FILENO : -1, POLLIN, 0}};
  while (true) {
    if (::poll(fds.data(), fds.size(), /*timeout=*/-1) < 0) {
      continue;
    }
    if (fds[0].revents != 0 || (fds[1].revents != 0 && !discardInput())) {
      return;
    }
  }
}

bool StopSignal::waitFor(int wakeFd, int timeoutMs) const {
  std::array<pollfd, 2> fds{pollfd{signalFd, POLLIN, 0}, pollfd{wakeFd, POLLIN, 0}};
  return ::poll(fds.data(), fds.size(), timeoutMs) > 0 && fds[0].revents != 0;
}

bool StopSignal::hasCome() const { return waitFor(/*wakeFd=*/-1, /*timeoutMs=*/0); }

int StopSignal::take() const {
  signalfd_siginfo info;
  return ::read(signalFd, &info, sizeof info) == sizeof info ? static_cast<int>(info.ssi_signo) : 0;
}

}  // namespace pavoctl
