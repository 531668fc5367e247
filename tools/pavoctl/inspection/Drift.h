// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Where a cache and the modem are not of one mind.
#pragma once

#include "session/Snapshot.h"

#include <string>
#include <vector>

namespace pavoctl {

struct Drift {
  // One object for each profile: id, apnName and kind. "differs" (with changes: attribute: cache,
  // modem), "missing" (the modem no longer has it), "unknown" (the cache does not know it), "twice"
  // (in the cache).
  Json profiles = Json::array();
  // Indications that the library waits for in vain.
  std::vector<std::string> pending;
  std::size_t unreadable = 0;  // Entries of the cache that hold nothing.

  bool isNone() const { return profiles.empty() && pending.empty() && unreadable == 0; }
};

Drift compare(const Snapshot& cache, const Snapshot& modem, Secrets secrets);

// One line for each.
std::string driftText(const Drift& drift);

}  // namespace pavoctl
