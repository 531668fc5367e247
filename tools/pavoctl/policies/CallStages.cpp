// The stages for data calls and emergency calls.
#include "policies/Stages.h"

namespace pavoctl {

using pavo::AddProfileParams;
using pavo::FilterProfileParams;
using pavo::ModifyProfileParams;
using pavo::ProfileParams;

void setupDataCall(PolicyWalk& walk, const ProfileParams& wanted, bool isUpdateAllowed) {
  std::optional<Token> found;
  if (isUpdateAllowed) {
    found = walk.search("a profile of the wanted name, whatever its IP type",
                        only<FilterProfileParams>(wanted, {"apnName"}));
  } else {
    auto filter = only<FilterProfileParams>(wanted, {"apnName", "homeIPType"});
    found = walk.search("a profile of the wanted name and home IP type", filter);
    if (!found) {
      filter.addFilterMatchCriteria(anyHomeIP);
      found = walk.search(
          "a profile of the wanted name whose home IP type contains the wanted one or "
          "is contained in it",
          filter);
    }
  }
  if (!found) {
    walk.create("Nothing was found: create one",
                AddProfileParams(wanted, /*isPersistent=*/false, /*isIAProfile=*/false));
    return;
  }
  walk.take(*found);
  if (isUpdateAllowed) {
    walk.change("Change it to what is wanted", ModifyProfileParams(wanted), *found);
  }
}

void emergency(PolicyWalk& walk, const ProfileParams& wanted) {
  std::optional<Token> found;
  if (wanted.hasApnName()) {
    auto byName = only<FilterProfileParams>(wanted, {"apnName"});
    byName.setIsEmergencySupported(true);
    found = walk.search("a profile of the wanted name that supports emergency calls", byName);
  }
  if (!found) {
    FilterProfileParams byCapability;
    byCapability.setIsEmergencySupported(true);
    found = walk.search("any profile that supports emergency calls", byCapability);
  }
  if (found) {
    walk.take(*found);
    return;
  }
  AddProfileParams profile(wanted, /*isPersistent=*/true, /*isIAProfile=*/false);
  profile.setIsEmergencySupported(true);
  profile.setApnTypesMask(pavo::EMERGENCY);
  walk.create("Nothing was found: create one for emergency calls", profile);
}

}  // namespace pavoctl
