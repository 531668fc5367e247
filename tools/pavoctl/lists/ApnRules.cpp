// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/ApnRules.h"

#include "Errors.h"
#include "Text.h"
#include "profiles/Values.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>

namespace pavoctl {
namespace {

using Wrong = std::optional<std::string>;

Wrong notOneOf(std::string_view value, const std::vector<std::string_view>& known) {
  if (std::find(known.begin(), known.end(), value) != known.end()) {
    return std::nullopt;
  }
  const std::string hint = suggestion(value, known);
  return "is none of " + join({known.begin(), known.end()}, ", ") + hint;
}

Wrong anything(std::string_view) { return std::nullopt; }

template <std::size_t min, std::size_t max>
Wrong digits(std::string_view value) {
  const bool isDigits = value.find_first_not_of("0123456789") == std::string_view::npos;
  if (isDigits && value.size() >= min && value.size() <= max) {
    return std::nullopt;
  }
  return "is not " + (min == max ? "" : std::to_string(min) + " or ") + std::to_string(max) +
         " digits";
}

template <std::int64_t min, std::int64_t max>
Wrong number(std::string_view value) {
  try {
    if (!value.empty()) {
      parseNumber("", value, min, max);
    }
    return std::nullopt;
  } catch (const UsageError&) {
    return "is not a number from " + std::to_string(min) + " to " + std::to_string(max);
  }
}
constexpr ValueRule port = number<1, 65535>;
constexpr ValueRule pdnValue = number<0, pdnValueMax>;
constexpr ValueRule anyNumber = number<INT32_MIN, INT32_MAX>;

Wrong numbers(std::string_view value) {
  for (const auto part : split(value, "|")) {
    if (const auto wrong = anyNumber(trimmed(part));
        wrong || (trimmed(part).empty() && !value.empty())) {
      return "is not a list of numbers joined by |";
    }
  }
  return std::nullopt;
}

Wrong flag(std::string_view value) {
  return value.empty() ? std::nullopt : notOneOf(lowerCase(value), {"true", "false"});
}

template <std::size_t bytesMax>
Wrong text(std::string_view value) {
  if (value.size() > bytesMax) {
    return "has " + std::to_string(value.size()) + " bytes, at most " + std::to_string(bytesMax) +
           " fit";
  }
  if (value != trimmed(value)) {
    return "has blanks around it";
  }
  return std::nullopt;
}

// A name has labels of letters, digits and hyphens, joined by dots. Some operators use an
// underscore.
Wrong apnName(std::string_view value) {
  constexpr std::size_t labelBytesMax = 63;
  constexpr std::string_view possible =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.";
  if (value.empty()) {
    return "names no access point";
  }
  if (auto wrong = text<apnNameBytesMax>(value)) {
    return wrong;
  }
  if (const auto at = value.find_first_not_of(possible); at != std::string_view::npos) {
    return "cannot name an access point: " + quoted(value.substr(at, 1)) + " has no place in it";
  }
  for (const auto label : split(value, ".")) {
    if (label.empty() || label.size() > labelBytesMax) {
      return "cannot name an access point: a label has 1 to 63 letters";
    }
  }
  return std::nullopt;
}

Wrong apnTypes(std::string_view value) {
  static const std::vector<std::string_view> known{
      "*",    "default", "mms",        "supl",      "dun",        "hipri", "fota",
      "ims",  "cbs",     "ia",         "emergency", "mcx",        "xcap",  "rcs",
      "vsim", "bip",     "enterprise", "oem_paid",  "oem_private"};
  for (const auto part : split(value, ",")) {
    const std::string name = lowerCase(trimmed(part));
    if (!name.empty() && std::find(known.begin(), known.end(), name) == known.end()) {
      return "has the unknown type " + quoted(trimmed(part)) + suggestion(name, known);
    }
  }
  return std::nullopt;
}

Wrong protocol(std::string_view value) {
  static const std::vector<std::string_view> known{"ip",  "ipv6",   "ipv4v6",
                                                   "ppp", "non-ip", "unstructured"};
  return value.empty() ? std::nullopt : notOneOf(lowerCase(value), known);
}

Wrong mvnoType(std::string_view value) {
  return value.empty() ? std::nullopt : notOneOf(lowerCase(value), {"spn", "imsi", "gid", "iccid"});
}

Wrong usage(std::string_view value) {
  return notOneOf(
      value, {"internet", "mms", "wap", "ia", "mms-internet-hipri", "mms-internet-hipri-fota"});
}
Wrong plan(std::string_view value) { return notOneOf(value, {"prepaid", "postpaid"}); }
Wrong method(std::string_view value) { return notOneOf(value, {"pap", "chap"}); }
Wrong trueOrFalse(std::string_view value) { return notOneOf(value, {"true", "false"}); }
Wrong voicemailStandard(std::string_view value) {
  return notOneOf(value, {"cvvm", "otmp", "vvm3", "proprietary"});
}

Wrong countryCode(std::string_view value) {
  const bool isCode = value.size() == 2 && std::all_of(value.begin(), value.end(),
                                                       [](char c) { return c >= 'a' && c <= 'z'; });
  return isCode ? std::nullopt : Wrong("is not a country's two letters");
}

// Returns how many letters have to be inserted, removed, replaced or swapped to turn one word into
// the other.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> cost(a.size() + 1,
                                             std::vector<std::size_t>(b.size() + 1, 0));
  std::iota(cost[0].begin(), cost[0].end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    cost[i][0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = cost[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      cost[i][j] = std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, changed});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
      }
    }
  }
  return cost[a.size()][b.size()];
}

}  // namespace

