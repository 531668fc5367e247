// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A call of one of the library's policies.
#pragma once

#include <pavo/ProfileParams.h>

#include "policy/Policies.h"

#include <list>

namespace pavoctl {

enum class Policy { setupDataCall, emergency, lteAttach, matchAttach, apnClass, apnTypes };

// Returns the policy's verb.
const char* nameOf(Policy policy);
// Returns whether the policy brings profiles in line with a list, instead of choosing one.
bool isForList(Policy policy);

struct PolicyCall {
  Policy policy = Policy::setupDataCall;
  bool isUpdateAllowed = false;
  // The settings that the caller wants: one element, or a list for apnClass and apnTypes.
  std::list<pavo::ProfileParams> wanted;
  int profileId = 0;  // matchAttach
};

// The answer of a policy. A policy for a list leaves it empty.
struct PolicyAnswer {
  pavo::policy::Key key;
  bool isMatching = false;
};

PolicyAnswer call(const PolicyCall& call, pavo::policy::ProfileOperations& profiles,
                  pavo::policy::PolicyObserver& observer);

}  // namespace pavoctl
