// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A call of one of the library's policies.
#pragma once

#include <pavo/ProfileParams.h>

#include "policy/Policies.h"

#include <list>

namespace pavoctl {

enum class Policy { setupDataCall, emergency, lteAttach, matchAttach, apnClass, apnTypes };

// The verb.
const char* nameOf(Policy policy);
// Whether it brings profiles in line with a list, and does not choose one.
bool isForList(Policy policy);

struct PolicyCall {
  Policy policy = Policy::setupDataCall;
  bool isUpdateAllowed = false;
  // What the caller wants: one element, or a list for apnClass and apnTypes.
  std::list<pavo::ProfileParams> wanted;
  int profileId = 0;  // matchAttach
};

// What a policy answers; to a list, nothing.
struct PolicyAnswer {
  pavo::policy::Key key;
  bool isMatching = false;
};

PolicyAnswer call(const PolicyCall& call, pavo::policy::ProfileOperations& profiles,
                  pavo::policy::PolicyObserver& observer);

}  // namespace pavoctl
