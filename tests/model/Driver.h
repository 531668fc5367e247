// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Runs random sequences of everything that a caller, other clients and the modem can do, on the
// real library and a modem's process, and holds both against the model after every step.
#pragma once

#include "World.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test::model {

// One step. What it does in detail follows from its seed and from what there is at that moment, so
// that a sequence makes sense also when steps are left out.
struct Step {
  unsigned int kind;
  std::uint32_t seed;
};

struct Counts {
  std::uint64_t steps = 0;
  std::uint64_t checks = 0;
  std::uint64_t requests = 0;
  std::uint64_t powerCycles = 0;
  std::uint64_t faultyRequests = 0;
  std::uint64_t faultyIndications = 0;
  std::uint64_t timeouts = 0;  // answers that the library waited for in vain
  std::uint64_t listenerRuns = 0;
  std::map<LeftBehind, std::uint64_t> leftBehind;
};

struct Outcome {
  // What differed, after which steps; empty when nothing did.
  std::string difference;
  std::vector<std::string> done;
  std::vector<std::string> log;  // the library's last lines
};

struct Sequence {
  std::vector<Step> steps;
  // Of a hundred answers that do not reach the library: how many it waits for to the end of its
  // timeout, a second each.
  int waitingPercent;
};

Sequence sequenceOf(std::uint64_t seed, std::size_t count, int waitingPercent);

// Runs the steps up to the first difference, and then looks at what has to hold when all is quiet.
Outcome run(const Sequence& sequence, Counts& counts);

// The fewest steps that still differ, found by leaving some out.
Sequence shrink(Sequence sequence);

// Runs a seed; a difference comes back as text with the seed and the fewest steps that show it.
std::string check(std::uint64_t seed, std::size_t count, int waitingPercent, Counts& counts);

// One line.
std::string textOf(const Counts& counts);

}  // namespace pavo::test::model
