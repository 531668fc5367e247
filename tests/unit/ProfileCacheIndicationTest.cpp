// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests check how the cache follows the modem's indications.
#include "LogLines.h"
#include "OvixWdsProxy.h"
#include "RunningManagerTest.h"

#include <thread>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class ProfileCacheIndicationTest : public RunningManagerTest {};

constexpr const char* updating = "ProfileCache: updating cache due to indication!";
constexpr const char* confirmed = "ProfileCache: pending transaction confirmed";

std::string received(const std::string& ind) { return "ProfileCache: onIndication < " + ind; }

TEST_F(ProfileCacheIndicationTest, Create_UnknownProfile_IsReadUnderANewToken) {
  const Key before = add("ims");
  setModemProfile(200, "net");
  takeKeptLines();
  platform.clearCalls();
  indicate(200, WDS_PROFILE_EVENT_CREATE_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("200 Create"), updating, line::read));
  const auto sent = platform.sent();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].msgId, 0x2BU);
  EXPECT_THAT(MessageBytes(8).u8(4, 200).differences(MessageBytes::of(sent[0].bytes)), IsEmpty());
  const Key key = keyOf(200);
  EXPECT_EQ(tokenOf(key), tokenOf(before) + 1);
  EXPECT_THAT(pending(), ElementsAre("  1 Create", "  1 Modify"));
  EXPECT_THAT(cached(), testing::Contains(entryLine(key, "ProfileId=200,ApnName=net,")));
}

TEST_F(ProfileCacheIndicationTest, Create_ReadFails_ANullEntry) {
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("5 Create"), updating, line::notRead));
  ASSERT_EQ(cached().size(), 1U);
  EXPECT_THAT(cached(), ElementsAre(testing::MatchesRegex("  [0-9]+: null")));
}

TEST_F(ProfileCacheIndicationTest, Create_CachedProfile_ASecondEntry) {
  setModemProfile(5, "net");
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  const std::list<Key> keys = keysOf(5);
  ASSERT_EQ(keys.size(), 2U);
  EXPECT_NE(tokenOf(keys.front()), tokenOf(keys.back()));
}

TEST_F(ProfileCacheIndicationTest, Delete_TwoEntriesOfTheProfile_BothGoAndOthersStay) {
  setModemProfile(5, "net");
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  indicate(6, WDS_PROFILE_EVENT_CREATE_V01);
  const Key other = addConfirmed("ims");
  int expired = 0;
  const std::list<Key> keys = keysOf(5);
  for (const Key& key : keys) {
    key->registerExpirationListener([&] { ++expired; });
  }
  takeKeptLines();
  platform.clearCalls();
  indicate(5, WDS_PROFILE_EVENT_DELETE_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("5 Delete"), updating));
  EXPECT_EQ(expired, 2);
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(cached(), UnorderedElementsAre(
                            testing::MatchesRegex("  [0-9]+: null"),
                            entryLine(other, "ProfileId=1,ApnName=ims,ProfileName=pavo_profile,")));
}

TEST_F(ProfileCacheIndicationTest, DeleteAndModify_UnknownProfile_ChangeNothing) {
  const Key key = addConfirmed("ims");
  const Lines before = cached();
  takeKeptLines();
  platform.clearCalls();
  indicate(77, WDS_PROFILE_EVENT_DELETE_V01);
  indicate(77, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(takeKeptLines(),
              ElementsAre(received("77 Delete"), updating, received("77 Modify"), updating));
  EXPECT_EQ(cached(), before);
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheIndicationTest, Modify_EveryEntryOfTheProfile_IsReadAgainUnderItsToken) {
  setModemProfile(5, "old");
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  const std::list<Key> keys = keysOf(5);
  ASSERT_EQ(keys.size(), 2U);
  setModemProfile(5, "new");
  takeKeptLines();
  platform.clearCalls();
  indicate(5, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("5 Modify"), updating, line::read, line::read));
  EXPECT_THAT(platform.sentIds(), ElementsAre(0x2BU, 0x2BU));
  for (const Key& key : keys) {
    const auto params = manager.getProfile(key);
    ASSERT_TRUE(params.has_value());
    EXPECT_EQ(params->getApnName(), "new");
  }
}

