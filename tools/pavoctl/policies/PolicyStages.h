// The policies' stages, in the order in which the library goes through them.
#pragma once

#include <optional>

#include "policies/Answers.h"
#include "policies/PolicyCall.h"
#include "policies/Story.h"

namespace pavoctl {

// Where the steps of a policy are known from: the tool's foresight, the library's log or, when that
// does not hold them any more, foresight that was checked against the profiles afterwards.
enum class Source { foresight, log, profiles };

// What became of a policy.
struct PolicyOutcome {
  Source source = Source::foresight;
  Json steps;
  Profiles profiles;            // As they are afterwards.
  std::optional<Token> result;  // The profile that was found or created.
  bool isCreated = false;
  bool isMatching = false;  // matchAttach
  // Changes and creations that the modem refused or did not answer: ids, unknownId for a creation.
  std::vector<int> refused;
  bool isUnsure = false;  // The modem may have made some of them and not have answered.
};

// Goes through the stages with these answers.
PolicyOutcome follow(const PolicyCall& call, Profiles profiles, Answers& answers, Secrets secrets);

}  // namespace pavoctl
