// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Running the library's policies, and simulating what they would do.
#pragma once

#include "policies/PolicyCall.h"
#include "policies/PolicyRecorder.h"
#include "session/Session.h"

namespace pavoctl {

struct PolicyResult {
  PolicyOutcome outcome;
  Key key;  // Of the profile that was found or created, if any.
};

// Nothing on the modem changes.
PolicyOutcome simulate(const PolicyCall& call, const Snapshot& snapshot, Secrets secrets);

// Does it with the library's operations.
PolicyResult perform(const PolicyCall& call, Session& session, Secrets secrets);

// What the filter finds; the steps tell why it does not find the others.
Session::Listing explainList(Session& session, const pavo::FilterProfileParams& filter,
                             Secrets secrets, Json& steps);

}  // namespace pavoctl
