#include "Connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "Poll.h"
#include "Trace.h"
#include "modem/EmbeddedModem.h"

namespace ovix {
namespace {

using modem::FrameKind;
using modem::FrameReader;
using modem::UniqueFd;

std::atomic<bool> waited{false};

constexpr size_t bootNumberBytes = 4;

UniqueFd connectToSocket(const char* path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (std::strlen(path) >= sizeof address.sun_path) {
    trace("OVIX_MODEM names a path too long for a socket");
    return {};
  }
  std::strcpy(address.sun_path, path);
  // Not blocking, so that a modem that stopped accepting holds nobody up.
  UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, /*protocol=*/0));
  if (!fd.isOpen() ||
      ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return {};
  }
  return fd;
}

UniqueFd openSocket() {
  const char* path = std::getenv("OVIX_MODEM");
  const bool named = path != nullptr && *path != '\0';
  UniqueFd fd = named ? connectToSocket(path) : UniqueFd(modem::connectEmbedded());
  if (fd.isOpen()) {
    const int flags = ::fcntl(fd.get(), F_GETFL);
    ::fcntl(fd.get(), F_SETFL, flags & ~O_NONBLOCK);
  }
  return fd;
}

bool sayHello(int fd, bool hasWaited) {
  const auto hello = modem::encodeFrame({FrameKind::Hello,
                                         /*messageId=*/0,
                                         /*transaction=*/0,
                                         {static_cast<uint8_t>(hasWaited ? 1 : 0)}});
  // It fits into the buffer of a fresh socket, or there is nobody to talk to.
  return ::send(fd, hello.data(), hello.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
         static_cast<ssize_t>(hello.size());
}

bool hearHello(Connection& connection, int stopFd) {
  const Deadline deadline = Clock::now() + std::chrono::milliseconds(helloTimeoutMs);
  std::array<uint8_t, 512> bytes;
  modem::Frame frame;
  FrameReader::Status status = FrameReader::Status::NeedMore;
  while ((status = connection.frames.next(frame)) == FrameReader::Status::NeedMore) {
    std::array<pollfd, 2> fds{{{connection.socket.get(), POLLIN, 0}, {stopFd, POLLIN, 0}}};
    if (!pollUntil(fds, deadline) || fds[1].revents != 0) {
      return false;
    }
    const ssize_t count = ::recv(connection.socket.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      return false;
    }
    if (count > 0) {
      connection.frames.append(bytes.data(), static_cast<size_t>(count));
    }
  }
  if (status == FrameReader::Status::Broken) {
    trace("hello refused: %s", connection.frames.reason().c_str());
    return false;
  }
  if (frame.kind != FrameKind::Hello || frame.payload.size() != bootNumberBytes) {
    trace("the modem's first frame is no hello");
    return false;
  }
  return true;
}

}  // namespace

std::optional<Connection> connectToModem(Purpose purpose, int stopFd) {
  const bool says = purpose == Purpose::Client && waited.exchange(false);
  Connection connection;
  connection.socket = openSocket();
  if (connection.socket.isOpen() && sayHello(connection.socket.get(), says) &&
      hearHello(connection, stopFd)) {
    return connection;
  }
  // Who stops waiting has missed nothing.
  std::array<pollfd, 1> stop{{{stopFd, POLLIN, 0}}};
  if (stopFd < 0 || !pollUntil(stop, Clock::now())) {
    waited.store(true);
  }
  return std::nullopt;
}

void noteConnectionLost() { waited.store(true); }

}  // namespace ovix
