#include "Greeting.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "Trace.h"
#include "base/Poll.h"

namespace ovix {
namespace {

using modem::FrameKind;
using modem::FrameReader;

bool sayHello(int fd, modem::Hello hello) {
  const auto frame = modem::encodeFrame(
      {FrameKind::Hello, /*messageId=*/0, /*transaction=*/0, modem::encodeHello(hello)});
  // It fits into the buffer of a fresh socket, or there is nobody to talk to.
  return ::send(fd, frame.data(), frame.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
         static_cast<ssize_t>(frame.size());
}

// The first frame; false when none comes.
bool hearFrame(int fd, FrameReader& frames, int stopFd, modem::Frame& frame) {
  const Deadline deadline = Clock::now() + std::chrono::milliseconds(helloTimeoutMs);
  std::array<uint8_t, 512> bytes;
  FrameReader::Status status = FrameReader::Status::NeedMore;
  while ((status = frames.next(frame)) == FrameReader::Status::NeedMore) {
    std::array<pollfd, 2> fds{{{fd, POLLIN, 0}, {stopFd, POLLIN, 0}}};
    if (!pollUntil(fds, deadline) || fds[1].revents != 0) {
      return false;
    }
    const ssize_t count = ::recv(fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      return false;
    }
    if (count > 0) {
      frames.append(bytes.data(), static_cast<size_t>(count));
    }
  }
  if (status == FrameReader::Status::Broken) {
    trace("hello refused: %s", frames.reason().c_str());
  }
  return status == FrameReader::Status::Ready;
}

}  // namespace

modem::UniqueFd connectToSocket(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    trace("OVIX_MODEM names a path too long for a socket");
    return {};
  }
  std::strcpy(address.sun_path, path.c_str());
  // Not blocking, so that a modem that stopped accepting holds nobody up.
  modem::UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, /*protocol=*/0));
  if (!fd.isOpen() ||
      ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return {};
  }
  return fd;
}

std::optional<modem::HelloAnswer> greet(int fd, modem::Hello hello, FrameReader& frames,
                                        int stopFd) {
  modem::Frame frame;
  if (!sayHello(fd, hello) || !hearFrame(fd, frames, stopFd, frame)) {
    return std::nullopt;
  }
  const auto answer =
      frame.kind == FrameKind::Hello ? modem::decodeHelloAnswer(frame.payload) : std::nullopt;
  if (!answer) {
    trace("the modem's first frame is no hello");
  }
  return answer;
}

}  // namespace ovix
