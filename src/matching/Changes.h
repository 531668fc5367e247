// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The rules for creating and changing a profile, and the client's view of a profile.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/ProfileParams.h>

#include "ProfileSettings.h"

#include <optional>

namespace pavo {

// The modem's three IP types, which express the client's two.
struct IPTypes {
  std::optional<IPType> common;
  std::optional<IPType> roam;
  std::optional<IPType> overrideHome;
};

// Converts the client's home and roaming types to the modem's, based on the profile's current
// types. A type that no rule sets keeps its value.
void planIPTypes(const ProfileSettings& profile, const ProfileParams& params, IPTypes& types);

// Fills an empty profile with the settings that it is to be created with, except its profile name.
void copySettings(const ProfileParams& params, ProfileSettings& profile);
// Copies the attributes that every kind of profile has, except the IP types.
void copyCommonSettings(const ProfileParams& params, ProfileSettings& profile);

// Sets in changes, which must be empty, only what params would change of the profile. Returns false
// when that is nothing.
bool planChanges(const ProfileSettings& profile, const ProfileParams& params,
                 ProfileSettings& changes);
// Does the same, in the client's terms, for the attributes that every kind of profile has, except
// the IP types. Sets changed when one of them changes.
void planCommonChanges(const ProfileSettings& profile, const ProfileParams& params,
                       ProfileParams& changes, bool& changed);

// Copies the settings that changes holds, but never the id or the profile name.
void applyChanges(const ProfileSettings& changes, ProfileSettings& profile);
void applyCommonChanges(const ProfileSettings& changes, ProfileSettings& profile);

// Returns the profile as the client sees it.
ProfileParams clientView(const ProfileSettings& profile);
// Copies the attributes that every kind of profile has, except the IP types.
void copyCommonView(const ProfileSettings& profile, FilterProfileParams& out);

}  // namespace pavo
