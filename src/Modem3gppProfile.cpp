#include "Modem3gppProfile.h"

#include "DumpText.h"
#include "MessageFields.h"
#include "RecordAccess.h"

#include <utility>

namespace pavo {

namespace {

// Sets a member of a difference when the wanted value is there and not the current one.
void changeTo(const std::optional<IPType>& wanted, const std::optional<IPType>& current,
              std::optional<IPType>& change, bool& changed) {
  if (wanted && wanted != current) {
    change = wanted;
    changed = true;
  }
}

}  // namespace

// Member <-> message field <-> conversion, in the order in which responses are read: unknown values
// are logged on the way.
template <typename Codec, typename Profile, typename Message>
void Modem3gppProfile::mapFields(const Codec& codec, Profile& profile, Message& message) {
  codec(profile.overrideHomeIPType, MESSAGE_FIELD(message, override_home_pdp_type),
        AsCommonPdpType{});
  codec(profile.profileName, MESSAGE_FIELD(message, profile_name), AsText{});
  codec(profile.commonIPType, MESSAGE_FIELD(message, pdp_type), AsPdpType{});
  codec(profile.lteRoamIPType, MESSAGE_FIELD(message, lte_roaming_pdp_type), AsRoamingPdpType{});
  codec(profile.umtsRoamIPType, MESSAGE_FIELD(message, umts_roaming_pdp_type), AsRoamingPdpType{});
  codec(profile.apnName, MESSAGE_FIELD(message, apn_name), AsApnName{});
  codec(profile.apnClass, MESSAGE_FIELD(message, apn_class), AsApnClass{});
  codec(profile.isEmergencySupported, MESSAGE_FIELD(message, support_emergency_calls), AsFlag{});
  codec(profile.authType, MESSAGE_FIELD(message, authentication_preference), AsAuthPreference{});
  codec(profile.maxPdnsConnPerBlock, MESSAGE_FIELD(message, max_pdn_conn_per_block), AsNumber{});
  codec(profile.maxPdnConnTimer, MESSAGE_FIELD(message, max_pdn_conn_timer), AsNumber{});
  codec(profile.pdnReqWaitInterval, MESSAGE_FIELD(message, pdn_req_wait_interval), AsNumber{});
  codec(profile.isApnDisabled, MESSAGE_FIELD(message, apn_disabled), AsFlag{});
  codec(profile.userName, MESSAGE_FIELD(message, user_name), AsText{});
  codec(profile.password, MESSAGE_FIELD(message, password), AsText{});
}

Modem3gppProfile::Modem3gppProfile(const ProfileParams& params) : ModemProfile(params) {
  RecordAccess::forEachShared3gpp(copyIfPresent, params, *this);
  // The profile holds no types yet, so these are the client's.
  std::optional<IPType> newCommon;
  std::optional<IPType> newRoam;
  std::optional<IPType> newOverrideHome;
  getNewIPTypes(params, newCommon, newRoam, newOverrideHome);
  commonIPType = newCommon;
  lteRoamIPType = newRoam;
  umtsRoamIPType = newRoam;
  overrideHomeIPType = newOverrideHome;
}

Modem3gppProfile::Modem3gppProfile(int index, const wds_get_profile_settings_resp_msg_v01& settings)
    : ModemProfile(index, settings) {
  mapFields(ReadMessage{}, *this, settings);
}

wds_create_profile_req_msg_v01 Modem3gppProfile::constructAddRequest() const {
  wds_create_profile_req_msg_v01 request;
  updateAddParameters(request);
  request.profile_type = WDS_PROFILE_TYPE_3GPP_V01;
  mapFields(FillMessage{}, *this, request);
  return request;
}

wds_modify_profile_settings_req_msg_v01 Modem3gppProfile::constructModifyRequest() const {
  wds_modify_profile_settings_req_msg_v01 request;
  updateModifyParameters(request);
  mapFields(FillMessage{}, *this, request);
  return request;
}

std::optional<IPType> Modem3gppProfile::roamIPType() const {
  if (lteRoamIPType) {
    // The two have to agree. An absent UMTS type counts as UNKNOWN here.
    return *lteRoamIPType == umtsRoamIPType.value_or(IPType::UNKNOWN) ? lteRoamIPType
                                                                      : std::nullopt;
  }
  return umtsRoamIPType ? std::nullopt : commonIPType;
}

bool Modem3gppProfile::matchCreator(const FilterProfileParams& filter) const {
  // A filter by initial-attach profile hides the other one.
  if (filter.hasFilterByIsIAProfile()) {
    return filter.getIsIAProfile() == isPavoIAProfile();
  }
  return !filter.hasFilterByIsPavoProfile() || filter.getIsPavoProfile() == isPavoProfile();
}

bool Modem3gppProfile::match(const FilterProfileParams& filter) const {
  if (!ModemProfile::match(filter) || !matchCreator(filter)) {
    return false;
  }
  if (const auto& wanted = RecordAccess::roamIPType(filter)) {
    const unsigned int criteria = filter.getFilterMatchCriteria();
    const std::optional<IPType> actual = roamIPType();
    if (!actual || !matchIPType(*wanted, *actual, (criteria & RoamIPSubset) != 0,
                                (criteria & RoamIPSuperset) != 0)) {
      return false;
    }
  }
  bool equal = true;
  RecordAccess::forEachShared3gpp(
      [&equal](const auto& wanted, const auto& own) {
        equal = equal && (!wanted || wanted == own);
      },
      static_cast<const ProfileParams&>(filter), *this);
  return equal;
}

void Modem3gppProfile::getNewIPTypes(const ProfileParams& params, std::optional<IPType>& newCommon,
                                     std::optional<IPType>& newRoam,
                                     std::optional<IPType>& newOverrideHome) const {
  const auto& home = RecordAccess::homeIPType(params);
  const auto& roam = RecordAccess::roamIPType(params);
  newCommon = home ? home : homeIPType();
  if (roam) {
    newRoam = roam;
  } else if (lteRoamIPType && lteRoamIPType == umtsRoamIPType) {
    newRoam = lteRoamIPType;
  } else if (!lteRoamIPType && !umtsRoamIPType) {
    newRoam.reset();
  }
  if (!newCommon || !newRoam) {
    return;
  }
  if (*newCommon != *newRoam) {
    // The common type serves both networks and the override pins the home network.
    newOverrideHome = newCommon;
    newCommon = IPType::V4V6;
  } else if (overrideHomeIPType) {
    // Takes the override back.
    newOverrideHome = IPType::UNKNOWN;
  }
}

std::shared_ptr<ModemProfile> Modem3gppProfile::diff(const ModifyProfileParams& params) const {
  ProfileParams changes;
  bool changed = false;
  updateDiffParameters(params, changes, changed);
  RecordAccess::forEachShared3gpp(
      [&changed](const auto& wanted, const auto& own, auto& change) {
        if (wanted && wanted != own) {
          change = wanted;
          changed = true;
        }
      },
      static_cast<const ProfileParams&>(params), *this, changes);
  const auto difference = std::make_shared<Modem3gppProfile>(changes);

  std::optional<IPType> newCommon;
  std::optional<IPType> newRoam;
  std::optional<IPType> newOverrideHome;
  getNewIPTypes(params, newCommon, newRoam, newOverrideHome);
  changeTo(newCommon, commonIPType, difference->commonIPType, changed);
  changeTo(newRoam, lteRoamIPType, difference->lteRoamIPType, changed);
  changeTo(newRoam, umtsRoamIPType, difference->umtsRoamIPType, changed);
  changeTo(newOverrideHome, overrideHomeIPType, difference->overrideHomeIPType, changed);
  return changed ? difference : nullptr;
}

void Modem3gppProfile::apply(const std::shared_ptr<ModemProfile>& changes) {
  ModemProfile::apply(changes);
  if (changes == nullptr) {
    return;
  }
  const auto& from = static_cast<const Modem3gppProfile&>(*changes);
  copyIfPresent(from.lteRoamIPType, lteRoamIPType);
  copyIfPresent(from.umtsRoamIPType, umtsRoamIPType);
  RecordAccess::forEachShared3gpp(copyIfPresent, from, *this);
}

ProfileParams Modem3gppProfile::get() const {
  // The filter record is the one with setters for the two flags.
  FilterProfileParams out;
  updateGetParameters(out);
  out.setFilterByIsIAProfile(isPavoIAProfile());
  out.setFilterByIsPavoProfile(isPavoProfile());
  if (const std::optional<IPType> home = homeIPType()) {
    out.setHomeIPType(*home);
  }
  if (lteRoamIPType && lteRoamIPType == umtsRoamIPType) {
    out.setRoamIPType(*lteRoamIPType);
  }
  RecordAccess::forEachShared3gpp(copyIfPresent, *this, static_cast<ProfileParams&>(out));
  return ProfileParams(std::move(out));
}

std::string Modem3gppProfile::dump() const {
  std::string text = ModemProfile::dump();
  appendEntry(text, "OverrideHomeIPType=", overrideHomeIPType);
  appendEntry(text, "LteRoamIP=", lteRoamIPType);
  appendEntry(text, "UmtsRoamIP=", umtsRoamIPType);
  appendEntry(text, "MaxPdnsConnPerBlock=", maxPdnsConnPerBlock);
  appendEntry(text, "MaxPdnConnTimer=", maxPdnConnTimer);
  appendEntry(text, "PdnReqWaitInterval=", pdnReqWaitInterval);
  appendEntry(text, "IsApnDisabled=", isApnDisabled);
  appendEntry(text, "IsEmergencySupported=", isEmergencySupported);
  appendEntry(text, "ProfileName=", profileName);
  return text;
}

}  // namespace pavo
