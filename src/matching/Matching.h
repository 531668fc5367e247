// Whether a profile is what a filter asks for.
#pragma once

#include <pavo/FilterProfileParams.h>

#include "Criterion.h"
#include "ProfileSettings.h"

namespace pavo {

// The first criterion, in the order of the criteria, that keeps the profile from matching; None
// when it matches. A filter by initial-attach profile hides the one by its creator.
Criterion firstMismatch(const ProfileSettings& profile, const FilterProfileParams& filter);
// The same for the criteria that every kind of profile has: those up to the profile id.
Criterion firstCommonMismatch(const ProfileSettings& profile, const FilterProfileParams& filter);

// Every named type of the mask is among the profile's.
bool matchSubsetApnTypesMask(const ProfileSettings& profile, unsigned int mask);
// The profile's mask is just these types; a modem bit without a client's name spoils the match.
bool matchExactApnTypesMask(const ProfileSettings& profile, unsigned int mask);

}  // namespace pavo
