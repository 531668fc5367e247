#include "policies/PolicyStages.h"

#include "policies/Stages.h"

namespace pavoctl {

PolicyOutcome follow(const PolicyCall& call, Profiles profiles, Answers& answers, Secrets secrets) {
  PolicyWalk walk(std::move(profiles), answers, secrets);
  // Only a list may be empty.
  const pavo::ProfileParams wanted =
      call.wanted.empty() ? pavo::ProfileParams() : call.wanted.front();
  switch (call.policy) {
    case Policy::setupDataCall:
      setupDataCall(walk, wanted, call.isUpdateAllowed);
      break;
    case Policy::emergency:
      emergency(walk, wanted);
      break;
    case Policy::lteAttach:
      lteAttach(walk, wanted, call.isUpdateAllowed);
      break;
    case Policy::matchAttach:
      matchAttach(walk, wanted, call.profileId, call.isUpdateAllowed);
      break;
    case Policy::apnClass:
      for (const auto& element : call.wanted) {
        apnClass(walk, element);
      }
      break;
    case Policy::apnTypes:
      apnTypes(walk, call.wanted, call.isUpdateAllowed);
      break;
  }
  return walk.finish();
}

}  // namespace pavoctl
