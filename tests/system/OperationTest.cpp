// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests follow each operation from a client's call to the modem's table and back.
#include <pavo/Manager.h>

#include "Attributes.h"
#include "SystemTest.h"

#include <list>
#include <optional>
#include <set>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

class OperationTest : public SystemTest {
 protected:
  OperationTest() { connect(); }

  // Returns the only profile of the table, without its name and persistence.
  json onlySettings() {
    const ModemTable profiles = table();
    EXPECT_EQ(profiles.size(), 1u);
    json settings = profiles.empty() ? json() : profiles.begin()->second;
    settings.erase("name");
    settings.erase("persistent");
    return settings;
  }
};

AddProfileParams emptyProfile() {
  return AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false);
}

AddProfileParams fullProfile() {
  AddProfileParams params(/*isPersistent=*/true, /*isIAProfile=*/false);
  params.setApnName("Internet");
  params.setUserName("user");
  params.setPassword("Secret");
  params.setAuthType(AuthType::PAP_CHAP);
  params.setHomeIPType(IPType::V4);
  params.setRoamIPType(IPType::V6);
  params.setApnTypesMask(DEFAULT | IMS | RCS);
  params.setApnClass(ApnClass::INET);
  params.setIsClatEnabled(true);
  params.setMaxPdnsConnPerBlock(20);
  params.setMaxPdnConnTimer(300);
  params.setPdnReqWaitInterval(15);
  params.setIsApnDisabled(false);
  params.setIsEmergencySupported(true);
  return params;
}

json fullSettings() {
  return {{"name", "pavo_profile"}, {"persistent", true},   {"apn", "internet"},
          {"user", "user"},         {"password", "Secret"}, {"auth", 3},
          {"pdpType", "V4V6"},      {"overrideHome", "V4"}, {"lteRoam", "V6"},
          {"umtsRoam", "V6"},       {"apnTypes", 0x1003},   {"class", 3},
          {"clat", true},           {"maxPdnPerBlock", 20}, {"maxPdnTimer", 300},
          {"pdnWaitInterval", 15},  {"disabled", false},    {"emergency", true}};
}

TEST_F(OperationTest, Add_EveryAttribute_ArrivesInTheTable) {
  for (const AttributeCase& c : attributeCases()) {
    SCOPED_TRACE(c.description);
    AddProfileParams params = emptyProfile();
    c.set(params);
    const Key key = add(params);
    EXPECT_EQ(onlySettings(), c.settings);
  }
}

TEST_F(OperationTest, Add_EveryAttribute_ReadsBackAsTheModemKeepsIt) {
  for (const AttributeCase& c : attributeCases()) {
    SCOPED_TRACE(c.description);
    AddProfileParams params = emptyProfile();
    c.set(params);
    const Key key = add(params);
    if (!c.isKeptWhole) {
      // The library learns what the modem has cut when it reads the profile again.
      refresh();
    }
    expectCacheEqualsTable();
    manager->deleteProfile(manager->filter(byId(key->getProfileId())).front());
  }
}

TEST_F(OperationTest, Modify_EveryAttribute_ChangesOnlyThatSetting) {
  const Key key = add(fullProfile());
  for (const AttributeCase& c : attributeCases()) {
    SCOPED_TRACE(c.description);
    json expected = table().at(key->getProfileId());
    expected.update(c.settings);
    ModifyProfileParams change;
    c.set(change);
    EXPECT_TRUE(manager->modifyProfile(change, key));
    EXPECT_EQ(table().at(key->getProfileId()), expected);
    if (!c.isKeptWhole) {
      // The library learns what the modem has cut when it reads the profile again.
      control("modify", {{"index", key->getProfileId()}});
    }
    expectCacheEqualsTable();
  }
  expectNothingPending();
}

TEST_F(OperationTest, FilterAndMatch_EveryAttribute_FindTheProfileThatHasIt) {
  for (const AttributeCase& c : attributeCases()) {
    SCOPED_TRACE(c.description);
    AddProfileParams params = emptyProfile();
    c.set(params);
    const Key key = add(params);
    const Key bare = add(emptyProfile());
    FilterProfileParams filter;
    c.set(filter);
    EXPECT_TRUE(manager->match(filter, key));
    EXPECT_FALSE(manager->match(filter, bare)) << "matches a profile that lacks the attribute";
    const std::list<Key> found = manager->filter(filter);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found.front()->getProfileId(), key->getProfileId());
  }
}