TEST_F(ProfileCacheIndicationTest, Modify_Twice_CountAndListenersDoNotPassOn) {
  Key key = addConfirmed("ims");
  int expired = 0;
  key->registerExpirationListener([&] { ++expired; });
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_EQ(expired, 1);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_EQ(expired, 1);
  const auto token = tokenOf(key);
  takeKeptLines();
  platform.clearCalls();
  key.reset();
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("ProfileCache: releaseProfile token=" + std::to_string(token),
                          "ProfileCache: ignoring non-persistent or non-pavo created"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

// The profile counts as the modem's own from then on: no key counts any more.
TEST_F(ProfileCacheIndicationTest, Modify_SeveralKeys_TheirCountDoesNotPassOn) {
  const Key first = addConfirmed("ims");
  const Key second = keyOf(1);
  Key third = keyOf(1);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  const auto token = tokenOf(third);
  takeKeptLines();
  third.reset();
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("ProfileCache: releaseProfile token=" + std::to_string(token),
                          "ProfileCache: ignoring non-persistent or non-pavo created"));
}

TEST_F(ProfileCacheIndicationTest, Modify_ReadFails_NullUnderTheSameToken) {
  const Key key = addConfirmed("ims");
  platform.failNext(0x2B);
  takeKeptLines();
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("1 Modify"), updating, line::notRead));
  EXPECT_THAT(cached(), ElementsAre(entryLine(key, "null")));
  // An entry without a profile has no id by which it could be found.
  platform.clearCalls();
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  indicate(1, WDS_PROFILE_EVENT_DELETE_V01);
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(cached(), ElementsAre(entryLine(key, "null")));
}

TEST_F(ProfileCacheIndicationTest, Others_AnyCode_RefreshTheCache) {
  setModemProfile(5, "net");
  struct Row {
    std::int32_t code;
    const char* event;
  };
  for (const Row& row : {Row{4, "SubscriptionChange"}, Row{5, "ProfileReady"},
                         Row{0, "ProfileReady"}, Row{9, "ProfileReady"}, Row{-1, "ProfileReady"}}) {
    SCOPED_TRACE(row.code);
    takeKeptLines();
    platform.clearCalls();
    indicate(3, row.code);
    EXPECT_THAT(takeKeptLines(),
                ElementsAre(received(std::string("3 ") + row.event), updating, line::listed,
                            line::read, "Refreshed Profiles:", "ProfileId=5,ApnName=net,"));
    EXPECT_THAT(platform.sentIds(), ElementsAre(0x2AU, 0x2BU));
  }
}

TEST_F(ProfileCacheIndicationTest, Refresh_DuringAClientsRefresh_LoadsAndStaysRefused) {
  setModemProfile(5, "net");
  manager.refresh(PDC_REFRESH_STARTED);
  takeKeptLines();
  indicate(0, WDS_PROFILE_EVENT_READY_V01);
  EXPECT_THAT(takeKeptLines(),
              ElementsAre(received("0 ProfileReady"), updating, line::listed, line::read,
                          "Refreshed Profiles:", "ProfileId=5,ApnName=net,"));
  EXPECT_EQ(cached().size(), 1U);
  EXPECT_EQ(add("ims"), nullptr);
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_NE(add("ims"), nullptr);
}

TEST_F(ProfileCacheIndicationTest, Pending_TwoEqualEntries_TheFirstGoes) {
  const Key first = addConfirmed("a");
  const Key second = addConfirmed("b");
  ModifyProfileParams params;
  for (const auto& [key, user] :
       {std::pair(first, "1"), std::pair(second, "2"), std::pair(first, "3")}) {
    params.setUserName(user);
    manager.modifyProfile(params, key);
  }
  EXPECT_THAT(pending(), ElementsAre("  1 Modify", "  2 Modify", "  1 Modify"));
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(pending(), ElementsAre("  2 Modify", "  1 Modify"));
}

TEST_F(ProfileCacheIndicationTest, Pending_ByIdAndEvent_NoOtherEntryGoes) {
  const Key first = add("a");
  const Key second = add("b");
  takeKeptLines();
  indicate(2, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("2 Modify"), confirmed));
  EXPECT_THAT(pending(), ElementsAre("  1 Create", "  1 Modify", "  2 Create"));
  indicate(1, WDS_PROFILE_EVENT_DELETE_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre(received("1 Delete"), updating));
  EXPECT_THAT(pending(), ElementsAre("  1 Create", "  1 Modify", "  2 Create"));
}

// An expected indication may be among the lost ones.
TEST_F(ProfileCacheIndicationTest,
       IndicationsLost_SomeWereExpected_EverythingIsReadAndNoneExpected) {
  const Key key = add("ims");
  ASSERT_THAT(pending(), ElementsAre("  1 Create", "  1 Modify"));
  auto blocked = platform.blockNext(OVIX_WDS_DELETE_PROFILE_REQ_V01);
  Key dropped = add("net");
  std::thread dropper([&] { dropped.reset(); });
  ASSERT_TRUE(blocked.waitUntilEntered());
  for (std::size_t i = 0; i <= OvixWdsProxy::indicationsQueuedMax; ++i) {
    platform.indicateProfileChanged(200, WDS_PROFILE_EVENT_DELETE_V01);
  }
  log->clear();
  blocked.release();
  dropper.join();
  ASSERT_TRUE(waitForLine("Refreshed Profiles:"));
  EXPECT_THAT(pending(), IsEmpty());
  EXPECT_FALSE(manager.getProfile(key).has_value());
  EXPECT_EQ(cached().size(), 1U);
}

}  // namespace
}  // namespace pavo::test
