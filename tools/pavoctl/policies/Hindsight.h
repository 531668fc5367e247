// What the library must have done, when its log no longer tells: foresight, corrected by what the
// profiles are like afterwards.
#pragma once

#include "policies/Foresight.h"
#include "policies/PolicyCall.h"
#include "session/Snapshot.h"

namespace pavoctl {

class Hindsight : public Foresight {
 public:
  Hindsight(const PolicyCall& call, const Snapshot& before, const Snapshot& after);

  // Refused when the profile is not in the end what it was to become.
  ChangeOutcome modify(const pavo::ModifyProfileParams& params,
                       const CachedProfile& profile) override;
  // One of the new profiles that is like that.
  std::optional<Entry> add(const pavo::AddProfileParams& params) override;

 private:
  std::vector<Token> unlikeForeseen;
  Profiles newProfiles;
};

}  // namespace pavoctl
