// Running the library's policies, and foreseeing what they would do.
#pragma once

#include "policies/PolicyStages.h"
#include "session/Session.h"

namespace pavoctl {

struct PolicyResult {
  PolicyOutcome outcome;
  Key key;  // Of the profile that was found or created, if any.
};

// Nothing on the modem changes.
PolicyOutcome foresee(const PolicyCall& call, const Snapshot& snapshot, Secrets secrets);

// Has the library do it, and reads in its log what it did. When the log does not hold all of that
// any more, the profiles tell.
PolicyResult perform(const PolicyCall& call, Session& session, Secrets secrets);

// What the filter finds; the steps tell why it does not find the others.
Session::Listing explainList(Session& session, const pavo::FilterProfileParams& filter,
                             Secrets secrets, Json& steps);

}  // namespace pavoctl
