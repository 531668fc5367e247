// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests check which profiles satisfy which filter, for the record alone and through the
// manager.
#include "Modem3gppProfile.h"
#include "RunningManagerTest.h"

#include <functional>
#include <string>
#include <vector>

namespace pavo::test {
namespace {

using Filter = FilterProfileParams;

constexpr int matchedIndex = 7;

struct MatchRow {
  const char* what;
  MessageBytes settings;
  std::function<void(Filter&)> ask;
  bool matches;
};

// These functions build profiles as the modem describes them.

MessageBytes settingsNamed(const std::string& apnName) {
  return emptySettings().u8(84, 1).text(85, apnName);
}
MessageBytes common(std::uint32_t pdpType) { return emptySettings().u8(60, 1).u32(64, pdpType); }
constexpr std::uint32_t pdpV4 = 0;
constexpr std::uint32_t pdpUnknown = 1;
constexpr std::uint32_t pdpV6 = 2;
constexpr std::uint32_t pdpV4V6 = 3;
constexpr std::uint32_t commonV4 = 0;
constexpr std::uint32_t commonV6 = 1;
constexpr std::uint32_t commonV4V6 = 2;
constexpr std::uint32_t commonUnknown = 3;
MessageBytes withOverride(MessageBytes settings, std::uint32_t type) {
  return settings.u8(1112, 1).u32(1116, type);
}
MessageBytes withLte(MessageBytes settings, std::uint32_t type) {
  return settings.u8(1050, 1).u32(1052, type);
}
MessageBytes withUmts(MessageBytes settings, std::uint32_t type) {
  return settings.u8(1056, 1).u32(1060, type);
}
MessageBytes masked(std::uint64_t mask) { return emptySettings().u8(3240, 1).u64(3248, mask); }
MessageBytes profileNamed(const std::string& name) {
  return emptySettings().u8(8, 1).text(9, name);
}

// These functions build filters.

std::function<void(Filter&)> name(const std::string& text, unsigned int criteria = 0) {
  return [=](Filter& f) {
    f.setApnName(text);
    f.addFilterMatchCriteria(criteria);
  };
}
std::function<void(Filter&)> home(IPType type, unsigned int criteria = 0) {
  return [=](Filter& f) {
    f.setHomeIPType(type);
    f.addFilterMatchCriteria(criteria);
  };
}
std::function<void(Filter&)> roam(IPType type, unsigned int criteria = 0) {
  return [=](Filter& f) {
    f.setRoamIPType(type);
    f.addFilterMatchCriteria(criteria);
  };
}
std::function<void(Filter&)> mask(unsigned int bits, unsigned int criteria = 0) {
  return [=](Filter& f) {
    f.setApnTypesMask(bits);
    f.addFilterMatchCriteria(criteria);
  };
}
std::function<void(Filter&)> creator(int isPavo, int isIA) {
  return [=](Filter& f) {
    if (isPavo >= 0) {
      f.setFilterByIsPavoProfile(isPavo != 0);
    }
    if (isIA >= 0) {
      f.setFilterByIsIAProfile(isIA != 0);
    }
  };
}

std::vector<MatchRow> nameRows() {
  const std::string full(150, 'n');
  return {
      {"no filter", emptySettings(), [](Filter&) {}, true},
      {"same name", settingsNamed("ims"), name("ims"), true},
      {"other case in the filter", settingsNamed("ims"), name("IMS"), true},
      {"other case on the modem", settingsNamed("IMS"), name("ims"), true},
      {"other name", settingsNamed("ims"), name("imt"), false},
      {"part without subset", settingsNamed("internet"), name("net"), false},
      {"whole within part", settingsNamed("net"), name("internet"), false},
      {"part with subset", settingsNamed("internet"), name("net", ApnNameSubset), true},
      {"part in capitals", settingsNamed("internet"), name("TERN", ApnNameSubset), true},
      {"longer with subset", settingsNamed("net"), name("internet", ApnNameSubset), false},
      {"apart with subset", settingsNamed("internet"), name("int.net", ApnNameSubset), false},
      {"empty name, subset", settingsNamed("internet"), name("", ApnNameSubset), true},
      {"empty name", settingsNamed("internet"), name(""), false},
      {"empty names", settingsNamed(""), name(""), true},
      {"no name", emptySettings(), name("ims"), false},
      {"no name, empty filter", emptySettings(), name(""), false},
      {"no name, subset", emptySettings(), name("", ApnNameSubset), false},
      {"cut filter", settingsNamed(full), name(full + "more"), true},
      {"cut filter, subset", settingsNamed(full), name(full + "more", ApnNameSubset), true},
      {"cut filter in capitals", settingsNamed(full), name(std::string(160, 'N')), true},
      {"one short", settingsNamed(std::string(149, 'n')), name(full), false},
      {"other criteria do not count", settingsNamed("internet"), name("net", 0x3F & ~ApnNameSubset),
       false},
      {"byte above 127", settingsNamed("\xE4"), name("\xC4"), false},
  };
}

std::vector<MatchRow> homeRows() {
  return {
      {"V4, V4", common(pdpV4), home(IPType::V4), true},
      {"V4, V6", common(pdpV6), home(IPType::V4), false},
      {"V4, V4V6", common(pdpV4V6), home(IPType::V4), false},
      {"V4, V4V6, subset", common(pdpV4V6), home(IPType::V4, HomeIPSubset), true},
      {"V6, V4V6, subset", common(pdpV4V6), home(IPType::V6, HomeIPSubset), true},
      {"V4, V4V6, superset", common(pdpV4V6), home(IPType::V4, HomeIPSuperset), false},
      {"V4, V4V6, the roaming's", common(pdpV4V6), home(IPType::V4, RoamIPSubset | RoamIPSuperset),
       false},
      {"V4V6, V4", common(pdpV4), home(IPType::V4V6), false},
      {"V4V6, V4, subset", common(pdpV4), home(IPType::V4V6, HomeIPSubset), false},
      {"V4V6, V4, superset", common(pdpV4), home(IPType::V4V6, HomeIPSuperset), true},
      {"V4, V4V6, both", common(pdpV4V6), home(IPType::V4, HomeIPSubset | HomeIPSuperset), true},
      {"V4V6, V4, both", common(pdpV4), home(IPType::V4V6, HomeIPSubset | HomeIPSuperset), true},
      {"V4, V6, both", common(pdpV6), home(IPType::V4, HomeIPSubset | HomeIPSuperset), false},
      {"unknown, V6", common(pdpV6), home(IPType::UNKNOWN), false},
      {"unknown, V6, subset", common(pdpV6), home(IPType::UNKNOWN, HomeIPSubset), true},
      {"V6, unknown", common(pdpUnknown), home(IPType::V6), false},
      {"V6, unknown, superset", common(pdpUnknown), home(IPType::V6, HomeIPSuperset), true},
      {"unknown, unknown", common(pdpUnknown), home(IPType::UNKNOWN), true},
      {"override counts", withOverride(common(pdpV4V6), commonV4), home(IPType::V4), true},
      {"common does not", withOverride(common(pdpV4V6), commonV4), home(IPType::V4V6), false},
      {"override unknown", withOverride(common(pdpV6), commonUnknown), home(IPType::V6), true},
      {"override alone", withOverride(emptySettings(), commonV6), home(IPType::V6), true},
      {"no type", emptySettings(), home(IPType::V4), false},
      {"no type, subset", emptySettings(), home(IPType::UNKNOWN, HomeIPSubset), false},
      {"override unknown alone", withOverride(emptySettings(), commonUnknown),
       home(IPType::UNKNOWN, HomeIPSubset | HomeIPSuperset), false},
  };
}

std::vector<MatchRow> roamRows() {
  const auto both = [](std::uint32_t type) {
    return withUmts(withLte(emptySettings(), type), type);
  };
  return {
      {"both V6", both(commonV6), roam(IPType::V6), true},
      {"both V6, asked V4", both(commonV6), roam(IPType::V4), false},
      {"both V4V6, asked V4", both(commonV4V6), roam(IPType::V4), false},
      {"both V4V6, asked V4, subset", both(commonV4V6), roam(IPType::V4, RoamIPSubset), true},
      {"both V4V6, asked V4, superset", both(commonV4V6), roam(IPType::V4, RoamIPSuperset), false},
      {"both V4, asked V4V6, superset", both(commonV4), roam(IPType::V4V6, RoamIPSuperset), true},
      {"both V4, asked V4V6, subset", both(commonV4), roam(IPType::V4V6, RoamIPSubset), false},
      {"both V4V6, asked V4, the home's", both(commonV4V6),
       roam(IPType::V4, HomeIPSubset | HomeIPSuperset), false},
      {"they differ", withUmts(withLte(common(pdpV4), commonV4), commonV6), roam(IPType::V4),
       false},
      {"they differ, subset", withUmts(withLte(common(pdpV4), commonV4), commonV6),
       roam(IPType::UNKNOWN, RoamIPSubset | RoamIPSuperset), false},
      {"LTE alone", withLte(common(pdpV4), commonV4), roam(IPType::V4), false},
      {"LTE unspecified", withUmts(withLte(common(pdpV4), 255), commonV4), roam(IPType::V4), false},
      {"UMTS alone", withUmts(common(pdpV4), commonV4), roam(IPType::V4), false},
      // An absent UMTS type reads as unknown and then equals an unknown LTE type.
      {"LTE unknown alone", withLte(common(pdpV4), commonUnknown), roam(IPType::UNKNOWN), true},
      {"none: common", common(pdpV6), roam(IPType::V6), true},
      {"none: common differs", common(pdpV6), roam(IPType::V4), false},
      {"none: common, subset", common(pdpV4V6), roam(IPType::V4, RoamIPSubset), true},
      {"none: not the override", withOverride(common(pdpV6), commonV4), roam(IPType::V4), false},
      {"both unspecified: common", withUmts(withLte(common(pdpV6), 255), 255), roam(IPType::V6),
       true},
      {"none at all", emptySettings(), roam(IPType::V4), false},
      {"none at all, subset", emptySettings(), roam(IPType::UNKNOWN, RoamIPSubset), false},
  };
}

std::vector<MatchRow> maskRows() {
  return {
      {"same", masked(0x3), mask(0x41), true},
      {"less", masked(0x3), mask(0x40), false},
      {"less, subset", masked(0x3), mask(0x40, ApnTypeBitmaskSubset), true},
      {"more, subset", masked(0x2), mask(0x41, ApnTypeBitmaskSubset), false},
      {"others, subset", masked(0x3), mask(0x40 | 0x2, ApnTypeBitmaskSubset), false},
      {"unnamed bit, subset", masked(0x3), mask(0x1041, ApnTypeBitmaskSubset), true},
      {"unnamed bit", masked(0x3), mask(0x1041), true},
      {"high bit", masked(0x3), mask(0x1'0041), true},
      {"unnamed modem bit", masked(0x2003), mask(0x41), false},
      {"high modem bit", masked(0x1'0000'0003), mask(0x41), false},
      {"unnamed modem bit, subset", masked(0x2003), mask(0x41, ApnTypeBitmaskSubset), true},
      {"nothing, subset", masked(0x3), mask(0, ApnTypeBitmaskSubset), true},
      {"nothing", masked(0x3), mask(0), false},
      {"nothing and nothing", masked(0), mask(0), true},
      {"no mask", emptySettings(), mask(0), false},
      {"no mask, subset", emptySettings(), mask(0, ApnTypeBitmaskSubset), false},
      {"all", masked(0x1FFF), mask(0x8FFF), true},
      {"all, subset", masked(0x1FFF), mask(0x8FFF, ApnTypeBitmaskSubset), true},
  };
}

std::vector<MatchRow> equalityRows() {
  const auto user = emptySettings().u8(404, 1).text(405, "User");
  const auto password = emptySettings().u8(533, 1).text(534, "Secret");
  const auto auth = emptySettings().u8(662, 1).u8(663, 2);
  const auto apnClass = emptySettings().u8(992, 1).u8(993, 3);
  const auto clat = emptySettings().u8(3256, 1).u8(3257, 1);
  const auto perBlock = emptySettings().u8(1024, 1).u16(1026, 5);
  const auto timer = emptySettings().u8(1028, 1).u16(1030, 6);
  const auto wait = emptySettings().u8(1032, 1).u16(1034, 7);
  const auto disabled = emptySettings().u8(984, 1).u8(985, 1);
  const auto emergency = emptySettings().u8(1008, 1).u8(1009, 1);
  const auto none = emptySettings();
  return {
      {"user", user, [](Filter& f) { f.setUserName("User"); }, true},
      {"user, other case", user, [](Filter& f) { f.setUserName("user"); }, false},
      {"user, absent", none, [](Filter& f) { f.setUserName(""); }, false},
      {"password", password, [](Filter& f) { f.setPassword("Secret"); }, true},
      {"password, other case", password, [](Filter& f) { f.setPassword("SECRET"); }, false},
      {"password, absent", none, [](Filter& f) { f.setPassword(""); }, false},
      {"auth", auth, [](Filter& f) { f.setAuthType(AuthType::CHAP); }, true},
      {"auth, other", auth, [](Filter& f) { f.setAuthType(AuthType::PAP_CHAP); }, false},
      {"auth, absent", none, [](Filter& f) { f.setAuthType(AuthType::NONE); }, false},
      {"class", apnClass, [](Filter& f) { f.setApnClass(ApnClass::INET); }, true},
      {"class, other", apnClass, [](Filter& f) { f.setApnClass(ApnClass::APP); }, false},
      {"class, absent", none, [](Filter& f) { f.setApnClass(ApnClass::UNCLASSIFIED); }, false},
      {"CLAT", clat, [](Filter& f) { f.setIsClatEnabled(true); }, true},
      {"CLAT, other", clat, [](Filter& f) { f.setIsClatEnabled(false); }, false},
      {"CLAT, absent", none, [](Filter& f) { f.setIsClatEnabled(false); }, false},
      {"id", none, [](Filter& f) { f.setFilterByProfileId(matchedIndex); }, true},
      {"id, other", none, [](Filter& f) { f.setFilterByProfileId(matchedIndex + 256); }, false},
      {"per block", perBlock, [](Filter& f) { f.setMaxPdnsConnPerBlock(5); }, true},
      {"per block, other", perBlock, [](Filter& f) { f.setMaxPdnsConnPerBlock(65541); }, false},
      {"per block, absent", none, [](Filter& f) { f.setMaxPdnsConnPerBlock(0); }, false},
      {"timer", timer, [](Filter& f) { f.setMaxPdnConnTimer(6); }, true},
      {"timer, other", timer, [](Filter& f) { f.setMaxPdnConnTimer(5); }, false},
      {"timer, absent", none, [](Filter& f) { f.setMaxPdnConnTimer(0); }, false},
      {"wait", wait, [](Filter& f) { f.setPdnReqWaitInterval(7); }, true},
      {"wait, other", wait, [](Filter& f) { f.setPdnReqWaitInterval(-7); }, false},
      {"wait, absent", none, [](Filter& f) { f.setPdnReqWaitInterval(0); }, false},
      {"disabled", disabled, [](Filter& f) { f.setIsApnDisabled(true); }, true},
      {"disabled, other", disabled, [](Filter& f) { f.setIsApnDisabled(false); }, false},
      {"disabled, absent", none, [](Filter& f) { f.setIsApnDisabled(false); }, false},
      {"emergency", emergency, [](Filter& f) { f.setIsEmergencySupported(true); }, true},
      {"emergency, other", emergency, [](Filter& f) { f.setIsEmergencySupported(false); }, false},
      {"emergency, absent", none, [](Filter& f) { f.setIsEmergencySupported(false); }, false},
  };
}

std::vector<MatchRow> creatorRows() {
  const auto ours = profileNamed("pavo_profile");
  const auto ia = profileNamed("pavo_profile_ia");
  const auto foreign = profileNamed("Pavo_profile");
  const auto none = emptySettings();
  constexpr int unset = -1;
  return {
      {"pavo, ours", ours, creator(1, unset), true},
      {"pavo, IA", ia, creator(1, unset), true},
      {"pavo, foreign", foreign, creator(1, unset), false},
      {"pavo, unnamed", none, creator(1, unset), false},
      {"not pavo, ours", ours, creator(0, unset), false},
      {"not pavo, IA", ia, creator(0, unset), false},
      {"not pavo, foreign", foreign, creator(0, unset), true},
      {"not pavo, unnamed", none, creator(0, unset), true},
      {"IA, IA", ia, creator(unset, 1), true},
      {"IA, ours", ours, creator(unset, 1), false},
      {"not IA, IA", ia, creator(unset, 0), false},
      {"not IA, ours", ours, creator(unset, 0), true},
      {"not IA, unnamed", none, creator(unset, 0), true},
      // If the IA flag decides, the other flag is not compared.
      {"pavo and not IA, ours", ours, creator(1, 0), true},
      {"pavo and not IA, IA", ia, creator(1, 0), false},
      {"pavo and not IA, foreign", foreign, creator(1, 0), true},
      {"not pavo and not IA, ours", ours, creator(0, 0), true},
      {"not pavo and IA, IA", ia, creator(0, 1), true},
  };
}

// All attributes must match: one attribute of another value makes the match fail.
std::vector<MatchRow> combinedRows() {
  const auto profile = settingsNamed("ims").u8(60, 1).u32(64, pdpV6).u8(404, 1).text(405, "u");
  const auto fitting = [](Filter& f) {
    f.setApnName("IMS");
    f.setHomeIPType(IPType::V6);
    f.setRoamIPType(IPType::V6);
    f.setUserName("u");
    f.setFilterByProfileId(matchedIndex);
    f.setFilterByIsPavoProfile(false);
  };
  const auto but = [fitting](const std::function<void(Filter&)>& change) {
    return [=](Filter& f) {
      fitting(f);
      change(f);
    };
  };
  return {
      {"all fit", profile, fitting, true},
      {"name", profile, but([](Filter& f) { f.setApnName("x"); }), false},
      {"home", profile, but([](Filter& f) { f.setHomeIPType(IPType::V4); }), false},
      {"roam", profile, but([](Filter& f) { f.setRoamIPType(IPType::V4); }), false},
      {"user", profile, but([](Filter& f) { f.setUserName("v"); }), false},
      {"id", profile, but([](Filter& f) { f.setFilterByProfileId(1); }), false},
      {"creator", profile, but([](Filter& f) { f.setFilterByIsPavoProfile(true); }), false},
      {"absent", profile, but([](Filter& f) { f.setIsClatEnabled(false); }), false},
  };
}

std::vector<MatchRow> matchRows() {
  std::vector<MatchRow> all;
  for (const auto& rows : {nameRows(), homeRows(), roamRows(), maskRows(), equalityRows(),
                           creatorRows(), combinedRows()}) {
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

Filter filterOf(const MatchRow& row) {
  Filter filter;
  row.ask(filter);
  return filter;
}

TEST(MatchTest, Match_OfARecord_AsTheTableSays) {
  for (const MatchRow& row : matchRows()) {
    const Filter filter = filterOf(row);
    const Modem3gppProfile profile(matchedIndex,
                                   row.settings.as<wds_get_profile_settings_resp_msg_v01>());
    EXPECT_EQ(profile.match(filter), row.matches)
        << row.what << ": " << profile.dump() << " against " << filter.dump();
  }
}

// A record keeps its own name as it was set; the filter's name is always lowered.
TEST(MatchTest, Match_NameThatWasSetInUpperCase_FitsNoFilter) {
  Modem3gppProfile profile{ProfileParams()};
  profile.setApnName("IMS");
  for (const char* name : {"IMS", "ims"}) {
    Filter filter;
    filter.setApnName(name);
    EXPECT_FALSE(profile.match(filter)) << name;
  }
}

class MatchThroughManagerTest : public RunningManagerTest {};

TEST_F(MatchThroughManagerTest, FilterAndMatch_OneProfile_AsTheTableSays) {
  for (const MatchRow& row : matchRows()) {
    SCOPED_TRACE(row.what);
    setModemProfile(matchedIndex, row.settings);
    manager.refresh(PDC_REFRESH_COMPLETED);
    const Key key = keyOf(matchedIndex);
    ASSERT_NE(key, nullptr);
    const Filter filter = filterOf(row);
    SCOPED_TRACE(filter.dump());
    EXPECT_EQ(manager.filter(filter).size(), row.matches ? 1U : 0U);
    EXPECT_EQ(manager.match(filter, key), row.matches);
  }
}

TEST_F(MatchThroughManagerTest, Filter_SeveralProfiles_GivesEachThatMatches) {
  setModemProfile(1, "ims");
  setModemProfile(2, "internet");
  setModemProfile(3, "IMS");
  manager.refresh(PDC_REFRESH_COMPLETED);
  Filter filter;
  filter.setApnName("ims");
  std::vector<int> ids;
  for (const Key& key : manager.filter(filter)) {
    ids.push_back(key->getProfileId());
  }
  EXPECT_THAT(ids, testing::UnorderedElementsAre(1, 3));
  EXPECT_EQ(manager.filter(Filter()).size(), 3U);
}

TEST(MatchMaskTest, MatchMask_EveryBit_ItsOwnModemBitOnly) {
  struct Bit {
    unsigned int client;
    unsigned long long modem;
  };
  const Bit bits[] = {{0x1, 0x1},      {0x2, 0x4},     {0x4, 0x10},    {0x8, 0x8},
                      {0x10, 0x20},    {0x20, 0x40},   {0x40, 0x2},    {0x80, 0x80},
                      {0x100, 0x100},  {0x200, 0x200}, {0x400, 0x800}, {0x800, 0x400},
                      {0x8000, 0x1000}};
  for (const Bit& own : bits) {
    Modem3gppProfile profile{ProfileParams()};
    EXPECT_FALSE(profile.matchExactApnTypesMask(own.client));
    EXPECT_FALSE(profile.matchSubsetApnTypesMask(own.client));
    profile.setApnTypesMask(own.modem);
    for (const Bit& asked : bits) {
      SCOPED_TRACE(testing::Message() << own.client << " asked for " << asked.client);
      EXPECT_EQ(profile.matchExactApnTypesMask(asked.client), asked.client == own.client);
      EXPECT_EQ(profile.matchSubsetApnTypesMask(asked.client), asked.client == own.client);
    }
  }
}

}  // namespace
}  // namespace pavo::test
