// What can go wrong between the library and its modem: every effect of a fault, to be gone through
// by tests that sweep over all of them, and the words that set one.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "ModemProcess.h"

namespace pavo::test {

/// What a fault does, without whom it befalls and when.
struct FaultEffect {
  /// For people, such as "cut to 4 bytes".
  std::string name;
  /// The arguments that ask for it.
  nlohmann::json args;
  /// false: whoever waits for the answer waits for its whole timeout.
  bool isInTime = true;
};

std::ostream& operator<<(std::ostream& out, const FaultEffect& effect);

/// Everything that can have a fault, as the modem calls it.
const std::vector<std::string>& faultMessages();
const std::vector<std::string>& faultIndications();
const std::vector<std::string>& faultOccasions();

/// Every effect that can befall a message of faultMessages(), or "any" of them.
std::vector<FaultEffect> effectsOnMessage(const std::string& message);
/// Every effect that can befall an indication.
std::vector<FaultEffect> effectsOnIndication();
/// Every effect that can befall somebody who asks for the service.
std::vector<FaultEffect> effectsOnOccasion();

/// One fault in the making:
///   Fault::onMessage("create-profile").nth(3).with(effect.args)
class Fault {
 public:
  static Fault onMessage(const std::string& message) { return {"message", message}; }
  static Fault onIndication(const std::string& event) { return {"indication", event}; }
  static Fault onOccasion(const std::string& occasion) { return {"service", occasion}; }

  /// Lets the first ones go by.
  Fault& nth(int place) { return set("nth", place); }
  Fault& count(int times) { return set("count", times); }
  Fault& probability(double chance, std::uint64_t seed) {
    return set("probability", chance).set("seed", seed);
  }

  /// The arguments of the modem's verb "fail", and an element of a script.
  nlohmann::json with(const nlohmann::json& effect) const;

 private:
  Fault(const char* selector, const std::string& what) : args({{selector, what}}) {}
  Fault& set(const char* name, const nlohmann::json& value) {
    args[name] = value;
    return *this;
  }

  nlohmann::json args;
};

/// Adds a fault to those that the modem has.
void setFault(ModemProcess& modem, const nlohmann::json& fault);
/// Puts a script's faults in the place of those that the modem has.
void setScript(ModemProcess& modem, std::uint64_t seed, const std::vector<nlohmann::json>& faults);
/// True when all faults have taken effect as often as they should.
bool areFaultsUsedUp(ModemProcess& modem);
void clearFaults(ModemProcess& modem);

}  // namespace pavo::test
