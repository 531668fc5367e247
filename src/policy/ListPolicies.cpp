// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The policies that write a list of wanted profiles to the modem: by APN class, and the APN types
// by name.
#include "Policies.h"
#include "PolicyParts.h"

#include <unordered_set>

namespace pavo::policy {

namespace {

void logEach(const Run& run, const std::list<ProfileParams>& profiles) {
  for (const ProfileParams& profile : profiles) {
    run.log(High, "    %s", profile.dump().c_str());
  }
}

// Converts ASCII letters only, because the modem compares names that way.
std::string lowerCase(std::string name) {
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return name;
}

// Converts the profile's name to lower case, adds it to names and fills in missing attributes.
void complete(const Run& run, ProfileParams& profile, std::unordered_set<std::string>& names) {
  if (profile.hasApnName()) {
    profile.setApnName(lowerCase(profile.getApnName()));
    names.insert(profile.getApnName());
  }
  if (!profile.hasApnTypesMask()) {
    profile.setApnTypesMask(0);
    run.log(Error, "pavo APN type mask not present, setting to 0");
  }
  if (!profile.hasHomeIPType()) {
    profile.setHomeIPType(IPType::V4V6);
    run.log(Error, "pavo Home IP type not present, setting to v4v6");
  }
}

TypesByIPType collectMasks(const std::list<ProfileParams>& profiles, const std::string& name) {
  TypesByIPType masks;
  for (const ProfileParams& profile : profiles) {
    if (!profile.hasApnName() || profile.getApnName() != name) {
      continue;
    }
    switch (profile.getHomeIPType()) {
      case IPType::V4:
        masks.v4 |= profile.getApnTypesMask();
        break;
      case IPType::V6:
        masks.v6 |= profile.getApnTypesMask();
        break;
      case IPType::V4V6:
      case IPType::UNKNOWN:
      default:
        masks.v4v6 |= profile.getApnTypesMask();
        break;
    }
  }
  return masks;
}

}  // namespace

void updateModemProfileByApnClass(const Run& run, const std::list<ProfileParams>& profiles) {
  run.log(High, "pavo updateModemProfileByApnClass > ");
  run.log(High, "  3gpp:");
  logEach(run, profiles);
  for (const ProfileParams& profile : profiles) {
    run.log(Debug, "pavo update 3gpp modem profile by APN class for %s", profile.dump().c_str());
    updateModemProfileByApnClassAndTechType(run, profile);
  }
  run.log(High, "pavo updateModemProfileByApnClass < OK");
}

void updateModemProfileByApnClassAndTechType(const Run& run, const ProfileParams& profile) {
  if (!profile.hasApnClass()) {
    // There is only one technology. The text is older than that.
    run.log(Debug, "pavo either tech type or apn class is missing");
    return;
  }
  FilterProfileParams filter;
  filter.setApnClass(profile.getApnClass());
  run.enter(Stage::SearchByClass);
  const std::list<Key> keys = run.profiles.filter(filter);
  if (keys.empty()) {
    run.log(Debug, "Did not find a match for APN class and tech type, create a persistent profile");
    run.enter(Stage::CreateForClass);
    const Key added =
        run.profiles.add(AddProfileParams(profile, /*isPersistent=*/true, /*isIAProfile=*/false));
    if (added == nullptr) {
      run.log(Error, "Could not add profile by APN class");
    }
    return;
  }
  run.log(Debug, "Found a match for APN class and tech type, modify the profile");
  const ModifyProfileParams changes(profile);
  for (const Key& key : keys) {
    run.enter(Stage::ChangeByClass);
    if (!run.profiles.modify(changes, key)) {
      run.log(Error, "Error while modifying profile by APN class");
    }
  }
}

void updateAPNTypeBitmaskOnModemProfile(const Run& run, const std::list<ProfileParams>& profiles) {
  run.log(High, "pavo updateAPNTypeBitmaskOnModemProfile > ");
  logEach(run, profiles);
  std::list<ProfileParams> wanted = profiles;
  std::unordered_set<std::string> names;
  for (ProfileParams& profile : wanted) {
    run.log(High, "pavo update APN type bitmask on modem profile for %s", profile.dump().c_str());
    complete(run, profile, names);
  }
  for (const std::string& name : names) {
    const TypesByIPType masks = collectMasks(wanted, name);
    run.log(Debug, "pavo processing APN name %s, V4 mask:0x%x, v6 mask0x%x:, v4v6 mask:0x%x",
            name.c_str(), masks.v4, masks.v6, masks.v4v6);
    run.observer.collect(name, masks);
    if (run.updateAllowed) {
      handleCombinedProfileUpdate(run, masks.v4 | masks.v6 | masks.v4v6, name);
    } else {
      handleProfileUpdateByTechType(run, masks, name);
    }
  }
  run.log(High, "pavo updateAPNTypeBitmaskOnModemProfile < OK");
}

void handleCombinedProfileUpdate(const Run& run, unsigned int mask, const std::string& apnName) {
  FilterProfileParams filter;
  filter.setApnName(apnName);
  ModifyProfileParams changes;
  changes.setApnTypesMask(mask);
  run.enter(Stage::SearchForAllTypes, mask);
  for (const Key& key : run.profiles.filter(filter)) {
    run.log(Debug, "pavo updating profile id:%d, with combined mask0x%x:", key->getProfileId(),
            mask);
    run.enter(Stage::ChangeTypes, mask);
    run.profiles.modify(changes, key);
  }
}

bool updateByIpType(const Run& run, IPType type, unsigned int mask, const std::string& apnName) {
  FilterProfileParams filter;
  filter.setApnName(apnName);
  filter.setHomeIPType(type);
  run.enter(Stage::SearchForTypes, mask);
  const std::list<Key> keys = run.profiles.filter(filter);
  if (keys.empty()) {
    run.log(Debug, "pavo no match found for apn name:%s, ip type:%d, tech type: THREE_GPP",
            apnName.c_str(), static_cast<int>(type));
    return false;
  }
  ModifyProfileParams changes;
  changes.setApnTypesMask(mask);
  for (const Key& key : keys) {
    run.log(Debug, "pavo updating profile id:%d, with mask0x%x:", key->getProfileId(), mask);
    run.enter(Stage::ChangeTypes, mask);
    run.profiles.modify(changes, key);
  }
  return true;
}

void handleProfileUpdateByTechType(const Run& run, const TypesByIPType& types,
                                   const std::string& apnName) {
  // The V4V6 profile takes the types that no profile of their own IP type takes.
  unsigned int withV4 = types.v4v6;
  if (types.v4 != 0 && !updateByIpType(run, IPType::V4, types.v4, apnName)) {
    withV4 |= types.v4;
  }
  const bool v6Placed = types.v6 == 0 || updateByIpType(run, IPType::V6, types.v6, apnName);
  const unsigned int withV6 = v6Placed ? withV4 : withV4 | types.v6;
  if (v6Placed && withV4 == 0) {
    return;
  }
  if (updateByIpType(run, IPType::V4V6, withV6, apnName)) {
    return;
  }
  // Without a V4V6 profile its types go to the V4 and V6 profiles. Both are changed even when the
  // list has no types for them.
  run.enter(Stage::ShareTypes, withV6);
  updateByIpType(run, IPType::V4, withV6 | types.v4, apnName);
  updateByIpType(run, IPType::V6, withV4 | types.v6, apnName);
}

}  // namespace pavo::policy
