// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/Faults.h"

#include "modem/common/Json.h"
#include "modem/faults/FaultSelector.h"

#include <string>

namespace modem {

using nlohmann::json;

namespace {

// Returns a number in [0, 1). The standard's distributions differ between libraries.
double randomFraction(std::mt19937_64& random) {
  constexpr int doubleBits = 53;
  return static_cast<double>(random() >> (64 - doubleBits)) /
         static_cast<double>(uint64_t{1} << doubleBits);
}

}  // namespace

void Faults::add(const Fault& fault) {
  if (pending.size() == faultsMax) {
    throw Error("there are " + std::to_string(faultsMax) + " faults already");
  }
  Pending fresh{fault, std::mt19937_64{}};
  Trigger& trigger = fresh.fault.trigger;
  const uint64_t ownSeed = nextSeed();
  if (!trigger.seed) {
    trigger.seed = ownSeed;
  }
  fresh.random.seed(*trigger.seed);
  pending.push_back(std::move(fresh));
}

void Faults::replace(const FaultScript& script) {
  clear();
  seed = script.seed.value_or(0);
  for (const Fault& fault : script.faults) {
    add(fault);
  }
}

EffectPtr Faults::take(Subject subject) {
  EffectPtr taken;
  for (Pending& one : pending) {
    // Every fault that matches counts this subject, even when an earlier fault takes effect on it.
    if (one.counts(subject) && one.isDue() && taken == nullptr) {
      taken = one.fault.effect;
      if (one.fault.trigger.times) {
        --*one.fault.trigger.times;
      }
    }
  }
  std::erase_if(pending, [](const Pending& one) { return one.isUsedUp(); });
  return taken;
}

json Faults::toJson() const {
  json list = json::array();
  for (const Pending& one : pending) {
    list.push_back(modem::toJson(one.fault));
  }
  return list;
}

void Faults::clear() {
  pending.clear();
  added = 0;
}

bool Faults::Pending::counts(Subject subject) const {
  return isSelected(fault.selector, subject) && fault.effect->fits(subject);
}

bool Faults::Pending::isDue() {
  if (fault.trigger.passes > 0) {
    --fault.trigger.passes;
    return false;
  }
  return fault.trigger.probability >= 1 || randomFraction(random) < fault.trigger.probability;
}

// Each fault gets a seed of its own, so that two faults with the same probability do not always
// take effect together.
uint64_t Faults::nextSeed() {
  std::mt19937_64 seeds(seed);
  seeds.discard(added++);
  return seeds() & seedMax;
}

}  // namespace modem
