#include "modem/service/Outbox.h"

#include <utility>

#include "modem/faults/Distort.h"
#include "modem/faults/EffectJson.h"

namespace modem {

Outbox::Outbox(ClientLink& clientLink, Recorder& trafficRecorder)
    : link(clientLink), recorder(trafficRecorder) {}

void Outbox::send(Outgoing outgoing) {
  if (!outgoing.effect) {
    put(outgoing.client, outgoing.frame);
    return;
  }
  const Effect& effect = *outgoing.effect;
  const std::string fault = effectName(effect);
  const Frame frame = distorted(std::move(outgoing.frame), effect);
  if (std::holds_alternative<Lose>(effect)) {
    recorder.addLost(outgoing.client, frame);
    return;
  }
  if (const auto* late = std::get_if<SendLate>(&effect)) {
    link.after(late->delay,
               [this, client = outgoing.client, frame, fault] { put(client, frame, fault); });
  } else if (std::holds_alternative<HoldBack>(effect)) {
    heldBack[outgoing.client].push_back(frame);
  } else {
    put(outgoing.client, frame, fault);
    if (std::holds_alternative<Double>(effect)) {
      put(outgoing.client, frame, fault);
    }
  }
}

void Outbox::release() {
  for (const auto& [client, frames] : std::map(heldBack)) {
    releaseOf(client);
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
  const auto held = heldBack.extract(client);
  if (held.empty()) {
    return;
  }
  for (const Frame& frame : held.mapped()) {
    put(client, frame, effectName(HoldBack{}));
  }
}

}  // namespace modem
