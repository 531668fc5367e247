// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/ProfileJson.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace modem {

using nlohmann::json;

namespace {

bool isUtf8(std::string_view text) {
  try {
    json(text).dump();
    return true;
  } catch (const json::type_error&) {
    return false;
  }
}

int hexDigit(char c) {
  constexpr std::string_view digits = "0123456789abcdef";
  const auto at = digits.find(c);
  return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

std::string textFromHex(const json& value, const std::string& what) {
  const std::string hex = value.is_string() ? value.get<std::string>() : "?";
  std::string text;
  for (size_t i = 0; i < hex.size(); i += 2) {
    const int high = hexDigit(hex[i]);
    const int low = i + 1 < hex.size() ? hexDigit(hex[i + 1]) : -1;
    if (high < 0 || low < 0) {
      throw Error(what + ".hex has to be pairs of the digits 0-9 and a-f");
    }
    text.push_back(static_cast<char>(high * 16 + low));
  }
  return text;
}

std::string textFromJson(const json& value, const std::string& what) {
  if (value.is_object() && value.size() == 1 && value.contains("hex")) {
    return textFromHex(value["hex"], what);
  }
  if (!value.is_string()) {
    throw Error(what + " has to be a text");
  }
  return value.get<std::string>();
}

uint32_t choiceFromJson(const json& value, const Setting& setting) {
  const std::string what(setting.name);
  if (!value.is_string()) {
    return static_cast<uint32_t>(numberFromJson(value, std::numeric_limits<uint32_t>::max(), what));
  }
  std::string known;
  for (const Choice& choice : setting.choices) {
    if (value.get_ref<const std::string&>() == choice.name) {
      return choice.value;
    }
    appendName(known, choice.name);
  }
  throw Error(what + " has to be one of " + known);
}

template <typename Value>
Value settingFromJson(const json& value, const Setting& setting) {
  const std::string what(setting.name);
  if constexpr (std::is_same_v<Value, std::string>) {
    return textFromJson(value, what);
  } else {
    if (setting.isFlag && value.is_boolean()) {
      return static_cast<Value>(value.get<bool>() ? 1 : 0);
    }
    if (!setting.choices.empty()) {
      return static_cast<Value>(choiceFromJson(value, setting));
    }
    return static_cast<Value>(numberFromJson(value, std::numeric_limits<Value>::max(), what));
  }
}

template <typename Value>
json settingToJson(const Value& value, const Setting& setting) {
  if constexpr (std::is_same_v<Value, std::string>) {
    return textToJson(value);
  } else {
    for (const Choice& choice : setting.choices) {
      if (choice.value == value) {
        return choice.name;
      }
    }
    if (setting.isFlag && value <= 1) {
      return value == 1;
    }
    return value;
  }
}

}  // namespace

json toJson(const Profile& profile) {
  json object = json::object();
  forEachSetting(
      [&object](const Setting& setting, const auto& value) {
        if (value) {
          object[std::string(setting.name)] = settingToJson(*value, setting);
        }
      },
      profile);
  return object;
}

Profile profileFromJson(const json& object) {
  Profile profile;
  forEachSetting(
      [&object]<typename Value>(const Setting& setting, std::optional<Value>& value) {
        const auto member = object.find(std::string(setting.name));
        if (member != object.end()) {
          value = settingFromJson<Value>(*member, setting);
        }
      },
      profile);
  return profile;
}

bool isSettingName(std::string_view name) {
  bool found = false;
  Profile any;
  forEachSetting([&](const Setting& setting, auto&) { found = found || setting.name == name; },
                 any);
  return found;
}

json textToJson(std::string_view text) {
  if (isUtf8(text)) {
    return text;
  }
  return json{{"hex", hexOf({reinterpret_cast<const uint8_t*>(text.data()), text.size()})}};
}

}  // namespace modem
