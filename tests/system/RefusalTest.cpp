// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests show a client's view when the modem refuses, stays silent or answers late.
#include <pavo/Manager.h>

#include "SystemTest.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>

namespace pavo::test {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// sendTimeout is how long a modem request may take, less the error of a clock. A late answer comes
// after lateMs.
constexpr milliseconds sendTimeout{990};
constexpr int lateMs = 2500;

class RefusalTest : public SystemTest {
 protected:
  RefusalTest() : SystemTest({.profiles = nullptr, .arguments = {"--capacity", "4"}}) { connect(); }

  void refuse(const std::string& message) { control("fail", {{"message", message}, {"error", 2}}); }
};

milliseconds durationOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
}

ModifyProfileParams renamed(const std::string& apn) {
  ModifyProfileParams change;
  change.setApnName(apn);
  return change;
}

TEST_F(RefusalTest, Add_FullTable_AnswersEmptyAndLogsOneError) {
  std::vector<Key> keys;
  for (int i = 0; i < 4; ++i) {
    keys.push_back(add(transientProfile("apn" + std::to_string(i))));
  }
  settle();
  EXPECT_EQ(manager->addProfile(transientProfile("one too many")), nullptr);
  EXPECT_THAT(keptLogFrom("Manager::addProfile >"),
              ElementsAre(StartsWith("Manager::addProfile > Add"),
                          "Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message",
                          "Manager::addProfile < Add Success "));
  expectCacheEqualsTable();
  keys.pop_back();
  EXPECT_NE(manager->addProfile(transientProfile("fits again")), nullptr);
}

