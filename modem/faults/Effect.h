// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The effects of faults: what the modem does wrong.
//
// An effect is one class in one of the files of effects/. The class holds its name, the arguments
// that ask for it, the subjects that it fits, and what it does to a request or hello that comes in
// and to an answer or indication that goes out. A new effect is a class there and its entry in the
// list at the end of that file. docs/modem.md describes all of them.
#pragma once

#include "modem/faults/PowerCycle.h"
#include "modem/faults/Subject.h"
#include "wire/Frame.h"

#include <nlohmann/json.hpp>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace modem {

using wire::Frame;

// A request or a hello that has come in, and what the modem can do with it.
class Incoming {
 public:
  explicit Incoming(Frame frame) : frame(std::move(frame)) {}
  virtual ~Incoming() = default;

  // Carries it out and answers it, as without a fault.
  virtual void carryOut() = 0;
  // Carries it out; the effect acts on the answer as well.
  virtual void carryOutWithEffect() = 0;
  virtual void carryOutAfter(std::chrono::milliseconds delay) = 0;
  virtual void carryOutUnanswered() = 0;
  // Answers it with these codes instead of carrying it out. A hello's answer has the error alone.
  virtual void refuse(int32_t result, int32_t error) = 0;
  virtual void losePower(const PowerCycle& cycle) = 0;

  Frame frame;
};

// An answer or an indication on its way to its client, and what the modem can do with it.
class Outgoing {
 public:
  explicit Outgoing(Frame frame) : frame(std::move(frame)) {}
  virtual ~Outgoing() = default;

  virtual void send() = 0;
  virtual void sendAfter(std::chrono::milliseconds delay) = 0;
  // Keeps it until the next indication to the same client has been sent.
  virtual void holdBack() = 0;
  virtual void lose() = 0;
  virtual void losePower(const PowerCycle& cycle) = 0;

  Frame frame;
};

class Effect;
using EffectPtr = std::shared_ptr<const Effect>;

struct EffectType {
  std::string_view name;  // the argument that asks for the effect
  bool (*fits)(Subject subject);
  EffectPtr (*parse)(const nlohmann::json& args);  // throws Error
  std::array<std::string_view, 3> options = {};    // further arguments
};

class Effect {
 public:
  virtual ~Effect() = default;

  std::string name() const { return std::string(type.name); }
  // The arguments that parse to the same effect.
  const nlohmann::json& arguments() const { return ownArguments; }
  bool hasArgument(std::string_view argument) const;
  virtual bool fits(Subject subject) const { return type.fits(subject); }

  virtual void onIncoming(Incoming& incoming) const = 0;
  virtual void onOutgoing(Outgoing& outgoing) const = 0;
  // Whether an indication is sent before the answer to the request that caused it.
  virtual bool precedesAnswer() const { return false; }

 protected:
  // Takes the effect's own arguments out of `args`, which also has the selector and the trigger.
  Effect(const EffectType& type, const nlohmann::json& args);

  nlohmann::json ownArguments;

 private:
  const EffectType& type;
};

// Returns the only effect that `args` names; throws Error.
EffectPtr effectFromJson(const nlohmann::json& args);

// The names of the effects that fit a subject with some of their arguments.
std::vector<std::string_view> effectNamesFor(Subject subject);

}  // namespace modem
