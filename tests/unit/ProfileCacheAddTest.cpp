// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests create profiles through the cache.
#include "RunningManagerTest.h"

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCacheAddTest : public RunningManagerTest {};

constexpr const char* created = "OvixWdsProxy OVIX_WDS_CREATE_PROFILE_REQ_V01 request successful!";
constexpr const char* notCreated = "Error: Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message";

TEST_F(ProfileCacheAddTest, Add_ModemAccepts_CachedPendingAndLogged) {
  platform.setNextProfileIndex(7);
  const Key key = add("IMS");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->getProfileId(), 7);
  const std::string profile = "ProfileId=7,ApnName=ims,ProfileName=pavo_profile,";
  EXPECT_THAT(
      takeKeptLines(),
      ElementsAre("Manager::addProfile > Add  persist=0: ApnName=IMS,IsIAProfile=0,", created,
                  "Added: " + profile, "Manager::addProfile < Add Success " + key->dump()));
  EXPECT_THAT(cached(), ElementsAre(entryLine(key, profile)));
  EXPECT_THAT(pending(), ElementsAre("  7 Create", "  7 Modify"));
  EXPECT_THAT(platform.sentIds(), ElementsAre(0x27U));
}

TEST_F(ProfileCacheAddTest, Add_NameAndPersistence_OnTheWire) {
  for (const bool isPersistent : {false, true}) {
    for (const bool isIAProfile : {false, true}) {
      SCOPED_TRACE(testing::Message() << isPersistent << " " << isIAProfile);
      platform.clearCalls();
      const Key key = manager.addProfile(AddProfileParams(isPersistent, isIAProfile));
      const auto sent = platform.sent(0x27);
      ASSERT_EQ(sent.size(), 1U);
      EXPECT_THAT(MessageBytes(createRequestSize)
                      .u8(4, 1)
                      .text(5, isIAProfile ? "pavo_profile_ia" : "pavo_profile")
                      .u8(2180, 1)
                      .u8(2181, isPersistent ? 1 : 0)
                      .differences(MessageBytes::of(sent[0].bytes)),
                  IsEmpty());
    }
  }
}

TEST_F(ProfileCacheAddTest, Add_ModemFails_NothingCachedAndTheTokenIsGone) {
  const Key first = add("first");
  const Lines cachedBefore = cached();
  const Lines pendingBefore = pending();
  takeKeptLines();
  platform.rejectNext(0x27);
  EXPECT_EQ(add("second"), nullptr);
  // The key shows the failure, not the status.
  const auto refused =
      ElementsAre("Manager::addProfile > Add  persist=0: ApnName=second,IsIAProfile=0,", notCreated,
                  "Manager::addProfile < Add Success ");
  EXPECT_THAT(takeKeptLines(), refused);
  platform.failNext(0x27);
  EXPECT_EQ(add("second"), nullptr);
  EXPECT_THAT(takeKeptLines(), refused);
  EXPECT_EQ(cached(), cachedBefore);
  EXPECT_EQ(pending(), pendingBefore);
  const Key third = add("third");
  ASSERT_NE(third, nullptr);
  EXPECT_EQ(tokenOf(third), tokenOf(first) + 3);
}

TEST_F(ProfileCacheAddTest, Add_OwnIndications_ConfirmedOnceEachThenTheModemIsRead) {
  const Key key = add("ims");
  takeKeptLines();
  platform.clearCalls();
  indicate(1, WDS_PROFILE_EVENT_CREATE_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre("ProfileCache: onIndication < 1 Create",
                                           "ProfileCache: pending transaction confirmed"));
  EXPECT_THAT(pending(), ElementsAre("  1 Modify"));
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(takeKeptLines(), ElementsAre("ProfileCache: onIndication < 1 Modify",
                                           "ProfileCache: pending transaction confirmed"));
  EXPECT_THAT(pending(), IsEmpty());
  EXPECT_THAT(platform.sent(), IsEmpty());
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("ProfileCache: onIndication < 1 Modify",
                          "ProfileCache: updating cache due to indication!",
                          "OvixWdsProxy OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 request "
                          "successful!"));
  EXPECT_THAT(platform.sentIds(), ElementsAre(0x2BU));
}

// If the modem does not indicate a change, the pending change absorbs a later indication of another
// client.
TEST_F(ProfileCacheAddTest, Add_SecondIndicationNeverCame_ALaterOneIsAbsorbed) {
  const Key key = add("ims");
  indicate(1, WDS_PROFILE_EVENT_CREATE_V01);
  setModemProfile(1, "changed");
  platform.clearCalls();
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_EQ(manager.getProfile(key)->getApnName(), "ims");
}

TEST_F(ProfileCacheAddTest, Add_TwoProfiles_TokensFollowEachOther) {
  const Key first = add("a");
  const Key second = add("b");
  EXPECT_EQ(tokenOf(second), tokenOf(first) + 1);
  EXPECT_EQ(second->getProfileId(), 2);
  EXPECT_THAT(pending(), ElementsAre("  1 Create", "  1 Modify", "  2 Create", "  2 Modify"));
}

}  // namespace
}  // namespace pavo::test
