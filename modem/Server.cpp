#include "Server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "FieldWriter.h"
#include "LocalSocket.h"
#include "ProfileJson.h"

namespace modem {

namespace {

// How long to leave the listening socket alone when the process has run out of descriptors:
// otherwise the same connection would wake the loop without end.
constexpr std::chrono::milliseconds acceptPause(100);

template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

}  // namespace

Server::Server(Options options)
    : modem(std::move(options.modem)),
      control(modem, faults, transcript, *this),
      listenFd(options.listenFd),
      quitAllowed(options.canQuit),
      complain(std::move(options.complain)),
      wake(eventfd(/*initval=*/0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!wake.isOpen()) {
    throw SocketError(std::string("cannot make an eventfd: ") + std::strerror(errno));
  }
}

void Server::run() {
  while (!isStopping) {
    waitForEvents();
    runTimers();
    sweepClosed();
  }
}

void Server::adopt(UniqueFd socket) {
  {
    const std::lock_guard lock(adoptedMutex);
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
    // An earlier connection of this round may have closed this one, by a power cycle.
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
  const std::lock_guard lock(adoptedMutex);
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
    if (connections.size() < connectionsMax) {
      connections.push_back(std::make_unique<Connection>(std::move(socket)));
    } else if (complain) {
      complain("a connection was turned away, there are " + std::to_string(connectionsMax));
    }
  }
}

void Server::serve(Connection& connection) {
  const bool isMore = connection.receive();
  Frame frame;
  while (connection.nextFrame(frame)) {
    onFrame(connection, frame);
  }
  if (!isMore) {
    connection.close(connection.isMidFrame() ? "it ended inside a frame" : "");
  }
}

void Server::sweepClosed() {
  for (const auto& connection : connections) {
    if (connection->isOpen()) {
      continue;
    }
    if (connection->role == Role::Client) {
      modem.removeClient(connection->client);
    }
    if (complain && !connection->closeReason().empty()) {
      const std::string who = connection->role == Role::Client
                                  ? "client " + std::to_string(connection->client)
                                  : "a connection";
      complain(who + " was closed: " + connection->closeReason());
    }
  }
  std::erase_if(connections, [](const auto& connection) { return !connection->isOpen(); });
}

void Server::runTimers() {
  while (!timers.empty() && timers.begin()->first <= Clock::now()) {
    const auto action = std::move(timers.extract(timers.begin()).mapped());
    action();
  }
}

int Server::timeoutMs() const {
  if (timers.empty()) {
    return -1;
  }
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(timers.begin()->first - Clock::now());
  return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

void Server::onFrame(Connection& connection, const Frame& frame) {
  if (connection.role == Role::Unknown) {
    onFirstFrame(connection, frame);
  } else if (connection.role == Role::Client && frame.kind == FrameKind::Request &&
             frame.transaction != 0) {
    onRequest(connection, frame);
  } else if (connection.role == Role::Control && frame.kind == FrameKind::ControlRequest) {
    onControl(connection, frame);
  } else {
    connection.close("a frame of kind " + std::to_string(static_cast<int>(frame.kind)) +
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
  if (frame.kind != FrameKind::Hello || frame.payload.size() != 1) {
    connection.close("the first frame is neither a hello nor a control request");
    return;
  }
  if (!modem.isOn()) {
    connection.close("");
    return;
  }
  connection.role = Role::Client;
  connection.client = ++lastClient;
  transcript.add(Direction::In, connection.client, frame);
  modem.addClient(connection.client, /*sawAbsence=*/frame.payload[0] != 0);
  Frame hello{.kind = FrameKind::Hello, .messageId = 0, .transaction = 0, .payload = {}};
  FieldWriter::appendNumber(hello.payload, modem.bootNumber());
  sendToClient(connection, std::move(hello));
}

void Server::onControl(Connection& connection, const Frame& frame) {
  const std::string_view request(reinterpret_cast<const char*>(frame.payload.data()),
                                 frame.payload.size());
  std::string reply = dumpLine(control.handle(request));
  if (reply.size() > framePayloadBytesMax) {
    // Lists come in pieces; this is an error that quotes what was asked.
    reply = dumpLine({{"ok", false}, {"error", "the request is too long to be answered"}});
  }
  connection.send({.kind = FrameKind::ControlResponse,
                   .messageId = 0,
                   .transaction = frame.transaction,
                   .payload = {reply.begin(), reply.end()}});
}

void Server::onRequest(Connection& connection, const Frame& request) {
  const auto effect = faults.take(request.messageId);
  const std::string fault = effect ? effectName(*effect) : "";
  transcript.add(Direction::In, connection.client, request, fault);
  if (!effect) {
    carryOut(connection.client, request);
    return;
  }
  const auto answerError = [&](const AnswerError& answer) {
    FieldWriter fields;
    fields.result(answer.result, answer.error);
    sendToClient(connection,
                 {.kind = FrameKind::Response,
                  .messageId = request.messageId,
                  .transaction = request.transaction,
                  .payload = fields.take()},
                 fault);
  };
  const auto answerLate = [&](const AnswerLate& late) {
    timers.emplace(Clock::now() + late.delay,
                   [this, client = connection.client, request] { carryOut(client, request); });
  };
  std::visit(Overloaded{answerError, [](const StaySilent&) {}, answerLate}, *effect);
}

void Server::carryOut(ClientNumber client, const Frame& request) {
  Connection* connection = findClient(client);
  if (connection == nullptr) {
    return;  // It left before its delayed request was taken up.
  }
  Outcome outcome = modem.handle(client, request.messageId, request.payload);
  sendToClient(*connection, {.kind = FrameKind::Response,
                             .messageId = request.messageId,
                             .transaction = request.transaction,
                             .payload = std::move(outcome.response)});
  deliver(outcome.indications);
}

void Server::deliver(const std::vector<Indication>& indications) {
  for (const Indication& indication : indications) {
    if (Connection* connection = findClient(indication.client)) {
      sendToClient(*connection, {.kind = FrameKind::Indication,
                                 .messageId = profileChanged,
                                 .transaction = 0,
                                 .payload = indication.payload});
    }
  }
}

void Server::powerCycle(std::chrono::milliseconds offTime) {
  modem.powerOff();
  for (const auto& connection : connections) {
    if (connection->role == Role::Client) {
      connection->close("");
    }
  }
  if (offTime.count() == 0) {
    modem.powerUp();
  } else {
    timers.emplace(Clock::now() + offTime, [this] { modem.powerUp(); });
  }
}

void Server::sendToClient(Connection& connection, Frame frame, std::string fault) {
  connection.send(frame);
  transcript.add(Direction::Out, connection.client, frame, std::move(fault));
}

Connection* Server::findClient(ClientNumber client) {
  const auto found = std::ranges::find_if(connections, [client](const auto& connection) {
    return connection->role == Role::Client && connection->client == client && connection->isOpen();
  });
  return found == connections.end() ? nullptr : found->get();
}

}  // namespace modem
