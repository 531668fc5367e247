// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/PolicyCall.h"

namespace pavoctl {

const char* nameOf(Policy policy) {
  switch (policy) {
    case Policy::setupDataCall:
      return "setup-data-call";
    case Policy::emergency:
      return "emergency";
    case Policy::lteAttach:
      return "lte-attach";
    case Policy::matchAttach:
      return "match-attach";
    case Policy::apnClass:
      return "apn-class";
    case Policy::apnTypes:
      break;
  }
  return "apn-types";
}

bool isForList(Policy policy) { return policy == Policy::apnClass || policy == Policy::apnTypes; }

PolicyAnswer call(const PolicyCall& call, pavo::policy::ProfileOperations& profiles,
                  pavo::policy::PolicyObserver& observer) {
  namespace policy = pavo::policy;
  const policy::Run run{profiles, observer, call.isUpdateAllowed};
  // Only the list of apn-class or apn-types may be empty.
  const pavo::ProfileParams params =
      call.wanted.empty() ? pavo::ProfileParams() : call.wanted.front();
  switch (call.policy) {
    case Policy::setupDataCall:
      return {policy::findOrCreateProfileForSetupDataCall(run, params)};
    case Policy::emergency:
      return {policy::findOrCreateProfileForEmergencyDataCall(run, params)};
    case Policy::lteAttach:
      return {policy::findOrCreateProfileForLteAttach(run, params)};
    case Policy::matchAttach:
      return {nullptr, policy::matchLteAttachProfileId(run, call.profileId, params)};
    case Policy::apnClass:
      policy::updateModemProfileByApnClass(run, call.wanted);
      break;
    case Policy::apnTypes:
      policy::updateAPNTypeBitmaskOnModemProfile(run, call.wanted);
      break;
  }
  return {};
}

}  // namespace pavoctl
