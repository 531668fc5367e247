// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Profiles that answer as the library would, for a dry run. No operation reaches the modem, and the
// modem is assumed to accept every change.
#pragma once

#include "policies/PolicySteps.h"
#include "policy/ProfileOperations.h"

#include <optional>

namespace pavoctl {

class SimulatedProfiles final : public pavo::policy::ProfileOperations {
 public:
  explicit SimulatedProfiles(Profiles cached) : profiles(std::move(cached)) {}

  std::list<pavo::policy::Key> filter(const pavo::FilterProfileParams& params) override;
  std::optional<pavo::ProfileParams> get(const pavo::policy::Key& key) override;
  bool match(const pavo::FilterProfileParams& params, const pavo::policy::Key& key) override;
  bool modify(const pavo::ModifyProfileParams& params, const pavo::policy::Key& key) override;
  pavo::policy::Key add(const pavo::AddProfileParams& params) override;

 private:
  Profiles profiles;
  // New tokens count down from the highest, because the cache's tokens count up.
  Token nextToken = ~Token{0};
};

// Returns null when no profile has the token.
CachedProfile* find(Profiles& profiles, Token token);

}  // namespace pavoctl
