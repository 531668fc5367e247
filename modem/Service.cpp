#include "Service.h"

#include <algorithm>
#include <utility>

#include "Distort.h"
#include "EffectJson.h"
#include "FieldWriter.h"

namespace modem {

namespace {

template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <typename... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

Frame helloFrame(std::vector<uint8_t> payload) {
  return {FrameKind::Hello, /*messageId=*/0, /*transaction=*/0, std::move(payload)};
}

bool isEarly(const Outgoing& outgoing) {
  return outgoing.effect && std::holds_alternative<SendEarly>(*outgoing.effect);
}

// What the modem is given to write: its own way, or another than the client's.
std::vector<uint8_t> writtenPayload(const Frame& request, const std::optional<Effect>& effect) {
  const auto* use = effect ? std::get_if<UseSettings>(&*effect) : nullptr;
  const bool isWrite = request.messageId == createProfile || request.messageId == modifyProfile;
  return use != nullptr && isWrite ? withSettings(request.payload, use->settings) : request.payload;
}

}  // namespace

Service::Service(Options options, ClientLink& clientLink)
    : link(clientLink),
      modem(std::move(options.modem)),
      recorder(link, std::move(options.trace)),
      outbox(link, recorder),
      control(modem, faults, recorder.transcript(), *this),
      quitAllowed(options.canQuit) {
  faults.replace(options.script);
}

void Service::onHello(ClientNumber client, Hello hello) {
  const Frame frame = helloFrame(wire::encodeHello(hello));
  if (!modem.isOn()) {
    recorder.addTurnedAway(client, frame);
    link.hangUp(client);
    return;
  }
  const MaybeEffect effect =
      faults.take({Subject::Kind::Service, static_cast<uint32_t>(hello.purpose)});
  const std::string fault = effect ? effectName(*effect) : "";
  recorder.add(Direction::In, client, frame, fault);
  if (!effect) {
    welcome(client, hello);
    return;
  }
  const auto losePowerThen = [&](const LosePower& power) {
    if (power.moment == LosePower::Moment::After) {
      welcome(client, hello);
    }
    losePower(power.cycle);
  };
  std::visit(
      Overloaded{[&](const RefuseHello& refusal) { answerHello(client, refusal.code, fault); },
                 [&](const TakeUpLate& late) {
                   link.after(late.delay, [this, client, hello] { welcome(client, hello); });
                 },
                 losePowerThen, [](const auto&) { /* Silence. */ }},
      *effect);
}

void Service::welcome(ClientNumber client, Hello hello) {
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
  const MaybeEffect effect = faults.take({Subject::Kind::Message, request.messageId});
  recorder.add(Direction::In, client, request, effect ? effectName(*effect) : "");
  if (effect) {
    meet(client, request, *effect);
  } else {
    carryOut(client, request);
  }
}

void Service::meet(ClientNumber client, const Frame& request, const Effect& effect) {
  const auto refuse = [&](const AnswerError& refusal) {
    FieldWriter fields;
    fields.result(refusal.result, refusal.error);
    answer(client, request, fields.take(), effect);
  };
  const auto takeUpLate = [&](const TakeUpLate& late) {
    link.after(late.delay, [this, client, request] { carryOut(client, request); });
  };
  std::visit(Overloaded{refuse, takeUpLate, [](const StaySilent&) {},
                        [&](const LosePower& power) { losePowerAround(client, request, power); },
                        [&](const auto&) { carryOut(client, request, effect); }},
             effect);
}

void Service::carryOut(ClientNumber client, const Frame& request, const MaybeEffect& effect) {
  if (!link.isConnected(client)) {
    return;  // It left before its delayed request was taken up.
  }
  Outcome outcome = modem.handle(client, request.messageId, writtenPayload(request, effect));
  const std::vector<Outgoing> told = underFaults(outcome.indications);
  for (const Outgoing& indication : told) {
    if (isEarly(indication)) {
      sendIndication(indication);
    }
  }
  answer(client, request, std::move(outcome.response), effect);
  for (const Outgoing& indication : told) {
    if (!isEarly(indication)) {
      sendIndication(indication);
    }
  }
}

void Service::answer(ClientNumber client, const Frame& request, std::vector<uint8_t> payload,
                     const MaybeEffect& effect) {
  outbox.send({client,
               {FrameKind::Response, request.messageId, request.transaction, std::move(payload)},
               effect});
}

void Service::losePowerAround(ClientNumber client, const Frame& request, const LosePower& power) {
  if (power.moment == LosePower::Moment::Unanswered) {
    modem.handle(client, request.messageId, request.payload);
  } else if (power.moment == LosePower::Moment::After) {
    carryOut(client, request);
  }
  losePower(power.cycle);
}

std::vector<Outgoing> Service::underFaults(const std::vector<Indication>& indications) {
  std::vector<Outgoing> told;
  told.reserve(indications.size());
  for (const Indication& indication : indications) {
    told.push_back({indication.client,
                    {FrameKind::Indication, profileChanged, /*transaction=*/0, indication.payload},
                    faults.take({Subject::Kind::Indication, indication.event})});
  }
  return told;
}

void Service::sendIndication(const Outgoing& outgoing) {
  const auto* power = outgoing.effect ? std::get_if<LosePower>(&*outgoing.effect) : nullptr;
  if (power != nullptr && power->moment == LosePower::Moment::Before) {
    losePower(power->cycle);
    return;
  }
  outbox.send(outgoing);
  if (power != nullptr) {
    losePower(power->cycle);
  }
}

void Service::onEnd(ClientNumber client, Ender ender) {
  recorder.addEnd(client, ender);
  outbox.forget(client);
  modem.removeClient(client);
}

nlohmann::json Service::onControl(std::string_view request) { return control.handle(request); }

void Service::deliver(const std::vector<Indication>& indications) {
  for (const Outgoing& indication : underFaults(indications)) {
    sendIndication(indication);
  }
}

void Service::powerCycle(const PowerCycle& cycle) {
  modem.powerOff();
  link.hangUpAll();
  if (cycle.off.count() == 0) {
    returnPower(cycle);
  } else {
    link.after(cycle.off, [this, cycle] { returnPower(cycle); });
  }
}

void Service::returnPower(PowerCycle cycle) {
  // Two cycles may run at once: what one has done, the other need not do.
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
  } catch (const FileError& error) {
    link.complain(std::string("the power stays on: ") + error.what());
  }
}

}  // namespace modem