TEST_F(OperationTest, Add_EveryCombinationOfIpTypes_ArrivesInTheTable) {
  for (const IpTypeCase& c : ipTypeCases()) {
    SCOPED_TRACE(c.description());
    AddProfileParams params = emptyProfile();
    c.set(params);
    const Key key = add(params);
    EXPECT_EQ(onlySettings(), c.settings);
  }
}

TEST_F(OperationTest, Add_EveryCombinationOfKnownIpTypes_ReadsBackAsGiven) {
  for (const IpTypeCase& c : ipTypeCases()) {
    if ((c.hasHome && c.home == IPType::UNKNOWN) || (c.hasRoam && c.roam == IPType::UNKNOWN)) {
      continue;  // The modem has no such type, so a read returns another one.
    }
    SCOPED_TRACE(c.description());
    AddProfileParams params = emptyProfile();
    c.set(params);
    const Key key = add(params);
    const std::optional<ProfileParams> read = manager->getProfile(key);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->hasHomeIPType(), c.hasHome);
    EXPECT_EQ(read->getHomeIPType(), c.home);
    EXPECT_EQ(read->hasRoamIPType(), c.hasRoam);
    EXPECT_EQ(read->getRoamIPType(), c.roam);
    expectCacheEqualsTable();
  }
}

TEST_F(OperationTest, Modify_EveryIpTypesToEveryOther_LeavesWhatWasAskedFor) {
  for (const IpTypeCase& from : ipTypeCases()) {
    AddProfileParams params = emptyProfile();
    from.set(params);
    const Key key = add(params);
    for (const IpTypeCase& to : ipTypeCases()) {
      const bool isKnown =
          to.hasHome && to.hasRoam && to.home != IPType::UNKNOWN && to.roam != IPType::UNKNOWN;
      if (!isKnown) {
        continue;
      }
      SCOPED_TRACE(from.description() + " -> " + to.description());
      ModifyProfileParams change;
      to.set(change);
      EXPECT_TRUE(manager->modifyProfile(change, key));
      const std::optional<ProfileParams> read = manager->getProfile(key);
      ASSERT_TRUE(read);
      EXPECT_EQ(read->getHomeIPType(), to.home);
      EXPECT_EQ(read->getRoamIPType(), to.roam);
      EXPECT_EQ(textOf(*read), textOf(paramsOf(table().at(key->getProfileId()))));
    }
  }
  expectNothingPending();
}

TEST_F(OperationTest, Modify_BackToOneIpType_TakesTheOverrideBack) {
  AddProfileParams params = emptyProfile();
  params.setHomeIPType(IPType::V4);
  params.setRoamIPType(IPType::V6);
  const Key key = add(params);
  ModifyProfileParams change;
  change.setRoamIPType(IPType::V4);
  EXPECT_TRUE(manager->modifyProfile(change, key));
  EXPECT_EQ(onlySettings(), (json{{"pdpType", "V4"},
                                  {"overrideHome", "UNSPECIFIED"},
                                  {"lteRoam", "V4"},
                                  {"umtsRoam", "V4"}}));
  expectCacheEqualsTable();
}