TEST_F(RefusalTest, Add_Refused_ConsumesATokenAndNothingElse) {
  const auto tokenOf = [](const Key& key) {
    return std::stoull(key->dump().substr(key->dump().find('=') + 1));
  };
  const Key before = add(transientProfile("before"));
  refuse("create-profile");
  EXPECT_EQ(manager->addProfile(transientProfile("refused")), nullptr);
  const Key after = add(transientProfile("after"));
  EXPECT_EQ(tokenOf(after), tokenOf(before) + 2);
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(RefusalTest, Modify_Refused_AnswersTrueAndKeepsTheOldValues) {
  const Key key = add(transientProfile("ims"));
  settle();
  refuse("modify-profile");
  EXPECT_TRUE(manager->modifyProfile(renamed("other"), key));
  EXPECT_THAT(keptLogFrom("Manager::modifyProfile >"),
              ElementsAre(StartsWith("Manager::modifyProfile > Modify"),
                          "Unable send OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 message",
                          "ProfileCache: failed to modify modem profile",
                          "Manager::modifyProfile < Modify Success"));
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "ims");
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(RefusalTest, Modify_OfAStaleKey_AnswersFalseAndLogsWhy) {
  const Key key = add(transientProfile("ims"));
  settle();
  refresh();
  EXPECT_FALSE(manager->modifyProfile(renamed("other"), key));
  EXPECT_THAT(keptLogFrom("Manager::modifyProfile >"),
              ElementsAre(StartsWith("Manager::modifyProfile > Modify"),
                          "ProfileCache: token is not present or expired",
                          "Manager::modifyProfile < Modify Failure"));
}

TEST_F(RefusalTest, Delete_Refused_AnswersFalseAndKeepsTheProfile) {
  const Key key = add(transientProfile("ims"));
  settle();
  refuse("delete-profile");
  EXPECT_FALSE(manager->deleteProfile(key));
  EXPECT_THAT(keptLogFrom("Manager::deleteProfile >"),
              ElementsAre(StartsWith("Manager::deleteProfile > Delete"),
                          "Unable send OVIX_WDS_DELETE_PROFILE_REQ_V01 message",
                          "ProfileCache: Failed to remove profile",
                          "Manager::deleteProfile < Delete Failure"));
  expectCacheEqualsTable();
  EXPECT_TRUE(manager->deleteProfile(key));
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(RefusalTest, EveryOperation_AfterAnotherClientsDelete_FindsTheKeyUnknown) {
  const Key key = add(transientProfile("ims"));
  control("delete", {{"index", key->getProfileId()}});
  settle();
  control("clear-transcript");
  EXPECT_FALSE(manager->modifyProfile(renamed("other"), key));
  EXPECT_FALSE(manager->deleteProfile(key));
  EXPECT_FALSE(manager->getProfile(key));
  EXPECT_FALSE(manager->match(byApn("ims"), key));
  EXPECT_THAT(requestsSeen(), IsEmpty());
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Delete_OfAnIndexThatTheModemNoLongerHas_AnswersFalse) {
  const Key key = add(transientProfile("ims"));
  const Key other = add(transientProfile("other"));
  settle();
  // The worker waits for the modem while another client deletes, so the delete indication and the
  // delete request are both queued when it is free again.
  control("fail", {{"message", "modify-profile"}, {"delayMs", 300}});
  std::thread busy([&] { manager->modifyProfile(renamed("renamed"), other); });
  ASSERT_TRUE(waitUntil([&] { return control("faults")["faults"].empty(); }));
  control("delete", {{"index", key->getProfileId()}});
  EXPECT_FALSE(manager->deleteProfile(key));
  busy.join();
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, EveryRequest_EveryResultCode_FailsAlike) {
  for (const int result : {1, 2, 255, 0x7FFFFFFF}) {
    SCOPED_TRACE(result);
    control("fail", {{"message", "create-profile"}, {"error", 0}, {"result", result}});
    EXPECT_EQ(manager->addProfile(transientProfile("refused")), nullptr);
  }
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Add_Silence_TimesOutAfterASecond) {
  control("fail", {{"message", "create-profile"}, {"silent", true}});
  Key key;
  const milliseconds took = durationOf([&] { key = manager->addProfile(transientProfile("ims")); });
  EXPECT_EQ(key, nullptr);
  EXPECT_GE(took, sendTimeout);
  EXPECT_THAT(keptLogFrom("Manager::addProfile >"),
              testing::Contains("Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message"));
  EXPECT_NE(manager->addProfile(transientProfile("ims")), nullptr);
  expectNothingPending();
}

TEST_F(RefusalTest, Modify_Silence_TimesOutAndKeepsTheOldValues) {
  const Key key = add(transientProfile("ims"));
  control("fail", {{"message", "modify-profile"}, {"silent", true}});
  EXPECT_GE(durationOf([&] { EXPECT_TRUE(manager->modifyProfile(renamed("other"), key)); }),
            sendTimeout);
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Delete_Silence_TimesOutAndKeepsTheProfile) {
  const Key key = add(transientProfile("ims"));
  control("fail", {{"message", "delete-profile"}, {"silent", true}});
  EXPECT_GE(durationOf([&] { EXPECT_FALSE(manager->deleteProfile(key)); }), sendTimeout);
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Refresh_Silence_TimesOutAndLeavesTheCacheEmpty) {
  const Key key = add(transientProfile("ims"));
  control("fail", {{"message", "profile-list"}, {"silent", true}});
  EXPECT_GE(durationOf([&] { refresh(); }), sendTimeout);
  EXPECT_THAT(cache(), IsEmpty());
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Drop_Silence_TimesOutAndKeepsTheProfile) {
  Key key = add(transientProfile("ims"));
  control("fail", {{"message", "delete-profile"}, {"silent", true}});
  EXPECT_GE(durationOf([&] { key.reset(); }), sendTimeout);
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Add_AnswerWithinTheTimeout_Succeeds) {
  control("fail", {{"message", "create-profile"}, {"delayMs", 200}});
  const Key key = add(transientProfile("ims"));
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(RefusalTest, Add_LateAnswer_LeavesAProfileThatTheCacheLearnsOf) {
  control("fail", {{"message", "create-profile"}, {"delayMs", lateMs}});
  EXPECT_EQ(manager->addProfile(transientProfile("late")), nullptr);
  ASSERT_TRUE(waitUntil([&] { return table().size() == 1; }));
  expectCacheEqualsTable();
  const Key key = find("late");
  EXPECT_TRUE(manager->deleteProfile(key));
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Modify_LateAnswer_IsReadAgain) {
  const Key key = add(transientProfile("ims"));
  control("fail", {{"message", "modify-profile"}, {"delayMs", lateMs}});
  EXPECT_TRUE(manager->modifyProfile(renamed("late"), key));
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "ims");
  ASSERT_TRUE(waitUntil([&] { return table().begin()->second["apn"] == "late"; }));
  expectCacheEqualsTable();
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "late");
}

TEST_F(RefusalTest, Delete_LateAnswer_IsNoticed) {
  const Key key = add(transientProfile("ims"));
  control("fail", {{"message", "delete-profile"}, {"delayMs", lateMs}});
  EXPECT_FALSE(manager->deleteProfile(key));
  ASSERT_TRUE(waitUntil([&] { return table().empty(); }));
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, Refresh_LateAnswer_IsNotTakenForThatOfTheNextRequest) {
  const Key key = add(transientProfile("ims"));
  // The list arrives while the next requests are under way, and it must not count as their answer.
  control("fail", {{"message", "profile-list"}, {"delayMs", 1300}});
  refresh();
  control("fail", {{"message", "profile-list"}, {"delayMs", 600}});
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, ModifyIndication_ReadRefused_LeavesAnEntryWithoutAProfile) {
  const Key key = add(transientProfile("ims"));
  settle();
  refuse("profile-settings");
  control("modify", {{"index", key->getProfileId()}, {"user", "other"}});
  settle();
  control("clear-transcript");
  EXPECT_FALSE(manager->getProfile(key));
  EXPECT_FALSE(manager->match(FilterProfileParams(), key));
  EXPECT_TRUE(manager->modifyProfile(renamed("other"), key));
  EXPECT_FALSE(manager->deleteProfile(key));
  EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
  EXPECT_THAT(requestsSeen(), IsEmpty());
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, CreateIndication_ReadRefused_LeavesAnEntryWithoutAProfile) {
  control("fail", {{"message", "profile-settings"}, {"error", 2}, {"count", 1}});
  control("create", {{"apn", "operator"}});
  settle();
  EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
  EXPECT_THAT(dumpedEntries(), testing::Contains(testing::MatchesRegex("  [0-9]+: null")));
  refresh();
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, PersistentProfile_StoreNotWritable_IsRefused) {
  // Replacing the store's file fails when a folder stands in its place.
  std::filesystem::remove(modem.storePath());
  std::filesystem::create_directory(modem.storePath());
  std::ofstream(modem.storePath() + "/stays");
  EXPECT_EQ(manager->addProfile(persistentProfile("ims")), nullptr);
  expectCacheEqualsTable();
  const Key key = add(transientProfile("ims"));
  expectCacheEqualsTable();
}

TEST_F(RefusalTest, EveryRequestOfAScenarioInTurn_CacheAndTableAgreeAfterwards) {
  // Fails the nth request for n = 0, 1, 2, ... until the scenario triggers no fault any more.
  bool metFault = true;
  int nth = 0;
  for (; metFault; ++nth) {
    SCOPED_TRACE(nth);
    ASSERT_LT(nth, 50) << "the scenario does not end: " << control("faults").dump();
    if (nth > 0) {
      control("fail", {{"message", "any"}, {"delayMs", 0}, {"count", nth}});
    }
    control("fail", {{"message", "any"}, {"error", 2}});
    {
      const Key kept = manager->addProfile(persistentProfile("kept"));
      const Key dropped = manager->addProfile(transientProfile("dropped"));
      manager->modifyProfile(renamed("changed"), kept);
      manager->deleteProfile(kept);
      refresh();
      settle();
    }
    const json left = control("faults")["faults"];
    metFault = std::none_of(left.begin(), left.end(),
                            [](const json& fault) { return fault.contains("error"); });
    control("clear");
    refresh();
    expectCacheEqualsTable();
    for (const auto& [index, profile] : table()) {
      control("delete", {{"index", index}});
    }
    expectCacheEqualsTable();
  }
  EXPECT_GT(nth, 5);
}

}  // namespace
}  // namespace pavo::test
