// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Runs and simulates the library's policies.
#pragma once

#include "policies/PolicyCall.h"
#include "policies/PolicyRecorder.h"
#include "session/Session.h"

namespace pavoctl {

struct PolicyResult {
  PolicyOutcome outcome;
  Key key;  // the key of the profile that was found or created, if any
};

// Simulates the policy. Nothing on the modem changes.
PolicyOutcome simulate(const PolicyCall& call, const Snapshot& snapshot, Secrets secrets);

// Runs the policy with the library's operations.
PolicyResult perform(const PolicyCall& call, Session& session, Secrets secrets);

// Returns the profiles that the filter finds. The steps explain why it does not find the others.
Session::Listing explainList(Session& session, const pavo::FilterProfileParams& filter,
                             Secrets secrets, Json& steps);

}  // namespace pavoctl
