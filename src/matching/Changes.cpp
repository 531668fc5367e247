// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Changes.h"

#include "ApnName.h"
#include "ApnTypeBits.h"
#include "RecordAccess.h"

#include <string>
#include <utility>

namespace pavo {

namespace {

// Sets a member of a difference when the wanted value is present and not the current one.
template <typename Value>
void changeTo(const std::optional<Value>& wanted, const std::optional<Value>& current,
              std::optional<Value>& change, bool& changed) {
  if (wanted && wanted != current) {
    change = wanted;
    changed = true;
  }
}

auto changeEach(bool& changed) {
  return [&changed](Criterion /*criterion*/, const auto& wanted, const auto& own, auto& change) {
    changeTo(wanted, own, change, changed);
  };
}

void setApnName(ProfileParams& changes, const std::string& name) { changes.setApnName(name); }
void setApnName(ProfileSettings& changes, const std::string& name) { changes.apnName = name; }
void setApnTypes(ProfileParams& changes, unsigned int mask) { changes.setApnTypesMask(mask); }
void setApnTypes(ProfileSettings& changes, unsigned int mask) {
  changes.apnTypesMask = convertToOvixApnTypeMask(mask);
}

// Record is the client's ProfileParams or the modem's ProfileSettings.
template <typename Record>
void planCommon(const ProfileSettings& profile, const ProfileParams& params, Record& changes,
                bool& changed) {
  if (const auto& wanted = RecordAccess::apnName(params)) {
    const std::string name = normalizeApnName(*wanted);
    if (profile.apnName != name) {
      setApnName(changes, name);
      changed = true;
    }
  }
  if (const auto& mask = RecordAccess::apnTypesMask(params)) {
    // The masks are compared in the client's bits, so a bit without a counterpart on the modem is
    // always a difference.
    if (!profile.apnTypesMask || convertToCommonApnTypeMask(*profile.apnTypesMask) != *mask) {
      setApnTypes(changes, *mask);
      changed = true;
    }
  }
  RecordAccess::forEachShared(changeEach(changed), params, profile, changes);
}

}  // namespace

void planIPTypes(const ProfileSettings& profile, const ProfileParams& params, IPTypes& types) {
  const auto& home = RecordAccess::homeIPType(params);
  const auto& roam = RecordAccess::roamIPType(params);
  types.common = home ? home : profile.homeIPType();
  if (roam) {
    types.roam = roam;
  } else if (profile.lteRoamIPType && profile.lteRoamIPType == profile.umtsRoamIPType) {
    types.roam = profile.lteRoamIPType;
  } else if (!profile.lteRoamIPType && !profile.umtsRoamIPType) {
    types.roam.reset();
  }
  if (!types.common || !types.roam) {
    return;
  }
  if (*types.common != *types.roam) {
    // The common type serves both networks and the override pins the home network.
    types.overrideHome = types.common;
    types.common = IPType::V4V6;
  } else if (profile.overrideHomeIPType) {
    // UNKNOWN takes the override back.
    types.overrideHome = IPType::UNKNOWN;
  }
}

void copyCommonSettings(const ProfileParams& params, ProfileSettings& profile) {
  if (const auto& name = RecordAccess::apnName(params)) {
    profile.apnName = normalizeApnName(*name);
  }
  if (const auto& mask = RecordAccess::apnTypesMask(params)) {
    profile.apnTypesMask = convertToOvixApnTypeMask(*mask);
  }
  RecordAccess::forEachShared(copyEach, params, profile);
}

void copySettings(const ProfileParams& params, ProfileSettings& profile) {
  copyCommonSettings(params, profile);
  RecordAccess::forEachShared3gpp(copyEach, params, profile);
  // The profile holds no types yet, so these are the client's.
  IPTypes types;
  planIPTypes(profile, params, types);
  profile.commonIPType = types.common;
  profile.lteRoamIPType = types.roam;
  profile.umtsRoamIPType = types.roam;
  profile.overrideHomeIPType = types.overrideHome;
}

void planCommonChanges(const ProfileSettings& profile, const ProfileParams& params,
                       ProfileParams& changes, bool& changed) {
  planCommon(profile, params, changes, changed);
}

bool planChanges(const ProfileSettings& profile, const ProfileParams& params,
                 ProfileSettings& changes) {
  bool changed = false;
  planCommon(profile, params, changes, changed);
  RecordAccess::forEachShared3gpp(changeEach(changed), params, profile, changes);

  IPTypes types;
  planIPTypes(profile, params, types);
  changeTo(types.common, profile.commonIPType, changes.commonIPType, changed);
  changeTo(types.roam, profile.lteRoamIPType, changes.lteRoamIPType, changed);
  changeTo(types.roam, profile.umtsRoamIPType, changes.umtsRoamIPType, changed);
  changeTo(types.overrideHome, profile.overrideHomeIPType, changes.overrideHomeIPType, changed);
  return changed;
}

void applyCommonChanges(const ProfileSettings& changes, ProfileSettings& profile) {
  if (changes.apnName) {
    profile.apnName = normalizeApnName(*changes.apnName);
  }
  copyIfPresent(changes.apnTypesMask, profile.apnTypesMask);
  copyIfPresent(changes.commonIPType, profile.commonIPType);
  copyIfPresent(changes.overrideHomeIPType, profile.overrideHomeIPType);
  RecordAccess::forEachShared(copyEach, changes, profile);
}

void applyChanges(const ProfileSettings& changes, ProfileSettings& profile) {
  applyCommonChanges(changes, profile);
  copyIfPresent(changes.lteRoamIPType, profile.lteRoamIPType);
  copyIfPresent(changes.umtsRoamIPType, profile.umtsRoamIPType);
  RecordAccess::forEachShared3gpp(copyEach, changes, profile);
}

void copyCommonView(const ProfileSettings& profile, FilterProfileParams& out) {
  if (profile.apnName) {
    out.setApnName(*profile.apnName);
  }
  if (profile.apnTypesMask) {
    out.setApnTypesMask(convertToCommonApnTypeMask(*profile.apnTypesMask));
  }
  RecordAccess::forEachShared(copyEach, profile, static_cast<ProfileParams&>(out));
}

ProfileParams clientView(const ProfileSettings& profile) {
  // Only the filter record has setters for the two flags.
  FilterProfileParams out;
  copyCommonView(profile, out);
  out.setFilterByIsIAProfile(profile.isPavoIAProfile());
  out.setFilterByIsPavoProfile(profile.isPavoProfile());
  if (const std::optional<IPType> home = profile.homeIPType()) {
    out.setHomeIPType(*home);
  }
  if (profile.lteRoamIPType && profile.lteRoamIPType == profile.umtsRoamIPType) {
    out.setRoamIPType(*profile.lteRoamIPType);
  }
  RecordAccess::forEachShared3gpp(copyEach, profile, static_cast<ProfileParams&>(out));
  return ProfileParams(std::move(out));
}

}  // namespace pavo
