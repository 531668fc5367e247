// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Handshake.h"

#include "DebugLine.h"
#include "base/Poll.h"
#include "wire/LocalSocket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>

namespace ovix {

namespace {

using wire::FrameKind;
using wire::FrameReader;

bool sendHello(int fd, wire::Hello hello) {
  const auto frame = wire::encodeFrame(
      {FrameKind::Hello, /*messageId=*/0, /*transaction=*/0, wire::encodeHello(hello)});
  // The buffer of a fresh socket has room for the hello. So the send fails only when the peer is
  // gone.
  return ::send(fd, frame.data(), frame.size(), MSG_NOSIGNAL | MSG_DONTWAIT) ==
         static_cast<ssize_t>(frame.size());
}

// Receives the first frame. Returns false when none comes.
bool receiveFrame(int fd, FrameReader& frames, int stopFd, wire::Frame& frame) {
  const pavo::Deadline deadline = pavo::Clock::now() + std::chrono::milliseconds(helloTimeoutMs);
  std::array<uint8_t, 512> bytes;
  FrameReader::Status status = FrameReader::Status::NeedMore;
  while ((status = frames.next(frame)) == FrameReader::Status::NeedMore) {
    std::array<pollfd, 2> fds{{{fd, POLLIN, 0}, {stopFd, POLLIN, 0}}};
    if (!pavo::pollUntil(fds, deadline) || fds[1].revents != 0) {
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
    writeDebugLine("hello refused: %s", frames.reason().c_str());
  }
  return status == FrameReader::Status::Ready;
}

}  // namespace

pavo::UniqueFd openSocket(const std::string& path) {
  if (path.size() > wire::socketPathBytesMax) {
    writeDebugLine("OVIX_MODEM names a path too long for a socket");
    return {};
  }
  try {
    // The socket does not block, so that a modem that stopped accepting delays no caller.
    return wire::connectToSocket(path, /*isBlocking=*/false);
  } catch (const wire::SocketError&) {
    return {};
  }
}

std::optional<wire::HelloAnswer> exchangeHellos(int fd, wire::Hello hello, FrameReader& frames,
                                                int stopFd) {
  wire::Frame frame;
  if (!sendHello(fd, hello) || !receiveFrame(fd, frames, stopFd, frame)) {
    return std::nullopt;
  }
  const auto answer =
      frame.kind == FrameKind::Hello ? wire::decodeHelloAnswer(frame.payload) : std::nullopt;
  if (!answer) {
    writeDebugLine("the modem's first frame is no hello");
  }
  return answer;
}

}  // namespace ovix
