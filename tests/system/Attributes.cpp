// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Attributes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <sstream>

namespace pavo::test {

namespace {

using nlohmann::json;

constexpr std::array<std::pair<unsigned int, std::uint64_t>, 13> apnTypeBits = {{
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

constexpr std::size_t apnNameBytesMax = 150;
constexpr std::size_t credentialBytesMax = 127;

std::string mixedCase(std::size_t length) {
  std::string text;
  while (text.size() < length) {
    text += "Ab1-";
  }
  return text.substr(0, length);
}

std::string lowerCase(std::size_t length) {
  std::string text;
  while (text.size() < length) {
    text += "ab1-";
  }
  return text.substr(0, length);
}

void addTexts(std::vector<AttributeCase>& cases) {
  const auto addApn = [&](const std::string& name, const std::string& kept) {
    cases.push_back({"APN name of " + std::to_string(name.size()) + " bytes",
                     [name](ProfileParams& p) { p.setApnName(name); },
                     {{"apn", kept}}});
  };
  addApn("internet", "internet");
  addApn("IMS.Example.COM", "ims.example.com");
  addApn("Ünïcode", "Ünïcode");
  addApn("", "");
  addApn(mixedCase(149), lowerCase(149));
  addApn(mixedCase(150), lowerCase(150));
  addApn(mixedCase(151), lowerCase(apnNameBytesMax));
  addApn(mixedCase(200), lowerCase(apnNameBytesMax));
  for (const std::size_t length : {0u, 1u, 9u, 126u, 127u, 128u, 300u}) {
    const std::string text = mixedCase(length);
    const std::string kept = text.substr(0, credentialBytesMax);
    const std::string what = " of " + std::to_string(length) + " bytes";
    cases.push_back({"user name" + what,
                     [text](ProfileParams& p) { p.setUserName(text); },
                     {{"user", kept}},
                     kept == text});
    cases.push_back({"password" + what,
                     [text](ProfileParams& p) { p.setPassword(text); },
                     {{"password", kept}},
                     kept == text});
  }
}

void addNumbers(std::vector<AttributeCase>& cases) {
  for (const int value : {0, 1, 300, 65535, 65536 + 7, -1}) {
    const int kept = static_cast<std::uint16_t>(value);
    const std::string what = " " + std::to_string(value);
    cases.push_back({"maximum of PDN connections" + what,
                     [value](ProfileParams& p) { p.setMaxPdnsConnPerBlock(value); },
                     {{"maxPdnPerBlock", kept}},
                     kept == value});
    cases.push_back({"PDN timer" + what,
                     [value](ProfileParams& p) { p.setMaxPdnConnTimer(value); },
                     {{"maxPdnTimer", kept}},
                     kept == value});
    cases.push_back({"PDN wait" + what,
                     [value](ProfileParams& p) { p.setPdnReqWaitInterval(value); },
                     {{"pdnWaitInterval", kept}},
                     kept == value});
  }
  for (const int value : {0, 1, 2, 3}) {
    cases.push_back({"authentication " + std::to_string(value),
                     [value](ProfileParams& p) { p.setAuthType(static_cast<AuthType>(value)); },
                     {{"auth", value}}});
  }
  for (const int value : {0, 1, 2, 3, 4, 200, 255}) {
    cases.push_back({"class " + std::to_string(value),
                     [value](ProfileParams& p) { p.setApnClass(static_cast<ApnClass>(value)); },
                     {{"class", value}}});
  }
}

void addFlags(std::vector<AttributeCase>& cases) {
  for (const bool value : {false, true}) {
    const std::string what = value ? " on" : " off";
    cases.push_back({"CLAT" + what,
                     [value](ProfileParams& p) { p.setIsClatEnabled(value); },
                     {{"clat", value}}});
    cases.push_back({"disabled" + what,
                     [value](ProfileParams& p) { p.setIsApnDisabled(value); },
                     {{"disabled", value}}});
    cases.push_back({"emergency" + what,
                     [value](ProfileParams& p) { p.setIsEmergencySupported(value); },
                     {{"emergency", value}}});
  }
}

void addMasks(std::vector<AttributeCase>& cases) {
  const auto addMask = [&](unsigned int mask, std::uint64_t kept) {
    std::ostringstream what;
    what << "APN types 0x" << std::hex << mask;
    cases.push_back(
        {what.str(), [mask](ProfileParams& p) { p.setApnTypesMask(mask); }, {{"apnTypes", kept}}});
  };
  unsigned int all = 0;
  std::uint64_t allKept = 0;
  for (const auto& [client, kept] : apnTypeBits) {
    addMask(client, kept);
    all |= client;
    allKept |= kept;
  }
  addMask(0, 0);
  addMask(all, allKept);
}

json commonType(IPType type) {
  switch (type) {
    case IPType::V4:
      return "V4";
    case IPType::V6:
      return "V6";
    case IPType::V4V6:
      return "V4V6";
    case IPType::UNKNOWN:
      return "UNSPECIFIED";
  }
  return nullptr;
}

json pdpType(IPType type) { return type == IPType::UNKNOWN ? json("V4V6") : commonType(type); }

json createdSettings(const std::optional<IPType>& home, const std::optional<IPType>& roam) {
  json settings = json::object();
  if (home) {
    settings["pdpType"] = pdpType(*home);
  }
  if (roam) {
    settings["lteRoam"] = commonType(*roam);
    settings["umtsRoam"] = commonType(*roam);
  }
  if (home && roam && *home != *roam) {
    settings["pdpType"] = "V4V6";
    settings["overrideHome"] = commonType(*home);
  }
  return settings;
}

}  // namespace

std::vector<AttributeCase> attributeCases() {
  std::vector<AttributeCase> cases;
  addTexts(cases);
  addNumbers(cases);
  addFlags(cases);
  addMasks(cases);
  return cases;
}

std::string IpTypeCase::description() const {
  std::ostringstream text;
  text << "home ";
  hasHome ? text << home : text << "absent";
  text << ", roam ";
  hasRoam ? text << roam : text << "absent";
  return text.str();
}

void IpTypeCase::set(ProfileParams& params) const {
  if (hasHome) {
    params.setHomeIPType(home);
  }
  if (hasRoam) {
    params.setRoamIPType(roam);
  }
}

std::vector<IpTypeCase> ipTypeCases() {
  const std::vector<std::optional<IPType>> types = {std::nullopt, IPType::UNKNOWN, IPType::V4,
                                                    IPType::V6, IPType::V4V6};
  std::vector<IpTypeCase> cases;
  for (const auto& home : types) {
    for (const auto& roam : types) {
      cases.push_back({home.value_or(IPType::UNKNOWN), roam.value_or(IPType::UNKNOWN),
                       home.has_value(), roam.has_value(), createdSettings(home, roam)});
    }
  }
  return cases;
}

}  // namespace pavo::test
