// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests change profiles through the cache.
#include "RunningManagerTest.h"

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCacheModifyTest : public RunningManagerTest {
 protected:
  static ModifyProfileParams password(const std::string& text) {
    ModifyProfileParams params;
    params.setPassword(text);
    return params;
  }
};

constexpr const char* modified =
    "OvixWdsProxy OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 request successful!";
constexpr const char* notModified =
    "Error: Unable send OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 message";

TEST_F(ProfileCacheModifyTest, Modify_ModemAccepts_AppliedPendingAndLogged) {
  platform.setNextProfileIndex(44);
  const Key key = addConfirmed("ims");
  takeKeptLines();
  platform.clearCalls();
  EXPECT_TRUE(manager.modifyProfile(password("x"), key));
  EXPECT_THAT(
      takeKeptLines(),
      ElementsAre("Manager::modifyProfile > Modify " + key->dump() + " Password=x,", modified,
                  "Diff: ProfileId=-1,Password=x,", "Manager::modifyProfile < Modify Success"));
  EXPECT_THAT(pending(), ElementsAre("  44 Modify"));
  const auto sent = platform.sent();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].msgId, 0x28U);
  EXPECT_THAT(MessageBytes(modifyRequestSize)
                  .u8(4, 44)
                  .u8(533, 1)
                  .text(534, "x")
                  .differences(MessageBytes::of(sent[0].bytes)),
              IsEmpty());
  // The cache answers without a request to the modem.
  EXPECT_EQ(manager.getProfile(key)->getPassword(), "x");
  EXPECT_EQ(manager.getProfile(key)->getApnName(), "ims");
  EXPECT_EQ(platform.sent().size(), 1U);
  indicate(44, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(pending(), IsEmpty());
  EXPECT_EQ(platform.sent().size(), 1U);
}

TEST_F(ProfileCacheModifyTest, Modify_ModemAccepts_DifferenceDiesAfterItsLine) {
  const Key key = addConfirmed("ims");
  log->clear();
  ASSERT_TRUE(manager.modifyProfile(password("x"), key));
  Lines order;
  for (const std::string& line : log->messages()) {
    if (line == modified || line == "Diff: ProfileId=-1,Password=x," || line == "~ModemProfile()") {
      order.push_back(line);
    }
  }
  EXPECT_THAT(order, ElementsAre(modified, "Diff: ProfileId=-1,Password=x,", "~ModemProfile()"));
}

TEST_F(ProfileCacheModifyTest, Modify_ModemFails_TrueAndNothingChanged) {
  const Key key = addConfirmed("ims");
  const Lines before = cached();
  for (const bool isRefused : {true, false}) {
    SCOPED_TRACE(isRefused);
    takeKeptLines();
    if (isRefused) {
      platform.rejectNext(0x28);
    } else {
      platform.failNext(0x28);
    }
    EXPECT_TRUE(manager.modifyProfile(password("x"), key));
    EXPECT_THAT(takeKeptLines(),
                ElementsAre("Manager::modifyProfile > Modify " + key->dump() + " Password=x,",
                            notModified, "Error: ProfileCache: failed to modify modem profile",
                            "Manager::modifyProfile < Modify Success"));
    EXPECT_EQ(cached(), before);
    EXPECT_THAT(pending(), IsEmpty());
  }
}

TEST_F(ProfileCacheModifyTest, Modify_NothingDiffers_TrueAndNothingSent) {
  const Key key = addConfirmed("ims");
  takeKeptLines();
  platform.clearCalls();
  ModifyProfileParams params;
  params.setApnName("IMS");
  EXPECT_TRUE(manager.modifyProfile(params, key));
  EXPECT_THAT(
      takeKeptLines(),
      ElementsAre("Manager::modifyProfile > Modify " + key->dump() + " ApnName=IMS,",
                  "ProfileCache: profile is unchanged", "Manager::modifyProfile < Modify Success"));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(pending(), IsEmpty());
}

TEST_F(ProfileCacheModifyTest, Modify_UnknownToken_FalseAndNoError) {
  const Key key = addConfirmed("ims");
  manager.refresh(PDC_REFRESH_COMPLETED);
  takeKeptLines();
  platform.clearCalls();
  EXPECT_FALSE(manager.modifyProfile(password("x"), key));
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("Manager::modifyProfile > Modify " + key->dump() + " Password=x,",
                          "ProfileCache: token is not present or expired",
                          "Manager::modifyProfile < Modify Failure"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheModifyTest, Modify_EmptyKey_FalseAndOnlyTheTraces) {
  EXPECT_FALSE(manager.modifyProfile(password("x"), nullptr));
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::modifyProfile > Modify  Password=x,",
                                           "Manager::modifyProfile < Modify Failure"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheModifyTest, Modify_EntryCouldNotBeRead_TrueAndOnlyTheTraces) {
  const Key key = addConfirmed("ims");
  platform.rejectNext(0x2B);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  ASSERT_THAT(cached(), ElementsAre(entryLine(key, "null")));
  takeKeptLines();
  platform.clearCalls();
  EXPECT_TRUE(manager.modifyProfile(password("x"), key));
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("Manager::modifyProfile > Modify " + key->dump() + " Password=x,",
                          "Manager::modifyProfile < Modify Success"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheModifyTest, Modify_TwiceBeforeIndications_EachRemovesOne) {
  const Key key = addConfirmed("ims");
  ASSERT_TRUE(manager.modifyProfile(password("x"), key));
  ASSERT_TRUE(manager.modifyProfile(password("y"), key));
  EXPECT_THAT(pending(), ElementsAre("  1 Modify", "  1 Modify"));
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(pending(), ElementsAre("  1 Modify"));
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  EXPECT_THAT(pending(), IsEmpty());
}

TEST_F(ProfileCacheModifyTest, Modify_ApnName_ProfileKeepsItsNameAndPersistence) {
  const Key key = addConfirmed("ims", /*isPersistent=*/true);
  ModifyProfileParams params;
  params.setApnName("NEW");
  ASSERT_TRUE(manager.modifyProfile(params, key));
  EXPECT_THAT(cached(),
              ElementsAre(entryLine(key, "ProfileId=1,ApnName=new,ProfileName=pavo_profile,")));
  EXPECT_TRUE(manager.getProfile(key)->getIsPavoProfile());
}

}  // namespace
}  // namespace pavo::test
