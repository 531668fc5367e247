// The effects that change an answer or an indication.
#include <algorithm>

#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/faults/PayloadEdit.h"
#include "modem/faults/effects/EffectFamilies.h"

namespace modem {

using nlohmann::json;

namespace {

bool isOutgoing(Subject subject) { return !isHello(subject); }

// The message is lost on its way.
class Loss final : public OutgoingEffect {
 public:
  static constexpr EffectType type{"lost", isOutgoing, parse<Loss>};

  explicit Loss(const json& args) : OutgoingEffect(type, args) { requireTrue(args, type.name); }
  void onOutgoing(Outgoing& outgoing) const override { outgoing.lose(); }
};

// The message is sent twice.
class Duplicate final : public OutgoingEffect {
 public:
  static constexpr EffectType type{"doubled", isOutgoing, parse<Duplicate>};

  explicit Duplicate(const json& args) : OutgoingEffect(type, args) {
    requireTrue(args, type.name);
  }
  void onOutgoing(Outgoing& outgoing) const override {
    outgoing.send();
    outgoing.send();
  }
};

// The message is sent later; others overtake it.
class LateSending final : public OutgoingEffect {
 public:
  static constexpr EffectType type{"lateMs", isOutgoing, parse<LateSending>};

  explicit LateSending(const json& args)
      : OutgoingEffect(type, args), delay(delayArgument(args, type.name)) {}
  void onOutgoing(Outgoing& outgoing) const override { outgoing.sendAfter(delay); }

 private:
  const std::chrono::milliseconds delay;
};

// The payload has only its first bytes.
class Cut final : public ContentEffect {
 public:
  static constexpr EffectType type{"cutTo", isOutgoing, parse<Cut>};

  explicit Cut(const json& args)
      : ContentEffect(type, args), bytes(numberArgument(args, type.name, /*max=*/65536)) {}

 private:
  void change(Frame& frame) const override {
    frame.payload.resize(std::min(bytes, frame.payload.size()));
  }

  const size_t bytes;
};

// The payload cannot be decoded.
class Undecodable final : public ContentEffect {
 public:
  static constexpr EffectType type{"undecodable", isOutgoing, parse<Undecodable>};

  explicit Undecodable(const json& args)
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
class MissingField final : public ContentEffect {
 public:
  static constexpr EffectType type{"withoutField", isOutgoing, parse<MissingField>};

  explicit MissingField(const json& args)
      : ContentEffect(type, args), missing(numberArgument(args, type.name, /*max=*/255)) {}

 private:
  static constexpr uint8_t unusedTag = 0x7F;  // of no field of any message

  void change(Frame& frame) const override {
    frame.payload = withFields(frame.payload, [this](uint8_t tag, ByteView value) {
      return tag == missing ? std::nullopt : std::optional(toBytes(value));
    });
    if (frame.payload.empty()) {
      // An empty payload is what cutTo=0 is for. This one has a field, without a meaning.
      FieldWriter filler;
      filler.number(unusedTag, uint8_t{0});
      frame.payload = filler.take();
    }
  }

  const uint64_t missing;
};

// The message has another number: another answer, an unknown indication.
class OtherMessage final : public ContentEffect {
 public:
  static constexpr EffectType type{"asMessage", isOutgoing, parse<OtherMessage>};

  explicit OtherMessage(const json& args)
      : ContentEffect(type, args),
        id(static_cast<uint16_t>(numberArgument(args, type.name, /*max=*/65535))) {}

 private:
  void change(Frame& frame) const override { frame.messageId = id; }

  const uint16_t id;
};

constexpr const EffectType* outgoingTypes[] = {
    &Loss::type,        &Duplicate::type,    &LateSending::type, &Cut::type,
    &Undecodable::type, &MissingField::type, &OtherMessage::type};

}  // namespace

std::span<const EffectType* const> outgoingEffects() { return outgoingTypes; }

}  // namespace modem
