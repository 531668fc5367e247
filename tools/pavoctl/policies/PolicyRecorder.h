// Records what a policy does with profiles while it does it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "policies/PolicyOutcome.h"
#include "policy/Policies.h"

namespace pavoctl {

// Passes every operation on, and makes a step of it.
class PolicyRecorder : public pavo::policy::ProfileOperations, public pavo::policy::PolicyObserver {
 public:
  // The cache's text of an entry; nothing when the entry has gone.
  using CacheReader = std::function<std::optional<std::string>(Token token)>;

  // The profiles are those of the cache at the beginning. The library does not say whether the
  // modem has taken a change: it has when the cache's text of the profile is another one
  // afterwards. Without a reader every change is taken.
  PolicyRecorder(pavo::policy::ProfileOperations& recorded, Profiles cached, CacheReader reader,
                 Secrets secrets);

  std::list<pavo::policy::Key> filter(const pavo::FilterProfileParams& params) override;
  std::optional<pavo::ProfileParams> get(const pavo::policy::Key& key) override;
  bool match(const pavo::FilterProfileParams& params, const pavo::policy::Key& key) override;
  bool modify(const pavo::ModifyProfileParams& params, const pavo::policy::Key& key) override;
  pavo::policy::Key add(const pavo::AddProfileParams& params) override;

  void log(pavo::policy::LineLevel level, const std::string& line) override;
  void enter(pavo::policy::Stage next, unsigned apnTypes) override;
  void collect(const std::string& apnName, const pavo::policy::TypesByIPType& types) override;

  // The record, with what the policy has answered.
  PolicyOutcome finish(const pavo::policy::Key& result, bool isMatching);

 private:
  // A profile that came after the profiles were looked at is taken up; no more is known of it.
  CachedProfile& known(const pavo::policy::Key& key);
  void readAgain(CachedProfile& profile, const pavo::policy::Key& key);
  std::optional<std::string> cacheText(Token token) const;

  pavo::policy::ProfileOperations& operations;
  const CacheReader readCache;
  Profiles profiles;
  PolicySteps steps;
  PolicyOutcome outcome;
  pavo::policy::Stage stage{};
  unsigned types = 0;  // Of the stage.
};

}  // namespace pavoctl
