// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Modem3gppProfile.h"

#include "DumpText.h"
#include "MessageFields.h"
#include "matching/Changes.h"
#include "matching/Matching.h"

#include <utility>

namespace pavo {

namespace {

// Lists member, message field and conversion in the order in which a response is read. The order is
// fixed, because reading logs unknown values.
template <typename Codec, typename Profile, typename Message>
void mapFields(const Codec& codec, Profile& profile, Message& message) {
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

}  // namespace

Modem3gppProfile::Modem3gppProfile(const ProfileParams& params) { copySettings(params, settings); }

Modem3gppProfile::Modem3gppProfile(int profileId,
                                   const wds_get_profile_settings_resp_msg_v01& response)
    : ModemProfile(profileId, response) {
  mapFields(ReadMessage{}, settings, response);
}

wds_create_profile_req_msg_v01 Modem3gppProfile::constructAddRequest() const {
  wds_create_profile_req_msg_v01 request;
  updateAddParameters(request);
  request.profile_type = WDS_PROFILE_TYPE_3GPP_V01;
  mapFields(FillMessage{}, settings, request);
  return request;
}

wds_modify_profile_settings_req_msg_v01 Modem3gppProfile::constructModifyRequest() const {
  wds_modify_profile_settings_req_msg_v01 request;
  updateModifyParameters(request);
  mapFields(FillMessage{}, settings, request);
  return request;
}

bool Modem3gppProfile::match(const FilterProfileParams& filter) const {
  return firstMismatch(settings, filter) == Criterion::None;
}

void Modem3gppProfile::getNewIPTypes(const ProfileParams& params, std::optional<IPType>& newCommon,
                                     std::optional<IPType>& newRoam,
                                     std::optional<IPType>& newOverrideHome) const {
  IPTypes types{newCommon, newRoam, newOverrideHome};
  planIPTypes(settings, params, types);
  newCommon = types.common;
  newRoam = types.roam;
  newOverrideHome = types.overrideHome;
}

std::shared_ptr<ModemProfile> Modem3gppProfile::diff(const ModifyProfileParams& params) const {
  // The object is created even when nothing differs, because its destructor writes a line to the
  // log.
  const auto difference = std::make_shared<Modem3gppProfile>(ProfileParams());
  const bool changed = planChanges(settings, params, difference->settings);
  return changed ? difference : nullptr;
}

void Modem3gppProfile::apply(const std::shared_ptr<ModemProfile>& changes) {
  if (changes != nullptr) {
    applyChanges(static_cast<const Modem3gppProfile&>(*changes).settings, settings);
  }
}

ProfileParams Modem3gppProfile::get() const { return clientView(settings); }

std::string Modem3gppProfile::dump() const {
  std::string text = ModemProfile::dump();
  appendEntry(text, "OverrideHomeIPType=", settings.overrideHomeIPType);
  appendEntry(text, "LteRoamIP=", settings.lteRoamIPType);
  appendEntry(text, "UmtsRoamIP=", settings.umtsRoamIPType);
  appendEntry(text, "MaxPdnsConnPerBlock=", settings.maxPdnsConnPerBlock);
  appendEntry(text, "MaxPdnConnTimer=", settings.maxPdnConnTimer);
  appendEntry(text, "PdnReqWaitInterval=", settings.pdnReqWaitInterval);
  appendEntry(text, "IsApnDisabled=", settings.isApnDisabled);
  appendEntry(text, "IsEmergencySupported=", settings.isEmergencySupported);
  appendEntry(text, "ProfileName=", settings.profileName);
  return text;
}

}  // namespace pavo
