// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// One fault: which subjects it is for, how often and when it takes effect, and what it does.
#pragma once

#include "modem/faults/Effect.h"
#include "modem/faults/Subject.h"

#include <cstdint>
#include <optional>

namespace modem {

struct Trigger {
  uint32_t passes = 0;                // how many subjects it leaves alone first
  std::optional<uint32_t> times = 1;  // how often it takes effect; empty: without end
  double probability = 1;
  // The seed of the random decisions. Empty: it is derived from the script's seed.
  std::optional<uint64_t> seed = {};
};

struct Fault {
  Selector selector;
  Trigger trigger;
  EffectPtr effect;
};

}  // namespace modem
