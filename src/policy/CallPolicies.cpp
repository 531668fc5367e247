// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The policies for a data call and for an emergency call.
#include "Policies.h"
#include "PolicyParts.h"

namespace pavo::policy {

Key findOrCreateProfileForSetupDataCall(const Run& run, const ProfileParams& params) {
  run.log(High, "pavo findOrCreateProfileForSetupDataCall > %s", params.dump().c_str());
  FilterProfileParams filter;
  copyApnName(params, filter);
  // With updates allowed any home IP type is acceptable, because the profile is changed to the
  // wanted one below.
  if (!run.updateAllowed) {
    copyHomeIPType(params, filter);
  }
  run.enter(run.updateAllowed ? Stage::SearchByName : Stage::SearchByNameAndHomeIPType);
  Key result = firstOf(run.profiles.filter(filter));
  if (result == nullptr && !run.updateAllowed) {
    filter.addFilterMatchCriteria(anyHomeIP);
    run.enter(Stage::SearchByNameAndLikeHomeIPType);
    result = firstOf(run.profiles.filter(filter));
  }
  if (result == nullptr) {
    run.enter(Stage::CreateForDataCall);
    result =
        run.profiles.add(AddProfileParams(params, /*isPersistent=*/false, /*isIAProfile=*/false));
    run.log(High, "setupDataCall profile added");
  } else {
    run.log(High, "found existing setupDataCall profile");
    if (run.updateAllowed) {
      run.log(High, "Modifying profile with input parameters");
      run.enter(Stage::ChangeForDataCall);
      run.profiles.modify(ModifyProfileParams(params), result);
    }
  }
  run.log(High, "pavo findOrCreateProfileForSetupDataCall < %s", textOf(result).c_str());
  return result;
}

Key findOrCreateProfileForEmergencyDataCall(const Run& run, const ProfileParams& params) {
  run.log(High, "pavo findOrCreateProfileForEmergencyDataCall > %s", params.dump().c_str());
  Key result;
  if (params.hasApnName()) {
    FilterProfileParams byName;
    copyApnName(params, byName);
    byName.setIsEmergencySupported(true);
    run.enter(Stage::SearchEmergencyByName);
    result = firstOf(run.profiles.filter(byName));
    if (result != nullptr) {
      run.log(High, "found an emergency profile by name");
    }
  }
  if (result == nullptr) {
    FilterProfileParams byCapability;
    byCapability.setIsEmergencySupported(true);
    run.enter(Stage::SearchEmergency);
    result = firstOf(run.profiles.filter(byCapability));
    if (result != nullptr) {
      run.log(High, "found a profile that supports emergency calls");
    }
  }
  if (result == nullptr) {
    // The profile is persistent, unlike a data call's, because the next emergency call must not
    // wait for a create.
    AddProfileParams emergency(params, /*isPersistent=*/true, /*isIAProfile=*/false);
    emergency.setIsEmergencySupported(true);
    emergency.setApnTypesMask(EMERGENCY);
    run.enter(Stage::CreateForEmergency);
    result = run.profiles.add(emergency);
    run.log(High, "emergency profile created");
  }
  run.log(High, "pavo findOrCreateProfileForEmergencyDataCall < %s", textOf(result).c_str());
  return result;
}

}  // namespace pavo::policy
