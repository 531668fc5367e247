// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The effects that change how a request or a hello is treated.
#include "modem/common/Json.h"
#include "modem/core/ProfileJson.h"
#include "modem/faults/PayloadEdit.h"
#include "modem/faults/effects/EffectFamilies.h"

#include <limits>

namespace modem {

using nlohmann::json;
using std::chrono::milliseconds;

namespace {

constexpr uint64_t i32Max = std::numeric_limits<int32_t>::max();

bool isCall(Subject subject) { return !isIndication(subject); }
bool isAny(Subject) { return true; }

// The request is answered with these codes, whatever it asks for, and not carried out.
struct ErrorAnswer final : IncomingEffect {
  static constexpr EffectType type{"error", isMessage, parse<ErrorAnswer>, {"result"}};
  ErrorAnswer(const EffectType&, const json& args)
      : IncomingEffect(type, args),
        error(static_cast<int32_t>(numberArgument(args, type.name, i32Max))),
        result(args.contains("result")
                   ? static_cast<int32_t>(numberArgument(args, "result", i32Max))
                   : resultFailure) {
    ownArguments["result"] = result;
  }
  void onIncoming(Incoming& incoming) const override { incoming.refuse(result, error); }

 private:
  const int32_t error;
  const int32_t result;
};

// The request or the hello is neither carried out nor answered.
struct Silence final : FlagEffect<IncomingEffect> {
  static constexpr EffectType type{"silent", isCall, parse<Silence>};
  using FlagEffect::FlagEffect;
  void onIncoming(Incoming&) const override {}
};

// The request or the hello is carried out later; others go ahead meanwhile.
struct Delay final : NumberEffect<IncomingEffect, delayMsMax> {
  static constexpr EffectType type{"delayMs", isCall, parse<Delay>};
  using NumberEffect::NumberEffect;
  void onIncoming(Incoming& incoming) const override {
    incoming.carryOutAfter(milliseconds(number));
  }
};

// A profile is written, or read, with these settings in place of its own.
struct OtherSettings final : Effect {
  static constexpr EffectType type{"settings",
                                   [](Subject subject) {
                                     return isMessage(subject, MessageId::CreateProfile) ||
                                            isMessage(subject, MessageId::ModifyProfile) ||
                                            isMessage(subject, MessageId::ProfileSettings);
                                   },
                                   parse<OtherSettings>};
  OtherSettings(const EffectType&, const json& args)
      : Effect(type, args), settings(settingsIn(args)) {
    ownArguments[std::string(type.name)] = toJson(settings);
  }
  void onIncoming(Incoming& incoming) const override {
    const MessageId id{incoming.frame.messageId};
    if (id == MessageId::CreateProfile || id == MessageId::ModifyProfile) {
      incoming.frame.payload = withSettings(incoming.frame.payload, settings);
    }
    incoming.carryOutWithEffect();
  }
  void onOutgoing(Outgoing& outgoing) const override {
    Frame& frame = outgoing.frame;
    if (MessageId{frame.messageId} == MessageId::ProfileSettings && isSuccess(frame.payload)) {
      frame.payload = withSettings(frame.payload, settings);
    }
    outgoing.send();
  }

 private:
  // Texts may be longer than a profile's, because some faults need that, but a fault has to fit
  // into a control frame.
  static constexpr size_t textBytesMax = 512;

  static Profile settingsIn(const json& args) {
    const std::string name(type.name);
    const json& wanted = args[name];
    if (!wanted.is_object() || wanted.empty()) {
      throw Error(name + " has to be an object with settings");
    }
    for (const auto& [setting, value] : wanted.items()) {
      if (!isSettingName(setting)) {
        throw Error(name + " has the unknown member \"" + setting + "\"");
      }
    }
    try {
      const Profile settings = profileFromJson(wanted);
      forEachSetting(refuseLongText, settings);
      return settings;
    } catch (const Error& error) {
      throw Error(name + "." + error.what());
    }
  }
  static constexpr auto refuseLongText = []<typename Value>(const Setting& setting,
                                                            const std::optional<Value>& value) {
    if constexpr (std::is_same_v<Value, std::string>) {
      if (value && value->size() > textBytesMax) {
        throw Error(std::string(setting.name) + " has more than " + std::to_string(textBytesMax) +
                    " bytes");
      }
    }
  };

  const Profile settings;
};

// The power goes at a moment of the request, the hello or the indication.
struct PowerLoss final : Effect {
  static constexpr EffectType type{"power", isAny, parse<PowerLoss>, {"offMs", "onMs", "times"}};
  PowerLoss(const EffectType&, const json& args)
      : Effect(type, args),
        moment(static_cast<Moment>(wordArgument(args, type.name, moments))),
        cycle(powerCycleFromJson(args)) {
    ownArguments = {{std::string(type.name), moments[moment]}};
    powerCycleToJson(cycle, ownArguments);
  }
  bool fits(Subject subject) const override {
    // Indications and hellos are not carried out before they are answered.
    return moment != Unanswered || isMessage(subject);
  }
  void onIncoming(Incoming& incoming) const override {
    if (moment == Unanswered) {
      incoming.carryOutUnanswered();
    } else if (moment == After) {
      incoming.carryOut();
    }
    incoming.losePower(cycle);
  }
  void onOutgoing(Outgoing& outgoing) const override {
    if (moment == After) {
      outgoing.send();
    }
    outgoing.losePower(cycle);
  }

 private:
  enum Moment { Before, Unanswered, After };
  static constexpr std::array<std::string_view, 3> moments = {"before", "unanswered", "after"};

  const Moment moment;
  const PowerCycle cycle;
};

// The platform answers the caller that asks for the service with this code.
struct HelloRefusal final : IncomingEffect {
  static constexpr EffectType type{"refuse", isHello, parse<HelloRefusal>};
  HelloRefusal(const EffectType&, const json& args)
      : IncomingEffect(type, args), code(codeIn(args)) {}
  void onIncoming(Incoming& incoming) const override { incoming.refuse(resultFailure, code); }

 private:
  static int32_t codeIn(const json& args) {
    const json& value = args[std::string(type.name)];
    const int64_t code = value.is_number_integer() ? value.get<int64_t>() : 0;
    if (code == 0 || code != static_cast<int32_t>(code)) {
      throw Error(std::string(type.name) + " has to be a whole number of 32 bits other than 0");
    }
    return static_cast<int32_t>(code);
  }

  const int32_t code;
};

constexpr const EffectType* incomingTypes[] = {&ErrorAnswer::type, &Silence::type,
                                               &Delay::type,       &OtherSettings::type,
                                               &PowerLoss::type,   &HelloRefusal::type};

}  // namespace

std::span<const EffectType* const> incomingEffects() { return incomingTypes; }

}  // namespace modem
