// How a list of wanted profiles reaches the modem: by APN class, and the APN types by name.
#include "Policies.h"
#include "PolicyParts.h"

#include <array>
#include <charconv>
#include <unordered_set>

namespace pavo::policy {

namespace {

void logEach(const Run& run, const std::list<ProfileParams>& profiles) {
  for (const ProfileParams& profile : profiles) {
    run.high("    " + profile.dump());
  }
}

// A text within a line ends at its first null character, as the whole line does.
std::string asLogged(const std::string& text) { return text.c_str(); }

std::string hexOf(unsigned int mask) {
  std::array<char, 16> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), mask, 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

// ASCII letters only, as the modem compares names.
std::string lowerCase(std::string name) {
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    }
  }
  return name;
}

// Notes the name in lower case and fills in what is missing.
void complete(const Run& run, ProfileParams& profile, std::unordered_set<std::string>& names) {
  if (profile.hasApnName()) {
    profile.setApnName(lowerCase(profile.getApnName()));
    names.insert(profile.getApnName());
  }
  if (!profile.hasApnTypesMask()) {
    profile.setApnTypesMask(0);
    run.error("pavo APN type mask not present, setting to 0");
  }
  if (!profile.hasHomeIPType()) {
    profile.setHomeIPType(IPType::V4V6);
    run.error("pavo Home IP type not present, setting to v4v6");
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
  run.high("pavo updateModemProfileByApnClass > ");
  run.high("  3gpp:");
  logEach(run, profiles);
  for (const ProfileParams& profile : profiles) {
    run.debug("pavo update 3gpp modem profile by APN class for " + profile.dump());
    updateModemProfileByApnClassAndTechType(run, profile);
  }
  run.high("pavo updateModemProfileByApnClass < OK");
}

void updateModemProfileByApnClassAndTechType(const Run& run, const ProfileParams& profile) {
  if (!profile.hasApnClass()) {
    // There is one technology only; the text is older than that.
    run.debug("pavo either tech type or apn class is missing");
    return;
  }
  FilterProfileParams filter;
  filter.setApnClass(profile.getApnClass());
  run.enter(Stage::SearchByClass);
  const std::list<Key> keys = run.profiles.filter(filter);
  if (keys.empty()) {
    run.debug("Did not find a match for APN class and tech type, create a persistent profile");
    run.enter(Stage::CreateForClass);
    const Key added =
        run.profiles.add(AddProfileParams(profile, /*isPersistent=*/true, /*isIAProfile=*/false));
    if (added == nullptr) {
      run.error("Could not add profile by APN class");
    }
    return;
  }
  run.debug("Found a match for APN class and tech type, modify the profile");
  const ModifyProfileParams changes(profile);
  for (const Key& key : keys) {
    run.enter(Stage::ChangeByClass);
    if (!run.profiles.modify(changes, key)) {
      run.error("Error while modifying profile by APN class");
    }
  }
}

void updateAPNTypeBitmaskOnModemProfile(const Run& run, const std::list<ProfileParams>& profiles) {
  run.high("pavo updateAPNTypeBitmaskOnModemProfile > ");
  logEach(run, profiles);
  std::list<ProfileParams> wanted = profiles;
  std::unordered_set<std::string> names;
  for (ProfileParams& profile : wanted) {
    run.high("pavo update APN type bitmask on modem profile for " + profile.dump());
    complete(run, profile, names);
  }
  for (const std::string& name : names) {
    const TypesByIPType masks = collectMasks(wanted, name);
    run.debug("pavo processing APN name " + asLogged(name) + ", V4 mask:" + hexOf(masks.v4) +
              ", v6 mask" + hexOf(masks.v6) + ":, v4v6 mask:" + hexOf(masks.v4v6));
    run.observer.collect(name, masks);
    if (run.updateAllowed) {
      handleCombinedProfileUpdate(run, masks.v4 | masks.v6 | masks.v4v6, name);
    } else {
      handleProfileUpdateByTechType(run, masks, name);
    }
  }
  run.high("pavo updateAPNTypeBitmaskOnModemProfile < OK");
}

void handleCombinedProfileUpdate(const Run& run, unsigned int mask, const std::string& apnName) {
  FilterProfileParams filter;
  filter.setApnName(apnName);
  ModifyProfileParams changes;
  changes.setApnTypesMask(mask);
  run.enter(Stage::SearchForAllTypes, mask);
  for (const Key& key : run.profiles.filter(filter)) {
    run.debug("pavo updating profile id:" + std::to_string(key->getProfileId()) +
              ", with combined mask" + hexOf(mask) + ":");
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
    run.debug("pavo no match found for apn name:" + asLogged(apnName) +
              ", ip type:" + std::to_string(static_cast<int>(type)) + ", tech type: THREE_GPP");
    return false;
  }
  ModifyProfileParams changes;
  changes.setApnTypesMask(mask);
  for (const Key& key : keys) {
    run.debug("pavo updating profile id:" + std::to_string(key->getProfileId()) + ", with mask" +
              hexOf(mask) + ":");
    run.enter(Stage::ChangeTypes, mask);
    run.profiles.modify(changes, key);
  }
  return true;
}

void handleProfileUpdateByTechType(const Run& run, const TypesByIPType& types,
                                   const std::string& apnName) {
  // What no profile of its own IP type takes, the V4V6 profile is to take.
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
  // Without a V4V6 profile its types go to the other two, the V4 one also when it was asked
  // nothing.
  run.enter(Stage::ShareTypes, withV6);
  updateByIpType(run, IPType::V4, withV6 | types.v4, apnName);
  updateByIpType(run, IPType::V6, withV4 | types.v6, apnName);
}

}  // namespace pavo::policy
