// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Sends answers and indications to clients and records them as they are sent. A message may be
// under the effect of a fault.
//
// An indication that an effect holds back waits here until the client's next indication has been
// sent, the fault's removal releases it, or the client has left.
#pragma once

#include "modem/faults/Effect.h"
#include "modem/server/ClientHandler.h"
#include "modem/trace/Recorder.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace modem {

using wire::Frame;

class Outbox {
 public:
  using PowerLoss = std::function<void(const PowerCycle&)>;

  Outbox(ClientLink& link, Recorder& recorder, PowerLoss losePower);
  ~Outbox();

  // effect may be null.
  void send(ClientNumber client, Frame frame, const Effect* effect);

  // Sends what is held back.
  void release();
  // Drops what is held back for a client that has left.
  void forget(ClientNumber client);

 private:
  class Message;

  void put(ClientNumber client, const Frame& frame, const std::string& fault = {});
  void releaseOf(ClientNumber client);

  ClientLink& link;
  Recorder& recorder;
  const PowerLoss losePower;
  std::map<ClientNumber, std::vector<Message>> heldBack;
};

}  // namespace modem
