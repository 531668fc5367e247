// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/ProfileParams.h>

#include "DumpText.h"

#include <utility>

namespace pavo {

namespace {

// An absent attribute reads as empty, zero or false.
template <typename T>
T valueOf(const std::optional<T>& attribute) {
  return attribute ? *attribute : T();
}

}  // namespace

ProfileParams::ProfileParams() = default;
ProfileParams::ProfileParams(const ProfileParams&) = default;
ProfileParams& ProfileParams::operator=(const ProfileParams&) = default;
ProfileParams::ProfileParams(ProfileParams&&) noexcept = default;
ProfileParams& ProfileParams::operator=(ProfileParams&&) noexcept = default;
ProfileParams::~ProfileParams() = default;

std::string ProfileParams::getApnName() const { return valueOf(apnName); }
void ProfileParams::setApnName(std::string name) { apnName = std::move(name); }
bool ProfileParams::hasApnName() const { return apnName.has_value(); }

std::string ProfileParams::getUserName() const { return valueOf(userName); }
void ProfileParams::setUserName(std::string name) { userName = std::move(name); }
bool ProfileParams::hasUserName() const { return userName.has_value(); }

std::string ProfileParams::getPassword() const { return valueOf(password); }
void ProfileParams::setPassword(std::string newPassword) { password = std::move(newPassword); }
bool ProfileParams::hasPassword() const { return password.has_value(); }

AuthType ProfileParams::getAuthType() const { return valueOf(authType); }
void ProfileParams::setAuthType(AuthType type) { authType = type; }
bool ProfileParams::hasAuthType() const { return authType.has_value(); }

IPType ProfileParams::getHomeIPType() const { return valueOf(homeIPType); }
void ProfileParams::setHomeIPType(IPType type) { homeIPType = type; }
bool ProfileParams::hasHomeIPType() const { return homeIPType.has_value(); }

IPType ProfileParams::getRoamIPType() const { return valueOf(roamIPType); }
void ProfileParams::setRoamIPType(IPType type) { roamIPType = type; }
bool ProfileParams::hasRoamIPType() const { return roamIPType.has_value(); }

unsigned int ProfileParams::getApnTypesMask() const { return valueOf(apnTypesMask); }
void ProfileParams::setApnTypesMask(unsigned int mask) { apnTypesMask = mask; }
bool ProfileParams::hasApnTypesMask() const { return apnTypesMask.has_value(); }

ApnClass ProfileParams::getApnClass() const { return valueOf(apnClass); }
void ProfileParams::setApnClass(ApnClass newClass) { apnClass = newClass; }
bool ProfileParams::hasApnClass() const { return apnClass.has_value(); }

bool ProfileParams::getIsClatEnabled() const { return valueOf(isClatEnabled); }
void ProfileParams::setIsClatEnabled(bool enabled) { isClatEnabled = enabled; }
bool ProfileParams::hasIsClatEnabled() const { return isClatEnabled.has_value(); }

int ProfileParams::getMaxPdnsConnPerBlock() const { return valueOf(maxPdnsConnPerBlock); }
void ProfileParams::setMaxPdnsConnPerBlock(int count) { maxPdnsConnPerBlock = count; }
bool ProfileParams::hasMaxPdnsConnPerBlock() const { return maxPdnsConnPerBlock.has_value(); }

int ProfileParams::getMaxPdnConnTimer() const { return valueOf(maxPdnConnTimer); }
void ProfileParams::setMaxPdnConnTimer(int timer) { maxPdnConnTimer = timer; }
bool ProfileParams::hasMaxPdnConnTimer() const { return maxPdnConnTimer.has_value(); }

int ProfileParams::getPdnReqWaitInterval() const { return valueOf(pdnReqWaitInterval); }
void ProfileParams::setPdnReqWaitInterval(int interval) { pdnReqWaitInterval = interval; }
bool ProfileParams::hasPdnReqWaitInterval() const { return pdnReqWaitInterval.has_value(); }

bool ProfileParams::getIsApnDisabled() const { return valueOf(isApnDisabled); }
void ProfileParams::setIsApnDisabled(bool disabled) { isApnDisabled = disabled; }
bool ProfileParams::hasIsApnDisabled() const { return isApnDisabled.has_value(); }

bool ProfileParams::getIsEmergencySupported() const { return valueOf(isEmergencySupported); }
void ProfileParams::setIsEmergencySupported(bool supported) { isEmergencySupported = supported; }
bool ProfileParams::hasIsEmergencySupported() const { return isEmergencySupported.has_value(); }

bool ProfileParams::getIsPavoProfile() const { return valueOf(isPavoProfile); }
bool ProfileParams::getIsIAProfile() const { return valueOf(isIAProfile); }

std::string ProfileParams::dump() const {
  std::string text;
  appendTo(text);
  return text;
}

void ProfileParams::appendTo(std::string& text) const {
  text.reserve(text.size() + dumpCharsTypical);
  appendEntry(text, "ApnName=", apnName);
  appendEntry(text, "UserName=", userName);
  // The password is in clear on purpose: authentication failures are debugged with this line.
  appendEntry(text, "Password=", password);
  appendEntry(text, "AuthType=", authType);
  appendEntry(text, "HomeIPType=", homeIPType);
  appendEntry(text, "RoamIPType=", roamIPType);
  if (apnTypesMask) {
    appendEntry(text, "ApnTypesMask=", static_cast<ApnTypes>(*apnTypesMask));
  }
  appendEntry(text, "ApnClass=", apnClass);
  appendEntry(text, "IsClatEnabled=", isClatEnabled);
  appendEntry(text, "MaxPdnsConnPerBlock=", maxPdnsConnPerBlock);
  appendEntry(text, "MaxPdnConnTimer=", maxPdnConnTimer);
  appendEntry(text, "PdnReqWaitInterval=", pdnReqWaitInterval);
  appendEntry(text, "IsApnDisabled=", isApnDisabled);
  appendEntry(text, "IsEmergencySupported=", isEmergencySupported);
  appendEntry(text, "IsPavoProfile=", isPavoProfile);
  appendEntry(text, "IsIAProfile=", isIAProfile);
}

}  // namespace pavo
