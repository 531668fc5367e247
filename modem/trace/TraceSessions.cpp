// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/trace/TraceSessions.h"

#include <map>
#include <utility>

namespace modem {

namespace {

[[noreturn]] void refuse(const std::string& path, const TraceEvent& event, const char* what) {
  throw Error(path + ": line " + std::to_string(event.line) + ": " + what);
}

TraceSession newSession(const std::string& path, const TraceEvent& event) {
  const auto hello = wire::decodeHello(event.frame.payload);
  if (event.isEnd || event.direction != Direction::In || event.frame.kind != FrameKind::Hello) {
    refuse(path, event, "this client has said no hello yet");
  }
  if (!hello) {
    refuse(path, event, "this is no hello");
  }
  return {*hello, {{event}}};
}

void append(const std::string& path, TraceSession& session, const TraceEvent& event) {
  if (event.direction == Direction::Out) {
    session.exchanges.back().sent.push_back(event);
  } else if (event.isEnd) {
    return;  // The client that is served decides when it leaves.
  } else if (event.frame.kind == FrameKind::Request) {
    session.exchanges.push_back({event});
  } else {
    refuse(path, event, "a client says hello once, and then sends requests");
  }
}

}  // namespace

std::vector<TraceSession> readTraceSessions(const std::string& path) {
  std::vector<TraceSession> sessions;
  std::map<ClientNumber, size_t> ofClient;
  for (const TraceEvent& event : readTrace(path)) {
    const auto [place, isNew] = ofClient.emplace(event.client, sessions.size());
    if (isNew) {
      sessions.push_back(newSession(path, event));
    } else {
      append(path, sessions[place->second], event);
    }
  }
  return sessions;
}

}  // namespace modem
