// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A profile of the modem as plain values. The rules of matching and changing work on these values.
#pragma once

#include <pavo/ProfileTypes.h>

#include <optional>
#include <string>

namespace pavo {

struct ProfileSettings {
  // These names mark the profiles that this library creates. They are compared exactly.
  static constexpr const char* pavoName = "pavo_profile";
  static constexpr const char* pavoIAName = "pavo_profile_ia";

  bool isPavoIAProfile() const { return profileName == pavoIAName; }
  bool isPavoProfile() const { return isPavoIAProfile() || profileName == pavoName; }

  // Returns the override unless it is absent or UNKNOWN, else the common type.
  std::optional<IPType> homeIPType() const {
    return overrideHomeIPType && *overrideHomeIPType != IPType::UNKNOWN ? overrideHomeIPType
                                                                        : commonIPType;
  }
  // Returns the type that a filter's roaming type is compared with: the type of both radio
  // technologies when they agree, no type when they differ, and the common type when neither has
  // one. An absent UMTS type counts as UNKNOWN.
  std::optional<IPType> roamIPType() const {
    if (lteRoamIPType) {
      return *lteRoamIPType == umtsRoamIPType.value_or(IPType::UNKNOWN) ? lteRoamIPType
                                                                        : std::nullopt;
    }
    return umtsRoamIPType ? std::nullopt : commonIPType;
  }

  int profileId = -1;
  // UNKNOWN means that there was an override and that it was taken back.
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
