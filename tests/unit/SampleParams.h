// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header holds a profile with every attribute set, and its text.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/ProfileParams.h>

namespace pavo::test {

// Returns a profile with every attribute that a client can set.
inline ProfileParams everySettableAttribute() {
  ProfileParams params;
  params.setPdnReqWaitInterval(-3);
  params.setMaxPdnConnTimer(300);
  params.setMaxPdnsConnPerBlock(20);
  params.setIsApnDisabled(true);
  params.setIsEmergencySupported(false);
  params.setIsClatEnabled(true);
  params.setApnClass(ApnClass::INET);
  params.setApnTypesMask(DEFAULT | IMS);
  params.setRoamIPType(IPType::V4);
  params.setHomeIPType(IPType::V4V6);
  params.setAuthType(AuthType::PAP_CHAP);
  params.setPassword("secret");
  params.setUserName("user");
  params.setApnName("Internet");
  return params;
}

inline constexpr const char* everySettableAttributeText =
    "ApnName=Internet,UserName=user,Password=secret,AuthType=PAP_CHAP,HomeIPType=V4V6,"
    "RoamIPType=V4,ApnTypesMask=DEFAULT|IMS|,ApnClass=INET,IsClatEnabled=1,"
    "MaxPdnsConnPerBlock=20,MaxPdnConnTimer=300,PdnReqWaitInterval=-3,IsApnDisabled=1,"
    "IsEmergencySupported=0,";

// Adds the two flags that only the library and filters set.
inline ProfileParams everyAttribute(bool isPavo, bool isIA) {
  FilterProfileParams params(everySettableAttribute());
  params.setFilterByIsPavoProfile(isPavo);
  params.setFilterByIsIAProfile(isIA);
  return ProfileParams(params);
}

inline std::string everyAttributeText(bool isPavo, bool isIA) {
  return std::string(everySettableAttributeText) + "IsPavoProfile=" + (isPavo ? "1" : "0") +
         ",IsIAProfile=" + (isIA ? "1" : "0") + ",";
}

}  // namespace pavo::test
