// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "WishParams.h"

namespace pavo::test::model {

namespace {

template <typename Value, typename Set>
void with(const json& wish, const char* name, const Set& set) {
  if (wish.contains(name)) {
    set(wish[name].get<Value>());
  }
}

}  // namespace

ProfileParams paramsOf(const json& wish) {
  ProfileParams params;
  with<std::string>(wish, "apn", [&](const auto& v) { params.setApnName(v); });
  with<std::string>(wish, "user", [&](const auto& v) { params.setUserName(v); });
  with<std::string>(wish, "password", [&](const auto& v) { params.setPassword(v); });
  with<int>(wish, "auth", [&](int v) { params.setAuthType(static_cast<AuthType>(v)); });
  with<unsigned int>(wish, "types", [&](unsigned int v) { params.setApnTypesMask(v); });
  with<int>(wish, "class", [&](int v) { params.setApnClass(static_cast<ApnClass>(v)); });
  with<bool>(wish, "clat", [&](bool v) { params.setIsClatEnabled(v); });
  with<json>(wish, "home",
             [&](const json& v) { params.setHomeIPType(static_cast<IPType>(ipBits(v))); });
  with<json>(wish, "roam",
             [&](const json& v) { params.setRoamIPType(static_cast<IPType>(ipBits(v))); });
  with<int>(wish, "maxPdnPerBlock", [&](int v) { params.setMaxPdnsConnPerBlock(v); });
  with<int>(wish, "maxPdnTimer", [&](int v) { params.setMaxPdnConnTimer(v); });
  with<int>(wish, "pdnWaitInterval", [&](int v) { params.setPdnReqWaitInterval(v); });
  with<bool>(wish, "disabled", [&](bool v) { params.setIsApnDisabled(v); });
  with<bool>(wish, "emergency", [&](bool v) { params.setIsEmergencySupported(v); });
  return params;
}

FilterProfileParams paramsOf(const Filter& filter) {
  FilterProfileParams params;
  static_cast<ProfileParams&>(params) = paramsOf(filter.wish);
  params.addFilterMatchCriteria(filter.criteria);
  if (filter.id) {
    params.setFilterByProfileId(*filter.id);
  }
  if (filter.isPavo) {
    params.setFilterByIsPavoProfile(*filter.isPavo);
  }
  if (filter.isIA) {
    params.setFilterByIsIAProfile(*filter.isIA);
  }
  return params;
}

json viewOf(const ProfileParams& params) {
  json view = json::object();
  const auto tell = [&view](const char* name, bool isPresent, const json& value) {
    if (isPresent) {
      view[name] = value;
    }
  };
  const auto ip = [](IPType type) { return ipName(static_cast<int>(type)); };
  tell("apn", params.hasApnName(), params.getApnName());
  tell("user", params.hasUserName(), params.getUserName());
  tell("password", params.hasPassword(), params.getPassword());
  tell("auth", params.hasAuthType(), static_cast<int>(params.getAuthType()));
  tell("types", params.hasApnTypesMask(), params.getApnTypesMask());
  tell("class", params.hasApnClass(), static_cast<int>(params.getApnClass()));
  tell("clat", params.hasIsClatEnabled(), params.getIsClatEnabled());
  tell("home", params.hasHomeIPType(), ip(params.getHomeIPType()));
  tell("roam", params.hasRoamIPType(), ip(params.getRoamIPType()));
  tell("maxPdnPerBlock", params.hasMaxPdnsConnPerBlock(), params.getMaxPdnsConnPerBlock());
  tell("maxPdnTimer", params.hasMaxPdnConnTimer(), params.getMaxPdnConnTimer());
  tell("pdnWaitInterval", params.hasPdnReqWaitInterval(), params.getPdnReqWaitInterval());
  tell("disabled", params.hasIsApnDisabled(), params.getIsApnDisabled());
  tell("emergency", params.hasIsEmergencySupported(), params.getIsEmergencySupported());
  tell("isPavo", true, params.getIsPavoProfile());
  tell("isIA", true, params.getIsIAProfile());
  return view;
}

}  // namespace pavo::test::model
