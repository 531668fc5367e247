// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "RawModem.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace pavo::test {
namespace {

int listenAt(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    throw std::invalid_argument("socket path too long: " + path);
  }
  std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0 || ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(fd, /*backlog=*/16) != 0) {
    throw std::runtime_error("cannot listen at " + path);
  }
  return fd;
}

uint32_t numberAt(const Bytes& bytes, size_t at, size_t width) {
  uint32_t number = 0;
  for (size_t i = 0; i < width; ++i) {
    number |= uint32_t{bytes[at + i]} << (8 * i);
  }
  return number;
}

}  // namespace

RawPeer::~RawPeer() { ::close(fd); }

bool RawPeer::send(const Bytes& bytes) {
  return ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool RawPeer::respond(const RawFrame& request, const Bytes& payload) {
  return send(rawFrame(rawResponse, request.messageId, request.transaction, payload));
}

bool RawPeer::indicate(unsigned messageId, const Bytes& payload) {
  return send(rawFrame(rawIndication, messageId, /*transaction=*/0, payload));
}

void RawPeer::hangUp() { ::shutdown(fd, SHUT_RDWR); }

bool RawPeer::read(Bytes& bytes) {
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t count = ::recv(fd, bytes.data() + filled, bytes.size() - filled, 0);
    if (count == 0 || (count < 0 && errno != EINTR)) {
      return false;
    }
    filled += count > 0 ? static_cast<size_t>(count) : 0;
  }
  return true;
}

bool RawPeer::receive(RawFrame& frame) {
  Bytes header(12);
  if (!read(header)) {
    return false;
  }
  frame.kind = header[4];
  frame.messageId = numberAt(header, 6, 2);
  frame.transaction = numberAt(header, 8, 4);
  frame.payload.resize(numberAt(header, 0, 4));
  return read(frame.payload);
}

void RawModem::succeed(RawPeer& peer, const RawFrame& request) { peer.respond(request, success()); }

RawModem::RawModem(const std::string& socketPath, Handler requestHandler, const Bytes& answer)
    : path(socketPath),
      handler(std::move(requestHandler)),
      helloAnswer(answer),
      listener(listenAt(path)) {
  accepter = std::thread([this] { acceptAll(); });
}

RawModem::~RawModem() {
  // After the shutdown of the listener, accept() fails.
  ::shutdown(listener, SHUT_RDWR);
  accepter.join();
  for (const auto& peer : peers) {
    peer->hangUp();
  }
  for (auto& thread : threads) {
    thread.join();
  }
  ::close(listener);
  ::unlink(path.c_str());
}

void RawModem::acceptAll() {
  while (true) {
    const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
      return;
    }
    const auto peer = std::make_shared<RawPeer>(fd);
    const std::lock_guard lock(mutex);
    peers.push_back(peer);
    threads.emplace_back([this, peer] { serve(peer); });
  }
}

void RawModem::serve(const std::shared_ptr<RawPeer>& peer) {
  RawFrame frame;
  if (!peer->receive(frame)) {
    return;
  }
  {
    const std::lock_guard lock(mutex);
    said.push_back(frame.payload);
    last = peer;
  }
  peer->send(helloAnswer);
  while (peer->receive(frame)) {
    {
      const std::lock_guard lock(mutex);
      seen.push_back(frame);
    }
    handler(*peer, frame);
  }
}

std::vector<RawFrame> RawModem::requests() {
  const std::lock_guard lock(mutex);
  return seen;
}

std::vector<Bytes> RawModem::hellos() {
  const std::lock_guard lock(mutex);
  return said;
}

std::shared_ptr<RawPeer> RawModem::lastPeer() {
  const std::lock_guard lock(mutex);
  return last;
}

}  // namespace pavo::test
