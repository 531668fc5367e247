#include <pavo/Util.h>

#include "LogWrapper.h"
#include "base/Ascii.h"

#include <list>
#include <optional>
#include <sstream>
#include <string>
#include <unordered_set>
#include <utility>

namespace pavo {

namespace {

using Key = std::shared_ptr<IProfileKey>;

constexpr unsigned int anyHomeIP = HomeIPSubset | HomeIPSuperset;
constexpr unsigned int anyRoamIP = RoamIPSubset | RoamIPSuperset;

std::string textOf(const Key& key) { return key != nullptr ? key->dump() : std::string(); }

Key firstOf(const std::list<Key>& keys) { return !keys.empty() ? keys.front() : nullptr; }

// The attributes that policies carry from the caller's parameters into a filter or a change, each
// only when it is present.

void copyApnName(const ProfileParams& from, ProfileParams& to) {
  if (from.hasApnName()) {
    to.setApnName(from.getApnName());
  }
}

void copyHomeIPType(const ProfileParams& from, ProfileParams& to) {
  if (from.hasHomeIPType()) {
    to.setHomeIPType(from.getHomeIPType());
  }
}

void copyRoamIPType(const ProfileParams& from, ProfileParams& to) {
  if (from.hasRoamIPType()) {
    to.setRoamIPType(from.getRoamIPType());
  }
}

void copyIPTypes(const ProfileParams& from, ProfileParams& to) {
  copyHomeIPType(from, to);
  copyRoamIPType(from, to);
}

void copyCredentials(const ProfileParams& from, ProfileParams& to) {
  if (from.hasUserName()) {
    to.setUserName(from.getUserName());
  }
  if (from.hasPassword()) {
    to.setPassword(from.getPassword());
  }
  if (from.hasAuthType()) {
    to.setAuthType(from.getAuthType());
  }
}

// What every profile that is chosen for attach is given.
ModifyProfileParams attachSettings(const ProfileParams& params) {
  ModifyProfileParams settings;
  copyCredentials(params, settings);
  if (params.hasApnTypesMask()) {
    settings.setApnTypesMask(params.getApnTypesMask());
  }
  if (params.hasMaxPdnsConnPerBlock()) {
    settings.setMaxPdnsConnPerBlock(params.getMaxPdnsConnPerBlock());
  }
  if (params.hasMaxPdnConnTimer()) {
    settings.setMaxPdnConnTimer(params.getMaxPdnConnTimer());
  }
  if (params.hasPdnReqWaitInterval()) {
    settings.setPdnReqWaitInterval(params.getPdnReqWaitInterval());
  }
  return settings;
}

// The modem's own profiles and our initial-attach one; never a profile that we made for data calls.
bool isUsableForAttach(const ProfileParams& profile) {
  return !profile.getIsPavoProfile() || profile.getIsIAProfile();
}

void logEach(const std::list<ProfileParams>& profiles) {
  for (const ProfileParams& profile : profiles) {
    LogWrapper::log(LogLevel::High, logTag, "    %s", profile.dump().c_str());
  }
}

// Notes the name in lower case and fills in what is missing.
void complete(ProfileParams& profile, std::unordered_set<std::string>& names) {
  if (profile.hasApnName()) {
    profile.setApnName(lowerCase(profile.getApnName()));
    names.insert(profile.getApnName());
  }
  if (!profile.hasApnTypesMask()) {
    profile.setApnTypesMask(0);
    LogWrapper::log(LogLevel::Error, logTag, "pavo APN type mask not present, setting to 0");
  }
  if (!profile.hasHomeIPType()) {
    profile.setHomeIPType(IPType::V4V6);
    LogWrapper::log(LogLevel::Error, logTag, "pavo Home IP type not present, setting to v4v6");
  }
}

struct MaskByIPType {
  unsigned int v4 = 0;
  unsigned int v6 = 0;
  unsigned int v4v6 = 0;
};

MaskByIPType collectMasks(const std::list<ProfileParams>& profiles, const std::string& name) {
  MaskByIPType masks;
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

// The search for a profile to attach with: stages in a fixed order, the first that yields an
// acceptable profile ends it. On the way the settings collect what the profile is to be given.
struct AttachSearch {
  Manager& manager;
  const ProfileParams& params;
  const bool profileUpdateAllowed;
  ModifyProfileParams settings;

  Key run() {
    if (Key exact = findExact()) {
      return exact;
    }
    bool accepted = false;
    Key loose = findLoose(accepted);
    if (accepted) {
      return loose;
    }
    copyIPTypes(params, settings);
    if (Key named = findInitialAttach(/*byName=*/true)) {
      LogWrapper::log(LogLevel::High, logTag,
                      "pavo Found a PAVO IA profile that matches APN name for attach");
      return named;
    }
    if (Key any = findInitialAttach(/*byName=*/false)) {
      // The profile changes its name to the wanted one.
      copyApnName(params, settings);
      LogWrapper::log(LogLevel::High, logTag, "pavo Found any PAVO IA profile for attach");
      return any;
    }
    // A loose match whose parameters could not be read is better than another profile.
    return loose;
  }

 private:
  Key findExact() const {
    FilterProfileParams filter;
    if (!params.hasApnName()) {
      LogWrapper::log(LogLevel::High, logTag, "pavo NULL apn scenario");
    }
    copyApnName(params, filter);
    copyIPTypes(params, filter);
    Key key = firstOf(manager.filter(filter));
    const std::optional<ProfileParams> profile =
        key != nullptr ? manager.getProfile(key) : std::nullopt;
    if (!profile || !isUsableForAttach(*profile)) {
      return nullptr;
    }
    LogWrapper::log(LogLevel::High, logTag,
                    "pavo Found an exact match modem or PAVO IA profile for attach");
    return key;
  }

  // Not accepted and yet not empty: a profile whose parameters cannot be read.
  Key findLoose(bool& accepted) {
    FilterProfileParams filter;
    copyApnName(params, filter);
    if (profileUpdateAllowed) {
      copyIPTypes(params, settings);
    } else {
      filter.setFilterByIsPavoProfile(false);
      copyIPTypes(params, filter);
      filter.addFilterMatchCriteria((params.hasHomeIPType() ? anyHomeIP : 0) |
                                    (params.hasRoamIPType() ? anyRoamIP : 0));
    }
    Key key = firstOf(manager.filter(filter));
    if (key == nullptr) {
      return nullptr;
    }
    LogWrapper::log(LogLevel::High, logTag, "pavo Found a loose match profile for attach");
    const std::optional<ProfileParams> profile = manager.getProfile(key);
    if (!profile) {
      return key;
    }
    accepted = isUsableForAttach(*profile);
    if (!accepted) {
      LogWrapper::log(LogLevel::High, logTag, "It is not a PAVO_IA profile. so skipping it.");
      return nullptr;
    }
    LogWrapper::log(LogLevel::High, logTag, "It is PAVO_IA profile or modem profile.");
    return key;
  }

  Key findInitialAttach(bool byName) const {
    FilterProfileParams filter;
    filter.setFilterByIsPavoProfile(true);
    filter.setFilterByIsIAProfile(true);
    if (byName) {
      copyApnName(params, filter);
    }
    return firstOf(manager.filter(filter));
  }
};

}  // namespace

Util::Util() : manager(Manager::getInstance()) {
  LogWrapper::log(LogLevel::Debug, logTag, "pavo::Util: constructor");
}

Util::~Util() { LogWrapper::log(LogLevel::Debug, logTag, "pavo::Util: destructor"); }

void Util::setProfileUpdateAllowed(bool allowed) noexcept {
  std::ostringstream text;
  text << "pavo::Util: profileUpdateAllowed " << allowed;
  // The text is the format itself; it holds nothing that a formatter would look at.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
  LogWrapper::log(LogLevel::High, logTag, text.str().c_str());
#pragma GCC diagnostic pop
  profileUpdateAllowed = allowed;
}

std::shared_ptr<IProfileKey> Util::findOrCreateProfileForSetupDataCall(
    const ProfileParams& params) noexcept {
  LogWrapper::log(LogLevel::High, logTag, "pavo findOrCreateProfileForSetupDataCall > %s",
                  params.dump().c_str());
  FilterProfileParams filter;
  copyApnName(params, filter);
  // With updates allowed any home IP type will do: the profile is changed to the wanted one below.
  if (!profileUpdateAllowed) {
    copyHomeIPType(params, filter);
  }
  Key result = firstOf(manager.filter(filter));
  if (result == nullptr && !profileUpdateAllowed) {
    filter.addFilterMatchCriteria(anyHomeIP);
    result = firstOf(manager.filter(filter));
  }
  if (result == nullptr) {
    result =
        manager.addProfile(AddProfileParams(params, /*isPersistent=*/false, /*isIAProfile=*/false));
    LogWrapper::log(LogLevel::High, logTag, "setupDataCall profile added");
  } else {
    LogWrapper::log(LogLevel::High, logTag, "found existing setupDataCall profile");
    if (profileUpdateAllowed) {
      LogWrapper::log(LogLevel::High, logTag, "Modifying profile with input parameters");
      manager.modifyProfile(ModifyProfileParams(params), result);
    }
  }
  LogWrapper::log(LogLevel::High, logTag, "pavo findOrCreateProfileForSetupDataCall < %s",
                  textOf(result).c_str());
  return result;
}

std::shared_ptr<IProfileKey> Util::findOrCreateProfileForEmergencyDataCall(
    const ProfileParams& params) noexcept {
  LogWrapper::log(LogLevel::High, logTag, "pavo findOrCreateProfileForEmergencyDataCall > %s",
                  params.dump().c_str());
  Key result;
  if (params.hasApnName()) {
    FilterProfileParams byName;
    copyApnName(params, byName);
    byName.setIsEmergencySupported(true);
    result = firstOf(manager.filter(byName));
    if (result != nullptr) {
      LogWrapper::log(LogLevel::High, logTag, "found an emergency profile by name");
    }
  }
  if (result == nullptr) {
    FilterProfileParams byCapability;
    byCapability.setIsEmergencySupported(true);
    result = firstOf(manager.filter(byCapability));
    if (result != nullptr) {
      LogWrapper::log(LogLevel::High, logTag, "found a profile that supports emergency calls");
    }
  }
  if (result == nullptr) {
    // Persistent, unlike a data call's: the next emergency call must not wait for a create.
    AddProfileParams emergency(params, /*isPersistent=*/true, /*isIAProfile=*/false);
    emergency.setIsEmergencySupported(true);
    emergency.setApnTypesMask(EMERGENCY);
    result = manager.addProfile(emergency);
    LogWrapper::log(LogLevel::High, logTag, "emergency profile created");
  }
  LogWrapper::log(LogLevel::High, logTag, "pavo findOrCreateProfileForEmergencyDataCall < %s",
                  textOf(result).c_str());
  return result;
}

bool Util::matchLteAttachProfileId(int profileId, const ProfileParams& params) noexcept {
  const std::string input =
      "Profile id = " + std::to_string(profileId) + " Input Params = " + params.dump();
  LogWrapper::log(LogLevel::High, logTag, "pavo matchLteAttachProfileId > %s", input.c_str());
  FilterProfileParams byId;
  byId.setFilterByProfileId(profileId);
  const Key key = firstOf(manager.filter(byId));
  const std::optional<ProfileParams> profile =
      key != nullptr ? manager.getProfile(key) : std::nullopt;
  if (profile && !isUsableForAttach(*profile)) {
    LogWrapper::log(LogLevel::Error, logTag,
                    "Profile id %d is a PAVO profile which is not an IA profile, cannot be used "
                    "for attach",
                    profileId);
    return false;
  }
  if (profile) {
    FilterProfileParams wanted;
    copyApnName(params, wanted);
    copyIPTypes(params, wanted);
    copyCredentials(params, wanted);
    if (!profileUpdateAllowed && !profile->getIsPavoProfile()) {
      wanted.addFilterMatchCriteria(anyHomeIP | anyRoamIP);
    }
    if (manager.match(wanted, key)) {
      // Log readers look for this other name.
      LogWrapper::log(LogLevel::High, logTag, "pavo matchLteAttachList < %d", profileId);
      return true;
    }
  }
  LogWrapper::log(LogLevel::High, logTag,
                  "pavo matchLteAttachProfileId < did not match input params");
  return false;
}

std::shared_ptr<IProfileKey> Util::findOrCreateProfileForLteAttach(
    const ProfileParams& params) noexcept {
  LogWrapper::log(LogLevel::High, logTag, "pavo findOrCreateProfileForLteAttach > %s",
                  params.dump().c_str());
  AttachSearch search{manager, params, profileUpdateAllowed, attachSettings(params)};
  Key result = search.run();
  if (result != nullptr) {
    manager.modifyProfile(search.settings, result);
    LogWrapper::log(LogLevel::High, logTag, "pavo Modifying profile identified for IA");
  } else {
    result =
        manager.addProfile(AddProfileParams(params, /*isPersistent=*/true, /*isIAProfile=*/true));
    LogWrapper::log(LogLevel::High, logTag, "pavo PAVO IA profile created for attach");
  }
  LogWrapper::log(LogLevel::High, logTag, "pavo findOrCreateProfileForLteAttach < %s",
                  textOf(result).c_str());
  return result;
}

void Util::updateModemProfileByApnClass(const std::list<ProfileParams>& profiles) noexcept {
  LogWrapper::log(LogLevel::High, logTag, "pavo updateModemProfileByApnClass > ");
  LogWrapper::log(LogLevel::High, logTag, "  3gpp:");
  logEach(profiles);
  for (const ProfileParams& profile : profiles) {
    LogWrapper::log(LogLevel::Debug, logTag, "pavo update 3gpp modem profile by APN class for %s",
                    profile.dump().c_str());
    updateModemProfileByApnClassAndTechType(profile);
  }
  LogWrapper::log(LogLevel::High, logTag, "pavo updateModemProfileByApnClass < OK");
}

void Util::updateModemProfileByApnClassAndTechType(const ProfileParams& profile) noexcept {
  if (!profile.hasApnClass()) {
    // There is one technology only; the text is older than that.
    LogWrapper::log(LogLevel::Debug, logTag, "pavo either tech type or apn class is missing");
    return;
  }
  FilterProfileParams filter;
  filter.setApnClass(profile.getApnClass());
  const std::list<Key> keys = manager.filter(filter);
  if (keys.empty()) {
    LogWrapper::log(
        LogLevel::Debug, logTag,
        "Did not find a match for APN class and tech type, create a persistent profile");
    const Key added =
        manager.addProfile(AddProfileParams(profile, /*isPersistent=*/true, /*isIAProfile=*/false));
    if (added == nullptr) {
      LogWrapper::log(LogLevel::Error, logTag, "Could not add profile by APN class");
    }
    return;
  }
  LogWrapper::log(LogLevel::Debug, logTag,
                  "Found a match for APN class and tech type, modify the profile");
  const ModifyProfileParams changes(profile);
  for (const Key& key : keys) {
    if (!manager.modifyProfile(changes, key)) {
      LogWrapper::log(LogLevel::Error, logTag, "Error while modifying profile by APN class");
    }
  }
}

void Util::updateAPNTypeBitmaskOnModemProfile(const std::list<ProfileParams>& profiles) noexcept {
  LogWrapper::log(LogLevel::High, logTag, "pavo updateAPNTypeBitmaskOnModemProfile > ");
  logEach(profiles);
  std::list<ProfileParams> wanted = profiles;
  std::unordered_set<std::string> names;
  for (ProfileParams& profile : wanted) {
    LogWrapper::log(LogLevel::High, logTag, "pavo update APN type bitmask on modem profile for %s",
                    profile.dump().c_str());
    complete(profile, names);
  }
  for (const std::string& name : names) {
    const MaskByIPType masks = collectMasks(wanted, name);
    LogWrapper::log(LogLevel::Debug, logTag,
                    "pavo processing APN name %s, V4 mask:0x%x, v6 mask0x%x:, v4v6 mask:0x%x",
                    name.c_str(), masks.v4, masks.v6, masks.v4v6);
    if (profileUpdateAllowed) {
      handleCombinedProfileUpdate(masks.v4 | masks.v6 | masks.v4v6, name);
    } else {
      handleProfileUpdateByTechType(masks.v4, masks.v6, masks.v4v6, name);
    }
  }
  LogWrapper::log(LogLevel::High, logTag, "pavo updateAPNTypeBitmaskOnModemProfile < OK");
}

void Util::handleCombinedProfileUpdate(unsigned int mask, std::string apnName) noexcept {
  FilterProfileParams filter;
  filter.setApnName(std::move(apnName));
  ModifyProfileParams changes;
  changes.setApnTypesMask(mask);
  for (const Key& key : manager.filter(filter)) {
    LogWrapper::log(LogLevel::Debug, logTag,
                    "pavo updating profile id:%d, with combined mask0x%x:", key->getProfileId(),
                    mask);
    manager.modifyProfile(changes, key);
  }
}

bool Util::updateByIpType(IPType type, unsigned int mask, std::string apnName) noexcept {
  FilterProfileParams filter;
  filter.setApnName(std::move(apnName));
  filter.setHomeIPType(type);
  const std::list<Key> keys = manager.filter(filter);
  if (keys.empty()) {
    LogWrapper::log(LogLevel::Debug, logTag,
                    "pavo no match found for apn name:%s, ip type:%d, tech type: THREE_GPP",
                    filter.getApnName().c_str(), static_cast<int>(type));
    return false;
  }
  ModifyProfileParams changes;
  changes.setApnTypesMask(mask);
  for (const Key& key : keys) {
    LogWrapper::log(LogLevel::Debug, logTag,
                    "pavo updating profile id:%d, with mask0x%x:", key->getProfileId(), mask);
    manager.modifyProfile(changes, key);
  }
  return true;
}

void Util::handleProfileUpdateByTechType(unsigned int v4Mask, unsigned int v6Mask,
                                         unsigned int v4v6Mask, std::string apnName) noexcept {
  // What no profile of its own IP type takes, the V4V6 profile is to take.
  unsigned int withV4 = v4v6Mask;
  if (v4Mask != 0 && !updateByIpType(IPType::V4, v4Mask, apnName)) {
    withV4 |= v4Mask;
  }
  const bool v6Placed = v6Mask == 0 || updateByIpType(IPType::V6, v6Mask, apnName);
  const unsigned int withV6 = v6Placed ? withV4 : withV4 | v6Mask;
  if (v6Placed && withV4 == 0) {
    return;
  }
  if (updateByIpType(IPType::V4V6, withV6, apnName)) {
    return;
  }
  // Without a V4V6 profile its types go to the other two, the V4 one also when it was asked
  // nothing.
  updateByIpType(IPType::V4, withV6 | v4Mask, apnName);
  updateByIpType(IPType::V6, withV4 | v6Mask, std::move(apnName));
}

}  // namespace pavo
