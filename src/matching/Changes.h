// What creating and changing make of a profile, and what a client sees of it.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/ProfileParams.h>

#include "ProfileSettings.h"

#include <optional>

namespace pavo {

// The modem's three for the client's two.
struct IPTypes {
  std::optional<IPType> common;
  std::optional<IPType> roam;
  std::optional<IPType> overrideHome;
};

// Turns the client's home and roaming types into the modem's, against the profile's current ones.
// One that the rules have no word on is left as it was passed.
void planIPTypes(const ProfileSettings& profile, const ProfileParams& params, IPTypes& types);

// Makes an empty profile the one that is to be created, without its name.
void copySettings(const ProfileParams& params, ProfileSettings& profile);
// The attributes of every kind of profile but for the IP types.
void copyCommonSettings(const ProfileParams& params, ProfileSettings& profile);

// Sets in changes, which are empty, just what params would change of the profile. False when that
// is nothing.
bool planChanges(const ProfileSettings& profile, const ProfileParams& params,
                 ProfileSettings& changes);
// The same for the attributes that every kind of profile has, in the client's terms. Sets changed
// when there is one.
void planCommonChanges(const ProfileSettings& profile, const ProfileParams& params,
                       ProfileParams& changes, bool& changed);

// Takes over the settings that changes has; never id and profile name.
void applyChanges(const ProfileSettings& changes, ProfileSettings& profile);
void applyCommonChanges(const ProfileSettings& changes, ProfileSettings& profile);

// The client's view.
ProfileParams clientView(const ProfileSettings& profile);
// The attributes of every kind of profile but for the IP types.
void copyCommonView(const ProfileSettings& profile, FilterProfileParams& out);

}  // namespace pavo
