// The tool's own answer to whether a profile matches a filter, which also says why not.
#pragma once

#include <pavo/FilterProfileParams.h>

#include <optional>
#include <string>

#include "session/Snapshot.h"

namespace pavoctl {

// The key of the first attribute that keeps the profile from matching, in the order in which the
// library looks at them; nothing when the profile matches, as the library would find.
std::optional<std::string> firstMismatch(const CachedProfile& cached,
                                         const pavo::FilterProfileParams& filter);

// The filter as JSON: its attributes, id, isPavoProfile and isIAProfile, and under "criteria" what
// loosens it.
Json toJson(const pavo::FilterProfileParams& filter, Secrets secrets);

}  // namespace pavoctl
