// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The differences between a cache and the modem.
#pragma once

#include "session/Snapshot.h"

#include <string>
#include <vector>

namespace pavoctl {

struct Drift {
  // Each profile is one object with id, apnName and kind. The kind is "differs" (with changes:
  // attribute: cache, modem), "missing" (the modem no longer has it), "unknown" (the cache does not
  // know it) or "twice" (in the cache).
  Json profiles = Json::array();
  // The indications that the library still expects from the modem.
  std::vector<std::string> pending;
  std::size_t unreadable = 0;  // entries of the cache that hold nothing

  bool isNone() const { return profiles.empty() && pending.empty() && unreadable == 0; }
};

Drift compare(const Snapshot& cache, const Snapshot& modem, Secrets secrets);

// Returns a line for each difference.
std::string driftText(const Drift& drift);

}  // namespace pavoctl