TEST_F(OperationTest, Add_AllAttributes_ArriveTogether) {
  const Key key = add(fullProfile());
  EXPECT_EQ(table().at(key->getProfileId()), fullSettings());
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(OperationTest, Add_AllAttributes_SurviveARefresh) {
  const Key key = add(fullProfile());
  const std::optional<ProfileParams> before = manager->getProfile(key);
  refresh();
  const Key again = find("internet");
  const std::optional<ProfileParams> after = manager->getProfile(again);
  ASSERT_TRUE(before && after);
  EXPECT_EQ(textOf(*before), textOf(*after));
  expectCacheEqualsTable();
}

TEST_F(OperationTest, Add_EveryKindOfProfile_HasItsNameAndPersistence) {
  for (const bool isPersistent : {false, true}) {
    for (const bool isInitialAttach : {false, true}) {
      SCOPED_TRACE(isPersistent);
      SCOPED_TRACE(isInitialAttach);
      const Key key = add(AddProfileParams(isPersistent, isInitialAttach));
      const json profile = table().at(key->getProfileId());
      EXPECT_EQ(profile["name"], isInitialAttach ? "pavo_profile_ia" : "pavo_profile");
      EXPECT_EQ(profile["persistent"], isPersistent);
      const std::optional<ProfileParams> read = manager->getProfile(key);
      ASSERT_TRUE(read);
      EXPECT_TRUE(read->getIsPavoProfile());
      EXPECT_EQ(read->getIsIAProfile(), isInitialAttach);
    }
  }
  expectCacheEqualsTable();
}

TEST_F(OperationTest, Add_SeveralProfiles_KeysCarryTheModemsIndices) {
  std::vector<Key> keys;
  std::set<int> indices;
  for (int i = 0; i < 10; ++i) {
    keys.push_back(add(transientProfile("apn" + std::to_string(i))));
    indices.insert(keys.back()->getProfileId());
    EXPECT_EQ(table().at(keys.back()->getProfileId())["apn"], "apn" + std::to_string(i));
  }
  EXPECT_EQ(indices.size(), 10u);
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(OperationTest, Add_UnnamedApnTypeBits_DoNotReachTheModem) {
  AddProfileParams params = emptyProfile();
  params.setApnTypesMask(DEFAULT | 0x1000 | 0x4000 | 0xFFFF0000u);
  const Key key = add(params);
  EXPECT_EQ(onlySettings(), (json{{"apnTypes", 1}}));
}

TEST_F(OperationTest, Add_ValuesBeyondTheirEnumeration_ArriveAsTheirLowBits) {
  AddProfileParams params = emptyProfile();
  params.setAuthType(static_cast<AuthType>(0x7FFFFFFE));
  params.setApnClass(static_cast<ApnClass>(0x104));
  const Key key = add(params);
  EXPECT_EQ(onlySettings(), (json{{"auth", 2}, {"class", 4}}));
}

TEST_F(OperationTest, Add_TextWithNul_ArrivesUpToIt) {
  AddProfileParams params = emptyProfile();
  params.setApnName(std::string("ims\0rest", 8));
  params.setUserName(std::string("us\0er", 5));
  const Key key = add(params);
  EXPECT_EQ(onlySettings(), (json{{"apn", "ims"}, {"user", "us"}}));
}

TEST_F(OperationTest, Modify_NothingDifferent_SendsNothing) {
  const Key key = add(fullProfile());
  settle();
  control("clear-transcript");
  EXPECT_TRUE(manager->modifyProfile(ModifyProfileParams(fullProfile()), key));
  EXPECT_TRUE(manager->modifyProfile(ModifyProfileParams(), key));
  EXPECT_THAT(requestsSeen(), IsEmpty());
}

TEST_F(OperationTest, Modify_OneOfManyDifferent_SendsOnlyThat) {
  const Key key = add(fullProfile());
  settle();
  control("clear-transcript");
  ModifyProfileParams change{fullProfile()};
  change.setPassword("other");
  EXPECT_TRUE(manager->modifyProfile(change, key));
  settle();
  std::vector<json> requests;
  for (const json& entry : transcript()) {
    if (entry["direction"] == "in") {
      requests.push_back(entry["fields"]);
    }
  }
  EXPECT_THAT(requests,
              ElementsAre(json{{"password", "other"},
                               {"profile", {{"type", 0}, {"index", key->getProfileId()}}}}));
  expectCacheEqualsTable();
}

TEST_F(OperationTest, Modify_NeverSendsPersistence) {
  const Key key = add(fullProfile());
  ModifyProfileParams change;
  change.setApnName("other");
  EXPECT_TRUE(manager->modifyProfile(change, key));
  EXPECT_EQ(table().at(key->getProfileId())["persistent"], true);
}

TEST_F(OperationTest, Delete_WithOtherKeys_RemovesTheProfileForAll) {
  const Key first = add(transientProfile("ims"));
  const Key second = find("ims");
  EXPECT_TRUE(manager->deleteProfile(first));
  EXPECT_THAT(table(), IsEmpty());
  EXPECT_FALSE(manager->deleteProfile(second));
  EXPECT_FALSE(manager->getProfile(second));
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(OperationTest, Delete_OfAProfileThatTheModemMade_RemovesIt) {
  const int index = control("create", {{"apn", "operator"}})["index"];
  settle();
  EXPECT_TRUE(manager->deleteProfile(find("operator")));
  EXPECT_EQ(table().count(index), 0u);
  expectCacheEqualsTable();
}

TEST_F(OperationTest, Filter_WithoutCriteria_FindsEverything) {
  control("create", {{"apn", "operator"}});
  const Key own = add(transientProfile("own"));
  settle();
  EXPECT_EQ(manager->filter(FilterProfileParams()).size(), 2u);
}

TEST_F(OperationTest, Filter_ByCreator_TellsTheLibrarysProfilesFromTheModems) {
  control("create", {{"apn", "operator"}});
  const Key own = add(transientProfile("own"));
  const Key attach = add(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/true));
  settle();
  FilterProfileParams byPavo;
  byPavo.setFilterByIsPavoProfile(true);
  EXPECT_EQ(manager->filter(byPavo).size(), 2u);
  byPavo.setFilterByIsPavoProfile(false);
  EXPECT_EQ(manager->filter(byPavo).size(), 1u);
  FilterProfileParams byAttach;
  byAttach.setFilterByIsIAProfile(true);
  const std::list<Key> found = manager->filter(byAttach);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found.front()->getProfileId(), attach->getProfileId());
}

TEST_F(OperationTest, Filter_BySubsetCriteria_LooksIntoTheModemsProfiles) {
  control("create", {{"apn", "internet"}, {"pdpType", "V4V6"}, {"apnTypes", 3}});
  settle();
  FilterProfileParams filter;
  filter.setApnName("NET");
  filter.setHomeIPType(IPType::V4);
  filter.setApnTypesMask(IMS);
  EXPECT_THAT(manager->filter(filter), IsEmpty());
  filter.addFilterMatchCriteria(ApnNameSubset | HomeIPSubset | ApnTypeBitmaskSubset);
  EXPECT_EQ(manager->filter(filter).size(), 1u);
}

TEST_F(OperationTest, Get_OfAModemsProfileWithEverySetting_ReadsThemAll) {
  json settings = fullSettings();
  settings["name"] = "modem_made";
  settings["apn"] = "Mixed.Case";
  const int index = control("create", settings)["index"];
  settle();
  const Key key = find("mixed.case");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->getProfileId(), index);
  const std::optional<ProfileParams> read = manager->getProfile(key);
  ASSERT_TRUE(read);
  EXPECT_EQ(textOf(*read), textOf(paramsOf(settings)));
  EXPECT_EQ(read->getApnTypesMask(), static_cast<unsigned int>(DEFAULT | IMS | RCS));
  EXPECT_FALSE(read->getIsPavoProfile());
}

