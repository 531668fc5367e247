// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The effects that change an indication's place or content.
#include "modem/faults/PayloadEdit.h"
#include "modem/faults/effects/EffectFamilies.h"

namespace modem {

using nlohmann::json;

namespace {

constexpr size_t indexOffset = 4;  // in the field of a profile-changed indication, behind the type
constexpr size_t eventOffset = 5;
constexpr size_t eventFieldBytes = 9;

void setNumber(Frame& frame, size_t offset, uint64_t number, size_t width) {
  frame.payload = withField(frame.payload, tagChangedProfile, [&](ByteView value) {
    Bytes changed = toBytes(value);
    for (size_t i = 0; i < width && changed.size() == eventFieldBytes; ++i) {
      changed[offset + i] = static_cast<uint8_t>(number >> (8 * i));
    }
    return changed;
  });
}

// The indication is sent before the answer to the request that caused it.
struct Early final : FlagEffect<OutgoingEffect> {
  static constexpr EffectType type{"early", isIndication, parse<Early>};
  using FlagEffect::FlagEffect;
  void onOutgoing(Outgoing& outgoing) const override { outgoing.send(); }
  bool precedesAnswer() const override { return true; }
};

// The indication is sent after the client's next one.
struct Reordered final : FlagEffect<OutgoingEffect> {
  static constexpr EffectType type{"reordered", isIndication, parse<Reordered>};
  using FlagEffect::FlagEffect;
  void onOutgoing(Outgoing& outgoing) const override { outgoing.holdBack(); }
};

// The indication names this profile index.
struct OtherIndex final : NumberEffect<ContentEffect, 255> {
  static constexpr EffectType type{"index", isIndication, parse<OtherIndex>};
  using NumberEffect::NumberEffect;
  void change(Frame& frame) const override { setNumber(frame, indexOffset, number, /*width=*/1); }
};

// The indication reports this event.
struct OtherEvent final : NumberEffect<ContentEffect, 0xFFFFFFFF> {
  static constexpr EffectType type{"event", isIndication, parse<OtherEvent>};
  using NumberEffect::NumberEffect;
  void change(Frame& frame) const override { setNumber(frame, eventOffset, number, /*width=*/4); }
};

constexpr const EffectType* indicationTypes[] = {&Early::type, &Reordered::type, &OtherIndex::type,
                                                 &OtherEvent::type};

}  // namespace

std::span<const EffectType* const> indicationEffects() { return indicationTypes; }

}  // namespace modem
