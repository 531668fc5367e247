// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ModemProfile.h"

#include <memory>
#include <optional>
#include <string>

namespace pavo {

// A 3GPP profile. No other kind exists.
class Modem3gppProfile : public ModemProfile {
 public:
  // These names mark the profiles that this library creates. They are compared exactly.
  static constexpr const char* pavoProfileName = ProfileSettings::pavoName;
  static constexpr const char* pavoIAProfileName = ProfileSettings::pavoIAName;

  explicit Modem3gppProfile(const ProfileParams& params);
  Modem3gppProfile(int profileId, const wds_get_profile_settings_resp_msg_v01& response);

  bool match(const FilterProfileParams& filter) const override;
  void apply(const std::shared_ptr<ModemProfile>& changes) override;
  std::shared_ptr<ModemProfile> diff(const ModifyProfileParams& params) const override;
  ProfileParams get() const override;
  wds_create_profile_req_msg_v01 constructAddRequest() const override;
  wds_modify_profile_settings_req_msg_v01 constructModifyRequest() const override;
  std::string dump() const override;

  // Converts the client's home and roaming types to the modem's common type, roaming type and home
  // override, based on this profile's current types. Pass empty outputs: an output that no rule
  // sets keeps its value.
  void getNewIPTypes(const ProfileParams& params, std::optional<IPType>& newCommon,
                     std::optional<IPType>& newRoam, std::optional<IPType>& newOverrideHome) const;

  bool hasLteRoamIPType() const { return settings.lteRoamIPType.has_value(); }
  IPType getLteRoamIPType() const { return settings.lteRoamIPType.value_or(IPType::UNKNOWN); }
  void setLteRoamIPType(IPType type) { settings.lteRoamIPType = type; }
  bool hasUmtsRoamIPType() const { return settings.umtsRoamIPType.has_value(); }
  IPType getUmtsRoamIPType() const { return settings.umtsRoamIPType.value_or(IPType::UNKNOWN); }
  void setUmtsRoamIPType(IPType type) { settings.umtsRoamIPType = type; }
  bool hasMaxPdnsConnPerBlock() const { return settings.maxPdnsConnPerBlock.has_value(); }
  int getMaxPdnsConnPerBlock() const { return settings.maxPdnsConnPerBlock.value_or(0); }
  void setMaxPdnsConnPerBlock(int count) { settings.maxPdnsConnPerBlock = count; }
  bool hasMaxPdnConnTimer() const { return settings.maxPdnConnTimer.has_value(); }
  int getMaxPdnConnTimer() const { return settings.maxPdnConnTimer.value_or(0); }
  void setMaxPdnConnTimer(int timer) { settings.maxPdnConnTimer = timer; }
  bool hasPdnReqWaitInterval() const { return settings.pdnReqWaitInterval.has_value(); }
  int getPdnReqWaitInterval() const { return settings.pdnReqWaitInterval.value_or(0); }
  void setPdnReqWaitInterval(int interval) { settings.pdnReqWaitInterval = interval; }
  bool hasIsApnDisabled() const { return settings.isApnDisabled.has_value(); }
  bool getIsApnDisabled() const { return settings.isApnDisabled.value_or(false); }
  void setIsApnDisabled(bool disabled) { settings.isApnDisabled = disabled; }
  bool hasIsEmergencySupported() const { return settings.isEmergencySupported.has_value(); }
  bool getIsEmergencySupported() const { return settings.isEmergencySupported.value_or(false); }
  void setIsEmergencySupported(bool supported) { settings.isEmergencySupported = supported; }
  bool hasProfileName() const { return settings.profileName.has_value(); }
  std::string getProfileName() const { return settings.profileName.value_or(std::string()); }
  void setProfileName(std::string name) { settings.profileName = std::move(name); }
};

}  // namespace pavo
