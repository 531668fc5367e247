// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "profiles/Attributes.h"

#include "Errors.h"
#include "Options.h"
#include "Text.h"
#include "profiles/Names.h"
#include "profiles/Values.h"

#include <algorithm>
#include <utility>

namespace pavoctl {
namespace {

using pavo::ProfileParams;
using Form = Attribute::Form;

template <std::size_t bytesMax>
std::string parseTextUpTo(std::string_view name, std::string_view value) {
  return parseText(name, value, bytesMax);
}

int parsePdnValue(std::string_view name, std::string_view value) {
  return static_cast<int>(parseNumber(name, value, 0, pdnValueMax));
}

template <auto has, auto get, auto set, auto parse>
Attribute attribute(const char* key, const char* option, const char* kind, std::string help,
                    Form form) {
  return {key,
          option,
          kind,
          std::move(help),
          form,
          [](const ProfileParams& params) { return (params.*has)(); },
          [](const ProfileParams& a, const ProfileParams& b) { return (a.*get)() == (b.*get)(); },
          [](ProfileParams& params, std::string_view name, std::string_view value) {
            (params.*set)(parse(name, value));
          },
          [](const ProfileParams& from, ProfileParams& to) { (to.*set)((from.*get)()); }};
}

std::vector<Attribute> makeAttributes() {
  using P = ProfileParams;
  return {
      attribute<&P::hasApnName, &P::getApnName, &P::setApnName, parseTextUpTo<apnNameBytesMax>>(
          "apnName", "--apn", "NAME", "Access point name, up to 150 bytes", Form::text),
      attribute<&P::hasUserName, &P::getUserName, &P::setUserName, parseTextUpTo<userNameBytesMax>>(
          "userName", "--user", "NAME", "User name, up to 127 bytes", Form::text),
      attribute<&P::hasPassword, &P::getPassword, &P::setPassword, parseTextUpTo<passwordBytesMax>>(
          "password", "--password", "TEXT", "Password, up to 127 bytes", Form::text),
      attribute<&P::hasAuthType, &P::getAuthType, &P::setAuthType, parseAuthType>(
          "authType", "--auth", kindOf::authType, "Authentication: " + authTypeNames(),
          Form::enumeration),
      attribute<&P::hasHomeIPType, &P::getHomeIPType, &P::setHomeIPType, parseIpType>(
          "homeIPType", "--home-ip", kindOf::ipType, "IP type at home: " + ipTypeNames(),
          Form::enumeration),
      attribute<&P::hasRoamIPType, &P::getRoamIPType, &P::setRoamIPType, parseIpType>(
          "roamIPType", "--roam-ip", kindOf::ipType, "IP type when roaming", Form::enumeration),
      attribute<&P::hasApnTypesMask, &P::getApnTypesMask, &P::setApnTypesMask, parseApnTypes>(
          "apnTypesMask", "--types", kindOf::apnTypes,
          "What the APN is for, joined by , or |: " + apnTypeNames() + "; NONE; or a number",
          Form::names),
      attribute<&P::hasApnClass, &P::getApnClass, &P::setApnClass, parseApnClass>(
          "apnClass", "--class", kindOf::apnClass,
          "The operator's class of the APN: " + apnClassNames() + "; or a number",
          Form::enumeration),
      attribute<&P::hasIsClatEnabled, &P::getIsClatEnabled, &P::setIsClatEnabled, parseFlag>(
          "isClatEnabled", "--clat", kindOf::flag, "464XLAT: IPv4 for applications over IPv6",
          Form::flag),
      attribute<&P::hasIsEmergencySupported, &P::getIsEmergencySupported,
                &P::setIsEmergencySupported, parseFlag>(
          "isEmergencySupported", "--emergency", kindOf::flag, "The APN may carry emergency calls",
          Form::flag),
      attribute<&P::hasIsApnDisabled, &P::getIsApnDisabled, &P::setIsApnDisabled, parseFlag>(
          "isApnDisabled", "--disabled", kindOf::flag, "Connections to the APN are forbidden",
          Form::flag),
      attribute<&P::hasMaxPdnsConnPerBlock, &P::getMaxPdnsConnPerBlock, &P::setMaxPdnsConnPerBlock,
                parsePdnValue>("maxPdnsConnPerBlock", "--max-pdn", "N",
                               "PDN connections allowed in one time block, 0 to 65535",
                               Form::number),
      attribute<&P::hasMaxPdnConnTimer, &P::getMaxPdnConnTimer, &P::setMaxPdnConnTimer,
                parsePdnValue>("maxPdnConnTimer", "--max-pdn-time", "N",
                               "That time block, 0 to 65535", Form::number),
      attribute<&P::hasPdnReqWaitInterval, &P::getPdnReqWaitInterval, &P::setPdnReqWaitInterval,
                parsePdnValue>("pdnReqWaitInterval", "--wait", "N",
                               "Wait between two PDN connection requests, 0 to 65535",
                               Form::number)};
}

// Returns null when no attribute has that name.
const Attribute* attributeNamed(std::string_view name) {
  const std::string wanted = lowerCase(name);
  const auto& all = allAttributes();
  const auto found = std::find_if(all.begin(), all.end(), [&](const Attribute& attribute) {
    return wanted == lowerCase(attribute.key) || "--" + wanted == attribute.option;
  });
  return found == all.end() ? nullptr : &*found;
}

bool fits(const Json& value, Form form) {
  switch (form) {
    case Form::text:
      return value.is_string();
    case Form::flag:
      return value.is_string() || value.is_boolean();
    case Form::number:
    case Form::enumeration:
      return value.is_string() || value.is_number_integer();
    case Form::names:
      return value.is_string() || value.is_number_integer() ||
             (value.is_array() && std::all_of(value.begin(), value.end(),
                                              [](const Json& name) { return name.is_string(); }));
  }
  return false;
}

const char* kindText(const Json& value) {
  if (value.is_array()) {
    return "an array";
  }
  if (value.is_object()) {
    return "an object";
  }
  if (value.is_number()) {
    return "a number";
  }
  return value.is_boolean() ? "true or false" : value.is_null() ? "null" : "a text";
}

[[noreturn]] void refuseName(std::string_view name) {
  throw UsageError(quoted(name) + " is not an attribute of a profile");
}

void setFromJson(ProfileParams& params, const std::string& key, const Json& value) {
  const Attribute* const named = attributeNamed(key);
  if (named == nullptr) {
    refuseName(key);
  }
  const Attribute& attribute = *named;
  if (!fits(value, attribute.form)) {
    // The message does not repeat the value, because it may be a password and may be nested to any
    // depth.
    throw UsageError(printable(key) + ": " + kindText(value) + " is not a value for it");
  }
  // valueText() is for people, and it would change a text.
  const std::string text = value.is_string() ? value.get<std::string>() : valueText(value);
  if (attribute.key == std::string_view("password") && text == secretMask) {
    throw UsageError("password: it has been masked; list with --show-secrets to have it");
  }
  setOnce(attribute, params, key, text);
}

}  // namespace

const std::vector<Attribute>& allAttributes() {
  static const std::vector<Attribute> all = makeAttributes();
  return all;
}

void setOnce(const Attribute& attribute, ProfileParams& params, std::string_view name,
             std::string_view value) {
  if (attribute.isPresent(params)) {
    throw UsageError(printable(name) + ": " + attribute.key + " is given twice");
  }
  attribute.parse(params, name, value);
}

void setFromText(ProfileParams& params, std::string_view text) {
  auto parts = split(text, ",");
  // The library's own text form ends in a separator.
  if (parts.size() > 1 && parts.back().empty()) {
    parts.pop_back();
  }
  for (const auto part : parts) {
    const auto equals = part.find('=');
    const std::string_view name = part.substr(0, equals);
    const Attribute* const attribute = attributeNamed(name);
    // A part without = may be the value of a misspelt option. An unknown name after a password may
    // be the rest of the password.
    if (equals == std::string_view::npos || (attribute == nullptr && params.hasPassword())) {
      throw UsageError(
          "an argument is not ATTRIBUTE=VALUE (a value with a comma needs its option)");
    }
    if (attribute == nullptr) {
      refuseName(name);
    }
    setOnce(*attribute, params, name, part.substr(equals + 1));
  }
}

ProfileParams profileFromJson(const Json& json) {
  if (!json.is_object()) {
    throw UsageError(R"(a profile is an object, as in {"apnName": "internet"})");
  }
  ProfileParams params;
  for (const auto& [key, value] : json.items()) {
    if (key != "id" && key != "isPavoProfile" && key != "isIAProfile") {
      setFromJson(params, key, value);
    }
  }
  return params;
}

void copyPresent(const ProfileParams& from, ProfileParams& to,
                 std::initializer_list<std::string_view> keys) {
  for (const auto& attribute : allAttributes()) {
    const bool isMeant =
        keys.size() == 0 || std::find(keys.begin(), keys.end(), attribute.key) != keys.end();
    if (isMeant && attribute.isPresent(from)) {
      attribute.copy(from, to);
    }
  }
}

}  // namespace pavoctl
