// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header builds profiles in the words of a test: Stored is a profile of the modem, Wanted is a
// client's wish.
#pragma once

#include <pavo/ProfileParams.h>

#include "matching/ApnTypeBits.h"
#include "matching/ProfileSettings.h"

#include <string>
#include <utility>

namespace pavo::test {

// A Stored is a profile of the modem's table.
class Stored : public ProfileSettings {
 public:
  Stored& apn(std::string value) { return set(apnName, std::move(value)); }
  Stored& user(std::string value) { return set(userName, std::move(value)); }
  Stored& secret(std::string value) { return set(password, std::move(value)); }
  Stored& auth(AuthType value) { return set(authType, value); }
  Stored& type(IPType value) { return set(commonIPType, value); }
  Stored& overrideHome(IPType value) { return set(overrideHomeIPType, value); }
  Stored& roam(IPType value) {
    set(lteRoamIPType, value);
    return set(umtsRoamIPType, value);
  }
  Stored& types(unsigned int mask) { return set(apnTypesMask, convertToOvixApnTypeMask(mask)); }
  Stored& ofClass(ApnClass value) { return set(apnClass, value); }
  Stored& clat(bool value) { return set(isClatEnabled, value); }
  Stored& emergency(bool value) { return set(isEmergencySupported, value); }
  Stored& name(std::string value) { return set(profileName, std::move(value)); }

 private:
  template <typename Value>
  Stored& set(std::optional<Value>& member, std::type_identity_t<Value> value) {
    member = std::move(value);
    return *this;
  }
};

// A Wanted is a profile that a client wants.
class Wanted : public ProfileParams {
 public:
  Wanted& apn(const std::string& value) { return set(&Wanted::setApnName, value); }
  Wanted& user(const std::string& value) { return set(&Wanted::setUserName, value); }
  Wanted& secret(const std::string& value) { return set(&Wanted::setPassword, value); }
  Wanted& auth(AuthType value) { return set(&Wanted::setAuthType, value); }
  Wanted& home(IPType value) { return set(&Wanted::setHomeIPType, value); }
  Wanted& roam(IPType value) { return set(&Wanted::setRoamIPType, value); }
  Wanted& types(unsigned int mask) { return set(&Wanted::setApnTypesMask, mask); }
  Wanted& ofClass(ApnClass value) { return set(&Wanted::setApnClass, value); }
  Wanted& clat(bool value) { return set(&Wanted::setIsClatEnabled, value); }
  Wanted& maxPdns(int value) { return set(&Wanted::setMaxPdnsConnPerBlock, value); }
  Wanted& pdnTimer(int value) { return set(&Wanted::setMaxPdnConnTimer, value); }
  Wanted& pdnWait(int value) { return set(&Wanted::setPdnReqWaitInterval, value); }
  Wanted& disabled(bool value) { return set(&Wanted::setIsApnDisabled, value); }
  Wanted& emergency(bool value) { return set(&Wanted::setIsEmergencySupported, value); }

 private:
  template <typename Value>
  Wanted& set(void (ProfileParams::*setter)(Value), const std::type_identity_t<Value>& value) {
    (this->*setter)(value);
    return *this;
  }
};

}  // namespace pavo::test
