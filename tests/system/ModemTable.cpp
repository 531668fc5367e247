// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ModemTable.h"

#include <pavo/FilterProfileParams.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

namespace pavo::test {

namespace {

using nlohmann::json;

// Each pair holds the library's bit and the modem's bit of an APN type.
constexpr std::array<std::pair<unsigned int, std::uint64_t>, 13> apnTypes = {{
    {DEFAULT, 0x1},
    {MMS, 0x4},
    {SUPL, 0x10},
    {DUN, 0x8},
    {HIPRI, 0x20},
    {FOTA, 0x40},
    {IMS, 0x2},
    {CBS, 0x80},
    {IA, 0x100},
    {EMERGENCY, 0x200},
    {MCX, 0x800},
    {XCAP, 0x400},
    {RCS, 0x1000},
}};

unsigned int clientMask(std::uint64_t modemMask) {
  unsigned int mask = 0;
  for (const auto& [client, modem] : apnTypes) {
    mask |= (modemMask & modem) != 0 ? client : 0;
  }
  return mask;
}

IPType ipType(const std::string& name) {
  return name == "V4"     ? IPType::V4
         : name == "V6"   ? IPType::V6
         : name == "V4V6" ? IPType::V4V6
                          : IPType::UNKNOWN;
}

template <typename Value, typename Use>
void with(const json& profile, const char* name, const Use& use) {
  if (profile.contains(name)) {
    use(profile[name].get<Value>());
  }
}

std::optional<IPType> homeType(const json& profile) {
  const std::string overriding = profile.value("overrideHome", "UNSPECIFIED");
  if (overriding != "UNSPECIFIED") {
    return ipType(overriding);
  }
  return profile.contains("pdpType") ? std::optional(ipType(profile["pdpType"])) : std::nullopt;
}

// Returns a type only when the two networks agree.
std::optional<IPType> roamType(const json& profile) {
  const std::string lte = profile.value("lteRoam", "UNSPECIFIED");
  return lte != "UNSPECIFIED" && lte == profile.value("umtsRoam", "UNSPECIFIED")
             ? std::optional(ipType(lte))
             : std::nullopt;
}

}  // namespace

std::string lowered(std::string text) {
  for (char& c : text) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return text;
}

ModemTable tableOf(ModemProcess& modem) {
  ModemTable table;
  const json reply = modem.control("show");
  for (json profile : reply["profiles"]) {
    const int index = profile["index"];
    profile.erase("index");
    table[index] = std::move(profile);
  }
  return table;
}

ProfileParams paramsOf(const json& profile) {
  FilterProfileParams params;  // only this record lets its flags be set
  with<std::string>(profile, "apn", [&](const auto& v) { params.setApnName(lowered(v)); });
  with<std::string>(profile, "user", [&](const auto& v) { params.setUserName(v); });
  with<std::string>(profile, "password", [&](const auto& v) { params.setPassword(v); });
  with<int>(profile, "auth", [&](int v) { params.setAuthType(static_cast<AuthType>(v & 3)); });
  if (const auto home = homeType(profile)) {
    params.setHomeIPType(*home);
  }
  if (const auto roam = roamType(profile)) {
    params.setRoamIPType(*roam);
  }
  with<std::uint64_t>(profile, "apnTypes",
                      [&](std::uint64_t v) { params.setApnTypesMask(clientMask(v)); });
  with<int>(profile, "class", [&](int v) { params.setApnClass(static_cast<ApnClass>(v)); });
  with<bool>(profile, "clat", [&](bool v) { params.setIsClatEnabled(v); });
  with<int>(profile, "maxPdnPerBlock", [&](int v) { params.setMaxPdnsConnPerBlock(v); });
  with<int>(profile, "maxPdnTimer", [&](int v) { params.setMaxPdnConnTimer(v); });
  with<int>(profile, "pdnWaitInterval", [&](int v) { params.setPdnReqWaitInterval(v); });
  with<bool>(profile, "disabled", [&](bool v) { params.setIsApnDisabled(v); });
  with<bool>(profile, "emergency", [&](bool v) { params.setIsEmergencySupported(v); });
  const std::string name = profile.value("name", "");
  params.setFilterByIsIAProfile(name == "pavo_profile_ia");
  params.setFilterByIsPavoProfile(name == "pavo_profile" || name == "pavo_profile_ia");
  return ProfileParams(params);
}

std::string textOf(const ProfileParams& params) {
  return params.dump() + " pavo=" + std::to_string(params.getIsPavoProfile()) +
         " ia=" + std::to_string(params.getIsIAProfile());
}

std::vector<std::string> textsOf(const ModemTable& table) {
  std::vector<std::string> texts;
  for (const auto& [index, profile] : table) {
    texts.push_back(std::to_string(index) + ": " + textOf(paramsOf(profile)));
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

}  // namespace pavo::test
