// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/service/Service.h"

#include "modem/core/FieldWriter.h"

#include <utility>

namespace modem {

namespace {

Frame helloFrame(Bytes payload) {
  return {FrameKind::Hello, /*messageId=*/0, /*transaction=*/0, std::move(payload)};
}

}  // namespace

// A hello under the effect of a fault.
class Service::IncomingHello final : public Incoming {
 public:
  IncomingHello(Service& service, ClientNumber client, Hello hello, const Effect& effect)
      : Incoming(helloFrame(wire::encodeHello(hello))),
        service(service),
        client(client),
        hello(hello),
        effect(effect) {}

  void carryOut() override { service.accept(client, hello); }
  void carryOutWithEffect() override { carryOut(); }
  void carryOutAfter(std::chrono::milliseconds delay) override {
    service.link.after(delay, [&service = service, client = client, hello = hello] {
      service.accept(client, hello);
    });
  }
  void carryOutUnanswered() override { service.modem.addClient(client, hello.sawAbsence); }
  void refuse(int32_t, int32_t error) override {
    service.answerHello(client, error, effect.name());
  }
  void losePower(const PowerCycle& cycle) override { service.losePower(cycle); }

 private:
  Service& service;
  const ClientNumber client;
  const Hello hello;
  const Effect& effect;
};

// A request under the effect of a fault.
class Service::IncomingRequest final : public Incoming {
 public:
  IncomingRequest(Service& service, ClientNumber client, const Frame& request, const Effect& effect)
      : Incoming(request), service(service), client(client), effect(effect) {}

  void carryOut() override { service.carryOut(client, frame, /*answerEffect=*/nullptr); }
  void carryOutWithEffect() override { service.carryOut(client, frame, &effect); }
  void carryOutAfter(std::chrono::milliseconds delay) override {
    service.link.after(delay, [&service = service, client = client, frame = frame] {
      service.carryOut(client, frame, /*answerEffect=*/nullptr);
    });
  }
  void carryOutUnanswered() override {
    service.modem.handle(client, MessageId{frame.messageId}, frame.payload);
  }
  void refuse(int32_t result, int32_t error) override {
    FieldWriter fields;
    fields.result(result, error);
    service.answer(client, frame, fields.take(), &effect);
  }
  void losePower(const PowerCycle& cycle) override { service.losePower(cycle); }

 private:
  Service& service;
  const ClientNumber client;
  const Effect& effect;
};

// An indication and the effect of its fault, if it has one.
struct Service::SentIndication {
  ClientNumber client;
  Frame frame;
  EffectPtr effect;

  bool precedesAnswer() const { return effect != nullptr && effect->precedesAnswer(); }
};

Service::Service(Options options, ClientLink& link)
    : link(link),
      modem(std::move(options.modem)),
      recorder(link, std::move(options.trace)),
      outbox(link, recorder, [this](const PowerCycle& cycle) { losePower(cycle); }),
      control(modem, faults, recorder.transcript(), *this),
      isQuitAllowed(options.canQuit) {
  faults.replace(options.script);
}

void Service::onHello(ClientNumber client, Hello hello) {
  const Frame frame = helloFrame(wire::encodeHello(hello));
  if (!modem.isOn()) {
    recorder.addRejected(client, frame);
    link.hangUp(client);
    return;
  }
  const EffectPtr effect =
      faults.take({Subject::Kind::Service, static_cast<uint32_t>(hello.purpose)});
  recorder.add(Direction::In, client, frame, effect ? effect->name() : "");
  if (effect == nullptr) {
    accept(client, hello);
    return;
  }
  IncomingHello incoming(*this, client, hello, *effect);
  effect->onIncoming(incoming);
}

void Service::accept(ClientNumber client, Hello hello) {
  if (link.isConnected(client)) {
    modem.addClient(client, hello.sawAbsence);
    answerHello(client, /*refusal=*/0);
  }
}

void Service::answerHello(ClientNumber client, int32_t refusal, const std::string& fault) {
  const Frame frame = helloFrame(wire::encodeHelloAnswer({modem.bootNumber(), refusal}));
  link.send(client, frame);
  recorder.add(Direction::Out, client, frame, fault);
}

void Service::onRequest(ClientNumber client, const Frame& request) {
  const EffectPtr effect = faults.take({Subject::Kind::Message, request.messageId});
  recorder.add(Direction::In, client, request, effect ? effect->name() : "");
  if (effect == nullptr) {
    carryOut(client, request, /*answerEffect=*/nullptr);
    return;
  }
  IncomingRequest incoming(*this, client, request, *effect);
  effect->onIncoming(incoming);
}

void Service::carryOut(ClientNumber client, const Frame& request, const Effect* answerEffect) {
  if (!link.isConnected(client)) {
    return;  // The client has left while its request was delayed.
  }
  Outcome outcome = modem.handle(client, MessageId{request.messageId}, request.payload);
  const std::vector<SentIndication> indications = withFaults(outcome.indications);
  const auto sendThose = [&](bool precedesAnswer) {
    for (const SentIndication& indication : indications) {
      if (indication.precedesAnswer() == precedesAnswer) {
        sendIndication(indication);
      }
    }
  };
  sendThose(/*precedesAnswer=*/true);
  answer(client, request, std::move(outcome.response), answerEffect);
  sendThose(/*precedesAnswer=*/false);
}

void Service::answer(ClientNumber client, const Frame& request, Bytes payload,
                     const Effect* effect) {
  outbox.send(client,
              {FrameKind::Response, request.messageId, request.transaction, std::move(payload)},
              effect);
}

std::vector<Service::SentIndication> Service::withFaults(
    const std::vector<Indication>& indications) {
  std::vector<SentIndication> sent;
  sent.reserve(indications.size());
  for (const Indication& indication : indications) {
    sent.push_back({indication.client,
                    {FrameKind::Indication, numberOf(MessageId::ProfileChanged),
                     /*transaction=*/0, indication.payload},
                    faults.take({Subject::Kind::Indication, indication.event})});
  }
  return sent;
}

void Service::sendIndication(const SentIndication& indication) {
  outbox.send(indication.client, indication.frame, indication.effect.get());
}

void Service::onEnd(ClientNumber client, ClosedBy closedBy) {
  recorder.addEnd(client, closedBy);
  outbox.forget(client);
  modem.removeClient(client);
}

nlohmann::json Service::onControl(std::string_view request) { return control.handle(request); }

void Service::deliver(const std::vector<Indication>& indications) {
  for (const SentIndication& indication : withFaults(indications)) {
    sendIndication(indication);
  }
}

void Service::powerCycle(const PowerCycle& cycle) {
  modem.powerOff();
  link.hangUpAll();
  if (cycle.off.count() == 0) {
    restorePower(cycle);
  } else {
    link.after(cycle.off, [this, cycle] { restorePower(cycle); });
  }
}

void Service::restorePower(PowerCycle cycle) {
  // Two power cycles may overlap, and the other one may have restored the power already.
  if (!modem.isOn()) {
    modem.powerUp();
  }
  if (--cycle.times > 0) {
    link.after(cycle.on, [this, cycle] { losePower(cycle); });
  }
}

void Service::losePower(const PowerCycle& cycle) {
  if (!modem.isOn()) {
    return;
  }
  try {
    powerCycle(cycle);
  } catch (const Error& error) {
    link.report(std::string("the power stays on: ") + error.what());
  }
}

}  // namespace modem
