// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Wishes.h"

#include <array>
#include <vector>

namespace pavo::test::model {

namespace {

constexpr std::array apnNames = {"internet", "ims", "IMS", "Mms.Net", "sos", ""};
constexpr int unknownMessage = 0x00A9;
constexpr int unknownIndex = 200;
// This delay is longer than the library waits for an answer.
constexpr int lateMs = 1600;
constexpr std::array typeSets = {0x1U, 0x2U, 0x40U, 0x41U, 0x200U, 0x8005U, 0U};

}  // namespace

json Wishes::wish(int percent) {
  json wish = json::object();
  const auto maybe = [&](const char* name, const json& value) {
    if (chance(percent)) {
      wish[name] = value;
    }
  };
  if (chance(percent + 30)) {
    wish["apn"] = apnNames.at(static_cast<std::size_t>(number(apnNames.size())));
  }
  maybe("user", chance(50) ? "user" : "other");
  maybe("password", chance(50) ? "secret" : "");
  maybe("auth", number(4));
  maybe("types", typeSets.at(static_cast<std::size_t>(number(typeSets.size()))));
  maybe("class", 1 + number(4));
  maybe("clat", chance(50));
  maybe("home", ip());
  maybe("roam", ip());
  maybe("maxPdnPerBlock", number(3) * 10);
  maybe("maxPdnTimer", number(3) * 100);
  maybe("pdnWaitInterval", number(65536));
  maybe("disabled", chance(50));
  maybe("emergency", chance(50));
  return wish;
}

Filter Wishes::filter() {
  Filter filter{.wish = wish(/*percent=*/12)};
  filter.criteria = chance(50) ? static_cast<unsigned int>(number(64)) : 0U;
  if (chance(15)) {
    filter.id = 1 + number(World::capacityDefault);
  }
  if (chance(25)) {
    filter.isPavo = chance(50);
  }
  if (chance(15)) {
    filter.isIA = chance(50);
  }
  return filter;
}

json Wishes::modemProfile() {
  json profile = wish(/*percent=*/35);
  for (const char* const name : {"home", "roam", "types"}) {
    profile.erase(name);
  }
  const auto maybe = [&](const char* name, const json& value) {
    if (chance(40)) {
      profile[name] = value;
    }
  };
  maybe("pdpType", ip());
  maybe("lteRoam", chance(20) ? "UNSPECIFIED" : ip());
  maybe("umtsRoam", chance(20) ? "UNSPECIFIED" : ip());
  maybe("overrideHome", chance(30) ? "UNSPECIFIED" : ip());
  maybe("apnTypes", modemTypes(typeSets.at(static_cast<std::size_t>(number(typeSets.size())))) |
                        (chance(20) ? 0x10000U : 0U));
  maybe("persistent", chance(50));
  maybe("name", std::array{"pavo_profile", "pavo_profile_ia", "PAVO_Profile", "own"}.at(
                    static_cast<std::size_t>(number(4))));
  return profile;
}

json Wishes::spoiledAnswer() {
  static const std::vector<json> effects = {{{"withoutField", 2}},
                                            {{"cutTo", 0}},
                                            {{"cutTo", 2}},
                                            {{"cutTo", 7}},
                                            {{"undecodable", "noise"}},
                                            {{"undecodable", "twice"}},
                                            {{"undecodable", "overrun"}},
                                            {{"undecodable", "wide"}},
                                            {{"asMessage", unknownMessage}}};
  return oneOf(effects);
}

json Wishes::awaitedAnswer() {
  static const std::vector<json> effects = {
      {{"lost", true}}, {{"silent", true}}, {{"lateMs", lateMs}}, {{"delayMs", lateMs}}};
  return oneOf(effects);
}

json Wishes::twist(Twist& twist, int anyIndex) {
  static const std::vector<json> losses = {{{"lost", true}},
                                           {{"withoutField", 16}},
                                           {{"asMessage", unknownMessage}},
                                           {{"cutTo", 0}},
                                           {{"cutTo", 2}},
                                           {{"undecodable", "noise"}},
                                           {{"undecodable", "twice"}},
                                           {{"undecodable", "overrun"}},
                                           {{"undecodable", "wide"}}};
  static const std::vector<json> delays = {{{"reordered", true}}, {{"lateMs", 3}}};
  static const std::vector<json> events = {0, 9, 0x80000000};
  switch (number(6)) {
    case 0:
      twist.kind = Twist::Kind::Lost;
      return oneOf(losses);
    case 1:
      twist.kind = Twist::Kind::Doubled;
      return {{"doubled", true}};
    case 2:
      twist.kind = Twist::Kind::Late;
      return oneOf(delays);
    case 3:
      twist.kind = Twist::Kind::OtherIndex;
      twist.index = chance(50) ? unknownIndex : anyIndex;
      return {{"index", twist.index}};
    case 4:
      // The library reads everything again for each of these events.
      twist.kind = Twist::Kind::OtherEvent;
      return {{"event", oneOf(events)}};
    default:
      // The worker is busy with its request until the answer is there.
      twist.kind = Twist::Kind::InItsPlace;
      return {{"early", true}};
  }
}

}  // namespace pavo::test::model