const FormatRules& androidRules() {
  static const FormatRules rules{
      {"apns", {{"version", anyNumber}}, {{"apn"}}},
      {"apn",
       {{"carrier", anything},
        {"mcc", digits<3, 3>, /*isRequired=*/true},
        {"mnc", digits<2, 3>, /*isRequired=*/true},
        {"apn", apnName, /*isRequired=*/true},
        {"user", text<userNameBytesMax>},
        {"password", text<passwordBytesMax>},
        {"type", apnTypes},
        {"protocol", protocol},
        {"roaming_protocol", protocol},
        {"authtype", number<-1, 3>},
        {"carrier_enabled", flag},
        {"skip_464xlat", number<-1, 1>},
        {"max_conns", pdnValue},
        {"max_conns_time", pdnValue},
        {"wait_time", pdnValue},
        {"mmsc", anything},
        {"mmsproxy", anything},
        {"mmsport", port},
        {"proxy", anything},
        {"port", port},
        {"server", anything},
        {"mvno_type", mvnoType},
        {"mvno_match_data", anything},
        {"bearer", anyNumber},
        {"bearer_bitmask", numbers},
        {"network_type_bitmask", numbers},
        {"lingering_network_type_bitmask", numbers},
        {"infrastructure_bitmask", numbers},
        {"mtu", number<0, 65535>},
        {"mtu_v4", number<0, 65535>},
        {"mtu_v6", number<0, 65535>},
        {"profile_id", anyNumber},
        {"carrier_id", anyNumber},
        {"apn_set_id", anyNumber},
        {"modem_cognitive", flag},
        {"user_visible", flag},
        {"user_editable", flag},
        {"always_on", flag},
        {"read_only", flag},
        {"esim_bootstrap_provisioning", flag}},
       {}},
  };
  return rules;
}

const FormatRules& gnomeRules() {
  constexpr bool required = true;
  constexpr bool single = true;
  static const FormatRules rules{
      {"serviceproviders", {{"format", anything, required}}, {{"country"}}},
      {"country", {{"code", countryCode, required}}, {{"name"}, {"provider"}}},
      {"provider", {{"primary", trueOrFalse}}, {{"name"}, {"gsm", single}, {"cdma", single}}},
      {"gsm",
       {},
       {{"network-id"},
        {"msisdn-query"},
        {"voicemail"},
        {"visual-voicemail"},
        {"balance-check"},
        {"balance-top-up"},
        {"apn"}}},
      {"network-id", {{"mcc", digits<3, 3>, required}, {"mnc", digits<2, 3>, required}}, {}},
      {"apn",
       {{"value", apnName, required}},
       {{"plan"},
        {"usage", single},
        {"name"},
        {"gateway", single},
        {"username", single},
        {"password", single},
        {"authentication", single},
        {"dns"},
        {"mmsc", single},
        {"mmsproxy", single}}},
      {"plan", {{"type", plan, required}}, {}},
      {"usage", {{"type", usage, required}}, {}},
      {"authentication", {{"method", method, required}}, {}},
      {"name", {{"xml:lang", anything}}, {}, anything},
      {"username", {}, {}, text<userNameBytesMax>},
      {"password", {}, {}, text<passwordBytesMax>},
      {"gateway", {}, {}, anything},
      {"dns", {}, {}, anything},
      {"mmsc", {}, {}, anything},
      {"mmsproxy", {}, {}, anything},
      {"msisdn-query", {}, {{"ussd"}, {"sms"}}},
      {"voicemail", {}, {}, anything},
      {"visual-voicemail", {}, {{"standard"}, {"destination-number"}, {"carrier-prefix", single}}},
      {"standard", {{"type", voicemailStandard, required}}, {}},
      {"destination-number", {}, {}, anything},
      {"carrier-prefix", {}, {}, anything},
      {"balance-check", {}, {{"ussd"}, {"dtmf"}, {"sms"}, {"ussd-response"}}},
      {"balance-top-up", {}, {{"ussd"}, {"sms"}}},
      {"ussd", {{"replacement", anything}}, {}, anything},
      {"dtmf", {}, {}, anything},
      {"sms", {{"text", anything, required}}, {}, anything},
      {"ussd-response", {}, {}, anything},
      {"cdma", {}, {{"name"}, {"username", single}, {"password", single}, {"dns"}, {"sid"}}},
      {"sid", {{"value", number<0, 65535>, required}}, {}},
  };
  return rules;
}

std::string suggestion(std::string_view name, const std::vector<std::string_view>& known) {
  const std::string wanted = lowerCase(name);
  std::string_view nearest;
  // A known name is suggested when at most a third of the letters, and one more, are wrong.
  std::size_t nearestDistance = name.size() / 3 + 2;
  for (const auto candidate : known) {
    if (const auto steps = distance(wanted, lowerCase(candidate)); steps < nearestDistance) {
      nearest = candidate;
      nearestDistance = steps;
    }
  }
  return nearest.empty() ? std::string() : ", did you mean " + quoted(nearest) + "?";
}

}  // namespace pavoctl
