// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "profiles/Profile.h"

#include "Text.h"
#include "profiles/Names.h"

#include <algorithm>
#include <array>
#include <vector>

namespace pavoctl {
namespace {

using pavo::ProfileParams;

template <typename Enumeration>
Json enumerationJson(Enumeration value) {
  if (const auto name = nameOf(value)) {
    return *name;
  }
  return static_cast<int>(value);
}

struct Attribute {
  const char* key;
  bool (*isPresent)(const ProfileParams&);
  Json (*value)(const ProfileParams&);
  bool isSecret = false;
};

constexpr std::array attributes{
    Attribute{"apnName", [](const ProfileParams& p) { return p.hasApnName(); },
              [](const ProfileParams& p) { return Json(p.getApnName()); }},
    Attribute{"userName", [](const ProfileParams& p) { return p.hasUserName(); },
              [](const ProfileParams& p) { return Json(p.getUserName()); }},
    Attribute{"password", [](const ProfileParams& p) { return p.hasPassword(); },
              [](const ProfileParams& p) { return Json(p.getPassword()); }, /*isSecret=*/true},
    Attribute{"authType", [](const ProfileParams& p) { return p.hasAuthType(); },
              [](const ProfileParams& p) { return enumerationJson(p.getAuthType()); }},
    Attribute{"homeIPType", [](const ProfileParams& p) { return p.hasHomeIPType(); },
              [](const ProfileParams& p) { return enumerationJson(p.getHomeIPType()); }},
    Attribute{"roamIPType", [](const ProfileParams& p) { return p.hasRoamIPType(); },
              [](const ProfileParams& p) { return enumerationJson(p.getRoamIPType()); }},
    Attribute{"apnTypesMask", [](const ProfileParams& p) { return p.hasApnTypesMask(); },
              [](const ProfileParams& p) { return Json(namesOfApnTypes(p.getApnTypesMask())); }},
    Attribute{"apnClass", [](const ProfileParams& p) { return p.hasApnClass(); },
              [](const ProfileParams& p) { return enumerationJson(p.getApnClass()); }},
    Attribute{"isClatEnabled", [](const ProfileParams& p) { return p.hasIsClatEnabled(); },
              [](const ProfileParams& p) { return Json(p.getIsClatEnabled()); }},
    Attribute{"isEmergencySupported",
              [](const ProfileParams& p) { return p.hasIsEmergencySupported(); },
              [](const ProfileParams& p) { return Json(p.getIsEmergencySupported()); }},
    Attribute{"isApnDisabled", [](const ProfileParams& p) { return p.hasIsApnDisabled(); },
              [](const ProfileParams& p) { return Json(p.getIsApnDisabled()); }},
    Attribute{"maxPdnsConnPerBlock",
              [](const ProfileParams& p) { return p.hasMaxPdnsConnPerBlock(); },
              [](const ProfileParams& p) { return Json(p.getMaxPdnsConnPerBlock()); }},
    Attribute{"maxPdnConnTimer", [](const ProfileParams& p) { return p.hasMaxPdnConnTimer(); },
              [](const ProfileParams& p) { return Json(p.getMaxPdnConnTimer()); }},
    Attribute{"pdnReqWaitInterval",
              [](const ProfileParams& p) { return p.hasPdnReqWaitInterval(); },
              [](const ProfileParams& p) { return Json(p.getPdnReqWaitInterval()); }},
};

constexpr const char* idKey = "id";

Json sideOf(const Json& profile, const std::string& key, Secrets secrets) {
  const bool isSecret = std::any_of(
      attributes.begin(), attributes.end(),
      [&](const auto& attribute) { return attribute.isSecret && attribute.key == key; });
  return isSecret && secrets == Secrets::masked ? Json(secretMask) : profile.at(key);
}

}  // namespace

Json toJson(const ProfileParams& params, Secrets secrets) {
  Json json = Json::object();
  for (const auto& attribute : attributes) {
    if (attribute.isPresent(params)) {
      json[attribute.key] = attribute.isSecret && secrets == Secrets::masked
                                ? Json(secretMask)
                                : attribute.value(params);
    }
  }
  return json;
}

Json toJson(const Profile& profile, Secrets secrets) {
  Json json = Json::object();
  json[idKey] = profile.id;
  json.update(toJson(profile.params, secrets));
  // The library offers no test for the presence of these two, and always sets them in the profiles
  // that it hands out.
  json["isPavoProfile"] = profile.params.getIsPavoProfile();
  json["isIAProfile"] = profile.params.getIsIAProfile();
  return json;
}

Json changes(const Profile& before, const Profile& after, Secrets secrets) {
  const Json was = toJson(before, Secrets::shown);
  const Json is = toJson(after, Secrets::shown);
  Json all = was;
  all.update(is);
  Json result = Json::object();
  for (const auto& [key, value] : all.items()) {
    if (was.contains(key) && is.contains(key) && was[key] == is[key]) {
      continue;
    }
    if (was.contains(key)) {
      result[key]["before"] = sideOf(was, key, secrets);
    }
    if (is.contains(key)) {
      result[key]["after"] = sideOf(is, key, secrets);
    }
  }
  return result;
}

std::string valueText(const Json& value) {
  if (value.is_boolean()) {
    return value.get<bool>() ? "yes" : "no";
  }
  if (value.is_string()) {
    return printable(value.get_ref<const std::string&>());
  }
  if (value.is_array()) {
    const auto names = value.get<std::vector<std::string>>();
    return names.empty() ? "NONE" : join(names, "|");
  }
  return dumpJson(value);
}

std::string dumpJson(const Json& json, int indent) {
  return json.dump(indent, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

}  // namespace pavoctl
