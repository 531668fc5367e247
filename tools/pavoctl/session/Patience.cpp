// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "session/Patience.h"

#include "Output.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace pavoctl {
namespace {

constexpr int forever = -1;

// The signals of the session that outlasts a modem; -1 when there is none.
std::atomic<int> sessionSignalFd{-1};
// The signals of the verb that a signal may end while it waits; -1 when there is none.
std::atomic<int> verbSignalFd{-1};

// The nesting depth: the number of Patience objects alive that began without a start event.
int depth = 0;

int makeEventFd() {
  const int fd = ::eventfd(/*initval=*/0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (fd < 0) {
    throw Failure("cannot create an eventfd: " + std::string(std::strerror(errno)));
  }
  return fd;
}

enum class Ready { first, second, none };

// Returns which descriptor became readable within timeoutMs. A descriptor of -1 never does.
Ready waitForEither(int first, int second, int timeoutMs = forever) {
  std::array<pollfd, 2> fds{pollfd{first, POLLIN, 0}, pollfd{second, POLLIN, 0}};
  while (::poll(fds.data(), fds.size(), timeoutMs) < 0) {
  }
  return fds[0].revents != 0 ? Ready::first : fds[1].revents != 0 ? Ready::second : Ready::none;
}

}  // namespace

Patience::Patience(std::chrono::milliseconds limitFromNow, std::string text,
                   std::string interruptionText)
    : Patience(
          /*startFd=*/-1, limitFromNow, [text = std::move(text)] { return text; },
          std::move(interruptionText), exitFailed) {}

Patience::Patience(std::chrono::milliseconds limitFromNow, std::function<std::string()> textThen)
    : Patience(/*startFd=*/-1, limitFromNow, std::move(textThen), /*interruption=*/"", exitFailed) {
}

Patience::Patience(const StopSignal& stop, std::chrono::milliseconds limitFromThen)
    : Patience(stop.fd(), limitFromThen, /*complaint=*/nullptr, /*interruption=*/"", exitDone) {}

Patience::Patience(int fd, std::chrono::milliseconds time, std::function<std::string()> text,
                   std::string interruptionText, ExitStatus exitStatus)
    : isOutermost(fd >= 0 || depth == 0),
      startFd(fd),
      limit(time),
      complaint(std::move(text)),
      interruption(std::move(interruptionText)),
      status(exitStatus),
      doneFd(makeEventFd()) {
  if (startFd < 0) {
    ++depth;
  }
  if (isOutermost) {
    thread = std::thread([this] { run(); });
  }
}

Patience::~Patience() {
  if (startFd < 0) {
    --depth;
  }
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(doneFd, &one, sizeof one);
  if (thread.joinable()) {
    thread.join();
  }
  ::close(doneFd);
}

void Patience::obey(const StopSignal& stop) { verbSignalFd = stop.fd(); }

void Patience::outlast(const StopSignal& stop) { sessionSignalFd = stop.fd(); }

void Patience::limitExit(std::chrono::milliseconds limit, ExitStatus status) {
  std::thread([limit, status] {
    std::this_thread::sleep_for(limit);
    ::_exit(status);
  }).detach();
}

void Patience::run() {
  if (startFd >= 0 && waitForEither(doneFd, startFd) == Ready::first) {
    return;
  }
  const int signalFd = interruption.empty() ? -1 : verbSignalFd.load();
  switch (waitForEither(doneFd, signalFd, static_cast<int>(limit.count()))) {
    case Ready::first:
      return;
    case Ready::second:
      complainAndExit(interruption, status);
    case Ready::none:
      runOut();
  }
}

void Patience::runOut() const {
  const int signalFd = startFd < 0 ? sessionSignalFd.load() : -1;
  if (signalFd < 0) {
    complainAndExit(complaint ? complaint() : "", status);
  }
  complain(complaint() + "; still waiting, Ctrl-C ends the session");
  if (waitForEither(doneFd, signalFd) == Ready::second) {
    complainAndExit("", status);
  }
}

}  // namespace pavoctl
