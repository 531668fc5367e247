// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The driver runs random sequences of the actions of a caller, other clients and the modem, on the
// real library and a modem's process. It compares both with the model after every step.
#pragma once

#include "World.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test::model {

// A Step is one step of a sequence. Its details follow from its seed and from the state at that
// moment, so a sequence stays valid when steps are left out.
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
  std::uint64_t timeouts = 0;  // answers for which the library waited in vain
  std::uint64_t listenerRuns = 0;
  std::map<LeftBehind, std::uint64_t> leftBehind;
};

struct Outcome {
  // Describes the difference and the steps before it; empty when there was none.
  std::string difference;
  std::vector<std::string> done;
  std::vector<std::string> log;  // the library's last lines
};

struct Sequence {
  std::vector<Step> steps;
  // The percentage of the lost answers for which the library waits until its timeout, a second
  // each.
  int waitingPercent;
};

Sequence sequenceOf(std::uint64_t seed, std::size_t count, int waitingPercent);

// Runs the steps up to the first difference, and then checks the rules that hold when all is quiet.
Outcome run(const Sequence& sequence, Counts& counts);

// Returns the fewest steps that still differ, found by leaving some out.
Sequence shrink(Sequence sequence);

// Runs a seed. A difference is returned as text with the seed and the fewest steps that show it.
std::string check(std::uint64_t seed, std::size_t count, int waitingPercent, Counts& counts);

// Returns the counts as one line.
std::string textOf(const Counts& counts);

}  // namespace pavo::test::model
