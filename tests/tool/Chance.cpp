// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Chance.h"

#include <string>

namespace pavo::test {

using Json = nlohmann::json;

Json anyProfile(Chance& chance) {
  Json profile = Json::object();
  const auto maybe = [&](const char* key, const Json& value) {
    if (!chance.oneIn(3)) {
      profile[key] = value;
    }
  };
  maybe("name", chance.among({"own", "pavo_profile", "pavo_profile_ia", "a,LteRoamIP=V4,"}));
  maybe("apn", chance.among({"internet", "net", "ims", "a,HomeIPType=V4,b=,", "ApnName=,", ""}));
  maybe("user", chance.among({"me", "Me", "x,Password=p,AuthType=PAP,"}));
  maybe("password", chance.among({"p", "", "p,CommonIPType=V6,ProfileName=,"}));
  maybe("auth", chance.upTo(5));
  for (const char* key : {"pdpType", "overrideHome", "lteRoam", "umtsRoam"}) {
    maybe(key, key == std::string("pdpType")
                   ? chance.among<Json>({"V4", "V6", "V4V6", "PPP"})
                   : chance.among<Json>({"V4", "V6", "V4V6", "UNSPECIFIED"}));
  }
  maybe("apnTypes", chance.among({0, 1, 3, 0x11, 0x2001, 0x1FFF}));
  maybe("class", chance.upTo(3));
  for (const char* key : {"clat", "emergency", "disabled"}) {
    maybe(key, chance.oneIn(2));
  }
  for (const char* key : {"maxPdnPerBlock", "maxPdnTimer", "pdnWaitInterval"}) {
    maybe(key, chance.upTo(2));
  }
  return profile;
}

ProfileParams anyParams(Chance& chance) {
  ProfileParams params;
  const auto maybe = [&](auto set, auto value) {
    if (chance.oneIn(3)) {
      (params.*set)(value);
    }
  };
  if (!chance.oneIn(4)) {
    params.setApnName(chance.among<std::string>({"Internet", "net", "ims", "ApnName=,", "new"}));
  }
  maybe(&ProfileParams::setHomeIPType, static_cast<IPType>(chance.upTo(4)));
  maybe(&ProfileParams::setRoamIPType, static_cast<IPType>(chance.upTo(4)));
  maybe(&ProfileParams::setUserName, chance.among<std::string>({"me", "Me", ""}));
  maybe(&ProfileParams::setPassword, chance.among<std::string>({"p", ""}));
  maybe(&ProfileParams::setAuthType, static_cast<AuthType>(chance.upTo(4)));
  maybe(&ProfileParams::setApnTypesMask,
        chance.among<unsigned>({0, DEFAULT, DEFAULT | IMS, 0x8FFF}));
  maybe(&ProfileParams::setApnClass, static_cast<ApnClass>(chance.upTo(3)));
  maybe(&ProfileParams::setIsClatEnabled, chance.oneIn(2));
  maybe(&ProfileParams::setIsEmergencySupported, chance.oneIn(2));
  maybe(&ProfileParams::setIsApnDisabled, chance.oneIn(2));
  maybe(&ProfileParams::setMaxPdnsConnPerBlock, chance.upTo(2));
  maybe(&ProfileParams::setMaxPdnConnTimer, chance.upTo(2));
  maybe(&ProfileParams::setPdnReqWaitInterval, chance.upTo(2));
  return params;
}

}  // namespace pavo::test
