// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/trace/Replay.h"

#include "modem/core/FieldWriter.h"
#include "modem/core/Messages.h"
#include "modem/core/ProfileJson.h"

#include <algorithm>
#include <utility>

namespace modem {

using nlohmann::json;

namespace {

// A message that followed its request within this time is sent without a delay.
constexpr std::chrono::milliseconds atOnce{2};

std::string described(const Frame& request) {
  return messageName(MessageId{request.messageId}) + " " + meaningOf(Direction::In, request);
}

bool isSame(const Frame& request, const TraceExchange& exchange) {
  return request.messageId == exchange.said.frame.messageId &&
         request.payload == exchange.said.frame.payload;
}

}  // namespace

Replay::Replay(std::vector<TraceSession> traceSessions, ClientLink& clientLink)
    : link(clientLink), sessions(std::move(traceSessions)) {
  for (const TraceSession& session : sessions) {
    all += session.exchanges.size() - 1;
  }
}

const TraceSession* Replay::nextSession(Hello hello) {
  for (size_t& at = lastSession[hello.purpose]; at < sessions.size();) {
    const TraceSession& session = sessions[at++];
    if (session.hello.purpose == hello.purpose) {
      return &session;
    }
  }
  return nullptr;
}

void Replay::onHello(ClientNumber number, Hello hello) {
  const TraceSession* session = nextSession(hello);
  Client& client = clients[number];
  client.session = session;
  if (session == nullptr) {
    // A client may look for the service more often than in the trace.
    if (hello.purpose == Purpose::Open) {
      link.report("client " + std::to_string(number) +
                  ": the trace has no further client; its requests are refused");
    }
    link.send(number,
              {FrameKind::Hello, 0, 0, wire::encodeHelloAnswer({/*boot=*/1, /*refusal=*/0})});
    return;
  }
  if (session->hello.sawAbsence != hello.sawAbsence) {
    link.report("client " + std::to_string(number) + ": the hello differs from the trace, line " +
                std::to_string(session->exchanges[0].said.line) +
                ", in whether the modem was absent; answered as in the trace");
  }
  client.isServed.assign(session->exchanges.size(), false);
  client.isServed[0] = true;
  release(number, session->exchanges[0]);
}

void Replay::onRequest(ClientNumber number, const Frame& request) {
  Client& client = clients[number];
  if (client.session == nullptr) {
    ++differing;
    refuse(number, request);
    return;
  }
  const auto& exchanges = client.session->exchanges;
  const size_t found = findExchange(client, request);
  if (found != client.next || found == exchanges.size()) {
    ++differing;
    reportDifference(number, client, request, found);
  }
  if (found == exchanges.size()) {
    refuse(number, request);
    return;
  }
  ++served;
  client.isServed[found] = true;
  client.next = std::max(client.next, found + 1);
  client.transactions[exchanges[found].said.frame.transaction] = request.transaction;
  release(number, exchanges[found]);
}

size_t Replay::findExchange(const Client& client, const Frame& request) const {
  const auto& exchanges = client.session->exchanges;
  const auto isIt = [&](size_t at) {
    return !client.isServed[at] && isSame(request, exchanges[at]);
  };
  for (size_t at = client.next; at < exchanges.size(); ++at) {
    if (isIt(at)) {
      return at;
    }
  }
  for (size_t at = 1; at < client.next; ++at) {
    if (isIt(at)) {
      return at;
    }
  }
  return exchanges.size();
}

void Replay::reportDifference(ClientNumber number, const Client& client, const Frame& request,
                              size_t found) {
  const auto& exchanges = client.session->exchanges;
  std::string line = "client " + std::to_string(number) + ": the request " + described(request) +
                     " differs from the trace, which has ";
  line += client.next < exchanges.size()
              ? described(exchanges[client.next].said.frame) + " in line " +
                    std::to_string(exchanges[client.next].said.line)
              : "no further request";
  line += found < exchanges.size()
              ? "; answered as in line " + std::to_string(exchanges[found].said.line)
              : "; refused";
  link.report(line);
}

void Replay::refuse(ClientNumber number, const Frame& request) {
  FieldWriter fields;
  fields.result(resultFailure, static_cast<int32_t>(ErrorCode::Internal));
  link.send(number, {FrameKind::Response, request.messageId, request.transaction, fields.take()});
}

void Replay::release(ClientNumber number, const TraceExchange& exchange) {
  // What precedes this request in the trace is sent before its answer.
  sendDue(number, Clock::time_point::max());
  const Clock::time_point now = Clock::now();
  for (const TraceEvent& event : exchange.sent) {
    const auto pause = event.time - exchange.said.time;
    clients[number].due.push_back({pause < atOnce ? now : now + pause, &event});
    if (pause >= atOnce) {
      link.after(pause, [this, number] { sendDue(number, Clock::now()); });
    }
  }
  sendDue(number, now);
}

void Replay::sendDue(ClientNumber number, Clock::time_point until) {
  const auto found = clients.find(number);
  if (found == clients.end()) {
    return;
  }
  Client& client = found->second;
  while (!client.due.empty() && client.due.front().time <= until) {
    const TraceEvent* event = client.due.front().event;
    client.due.pop_front();
    send(number, client, *event);
  }
}

void Replay::send(ClientNumber number, Client& client, const TraceEvent& event) {
  if (event.isEnd) {
    link.hangUp(number);
    return;
  }
  Frame frame = event.frame;
  if (frame.transaction != 0) {
    const auto asked = client.transactions.find(frame.transaction);
    if (asked == client.transactions.end()) {
      return;  // The trace answers a request that this client has not made.
    }
    frame.transaction = asked->second;
  }
  link.send(number, frame);
}

void Replay::onEnd(ClientNumber number, ClosedBy) { clients.erase(number); }

json Replay::onControl(std::string_view text) {
  const json request = json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
  const std::string verb = request.is_object() ? request.value("verb", json()).dump() : "";
  if (verb == "\"quit\"") {
    link.stop();
  } else if (verb != "\"show\"") {
    return {{"ok", false}, {"error", "a replay knows the verbs show and quit"}};
  }
  return {{"ok", true},
          {"replay", {{"requests", all}, {"served", served}, {"differing", differing}}}};
}

}  // namespace modem
