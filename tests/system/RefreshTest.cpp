// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the phases of a configuration refresh.
#include <pavo/Manager.h>

#include "SystemTest.h"

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

json operatorsProfiles() {
  return json::array({{{"index", 1}, {"apn", "internet"}, {"pdpType", "V4V6"}},
                      {{"index", 2}, {"apn", "ims"}, {"pdpType", "V6"}},
                      {{"index", 5}, {"apn", "sos"}, {"emergency", true}}});
}

class RefreshTest : public SystemTest {
 protected:
  RefreshTest() : SystemTest({.profiles = {{"profiles", operatorsProfiles()}}, .arguments = {}}) {
    connect();
  }
};

TEST_F(RefreshTest, Start_WithoutARefresh_LeavesTheCacheEmpty) {
  EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
  EXPECT_EQ(table().size(), 3u);
}

TEST_F(RefreshTest, Completed_WithoutAStart_ReadsAllProfiles) {
  refresh();
  EXPECT_EQ(manager->filter(FilterProfileParams()).size(), 3u);
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, Completed_AnyOtherValue_ReadsAllProfiles) {
  manager->refresh(PDC_REFRESH_STARTED);
  manager->refresh(static_cast<PDCRefreshStatus>(200));
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, Completed_AsksForTheListAndThenForEachProfileInItsOrder) {
  control("clear-transcript");
  refresh();
  std::vector<std::string> requests;
  for (const json& entry : transcript()) {
    if (entry["direction"] == "in") {
      const json& fields = entry["fields"];
      requests.push_back(
          entry["message"].get<std::string>() +
          (fields.contains("profile") ? " " + fields["profile"]["index"].dump() : ""));
    }
  }
  EXPECT_THAT(requests, ElementsAre("profile-list", "profile-settings 1", "profile-settings 2",
                                    "profile-settings 5"));
}

TEST_F(RefreshTest, Started_EveryOperation_IsRefusedWithoutAskingTheModem) {
  refresh();
  const Key key = find("ims");
  settle();
  control("clear-transcript");
  manager->refresh(PDC_REFRESH_STARTED);
  ModifyProfileParams change;
  change.setApnName("other");
  EXPECT_EQ(manager->addProfile(transientProfile("new")), nullptr);
  EXPECT_FALSE(manager->modifyProfile(change, key));
  EXPECT_FALSE(manager->deleteProfile(key));
  EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
  EXPECT_FALSE(manager->getProfile(key));
  EXPECT_FALSE(manager->match(FilterProfileParams(), key));
  EXPECT_THAT(requestsSeen(), IsEmpty());
  refresh();
  EXPECT_NE(manager->addProfile(transientProfile("new")), nullptr);
}

TEST_F(RefreshTest, Started_DropOfTheLastKey_LosesTheRelease) {
  Key key = add(transientProfile("new"));
  manager->refresh(PDC_REFRESH_STARTED);
  key.reset();
  EXPECT_THAT(table(), SizeIs(4));
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, Started_Indications_StillReachTheCache) {
  refresh();
  manager->refresh(PDC_REFRESH_STARTED);
  control("delete", {{"index", 2}});
  settle();
  EXPECT_THAT(dumpedEntries(), testing::Not(testing::Contains(testing::HasSubstr("ApnName=ims"))));
}

TEST_F(RefreshTest, Completed_EarlierKeys_AreUnknown) {
  refresh();
  const Key key = find("ims");
  refresh();
  EXPECT_FALSE(manager->getProfile(key));
  EXPECT_FALSE(manager->match(FilterProfileParams(), key));
  EXPECT_FALSE(manager->deleteProfile(key));
  EXPECT_FALSE(manager->modifyProfile(ModifyProfileParams(), key));
  EXPECT_EQ(table().size(), 3u);
}

TEST_F(RefreshTest, Completed_LibrarysOwnProfiles_AreKeptWhoeverDropsTheirKeys) {
  Key key = add(transientProfile("new"));
  refresh();
  Key again = find("new");
  key.reset();
  again.reset();
  EXPECT_EQ(table().size(), 4u);
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, Completed_OneReadRefused_LeavesAnEntryWithoutAProfile) {
  control("fail", {{"message", "profile-settings"}, {"error", 2}});
  refresh();
  EXPECT_EQ(manager->filter(FilterProfileParams()).size(), 2u);
  EXPECT_THAT(dumpedEntries(), testing::Contains(testing::MatchesRegex("  [0-9]+: null")));
  EXPECT_THAT(
      keptLogFrom("Manager::refresh >"),
      testing::IsSupersetOf({"OvixWdsProxy OVIX_WDS_GET_PROFILE_LIST_REQ_V01 request successful!",
                             "Unable send OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 message",
                             "Refreshed Profiles:", "null", "ProfileCache: null profile"}));
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, Completed_ListRefused_LeavesTheCacheEmpty) {
  refresh();
  control("fail", {{"message", "profile-list"}, {"error", 2}});
  refresh();
  EXPECT_THAT(cache(), IsEmpty());
  EXPECT_THAT(keptLogFrom("Manager::refresh >"),
              testing::Contains("Unable send OVIX_WDS_GET_PROFILE_LIST_REQ_V01 message"));
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, Completed_EveryReadRefusedInTurn_LosesOnlyThatProfile) {
  // Faults take effect in the order in which they were added. To make the nth read fail, the reads
  // before it get a fault that delays the answer by zero milliseconds.
  for (int failing = 0; failing < 3; ++failing) {
    SCOPED_TRACE(failing);
    if (failing > 0) {
      control("fail", {{"message", "profile-settings"}, {"delayMs", 0}, {"count", failing}});
    }
    control("fail", {{"message", "profile-settings"}, {"error", 2}});
    refresh();
    EXPECT_EQ(cache().size(), 2u);
    EXPECT_THAT(control("faults")["faults"], IsEmpty());
  }
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefreshTest, SubscriptionChange_FromTheModem_ReadsAllProfiles) {
  control("indicate", {{"event", 4}, {"index", 0}});
  expectCacheEqualsTable();
  EXPECT_EQ(cache().size(), 3u);
}

TEST_F(RefreshTest, ProfileReady_FromTheModem_ReadsAllProfiles) {
  control("indicate", {{"event", 5}, {"index", 255}});
  expectCacheEqualsTable();
  EXPECT_EQ(cache().size(), 3u);
}

TEST_F(RefreshTest, UnknownEvent_FromTheModem_ReadsAllProfiles) {
  for (const unsigned int event : {0u, 6u, 9u, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(event);
    const std::size_t position = log.end();
    control("indicate", {{"event", event}, {"index", 3}});
    settle();
    EXPECT_EQ(log.count("ProfileCache: onIndication < 3 ProfileReady", position), 1u);
    EXPECT_EQ(log.count("Refreshed Profiles:", position), 1u);
  }
  expectCacheEqualsTable();
}

}  // namespace
}  // namespace pavo::test
