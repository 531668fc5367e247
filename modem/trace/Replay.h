// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Serves a trace again: a client that makes the same requests gets the same answers and
// indications, in the same order and with the same delays.
//
// The nth connection for a purpose is served as the nth such connection of the trace. A request
// that is not the next one of the trace is reported. If the trace has it elsewhere, it is served
// from there; otherwise it is refused, and the position in the trace does not change. Messages that
// are still due when the next request arrives are sent first.
#pragma once

#include "modem/server/ClientHandler.h"
#include "modem/trace/TraceSessions.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace modem {

using wire::Frame;
using wire::Hello;
using wire::Purpose;

class Replay final : public ClientHandler {
 public:
  Replay(std::vector<TraceSession> sessions, ClientLink& link);

  void onHello(ClientNumber client, Hello hello) override;
  void onRequest(ClientNumber client, const Frame& request) override;
  void onEnd(ClientNumber client, ClosedBy closedBy) override;
  nlohmann::json onControl(std::string_view request) override;

  size_t requestsServed() const { return served; }
  size_t requestsOfTrace() const { return all; }
  // The number of requests that differed from the trace in content or order.
  size_t requestsDiffering() const { return differing; }

 private:
  using Clock = std::chrono::steady_clock;

  struct Due {
    Clock::time_point time;
    const TraceEvent* event;
  };
  struct Client {
    const TraceSession* session = nullptr;      // null: the trace has no such connection
    std::vector<bool> isServed;                 // by exchange
    size_t next = 1;                            // one past the last exchange that was served
    std::map<uint32_t, uint32_t> transactions;  // from the trace's to the client's
    std::deque<Due> due;
  };

  const TraceSession* nextSession(Hello hello);
  // Returns the position of an exchange with this request that was not served yet: the next one,
  // else one that was skipped, else one past the last exchange.
  size_t findExchange(const Client& client, const Frame& request) const;
  void reportDifference(ClientNumber number, const Client& client, const Frame& request,
                        size_t found);
  void refuse(ClientNumber number, const Frame& request);
  void release(ClientNumber number, const TraceExchange& exchange);
  void sendDue(ClientNumber number, Clock::time_point until);
  void send(ClientNumber number, Client& client, const TraceEvent& event);

  ClientLink& link;
  const std::vector<TraceSession> sessions;
  std::map<Purpose, size_t> lastSession;  // by purpose, one past the session served last
  std::map<ClientNumber, Client> clients;
  size_t all = 0;
  size_t served = 0;
  size_t differing = 0;
};

}  // namespace modem
