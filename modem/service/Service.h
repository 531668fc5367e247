// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Serves the emulated modem to its clients: passes their requests to the modem, sends its answers
// and indications, applies the effects of faults on the way, and serves the control channel.
//
//   request ── its fault? ──► Modem ──► answer ────── the request's fault? ──► Outbox
//                               └─────► indications ─ faults of their own? ──► Outbox
#pragma once

#include "modem/core/Modem.h"
#include "modem/faults/Faults.h"
#include "modem/server/ClientHandler.h"
#include "modem/service/Control.h"
#include "modem/service/Outbox.h"
#include "modem/trace/Recorder.h"

#include <memory>
#include <vector>

namespace modem {

using wire::Frame;
using wire::Hello;

class Service final : public ClientHandler, private ControlHost {
 public:
  struct Options {
    Modem::Options modem = {};
    bool canQuit = false;  // whether the control verb quit ends the server's run
    FaultScript script = {};
    std::unique_ptr<TraceWriter> trace = nullptr;  // null: no trace is written
  };

  // Throws Error when the store cannot be used.
  Service(Options options, ClientLink& link);

  void onHello(ClientNumber client, Hello hello) override;
  void onRequest(ClientNumber client, const Frame& request) override;
  void onEnd(ClientNumber client, ClosedBy closedBy) override;
  nlohmann::json onControl(std::string_view request) override;

 private:
  class IncomingHello;
  class IncomingRequest;
  struct SentIndication;

  // ControlHost.
  void deliver(const std::vector<Indication>& indications) override;
  void powerCycle(const PowerCycle& cycle) override;
  void releaseHeldBack() override { outbox.release(); }
  bool canQuit() const override { return isQuitAllowed; }
  void quit() override { link.stop(); }

  void accept(ClientNumber client, Hello hello);
  void answerHello(ClientNumber client, int32_t refusal, const std::string& fault = {});
  // answerEffect, which may be null, acts on the answer.
  void carryOut(ClientNumber client, const Frame& request, const Effect* answerEffect);
  void answer(ClientNumber client, const Frame& request, Bytes payload, const Effect* effect);
  std::vector<SentIndication> withFaults(const std::vector<Indication>& indications);
  void sendIndication(const SentIndication& indication);
  // Does what powerCycle does. If the store is unreadable it reports that and keeps the power on.
  void losePower(const PowerCycle& cycle);
  void restorePower(PowerCycle cycle);

  ClientLink& link;
  Modem modem;
  Faults faults;
  Recorder recorder;
  Outbox outbox;
  Control control;
  const bool isQuitAllowed;
};

}  // namespace modem