TEST_F(OperationTest, Get_OfEveryPdpTypeOfTheModem_ReadsIt) {
  const std::vector<std::pair<std::string, IPType>> cases = {
      {"V4", IPType::V4}, {"V6", IPType::V6}, {"V4V6", IPType::V4V6}, {"PPP", IPType::UNKNOWN}};
  for (const auto& [type, expected] : cases) {
    SCOPED_TRACE(type);
    const int index = control("create", {{"apn", "pdp" + type}, {"pdpType", type}})["index"];
    settle();
    const Key key = find("pdp" + type);
    const std::optional<ProfileParams> read = manager->getProfile(key);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->getHomeIPType(), expected);
    control("delete", {{"index", index}});
  }
  expectCacheEqualsTable();
}

TEST_F(OperationTest, EveryOperation_WithAnEmptyKey_AnswersEmptyAndSendsNothing) {
  control("clear-transcript");
  EXPECT_FALSE(manager->modifyProfile(ModifyProfileParams(fullProfile()), nullptr));
  EXPECT_FALSE(manager->deleteProfile(nullptr));
  EXPECT_FALSE(manager->getProfile(nullptr));
  EXPECT_FALSE(manager->match(FilterProfileParams(), nullptr));
  EXPECT_THAT(requestsSeen(), IsEmpty());
}

TEST_F(OperationTest, EveryOperation_OnAForeignKind_AnswersEmpty) {
  class StrangersKey : public IProfileKey {
   public:
    int getProfileId() override { return 1; }
    void registerExpirationListener(std::function<void()>) override {}
    std::string dump() override { return "stranger"; }
  };
  const Key own = add(transientProfile("own"));
  const Key stranger = std::make_shared<StrangersKey>();
  EXPECT_FALSE(manager->modifyProfile(ModifyProfileParams(fullProfile()), stranger));
  EXPECT_FALSE(manager->deleteProfile(stranger));
  EXPECT_FALSE(manager->getProfile(stranger));
  EXPECT_FALSE(manager->match(FilterProfileParams(), stranger));
  expectCacheEqualsTable();
}

TEST_F(OperationTest, Dump_AfterOperations_ShowsTheCacheAndTheLog) {
  const Key key = add(transientProfile("ims"));
  settle();
  const std::vector<std::string> lines = manager->dump();
  ASSERT_GE(lines.size(), 5u);
  EXPECT_EQ(lines[0], "Cache:");
  EXPECT_THAT(lines[1], testing::ContainsRegex("^  [0-9]+: ProfileId=1,ApnName=ims,"));
  EXPECT_EQ(lines[2], "Pending:");
  EXPECT_EQ(lines[3], "");
  EXPECT_EQ(lines[4], "Logs:");
}

}  // namespace
}  // namespace pavo::test
