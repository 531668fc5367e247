// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Records the operations of a policy on profiles while the policy runs.
#pragma once

#include "policies/PolicySteps.h"
#include "policy/Policies.h"

#include <optional>
#include <string>
#include <vector>

namespace pavoctl {

// The result of a policy, or of its simulation.
struct PolicyOutcome {
  Json steps;
  Profiles profiles;            // as they are afterwards
  std::optional<Token> result;  // the profile that was found or created
  bool isCreated = false;
  bool isMatching = false;  // matchAttach
  // The changes and creations that the modem refused or did not answer. They are ids, with
  // unknownId for a creation.
  std::vector<int> refused;
  bool isUnsure = false;  // The modem may have made some of the refused edits without answering.
};

// Passes every operation on and records it as a step.
class PolicyRecorder final : public pavo::policy::ProfileOperations,
                             public pavo::policy::PolicyObserver {
 public:
  // cached holds the profiles of the cache at the beginning. The manager's cache shows whether the
  // modem has taken a change. Without a manager every change counts as taken.
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

  // Returns the record together with the policy's answer.
  PolicyOutcome finish(const pavo::policy::Key& result, bool isMatching);

 private:
  // Returns the recorder's copy of the profile. A profile that has appeared since the beginning is
  // added with its token and id only.
  CachedProfile& known(const pavo::policy::Key& key);
  // Returns the cache's text of the profile, or nothing when the profile has gone.
  std::optional<std::string> textOf(const CachedProfile& profile) const;

  pavo::policy::ProfileOperations& operations;
  pavo::Manager* const cache;
  Profiles profiles;
  PolicySteps steps;
  PolicyOutcome outcome;
  pavo::policy::Stage stage{};
  unsigned types = 0;  // the types of the stage
};

}  // namespace pavoctl
