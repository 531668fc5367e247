// What became of a policy, or would.
#pragma once

#include <optional>
#include <vector>

#include "policies/PolicySteps.h"

namespace pavoctl {

struct PolicyOutcome {
  Json steps;
  Profiles profiles;            // As they are afterwards.
  std::optional<Token> result;  // The profile that was found or created.
  bool isCreated = false;
  bool isMatching = false;  // matchAttach
  // Changes and creations that the modem refused or did not answer: ids, unknownId for a creation.
  std::vector<int> refused;
  bool isUnsure = false;  // The modem may have made some of them and not have answered.
};

}  // namespace pavoctl
