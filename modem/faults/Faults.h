// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The faults that the modem has, and how often each has yet to take effect.
//
// Every fault counts the subjects that its selector selects and its effect fits. A subject gets one
// fault at most: the oldest one that is due. The random decisions depend on the seeds and on the
// order of the subjects alone, so that the same script and the same requests repeat a run.
#pragma once

#include "modem/faults/Fault.h"
#include "modem/faults/FaultJson.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

namespace modem {

class Faults {
 public:
  // Adds a fault. Throws Error if there are too many.
  void add(const Fault& fault);
  // Replaces all faults, and the seed by the script's seed or 0.
  void replace(const FaultScript& script);

  // Returns the effect on this subject, or null, and uses up one time of its fault.
  EffectPtr take(Subject subject);

  // Returns the faults that are not used up, with what is left of them.
  nlohmann::json toJson() const;
  // Removes all faults but keeps the seed.
  void clear();

 private:
  struct Pending {
    Fault fault;
    std::mt19937_64 random;

    bool counts(Subject subject) const;
    // Counts the subject. Returns whether this fault takes effect unless an earlier one does.
    bool isDue();
    bool isUsedUp() const { return fault.trigger.times == 0u; }
  };

  uint64_t nextSeed();

  std::vector<Pending> pending;
  uint64_t seed = 0;
  uint64_t added = 0;  // since the last clear()
};

}  // namespace modem
