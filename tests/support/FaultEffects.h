// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header lists every effect that a fault of the modem can have, for tests that go through all
// of them. It also has the functions that set a fault.
#pragma once

#include "ModemProcess.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace pavo::test {

// A fault's effect, without its selector and its trigger.
struct FaultEffect {
  // A description for test output, such as "cut to 4 bytes".
  std::string name;
  // The control-channel arguments that select this effect.
  nlohmann::json args;
  // If false, the client waits for the answer until its timeout.
  bool isInTime = true;
};

std::ostream& operator<<(std::ostream& out, const FaultEffect& effect);

// Returns the modem's names of all messages that can have a fault.
const std::vector<std::string>& faultMessages();
const std::vector<std::string>& faultIndications();
const std::vector<std::string>& faultOccasions();

// Returns every effect that fits a message of faultMessages(), or "any" of them.
std::vector<FaultEffect> effectsOnMessage(const std::string& message);
// Returns every effect that fits an indication.
std::vector<FaultEffect> effectsOnIndication();
// Returns every effect that fits a hello.
std::vector<FaultEffect> effectsOnOccasion();

// Builds the arguments of one fault:
//   Fault::onMessage("create-profile").nth(3).with(effect.args)
class Fault {
 public:
  static Fault onMessage(const std::string& message) { return {"message", message}; }
  static Fault onIndication(const std::string& event) { return {"indication", event}; }
  static Fault onOccasion(const std::string& occasion) { return {"service", occasion}; }

  // Makes the fault begin with the selected subject at this place.
  Fault& nth(int place) { return set("nth", place); }
  Fault& count(int times) { return set("count", times); }
  Fault& probability(double chance, std::uint64_t seed) {
    return set("probability", chance).set("seed", seed);
  }

  // Returns the arguments of the modem's verb "fail", also usable as an element of a script.
  nlohmann::json with(const nlohmann::json& effect) const;

 private:
  Fault(const char* selector, const std::string& what) : args({{selector, what}}) {}
  Fault& set(const char* name, const nlohmann::json& value) {
    args[name] = value;
    return *this;
  }

  nlohmann::json args;
};

// Adds a fault to the modem's faults.
void setFault(ModemProcess& modem, const nlohmann::json& fault);
// Replaces the modem's faults by those of a script.
void setScript(ModemProcess& modem, std::uint64_t seed, const std::vector<nlohmann::json>& faults);
// Returns whether all faults are used up.
bool areFaultsUsedUp(ModemProcess& modem);
void clearFaults(ModemProcess& modem);

}  // namespace pavo::test
