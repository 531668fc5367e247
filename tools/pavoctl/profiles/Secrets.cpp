// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "profiles/Secrets.h"

#include <pavo/ProfileTypes.h>

#include "Text.h"
#include "profiles/Names.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <vector>

namespace pavoctl {
namespace {

constexpr std::string_view passwordKey = "Password=";

bool isDecimal(std::string_view value) {
  return !value.empty() && value.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isAuthType(std::string_view value) { return isDecimal(value) || authTypeNamed(value); }
bool isIpType(std::string_view value) { return isDecimal(value) || ipTypeNamed(value); }
bool isApnClass(std::string_view value) { return isDecimal(value) || apnClassNamed(value); }
bool isFlag(std::string_view value) { return value == "0" || value == "1"; }

bool isApnTypes(std::string_view value) {
  if (isDecimal(value) || value == "NONE") {
    return true;
  }
  auto names = split(value, "|");
  if (names.size() < 2 || !names.back().empty()) {
    return false;
  }
  names.pop_back();
  return std::all_of(names.begin(), names.end(), [](auto name) { return apnTypeNamed(name); });
}

// Only the library's own names are accepted: any other could be a piece of the password.
bool isProfileName(std::string_view value) {
  return value == "pavo_profile" || value == "pavo_profile_ia";
}

struct FieldForm {
  std::string_view key;
  bool (*isValue)(std::string_view);
};

// The fields that may follow a password in the client's and in the modem's records.
constexpr std::array fieldForms{
    FieldForm{"AuthType", isAuthType},
    FieldForm{"HomeIPType", isIpType},
    FieldForm{"RoamIPType", isIpType},
    FieldForm{"CommonIPType", isIpType},
    FieldForm{"ApnTypesMask", isApnTypes},
    FieldForm{"ApnClass", isApnClass},
    FieldForm{"IsClatEnabled", isFlag},
    FieldForm{"OverrideHomeIPType", isIpType},
    FieldForm{"LteRoamIP", isIpType},
    FieldForm{"UmtsRoamIP", isIpType},
    FieldForm{"MaxPdnsConnPerBlock", isDecimal},
    FieldForm{"MaxPdnConnTimer", isDecimal},
    FieldForm{"PdnReqWaitInterval", isDecimal},
    FieldForm{"IsApnDisabled", isFlag},
    FieldForm{"IsEmergencySupported", isFlag},
    FieldForm{"IsPavoProfile", isFlag},
    FieldForm{"IsIAProfile", isFlag},
    FieldForm{"ProfileName", isProfileName},
};

std::optional<std::size_t> formIndex(std::string_view field) {
  const auto equals = field.find('=');
  if (equals == std::string_view::npos) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < fieldForms.size(); ++i) {
    if (fieldForms[i].key == field.substr(0, equals) &&
        fieldForms[i].isValue(field.substr(equals + 1))) {
      return i;
    }
  }
  return std::nullopt;
}

}  // namespace

std::string maskPassword(std::string_view line) {
  const auto key = line.find(passwordKey);
  if (key == std::string_view::npos) {
    return std::string(line);
  }
  const auto start = key + passwordKey.size();
  // Every attribute ends in a comma. A line without a comma at its end has been cut, perhaps in the
  // password.
  std::vector<std::string_view> fields = split(line.substr(start), ",");
  std::size_t tail = line.size();
  if (fields.size() > 1 && fields.back().empty()) {
    fields.pop_back();
    std::set<std::size_t> seen;
    tail -= 1;
    // The first field belongs to the password in any case.
    for (auto field = fields.rbegin(); field + 1 != fields.rend(); ++field) {
      const auto index = formIndex(*field);
      if (!index || !seen.insert(*index).second) {
        break;
      }
      tail -= field->size() + 1;
    }
  }
  std::string masked(line.substr(0, start));
  masked += secretMask;
  masked += line.substr(tail);
  return masked;
}

}  // namespace pavoctl
