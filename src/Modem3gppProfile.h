#pragma once

#include "ModemProfile.h"

#include <memory>
#include <optional>
#include <string>

namespace pavo {

// A 3GPP profile, the one kind there is.
class Modem3gppProfile : public ModemProfile {
 public:
  // The names, compared exactly, that mark the profiles which this library creates.
  static constexpr const char* pavoProfileName = "pavo_profile";
  static constexpr const char* pavoIAProfileName = "pavo_profile_ia";

  explicit Modem3gppProfile(const ProfileParams& params);
  Modem3gppProfile(int profileId, const wds_get_profile_settings_resp_msg_v01& settings);

  bool match(const FilterProfileParams& filter) const override;
  void apply(const std::shared_ptr<ModemProfile>& changes) override;
  std::shared_ptr<ModemProfile> diff(const ModifyProfileParams& params) const override;
  ProfileParams get() const override;
  wds_create_profile_req_msg_v01 constructAddRequest() const override;
  wds_modify_profile_settings_req_msg_v01 constructModifyRequest() const override;
  std::string dump() const override;

  // Turns the client's home and roaming types into the modem's common type, roaming type and home
  // override, against this profile's current ones. Pass the outputs empty: one that the rules have
  // no word on is left as it was passed.
  void getNewIPTypes(const ProfileParams& params, std::optional<IPType>& newCommon,
                     std::optional<IPType>& newRoam, std::optional<IPType>& newOverrideHome) const;

  bool hasLteRoamIPType() const { return lteRoamIPType.has_value(); }
  IPType getLteRoamIPType() const { return lteRoamIPType.value_or(IPType::UNKNOWN); }
  void setLteRoamIPType(IPType type) { lteRoamIPType = type; }
  bool hasUmtsRoamIPType() const { return umtsRoamIPType.has_value(); }
  IPType getUmtsRoamIPType() const { return umtsRoamIPType.value_or(IPType::UNKNOWN); }
  void setUmtsRoamIPType(IPType type) { umtsRoamIPType = type; }
  bool hasMaxPdnsConnPerBlock() const { return maxPdnsConnPerBlock.has_value(); }
  int getMaxPdnsConnPerBlock() const { return maxPdnsConnPerBlock.value_or(0); }
  void setMaxPdnsConnPerBlock(int count) { maxPdnsConnPerBlock = count; }
  bool hasMaxPdnConnTimer() const { return maxPdnConnTimer.has_value(); }
  int getMaxPdnConnTimer() const { return maxPdnConnTimer.value_or(0); }
  void setMaxPdnConnTimer(int timer) { maxPdnConnTimer = timer; }
  bool hasPdnReqWaitInterval() const { return pdnReqWaitInterval.has_value(); }
  int getPdnReqWaitInterval() const { return pdnReqWaitInterval.value_or(0); }
  void setPdnReqWaitInterval(int interval) { pdnReqWaitInterval = interval; }
  bool hasIsApnDisabled() const { return isApnDisabled.has_value(); }
  bool getIsApnDisabled() const { return isApnDisabled.value_or(false); }
  void setIsApnDisabled(bool disabled) { isApnDisabled = disabled; }
  bool hasIsEmergencySupported() const { return isEmergencySupported.has_value(); }
  bool getIsEmergencySupported() const { return isEmergencySupported.value_or(false); }
  void setIsEmergencySupported(bool supported) { isEmergencySupported = supported; }
  bool hasProfileName() const { return profileName.has_value(); }
  std::string getProfileName() const { return profileName.value_or(std::string()); }
  void setProfileName(std::string name) { profileName = std::move(name); }

 private:
  friend struct RecordAccess;

  template <typename Codec, typename Profile, typename Message>
  static void mapFields(const Codec& codec, Profile& profile, Message& message);

  bool isPavoIAProfile() const { return profileName == pavoIAProfileName; }
  bool isPavoProfile() const { return isPavoIAProfile() || profileName == pavoProfileName; }
  bool matchCreator(const FilterProfileParams& filter) const;
  std::optional<IPType> roamIPType() const;

  std::optional<IPType> lteRoamIPType;
  std::optional<IPType> umtsRoamIPType;
  std::optional<int> maxPdnsConnPerBlock;
  std::optional<int> maxPdnConnTimer;
  std::optional<int> pdnReqWaitInterval;
  std::optional<bool> isApnDisabled;
  std::optional<std::string> profileName;
  std::optional<bool> isEmergencySupported;
};

}  // namespace pavo
