// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FaultEffects.h"

#include <algorithm>

namespace pavo::test {

namespace {

using nlohmann::json;
using Effects = std::vector<FaultEffect>;

// One delay is longer than the library waits for an answer, the other one much shorter.
constexpr int lateMs = 1300;
constexpr int soonMs = 30;

constexpr int resultField = 0x02;
constexpr int answerField = 0x03;
constexpr int eventField = 0x10;
constexpr int unknownMessage = 0x00A9;
constexpr int unknownIndex = 200;

void append(Effects& effects, const Effects& more) {
  effects.insert(effects.end(), more.begin(), more.end());
}

// The effects on every message that the modem sends.
Effects effectsOnSending() {
  return {
      {"doubled", {{"doubled", true}}},
      {"cut to nothing", {{"cutTo", 0}}},
      {"cut inside a field's header", {{"cutTo", 2}}},
      {"cut inside a value", {{"cutTo", 7}}},
      {"noise", {{"undecodable", "noise"}}},
      {"a field twice", {{"undecodable", "twice"}}},
      {"a field that leaves the message", {{"undecodable", "overrun"}}},
      {"a field too wide", {{"undecodable", "wide"}}},
      {"of an unknown message", {{"asMessage", unknownMessage}}},
  };
}

Effects effectsOnEveryMessage() {
  Effects effects = {
      {"an error", {{"error", 2}}},
      {"a failure without an error", {{"error", 0}, {"result", 0x7FFFFFFF}}},
      {"silence", {{"silent", true}}, /*isInTime=*/false},
      {"taken up soon", {{"delayMs", soonMs}}},
      {"taken up late", {{"delayMs", lateMs}}, /*isInTime=*/false},
      {"answered soon", {{"lateMs", soonMs}}},
      {"answered late", {{"lateMs", lateMs}}, /*isInTime=*/false},
      {"the answer lost", {{"lost", true}}, /*isInTime=*/false},
      {"no result", {{"withoutField", resultField}}},
      {"power lost before", {{"power", "before"}, {"offMs", soonMs}}},
      {"power lost before the answer", {{"power", "unanswered"}, {"offMs", soonMs}}},
      {"power lost after", {{"power", "after"}, {"offMs", soonMs}}},
      {"a restart before", {{"power", "before"}}},
      {"a restart before the answer", {{"power", "unanswered"}}},
      {"a restart after", {{"power", "after"}}},
  };
  append(effects, effectsOnSending());
  return effects;
}

Effects effectsOnSettings() {
  return {
      {"other settings", {{"settings", {{"apn", "other.apn"}, {"user", "other"}}}}},
      {"values outside of their enumerations",
       {{"settings", {{"pdpType", 77}, {"lteRoam", 0xFFFFFFFF}, {"auth", 255}, {"class", 255}}}}},
  };
}

Effects effectsOnTexts() {
  return {
      {"texts without an end", {{"unterminated", true}}},
      {"texts without an end, unchecked", {{"unterminated", true}, {"unchecked", true}}},
  };
}

Effects effectsOnList() {
  return {
      {"no list", {{"withoutField", answerField}}},
      {"a count above what fits", {{"listCount", 256}}},
      {"a count of all ones", {{"listCount", 65535}}},
      {"a count above what fits, unchecked", {{"listCount", 300}, {"unchecked", true}}},
      {"a count below what is there", {{"listCount", 0}}},
  };
}

bool isOneOf(const std::string& message, const std::vector<std::string>& messages) {
  return std::find(messages.begin(), messages.end(), message) != messages.end();
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const FaultEffect& effect) {
  return out << effect.name << " " << effect.args;
}

const std::vector<std::string>& faultMessages() {
  static const std::vector<std::string> names = {
      "indication-register", "create-profile",   "modify-profile",   "delete-profile",
      "profile-list",        "profile-settings", "configure-events", "bind-subscription"};
  return names;
}

const std::vector<std::string>& faultIndications() {
  static const std::vector<std::string> names = {"create", "delete", "modify",
                                                 "subscription-change", "ready"};
  return names;
}

const std::vector<std::string>& faultOccasions() {
  static const std::vector<std::string> names = {"open", "find", "watch", "object"};
  return names;
}

std::vector<FaultEffect> effectsOnMessage(const std::string& message) {
  Effects effects = effectsOnEveryMessage();
  if (isOneOf(message, {"create-profile", "modify-profile", "profile-settings", "any"})) {
    append(effects, effectsOnSettings());
  }
  if (isOneOf(message, {"profile-list", "profile-settings", "any"})) {
    append(effects, effectsOnTexts());
  }
  if (isOneOf(message, {"profile-list", "any"})) {
    append(effects, effectsOnList());
  }
  if (message == "create-profile") {
    effects.push_back({"no index", {{"withoutField", answerField}}});
  }
  return effects;
}

std::vector<FaultEffect> effectsOnIndication() {
  Effects effects = {
      {"lost", {{"lost", true}}},
      {"late", {{"lateMs", soonMs}}},
      {"behind the next one", {{"reordered", true}}},
      {"before the answer", {{"early", true}}},
      {"for an unknown index", {{"index", unknownIndex}}},
      {"event 0", {{"event", 0}}},
      {"event 9", {{"event", 9}}},
      {"event 2^31", {{"event", 0x80000000}}},
      {"the valid flag down", {{"withoutField", eventField}}},
      {"power lost before", {{"power", "before"}, {"offMs", soonMs}}},
      {"power lost after", {{"power", "after"}, {"offMs", soonMs}}},
      {"a restart before", {{"power", "before"}}},
      {"a restart after", {{"power", "after"}}},
  };
  append(effects, effectsOnSending());
  return effects;
}

std::vector<FaultEffect> effectsOnOccasion() {
  return {
      {"refused", {{"refuse", -2}}},
      {"refused with another code", {{"refuse", 77}}},
      {"silence", {{"silent", true}}, /*isInTime=*/false},
      {"answered soon", {{"delayMs", soonMs}}},
      {"power lost before", {{"power", "before"}, {"offMs", soonMs}}},
      {"power lost after", {{"power", "after"}, {"offMs", soonMs}}},
      {"a restart before", {{"power", "before"}}},
      {"a restart after", {{"power", "after"}}},
  };
}

json Fault::with(const json& effect) const {
  json fault = args;
  fault.update(effect);
  return fault;
}

void setFault(ModemProcess& modem, const json& fault) { modem.control("fail", fault); }

void setScript(ModemProcess& modem, std::uint64_t seed, const std::vector<json>& faults) {
  modem.control("script", {{"seed", seed}, {"faults", faults}});
}

bool areFaultsUsedUp(ModemProcess& modem) { return modem.control("faults")["faults"].empty(); }

void clearFaults(ModemProcess& modem) { modem.control("clear"); }

}  // namespace pavo::test
