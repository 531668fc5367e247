// What the modem was told to do wrong, and when still.
//
// Every fault counts the subjects that its selector picks and its effect can befall. A subject
// meets one fault at most, the first in the order of adding that is due. What the dice decide
// depends on the seeds and on the order of the subjects only, so that the same script and the same
// requests make the same faults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <vector>

#include "modem/faults/Fault.h"
#include "modem/faults/FaultJson.h"

namespace modem {

class Faults {
 public:
  // Behind those that there are. Throws Error when there are too many.
  void add(const Fault& fault);
  // In their place, with the script's seed or else 0.
  void replace(const FaultScript& script);

  // What befalls this subject; uses up one time of the fault.
  EffectPtr take(Subject subject);

  // Those that are not used up, as what is left of them.
  nlohmann::json toJson() const;
  // Forgets them, but not the seed.
  void clear();

 private:
  struct Pending {
    Fault fault;
    std::mt19937_64 dice;

    bool counts(Subject subject) const;
    // Counts the subject; true when this fault takes effect unless another one has.
    bool isDue();
    bool isUsedUp() const { return fault.trigger.times == 0u; }
  };

  uint64_t nextSeed();

  std::vector<Pending> pending;
  uint64_t seed = 0;
  uint64_t added = 0;  // since the last clear()
};

}  // namespace modem
