// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/server/Server.h"

#include "base/EventFd.h"
#include "modem/common/Json.h"
#include "wire/LocalSocket.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace modem {

namespace {

// How long the listening socket is ignored after the process has run out of descriptors. Otherwise
// the same waiting connection would wake the loop without end.
constexpr std::chrono::milliseconds acceptPause(100);

// Reads what the peer has already sent, because closing a socket with unread data resets the
// connection. The peer is to see an ordinary end.
void closeWithoutReset(const UniqueFd& socket) {
  shutdown(socket.get(), SHUT_RDWR);
  char unread[4096];
  while (recv(socket.get(), unread, sizeof unread, MSG_DONTWAIT) > 0) {
  }
}

}  // namespace

Server::Server(Options options)
    : listenFd(options.listenFd), reportLine(std::move(options.report)), wake(pavo::makeEventFd()) {
  if (!wake.isOpen()) {
    throw Error(std::string("cannot make an eventfd: ") + std::strerror(errno));
  }
}

void Server::run(ClientHandler& clientHandler) {
  handler = &clientHandler;
  while (!isStopping) {
    waitForEvents();
    runTimers();
    closeOverdue();
    sweepClosed();
  }
}

void Server::adopt(UniqueFd socket) {
  {
    const pavo::MutexLock lock(adoptedMutex);
    adopted.push_back(std::move(socket));
  }
  eventfd_write(wake.get(), 1);
}

void Server::stop() {
  const int savedErrno = errno;
  isStopping = true;
  eventfd_write(wake.get(), 1);
  errno = savedErrno;
}

void Server::waitForEvents() {
  const bool isAccepting = listenFd >= 0 && Clock::now() >= acceptAgainAt;
  std::vector<pollfd> polled = {{wake.get(), POLLIN, 0}, {isAccepting ? listenFd : -1, POLLIN, 0}};
  const size_t firstConnection = polled.size();
  for (const auto& connection : connections) {
    const int events = POLLIN | (connection->hasOutput() ? POLLOUT : 0);
    polled.push_back({connection->get(), static_cast<short>(events), 0});
  }
  if (poll(polled.data(), polled.size(), timeoutMs()) <= 0) {
    return;
  }
  for (size_t i = firstConnection; i < polled.size(); ++i) {
    Connection& connection = *connections[i - firstConnection];
    if ((polled[i].revents & POLLOUT) != 0) {
      connection.flush();
    }
    // A power cycle on an earlier connection of this round may have closed this one.
    if ((polled[i].revents & ~POLLOUT) != 0 && connection.isOpen()) {
      serve(connection);
    }
  }
  if (polled[0].revents != 0) {
    drainWake();
  }
  if (polled[1].revents != 0) {
    acceptAll();
  }
}

void Server::drainWake() {
  eventfd_t count = 0;
  eventfd_read(wake.get(), &count);
  const pavo::MutexLock lock(adoptedMutex);
  for (UniqueFd& socket : adopted) {
    connections.push_back(std::make_unique<Connection>(std::move(socket)));
  }
  adopted.clear();
}

void Server::acceptAll() {
  while (true) {
    UniqueFd socket(accept4(listenFd, nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket.isOpen()) {
      if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        acceptAgainAt = Clock::now() + acceptPause;
        timers.emplace(acceptAgainAt, [] {});
      }
      return;
    }
    take(std::move(socket));
  }
}

void Server::take(UniqueFd socket) {
  const auto peer = wire::peerOf(socket.get());
  if (!peer || !wire::mayConnect(*peer, geteuid())) {
    closeWithoutReset(socket);
    reportLimited("a connection was turned away, it is of " +
                  (peer ? "user " + std::to_string(*peer) : "an unknown user"));
  } else if (connections.size() >= connectionsMax) {
    closeWithoutReset(socket);
    reportLimited("a connection was turned away, there are " + std::to_string(connectionsMax));
  } else {
    connections.push_back(
        std::make_unique<Connection>(std::move(socket), Clock::now() + firstFrameTimeout));
  }
}

void Server::serve(Connection& connection) {
  const bool isMore = connection.receive();
  Frame frame;
  while (connection.nextFrame(frame)) {
    onFrame(connection, frame);
  }
  if (!isMore) {
    connection.close(ClosedBy::Client, connection.isMidFrame() ? "it ended inside a frame" : "");
  }
}

void Server::closeOverdue() {
  const Clock::time_point now = Clock::now();
  for (const auto& connection : connections) {
    if (!connection->isOpen() || connection->closeDeadline() > now) {
      continue;
    }
    // The server may have been delayed itself, so it reads once more before it decides.
    serve(*connection);
    if (connection->role == Role::Unknown) {
      connection->close(ClosedBy::Modem, "it has not said what it is");
    }
  }
}

