// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/client/ControlClient.h"

#include "wire/LocalSocket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace modem {

using nlohmann::json;

namespace {

void sendAll(int fd, const std::vector<uint8_t>& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t count = send(fd, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
    if (count < 0 && errno != EINTR) {
      throw wire::SocketError(std::string("cannot send to the modem: ") + std::strerror(errno));
    }
    done += count > 0 ? static_cast<size_t>(count) : 0;
  }
}

void receiveSome(int fd, FrameReader& reader) {
  std::array<uint8_t, 64 << 10> bytes;
  const ssize_t count = recv(fd, bytes.data(), bytes.size(), /*flags=*/0);
  if (count == 0) {
    throw wire::SocketError("the modem closed the control connection");
  }
  if (count < 0 && errno != EINTR) {
    throw wire::SocketError(std::string("cannot receive from the modem: ") + std::strerror(errno));
  }
  reader.append(bytes.data(), count > 0 ? static_cast<size_t>(count) : 0);
}

}  // namespace

ControlClient::ControlClient(const std::string& socketPath)
    : fd(wire::connectToSocket(socketPath)) {}

ControlClient::ControlClient(int connectedSocket) : fd(connectedSocket) {}

json ControlClient::call(const std::string& verb, const json& args) {
  json request = args;
  request["verb"] = verb;
  json reply = callOnce(request);
  while (reply.contains("more")) {
    const std::string list = reply["more"]["list"];
    request["since"] = reply["more"]["since"];
    json rest = callOnce(request);
    json elements = std::move(reply[list]);
    for (json& element : rest[list]) {
      elements.push_back(std::move(element));
    }
    reply = std::move(rest);
    reply[list] = std::move(elements);
  }
  return reply;
}

json ControlClient::callOnce(const json& request) {
  const std::string text = request.dump();
  sendAll(fd.get(), wire::encodeFrame({.kind = FrameKind::ControlRequest,
                                       .messageId = 0,
                                       .transaction = ++lastTransaction,
                                       .payload = {text.begin(), text.end()}}));
  Frame frame;
  while (true) {
    const FrameReader::Status status = reader.next(frame);
    if (status == FrameReader::Status::Broken) {
      throw wire::SocketError("the modem's answer is broken: " + reader.reason());
    }
    if (status == FrameReader::Status::NeedMore) {
      receiveSome(fd.get(), reader);
    } else if (frame.transaction == lastTransaction) {
      return json::parse(frame.payload);
    }
  }
}

}  // namespace modem
