// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/ApnMapping.h"

#include "Errors.h"
#include "Text.h"
#include "profiles/Names.h"
#include "profiles/Values.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace pavoctl {
namespace {

// The types that "*" stands for. Voice, initial attach, emergency and the like are not among them:
// an entry has to name them.
constexpr unsigned wildcardTypes =
    pavo::DEFAULT | pavo::MMS | pavo::SUPL | pavo::DUN | pavo::HIPRI | pavo::FOTA | pavo::CBS;

class Mapping {
 public:
  explicit Mapping(const ApnEntry& apnEntry) : entry(apnEntry) {}

  MappedApn run() {
    mapped.notes = entry.notes;
    mapTexts();
    mapTypes();
    mapProtocol("protocol", &pavo::ProfileParams::setHomeIPType);
    mapProtocol("roaming_protocol", &pavo::ProfileParams::setRoamIPType);
    mapAuthType();
    mapEnabled();
    mapClat();
    mapPdnValue("max_conns", &pavo::ProfileParams::setMaxPdnsConnPerBlock);
    mapPdnValue("max_conns_time", &pavo::ProfileParams::setMaxPdnConnTimer);
    mapPdnValue("wait_time", &pavo::ProfileParams::setPdnReqWaitInterval);
    noteOthers();
    return std::move(mapped);
  }

 private:
  void note(std::string text) { mapped.notes.push_back(std::move(text)); }
  void refuse(std::string reason) {
    if (mapped.refusal.empty()) {
      mapped.refusal = std::move(reason);
    }
  }

  // Returns nothing when the text is absent or empty. The format does not distinguish the two.
  std::optional<std::string> textOf(const std::string& name, std::size_t bytesMax) {
    std::string text = entry.valueOf(name);
    if (text.size() > bytesMax) {
      refuse(name + " has " + std::to_string(text.size()) + " bytes, at most " +
             std::to_string(bytesMax) + " fit");
    }
    return text.empty() ? std::nullopt : std::optional(std::move(text));
  }

  void mapTexts() {
    if (const auto apn = textOf("apn", apnNameBytesMax)) {
      mapped.params.setApnName(*apn);
    } else {
      refuse("it names no access point");
    }
    if (const auto user = textOf("user", userNameBytesMax)) {
      mapped.params.setUserName(*user);
    }
    if (const auto password = textOf("password", passwordBytesMax)) {
      mapped.params.setPassword(*password);
    }
  }

  void mapTypes() {
    const std::string types = entry.valueOf("type");
    unsigned mask = 0;
    std::vector<std::string> unknown;
    bool isEmpty = true;
    for (const auto part : split(types, ",")) {
      const std::string_view name = trimmed(part);
      if (name.empty()) {
        continue;
      }
      isEmpty = false;
      if (name == "*") {
        mask |= wildcardTypes;
      } else if (const auto type = apnTypeNamed(name)) {
        mask |= *type;
      } else {
        unknown.push_back(quoted(name));
      }
    }
    if (isEmpty) {
      mask = wildcardTypes;
    }
    if (!unknown.empty()) {
      note("type " + join(unknown, ", ") + " has no counterpart");
    }
    if (mask == 0) {
      refuse("none of its types has a counterpart");
    }
    mapped.params.setApnTypesMask(mask);
  }

  void mapProtocol(const std::string& name, void (pavo::ProfileParams::*set)(pavo::IPType)) {
    const std::string protocol = lowerCase(trimmed(entry.valueOf(name)));
    if (protocol.empty() || protocol == "ip") {
      (mapped.params.*set)(pavo::IPType::V4);
    } else if (protocol == "ipv6") {
      (mapped.params.*set)(pavo::IPType::V6);
    } else if (protocol == "ipv4v6") {
      (mapped.params.*set)(pavo::IPType::V4V6);
    } else {
      note(name + " " + quoted(entry.valueOf(name)) +
           " has no counterpart: the IP type is left to the modem");
    }
  }

  void mapAuthType() {
    const std::string type(trimmed(entry.valueOf("authtype")));
    if (type.empty() || type == "-1") {
      if (mapped.params.hasUserName()) {
        mapped.params.setAuthType(pavo::AuthType::PAP_CHAP);
      }
    } else if (type.size() == 1 && type[0] >= '0' && type[0] <= '3') {
      mapped.params.setAuthType(static_cast<pavo::AuthType>(type[0] - '0'));
    } else {
      note("authtype " + quoted(type) + " is none of -1 to 3");
    }
  }

  // Returns nothing when the attribute is absent or is not a flag. The latter is noted.
  std::optional<bool> flagOf(const std::string& name) {
    const std::string value(trimmed(entry.valueOf(name)));
    if (value.empty()) {
      return std::nullopt;
    }
    try {
      return parseFlag(name, value);
    } catch (const UsageError&) {
      note(name + " " + quoted(value) + " is neither true nor false");
      return std::nullopt;
    }
  }

  void mapEnabled() {
    if (const auto isEnabled = flagOf("carrier_enabled")) {
      mapped.params.setIsApnDisabled(!*isEnabled);
    }
  }

  void mapClat() {
    // -1 leaves the decision to the device.
    if (trimmed(entry.valueOf("skip_464xlat")) == "-1") {
      return;
    }
    if (const auto isSkipped = flagOf("skip_464xlat")) {
      mapped.params.setIsClatEnabled(!*isSkipped);
    }
  }

  void mapPdnValue(const std::string& name, void (pavo::ProfileParams::*set)(int)) {
    const std::string value(trimmed(entry.valueOf(name)));
    if (value.empty()) {
      return;
    }
    try {
      // In this format 0 means that there is no limit.
      if (const auto number = parseNumber(name, value, 0, pdnValueMax); number != 0) {
        (mapped.params.*set)(static_cast<int>(number));
      }
    } catch (const UsageError&) {
      note(name + " " + quoted(value) + " is not a number from 0 to 65535");
    }
  }

  void noteOthers() {
    constexpr std::array<std::string_view, 15> taken{"carrier",      "mcc",
                                                     "mnc",          "apn",
                                                     "user",         "password",
                                                     "type",         "protocol",
                                                     "authtype",     "roaming_protocol",
                                                     "skip_464xlat", "carrier_enabled",
                                                     "max_conns",    "max_conns_time",
                                                     "wait_time"};
    std::vector<std::string> others;
    for (const auto& [name, value] : entry.attributes) {
      const auto isIn = [&attribute = name](const auto& names) {
        return std::find(names.begin(), names.end(), attribute) != names.end();
      };
      if (!isIn(taken) && !value.empty() && !isIn(others)) {
        others.push_back(name);
      }
    }
    if (!others.empty()) {
      note("a profile has no place for " + printable(join(others, ", ")));
    }
  }

  const ApnEntry& entry;
  MappedApn mapped;
};

}  // namespace

MappedApn mapApn(const ApnEntry& entry) { return Mapping(entry).run(); }

}  // namespace pavoctl
