// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the files of this folder share: the lists of their effects, the base classes of effects that
// act on one side only, and the reading of arguments.
#pragma once

#include "modem/core/Messages.h"
#include "modem/faults/Effect.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <span>
#include <string_view>

namespace modem {

using wire::Frame;

std::span<const EffectType* const> incomingEffects();    // requests and hellos
std::span<const EffectType* const> outgoingEffects();    // answers and indications
std::span<const EffectType* const> indicationEffects();  // indications alone
std::span<const EffectType* const> answerEffects();      // answers that hold a list or texts

// Changes how a request or a hello is treated. Its answer is not changed further.
class IncomingEffect : public Effect {
 public:
  void onOutgoing(Outgoing& outgoing) const final;

 protected:
  using Effect::Effect;
};

// Changes an answer or an indication. The request is carried out.
class OutgoingEffect : public Effect {
 public:
  void onIncoming(Incoming& incoming) const final;

 protected:
  using Effect::Effect;
};

// Changes the bytes of an answer or an indication.
class ContentEffect : public OutgoingEffect {
 public:
  void onOutgoing(Outgoing& outgoing) const final;

 protected:
  using OutgoingEffect::OutgoingEffect;
  virtual void change(Frame& frame) const = 0;
};

template <typename AnyEffect>
EffectPtr parse(const nlohmann::json& args) {
  return std::make_shared<const AnyEffect>(AnyEffect::type, args);
}

// Each reads the argument `name` and throws Error.
void requireTrue(const nlohmann::json& args, std::string_view name);
uint64_t numberArgument(const nlohmann::json& args, std::string_view name, uint64_t max);
// Returns the position of the argument's word in `words`.
size_t wordArgument(const nlohmann::json& args, std::string_view name,
                    std::span<const std::string_view> words);

// An effect whose argument is true.
template <typename Side>
class FlagEffect : public Side {
 public:
  FlagEffect(const EffectType& type, const nlohmann::json& args) : Side(type, args) {
    requireTrue(args, type.name);
  }
};

// An effect whose argument is a number.
template <typename Side, uint64_t max>
class NumberEffect : public Side {
 public:
  NumberEffect(const EffectType& type, const nlohmann::json& args)
      : Side(type, args), number(numberArgument(args, type.name, max)) {}

 protected:
  const uint64_t number;
};

inline constexpr uint64_t delayMsMax = 3'600'000;

inline bool isMessage(Subject subject) { return subject.kind == Subject::Kind::Message; }
inline bool isMessage(Subject subject, MessageId id) {
  return isMessage(subject) && subject.code == static_cast<uint32_t>(id);
}
inline bool isIndication(Subject subject) { return subject.kind == Subject::Kind::Indication; }
inline bool isHello(Subject subject) { return subject.kind == Subject::Kind::Service; }

}  // namespace modem
