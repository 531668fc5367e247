// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Records what a policy does with profiles while it does it.
#pragma once

#include "policies/PolicySteps.h"
#include "policy/Policies.h"

#include <optional>
#include <string>
#include <vector>

namespace pavoctl {

// What became of a policy, or would.
struct PolicyOutcome {
  Json steps;
  Profiles profiles;            // As they are afterwards.
  std::optional<Token> result;  // The profile that was found or created.
  bool isCreated = false;
  bool isMatching = false;  // matchAttach
  // Changes and creations that the modem refused or did not answer: ids, unknownId for a creation.
  std::vector<int> refused;
  bool isUnsure = false;  // The modem may have made some of them and not have answered.
};

// Passes every operation on, and makes a step of it.
class PolicyRecorder final : public pavo::policy::ProfileOperations,
                             public pavo::policy::PolicyObserver {
 public:
  // The profiles are those of the cache at the beginning. The manager's cache tells whether the
  // modem has taken a change; without a manager every change is taken.
  PolicyRecorder(pavo::policy::ProfileOperations& recorded, Profiles cached, pavo::Manager* manager,
                 Secrets secrets);

  std::list<pavo::policy::Key> filter(const pavo::FilterProfileParams& params) override;
  std::optional<pavo::ProfileParams> get(const pavo::policy::Key& key) override;
  bool match(const pavo::FilterProfileParams& params, const pavo::policy::Key& key) override;
  bool modify(const pavo::ModifyProfileParams& params, const pavo::policy::Key& key) override;
  pavo::policy::Key add(const pavo::AddProfileParams& params) override;

  void log(pavo::policy::LineLevel level, const char* line) override;
  void enter(pavo::policy::Stage next, unsigned apnTypes) override;
  void collect(const std::string& apnName, const pavo::policy::TypesByIPType& types) override;

  // The record, with what the policy has answered.
  PolicyOutcome finish(const pavo::policy::Key& result, bool isMatching);

 private:
  // A profile that came after the profiles were looked at is taken up; no more is known of it.
  CachedProfile& known(const pavo::policy::Key& key);
  // The cache's text of the profile; nothing when it has gone.
  std::optional<std::string> textOf(const CachedProfile& profile) const;

  pavo::policy::ProfileOperations& operations;
  pavo::Manager* const cache;
  Profiles profiles;
  PolicySteps steps;
  PolicyOutcome outcome;
  pavo::policy::Stage stage{};
  unsigned types = 0;  // Of the stage.
};

}  // namespace pavoctl
