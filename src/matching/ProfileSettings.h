// A profile of the modem as plain values: what the rules of matching and changing look at.
#pragma once

#include <pavo/ProfileTypes.h>

#include <optional>
#include <string>

namespace pavo {

struct ProfileSettings {
  // The names, compared exactly, that mark the profiles which this library creates.
  static constexpr const char* pavoName = "pavo_profile";
  static constexpr const char* pavoIAName = "pavo_profile_ia";

  bool isPavoIAProfile() const { return profileName == pavoIAName; }
  bool isPavoProfile() const { return isPavoIAProfile() || profileName == pavoName; }

  // The override unless it is absent or UNKNOWN, else the common type.
  std::optional<IPType> homeIPType() const {
    return overrideHomeIPType && *overrideHomeIPType != IPType::UNKNOWN ? overrideHomeIPType
                                                                        : commonIPType;
  }
  // What a filter's roaming type is compared with: the type of both radio technologies, which have
  // to agree; the common type when neither has one. An absent UMTS type counts as UNKNOWN.
  std::optional<IPType> roamIPType() const {
    if (lteRoamIPType) {
      return *lteRoamIPType == umtsRoamIPType.value_or(IPType::UNKNOWN) ? lteRoamIPType
                                                                        : std::nullopt;
    }
    return umtsRoamIPType ? std::nullopt : commonIPType;
  }

  int profileId = -1;
  // Present and UNKNOWN: there was an override and it was taken back.
  std::optional<IPType> overrideHomeIPType;
  std::optional<std::string> apnName;              // normalised
  std::optional<unsigned long long> apnTypesMask;  // the modem's bits
  std::optional<IPType> commonIPType;
  std::optional<std::string> userName;
  std::optional<std::string> password;
  std::optional<AuthType> authType;
  std::optional<ApnClass> apnClass;
  std::optional<bool> isClatEnabled;
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
