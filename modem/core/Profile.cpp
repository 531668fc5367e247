// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/Profile.h"

#include "modem/core/Refusal.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace modem {

namespace {

constexpr std::array<Choice, 4> pdpTypes = {{{0, "V4"}, {1, "PPP"}, {2, "V6"}, {3, "V4V6"}}};
constexpr std::array<Choice, 4> commonPdpTypes = {
    {{0, "V4"}, {1, "V6"}, {2, "V4V6"}, {255, "UNSPECIFIED"}}};

template <typename Value>
constexpr bool isText = std::is_same_v<Value, std::string>;

template <typename Value>
void checkValue(const Setting& setting, const Value& value) {
  const std::string name(setting.name);
  if constexpr (isText<Value>) {
    if (value.size() > setting.textBytesMax) {
      throw Refusal(ErrorCode::ArgumentTooLong,
                    name + " has " + std::to_string(value.size()) + " bytes, at most " +
                        std::to_string(setting.textBytesMax) + " are allowed");
    }
  } else {
    const auto isValue = [value](const Choice& choice) { return choice.value == value; };
    if (!setting.choices.empty() && std::ranges::none_of(setting.choices, isValue)) {
      throw Refusal(ErrorCode::InvalidArgument, name + " has no value " + std::to_string(value));
    }
  }
}

}  // namespace

std::span<const Choice> pdpTypeChoices() { return pdpTypes; }
std::span<const Choice> commonPdpTypeChoices() { return commonPdpTypes; }

Profile readSettings(const FieldReader& fields) {
  Profile profile;
  forEachSetting(
      [&fields]<typename Value>(const Setting& setting, std::optional<Value>& value) {
        if constexpr (isText<Value>) {
          value = fields.text(setting.tag);
        } else {
          value = fields.number<Value>(setting.tag);
        }
      },
      profile);
  return profile;
}

void checkSettings(const Profile& profile) {
  forEachSetting(
      [](const Setting& setting, const auto& value) {
        if (value) {
          checkValue(setting, *value);
        }
      },
      profile);
}

void writeSettings(FieldWriter& fields, const Profile& profile) {
  forEachSetting(
      [&fields]<typename Value>(const Setting& setting, const std::optional<Value>& value) {
        if (!value) {
          return;
        }
        if constexpr (isText<Value>) {
          fields.text(setting.tag, *value);
        } else {
          fields.number(setting.tag, *value);
        }
      },
      profile);
}

void mergeSettings(Profile& target, const Profile& changes) {
  const auto persistent = target.persistent;
  forEachSetting(
      [](const Setting&, auto& value, const auto& change) {
        if (change) {
          value = change;
        }
      },
      target, changes);
  target.persistent = persistent;
}

}  // namespace modem
