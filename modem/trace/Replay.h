// Serves a trace again: a client that makes the same requests gets the same answers and
// indications, each in its place behind the request that it followed, and as late after it as it
// was.
//
// The nth connection for a purpose is served as the nth one of the trace. A request that is not the
// next one of the trace is told to the people; it is served all the same when the trace has it
// elsewhere, and refused otherwise, which leaves the trace where it was. What has not been sent
// when the next request comes is sent before that one is taken up.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "modem/server/ClientHandler.h"
#include "modem/trace/TraceSessions.h"

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
  // Requests that did not come when, or as, the trace has them.
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
    size_t next = 1;                            // behind the furthest that was served
    std::map<uint32_t, uint32_t> transactions;  // the trace's to the client's
    std::deque<Due> due;
  };

  const TraceSession* nextSession(Hello hello);
  // The place of an exchange that was not served yet: the next one of its kind or, when there is
  // none, one that was left out; behind the last one when there is neither.
  size_t findExchange(const Client& client, const Frame& request) const;
  void tellDifference(ClientNumber number, const Client& client, const Frame& request,
                      size_t found);
  void refuse(ClientNumber number, const Frame& request);
  void release(ClientNumber number, const TraceExchange& exchange);
  void sendDue(ClientNumber number, Clock::time_point until);
  void send(ClientNumber number, Client& client, const TraceEvent& event);

  ClientLink& link;
  const std::vector<TraceSession> sessions;
  std::map<Purpose, size_t> lastSession;  // by purpose, the place behind the one served last
  std::map<ClientNumber, Client> clients;
  size_t all = 0;
  size_t served = 0;
  size_t differing = 0;
};

}  // namespace modem
