// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The rules that decide whether a profile matches a filter.
#pragma once

#include <pavo/FilterProfileParams.h>

#include "Criterion.h"
#include "ProfileSettings.h"

namespace pavo {

// Returns the first criterion, in the order of the enumeration, that the profile fails, or None
// when the profile matches. A filter by initial-attach profile overrides a filter by creator.
Criterion firstMismatch(const ProfileSettings& profile, const FilterProfileParams& filter);
// Does the same for the criteria that every kind of profile has: those up to the profile id.
Criterion firstCommonMismatch(const ProfileSettings& profile, const FilterProfileParams& filter);

// Returns whether the profile has every named type of the mask.
bool matchSubsetApnTypesMask(const ProfileSettings& profile, unsigned int mask);
// Returns whether the profile has exactly the types of the mask. A modem bit without a client's
// name prevents a match.
bool matchExactApnTypesMask(const ProfileSettings& profile, unsigned int mask);

}  // namespace pavo
