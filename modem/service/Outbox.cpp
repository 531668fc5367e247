// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/service/Outbox.h"

#include <utility>

namespace modem {

class Outbox::Message final : public Outgoing {
 public:
  Message(Outbox& outbox, ClientNumber client, Frame frame, std::string fault)
      : Outgoing(std::move(frame)), outbox(&outbox), client(client), fault(std::move(fault)) {}

  void send() override { outbox->put(client, frame, fault); }
  void sendAfter(std::chrono::milliseconds delay) override {
    outbox->link.after(delay, [message = *this]() mutable { message.send(); });
  }
  void holdBack() override { outbox->heldBack[client].push_back(*this); }
  void lose() override { outbox->recorder.addLost(client, frame); }
  void losePower(const PowerCycle& cycle) override { outbox->losePower(cycle); }

 private:
  Outbox* outbox;
  ClientNumber client;
  std::string fault;  // the effect's name
};

Outbox::Outbox(ClientLink& link, Recorder& recorder, PowerLoss losePower)
    : link(link), recorder(recorder), losePower(std::move(losePower)) {}

Outbox::~Outbox() = default;

void Outbox::send(ClientNumber client, Frame frame, const Effect* effect) {
  if (effect == nullptr) {
    put(client, frame);
    return;
  }
  Message message(*this, client, std::move(frame), effect->name());
  effect->onOutgoing(message);
}

void Outbox::release() {
  while (!heldBack.empty()) {
    releaseOf(heldBack.begin()->first);
  }
}

void Outbox::forget(ClientNumber client) { heldBack.erase(client); }

void Outbox::put(ClientNumber client, const Frame& frame, const std::string& fault) {
  if (!link.isConnected(client)) {
    return;
  }
  link.send(client, frame);
  recorder.add(Direction::Out, client, frame, fault);
  if (frame.kind == FrameKind::Indication) {
    releaseOf(client);
  }
}

void Outbox::releaseOf(ClientNumber client) {
  auto held = heldBack.extract(client);
  if (held.empty()) {
    return;
  }
  for (Message& message : held.mapped()) {
    message.send();
  }
}

}  // namespace modem
