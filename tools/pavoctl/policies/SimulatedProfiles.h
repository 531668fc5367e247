// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Profiles that answer as the library would, for a dry run. Nothing is asked, and the modem is
// taken to agree to every change.
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
  // Downwards from the end: the cache counts upwards.
  Token nextToken = ~Token{0};
};

// Null when there is none.
CachedProfile* find(Profiles& profiles, Token token);

}  // namespace pavoctl
