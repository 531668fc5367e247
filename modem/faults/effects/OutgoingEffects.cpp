// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The effects that change an answer or an indication.
#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/faults/PayloadEdit.h"
#include "modem/faults/effects/EffectFamilies.h"

#include <algorithm>

namespace modem {

using nlohmann::json;
using std::chrono::milliseconds;

namespace {

bool isOutgoing(Subject subject) { return !isHello(subject); }

// The message is lost on its way.
struct Loss final : FlagEffect<OutgoingEffect> {
  static constexpr EffectType type{"lost", isOutgoing, parse<Loss>};
  using FlagEffect::FlagEffect;
  void onOutgoing(Outgoing& outgoing) const override { outgoing.lose(); }
};

// The message is sent twice.
struct Duplicate final : FlagEffect<OutgoingEffect> {
  static constexpr EffectType type{"doubled", isOutgoing, parse<Duplicate>};
  using FlagEffect::FlagEffect;
  void onOutgoing(Outgoing& outgoing) const override {
    outgoing.send();
    outgoing.send();
  }
};

// The message is sent later; others overtake it.
struct LateSending final : NumberEffect<OutgoingEffect, delayMsMax> {
  static constexpr EffectType type{"lateMs", isOutgoing, parse<LateSending>};
  using NumberEffect::NumberEffect;
  void onOutgoing(Outgoing& outgoing) const override { outgoing.sendAfter(milliseconds(number)); }
};

// The payload has only its first bytes.
struct Cut final : NumberEffect<ContentEffect, 65536> {
  static constexpr EffectType type{"cutTo", isOutgoing, parse<Cut>};
  using NumberEffect::NumberEffect;
  void change(Frame& frame) const override {
    frame.payload.resize(std::min(number, frame.payload.size()));
  }
};

// The payload cannot be decoded.
struct Undecodable final : ContentEffect {
  static constexpr EffectType type{"undecodable", isOutgoing, parse<Undecodable>};
  Undecodable(const EffectType&, const json& args)
      : ContentEffect(type, args), how(static_cast<How>(wordArgument(args, type.name, words))) {}

 private:
  enum How { Noise, Twice, Overrun, Wide };
  static constexpr std::array<std::string_view, 4> words = {"noise", "twice", "overrun", "wide"};

  void change(Frame& frame) const override {
    Bytes& payload = frame.payload;
    if (how == Noise || payload.size() < fieldHeaderBytes) {
      payload.assign(16, 0xFF);
      return;
    }
    const size_t firstBytes = fieldHeaderBytes + numberFrom(std::span(payload).subspan(1, 2));
    const auto firstEnd = payload.begin() + static_cast<std::ptrdiff_t>(firstBytes);
    if (how == Twice) {
      const Bytes copy(payload.begin(), firstEnd);
      payload.insert(payload.end(), copy.begin(), copy.end());
    } else if (how == Overrun) {
      payload[1] = 0xFF;
      payload[2] = 0xFF;
    } else {
      // The length does not overflow: no message begins with a field of nearly 255 bytes.
      ++payload[1];
      payload.insert(firstEnd, 0);
    }
  }

  const How how;
};

// The message lacks the field with this tag.
struct MissingField final : NumberEffect<ContentEffect, 255> {
  static constexpr EffectType type{"withoutField", isOutgoing, parse<MissingField>};
  using NumberEffect::NumberEffect;

 private:
  static constexpr uint8_t unusedTag = 0x7F;  // of no field of any message

  void change(Frame& frame) const override {
    frame.payload = withFields(frame.payload, [this](uint8_t tag, ByteView value) {
      return tag == number ? std::nullopt : std::optional(toBytes(value));
    });
    if (frame.payload.empty()) {
      // An empty payload is what cutTo=0 is for. This one has a field, without a meaning.
      FieldWriter filler;
      filler.number(unusedTag, uint8_t{0});
      frame.payload = filler.take();
    }
  }
};

// The message has another number: another answer, an unknown indication.
struct OtherMessage final : NumberEffect<ContentEffect, 65535> {
  static constexpr EffectType type{"asMessage", isOutgoing, parse<OtherMessage>};
  using NumberEffect::NumberEffect;
  void change(Frame& frame) const override { frame.messageId = static_cast<uint16_t>(number); }
};

constexpr const EffectType* outgoingTypes[] = {
    &Loss::type,        &Duplicate::type,    &LateSending::type, &Cut::type,
    &Undecodable::type, &MissingField::type, &OtherMessage::type};

}  // namespace

std::span<const EffectType* const> outgoingEffects() { return outgoingTypes; }

}  // namespace modem
