// What the modem sends to its clients, under the faults that befall it on its way: lost, doubled,
// late, out of order, distorted. What was sent is recorded as it was sent.
//
// A held-back indication waits here until its client's next one is out, the hold is released, or
// the client is gone.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "modem/faults/Fault.h"
#include "modem/server/ClientHandler.h"
#include "modem/trace/Recorder.h"

namespace modem {

struct Outgoing {
  ClientNumber client;
  Frame frame;
  std::optional<Effect> effect = {};
};

class Outbox {
 public:
  Outbox(ClientLink& link, Recorder& recorder);

  void send(Outgoing outgoing);

  // Sends what was held back.
  void release();
  void forget(ClientNumber client);

 private:
  void put(ClientNumber client, const Frame& frame, const std::string& fault = {});
  void releaseOf(ClientNumber client);

  ClientLink& link;
  Recorder& recorder;
  std::map<ClientNumber, std::vector<Frame>> heldBack;
};

}  // namespace modem
