#include "session/Patience.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "Output.h"

namespace pavoctl {
namespace {

constexpr int forever = -1;

// Of the session that outlasts a modem; -1 when there is none.
std::atomic<int> sessionSignalFd{-1};

// Those that began at once and live, one inside the other.
int depth = 0;

int makeEventFd() {
  const int fd = ::eventfd(/*initval=*/0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (fd < 0) {
    throw Failure("cannot create an eventfd: " + std::string(std::strerror(errno)));
  }
  return fd;
}

// Which of the two is readable: true for the first. An fd of -1 is never.
bool isFirstReadable(int first, int second) {
  std::array<pollfd, 2> fds{pollfd{first, POLLIN, 0}, pollfd{second, POLLIN, 0}};
  while (::poll(fds.data(), fds.size(), forever) < 0) {
  }
  return fds[0].revents != 0;
}

}  // namespace

Patience::Patience(std::chrono::milliseconds limitFromNow, std::string text)
    : Patience(limitFromNow, [text = std::move(text)] { return text; }) {}

Patience::Patience(std::chrono::milliseconds limitFromNow, std::function<std::string()> textThen)
    : Patience(/*startFd=*/-1, limitFromNow, std::move(textThen), exitFailed) {}

Patience::Patience(const StopSignal& stop, std::chrono::milliseconds limitFromThen)
    : Patience(stop.fd(), limitFromThen, /*complaint=*/nullptr, exitDone) {}

Patience::Patience(int fd, std::chrono::milliseconds time, std::function<std::string()> text,
                   ExitStatus exitStatus)
    : isOutermost(fd >= 0 || depth == 0),
      startFd(fd),
      limit(time),
      complaint(std::move(text)),
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

void Patience::outlast(const StopSignal& stop) { sessionSignalFd = stop.fd(); }

void Patience::limitExit(std::chrono::milliseconds limit, ExitStatus status) {
  std::thread([limit, status] {
    std::this_thread::sleep_for(limit);
    ::_exit(status);
  }).detach();
}

void Patience::run() {
  if (startFd >= 0 && isFirstReadable(doneFd, startFd)) {
    return;
  }
  if (isDoneWithin(static_cast<int>(limit.count()))) {
    return;
  }
  const int signalFd = startFd < 0 ? sessionSignalFd.load() : -1;
  const bool isInSession = signalFd >= 0;
  if (isInSession) {
    complain(complaint() + "; still waiting, Ctrl-C ends the session");
    if (isFirstReadable(doneFd, signalFd)) {
      return;
    }
  }
  complainAndExit(complaint && !isInSession ? complaint() : "", status);
}

bool Patience::isDoneWithin(int timeoutMs) const {
  pollfd done{doneFd, POLLIN, 0};
  int count = 0;
  while ((count = ::poll(&done, 1, timeoutMs)) < 0) {
  }
  return count > 0;
}

}  // namespace pavoctl
