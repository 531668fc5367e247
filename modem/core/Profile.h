// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A profile as the modem keeps it: a record of optional settings.
//
// forEachSetting states once, in the order of the tags, the names and the possible values of every
// setting. Reading, writing, checking, merging and the JSON form use it.
#pragma once

#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/core/Messages.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace modem {

struct Profile {
  std::optional<std::string> name = {};
  std::optional<uint32_t> pdpType = {};
  std::optional<std::string> apn = {};
  std::optional<std::string> user = {};
  std::optional<std::string> password = {};
  std::optional<uint8_t> auth = {};
  std::optional<uint8_t> disabled = {};
  std::optional<uint8_t> apnClass = {};
  std::optional<uint8_t> emergency = {};
  std::optional<uint16_t> maxPdnPerBlock = {};
  std::optional<uint16_t> maxPdnTimer = {};
  std::optional<uint16_t> pdnWaitInterval = {};
  std::optional<uint32_t> lteRoam = {};
  std::optional<uint32_t> umtsRoam = {};
  std::optional<uint32_t> overrideHome = {};
  std::optional<uint8_t> persistent = {};
  std::optional<uint64_t> apnTypes = {};
  std::optional<uint8_t> clat = {};

  bool isPersistent() const { return persistent.value_or(0) != 0; }
  bool operator==(const Profile&) const = default;
};

// One value of an enumeration.
struct Choice {
  uint32_t value;
  std::string_view name;
};

struct Setting {
  uint8_t tag = 0;
  std::string_view name;
  size_t textBytesMax = 0;  // of a text
  std::span<const Choice> choices =
      {};               // of an enumeration; empty: any number of the width will do
  bool isFlag = false;  // any number but 0 is true; the number is kept
};

inline constexpr size_t nameBytesMax = 50;

std::span<const Choice> pdpTypeChoices();
std::span<const Choice> commonPdpTypeChoices();

// Calls visit(setting, profiles.member...) for each setting.
template <typename Visit, typename... Profiles>
void forEachSetting(Visit&& visit, Profiles&... profiles) {
  const auto pdp = pdpTypeChoices();
  const auto common = commonPdpTypeChoices();
  visit(Setting{.tag = tagName, .name = "name", .textBytesMax = nameBytesMax}, profiles.name...);
  visit(Setting{.tag = tagPdpType, .name = "pdpType", .choices = pdp}, profiles.pdpType...);
  visit(Setting{.tag = tagApn, .name = "apn", .textBytesMax = 150}, profiles.apn...);
  visit(Setting{.tag = tagUser, .name = "user", .textBytesMax = 127}, profiles.user...);
  visit(Setting{.tag = tagPassword, .name = "password", .textBytesMax = 127}, profiles.password...);
  visit(Setting{.tag = tagAuth, .name = "auth"}, profiles.auth...);
  visit(Setting{.tag = tagDisabled, .name = "disabled", .isFlag = true}, profiles.disabled...);
  visit(Setting{.tag = tagApnClass, .name = "class"}, profiles.apnClass...);
  visit(Setting{.tag = tagEmergency, .name = "emergency", .isFlag = true}, profiles.emergency...);
  visit(Setting{.tag = tagMaxPdnPerBlock, .name = "maxPdnPerBlock"}, profiles.maxPdnPerBlock...);
  visit(Setting{.tag = tagMaxPdnTimer, .name = "maxPdnTimer"}, profiles.maxPdnTimer...);
  visit(Setting{.tag = tagPdnWaitInterval, .name = "pdnWaitInterval"}, profiles.pdnWaitInterval...);
  visit(Setting{.tag = tagLteRoam, .name = "lteRoam", .choices = common}, profiles.lteRoam...);
  visit(Setting{.tag = tagUmtsRoam, .name = "umtsRoam", .choices = common}, profiles.umtsRoam...);
  visit(Setting{.tag = tagOverrideHome, .name = "overrideHome", .choices = common},
        profiles.overrideHome...);
  visit(Setting{.tag = tagPersistent, .name = "persistent", .isFlag = true},
        profiles.persistent...);
  visit(Setting{.tag = tagApnTypes, .name = "apnTypes"}, profiles.apnTypes...);
  visit(Setting{.tag = tagClat, .name = "clat", .isFlag = true}, profiles.clat...);
}

// Reads the settings of a message without checking their values.
Profile readSettings(const FieldReader& fields);

// Throws a Refusal for the first text that is too long or value that is not in its enumeration.
void checkSettings(const Profile& profile);

void writeSettings(FieldWriter& fields, const Profile& profile);

// Copies the settings that `changes` has to `target`, except for the persistence, which is fixed
// when a profile is created.
void mergeSettings(Profile& target, const Profile& changes);

}  // namespace modem
