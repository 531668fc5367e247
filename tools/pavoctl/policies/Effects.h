// What changing and creating make of profiles, told without doing it.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/ModifyProfileParams.h>

#include <optional>

#include "session/Snapshot.h"

namespace pavoctl {

// The profile as the library would have it after the change; nothing when it is like that already
// and the modem would not be asked.
std::optional<CachedProfile> changed(const CachedProfile& cached,
                                     const pavo::ModifyProfileParams& params);

// The profile that the library would create. Its id and token are not known.
CachedProfile created(const pavo::AddProfileParams& params);

}  // namespace pavoctl
