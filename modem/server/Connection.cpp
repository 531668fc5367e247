// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/server/Connection.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace modem {

bool Connection::receive() {
  std::array<uint8_t, 64 << 10> bytes;
  const ssize_t count = recv(fd.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
  if (count > 0) {
    reader.append(bytes.data(), static_cast<size_t>(count));
    return true;
  }
  return count < 0 && (errno == EAGAIN || errno == EINTR);
}

bool Connection::nextFrame(Frame& frame) {
  if (!isOpen()) {
    return false;
  }
  const FrameReader::Status status = reader.next(frame);
  if (status == FrameReader::Status::Broken) {
    close(ClosedBy::Modem, "broken frame: " + reader.reason());
  }
  return status == FrameReader::Status::Ready;
}

void Connection::send(const Frame& frame) {
  if (!isOpen()) {
    return;
  }
  const std::vector<uint8_t> bytes = wire::encodeFrame(frame);
  output.insert(output.end(), bytes.begin(), bytes.end());
  flush();
  if (output.size() - outputDone > outputBytesMax) {
    close(ClosedBy::Modem, "it does not read what it is sent");
  }
}

void Connection::flush() {
  while (isOpen() && hasOutput()) {
    const ssize_t count = ::send(fd.get(), output.data() + outputDone, output.size() - outputDone,
                                 MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count >= 0) {
      outputDone += static_cast<size_t>(count);
    } else if (errno == EAGAIN) {
      break;
    } else if (errno == EPIPE || errno == ECONNRESET) {
      close(ClosedBy::Client, "");  // The peer has left, which is not an error.
    } else if (errno != EINTR) {
      close(ClosedBy::Client, std::string("cannot send: ") + std::strerror(errno));
    }
  }
  // The rest is moved to the front only when more than half has been sent. Moving it at each send
  // would copy a slow reader's backlog over and over.
  if (!hasOutput()) {
    output.clear();
    outputDone = 0;
  } else if (outputDone > output.size() / 2) {
    output.erase(output.begin(), output.begin() + static_cast<std::ptrdiff_t>(outputDone));
    outputDone = 0;
  }
}

void Connection::close(ClosedBy byWhom, std::string why) {
  if (isOpen()) {
    closedBy = byWhom;
    reason = std::move(why);
    fd.reset();
  }
}

}  // namespace modem