void Server::sweepClosed() {
  for (const auto& connection : connections) {
    if (connection->isOpen()) {
      continue;
    }
    const bool isClient = connection->role == Role::Client;
    if (isClient) {
      handler->onEnd(connection->client, connection->whoClosed());
    }
    if (connection->closeReason().empty()) {
      continue;
    }
    const std::string line =
        (isClient ? "client " + std::to_string(connection->client) : "a connection") +
        " was closed: " + connection->closeReason();
    if (connection->role == Role::Unknown) {
      reportLimited(line);
    } else {
      report(line);
    }
  }
  std::erase_if(connections, [](const auto& connection) { return !connection->isOpen(); });
}

void Server::runTimers() {
  // Timers that the actions add run in the next round, even if they are due now.
  const Clock::time_point now = Clock::now();
  while (!timers.empty() && timers.begin()->first <= now) {
    const auto action = std::move(timers.extract(timers.begin()).mapped());
    action();
  }
}

int Server::timeoutMs() const {
  auto next = timers.empty() ? Clock::time_point::max() : timers.begin()->first;
  for (const auto& connection : connections) {
    next = std::min(next, connection->closeDeadline());
  }
  if (next == Clock::time_point::max()) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

void Server::onFrame(Connection& connection, const Frame& frame) {
  if (connection.role == Role::Unknown) {
    onFirstFrame(connection, frame);
  } else if (connection.role == Role::Client && frame.kind == FrameKind::Request &&
             frame.transaction != 0) {
    handler->onRequest(connection.client, frame);
  } else if (connection.role == Role::Control && frame.kind == FrameKind::ControlRequest) {
    onControl(connection, frame);
  } else {
    connection.close(ClosedBy::Modem, "a frame of kind " +
                                          std::to_string(static_cast<int>(frame.kind)) +
                                          " and transaction " + std::to_string(frame.transaction) +
                                          " has no place here");
  }
}

void Server::onFirstFrame(Connection& connection, const Frame& frame) {
  if (frame.kind == FrameKind::ControlRequest) {
    connection.role = Role::Control;
    onControl(connection, frame);
    return;
  }
  const auto hello =
      frame.kind == FrameKind::Hello ? wire::decodeHello(frame.payload) : std::nullopt;
  if (!hello) {
    connection.close(ClosedBy::Modem, "the first frame is neither a hello nor a control request");
    return;
  }
  connection.role = Role::Client;
  connection.client = ++lastClient;
  handler->onHello(connection.client, *hello);
}

void Server::onControl(Connection& connection, const Frame& frame) {
  const std::string_view request(reinterpret_cast<const char*>(frame.payload.data()),
                                 frame.payload.size());
  std::string reply = dumpLine(handler->onControl(request));
  if (reply.size() > wire::framePayloadBytesMax) {
    // Lists are split into pieces, so only an error that quotes the request can be this long.
    reply = dumpLine({{"ok", false}, {"error", "the request is too long to be answered"}});
  }
  connection.send({.kind = FrameKind::ControlResponse,
                   .messageId = 0,
                   .transaction = frame.transaction,
                   .payload = {reply.begin(), reply.end()}});
}

bool Server::isConnected(ClientNumber client) const { return findClient(client) != nullptr; }

void Server::send(ClientNumber client, const Frame& frame) {
  if (Connection* connection = findClient(client)) {
    connection->send(frame);
  }
}

void Server::hangUp(ClientNumber client) {
  if (Connection* connection = findClient(client)) {
    connection->close(ClosedBy::Modem, "");
  }
}

void Server::hangUpAll() {
  for (const auto& connection : connections) {
    if (connection->role == Role::Client) {
      connection->close(ClosedBy::Modem, "");
    }
  }
}

void Server::after(std::chrono::microseconds delay, std::function<void()> action) {
  timers.emplace(Clock::now() + delay, std::move(action));
}

void Server::report(const std::string& line) {
  if (reportLine) {
    reportLine(line);
  }
}

void Server::reportLimited(const std::string& line) {
  if (const auto written = unknownPeerLines.admit(line)) {
    report(*written);
  }
}

Connection* Server::findClient(ClientNumber client) const {
  const auto found = std::ranges::find_if(connections, [client](const auto& connection) {
    return connection->role == Role::Client && connection->client == client && connection->isOpen();
  });
  return found == connections.end() ? nullptr : found->get();
}

}  // namespace modem
