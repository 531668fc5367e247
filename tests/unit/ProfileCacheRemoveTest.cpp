// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests delete profiles through the cache.
#include "LogLines.h"
#include "RunningManagerTest.h"

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCacheRemoveTest : public RunningManagerTest {};

std::string deleting(const Key& key) { return "Manager::deleteProfile > Delete " + key->dump(); }

TEST_F(ProfileCacheRemoveTest, Remove_ModemAccepts_GonePendingAndLogged) {
  platform.setNextProfileIndex(200);
  const Key key = addConfirmed("ims");
  takeKeptLines();
  platform.clearCalls();
  EXPECT_TRUE(manager.deleteProfile(key));
  EXPECT_THAT(takeKeptLines(),
              ElementsAre(deleting(key), line::deleted, "Manager::deleteProfile < Delete Success"));
  EXPECT_THAT(cached(), IsEmpty());
  EXPECT_THAT(pending(), ElementsAre("  200 Delete"));
  const auto sent = platform.sent();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].msgId, 0x29U);
  EXPECT_THAT(MessageBytes(8).u8(4, 200).differences(MessageBytes::of(sent[0].bytes)), IsEmpty());
  indicate(200, WDS_PROFILE_EVENT_DELETE_V01);
  EXPECT_THAT(pending(), IsEmpty());
}

TEST_F(ProfileCacheRemoveTest, Remove_ModemFails_FalseAndTheEntryStays) {
  const Key key = addConfirmed("ims");
  const Lines before = cached();
  for (const bool isRefused : {true, false}) {
    SCOPED_TRACE(isRefused);
    takeKeptLines();
    if (isRefused) {
      platform.rejectNext(0x29);
    } else {
      platform.failNext(0x29);
    }
    EXPECT_FALSE(manager.deleteProfile(key));
    EXPECT_THAT(takeKeptLines(), ElementsAre(deleting(key), line::notDeleted,
                                             "Error: ProfileCache: Failed to remove profile",
                                             "Manager::deleteProfile < Delete Failure"));
    EXPECT_EQ(cached(), before);
    EXPECT_THAT(pending(), IsEmpty());
  }
}

TEST_F(ProfileCacheRemoveTest, Remove_OtherKeysOfTheToken_AreUnknownAfterwards) {
  const Key key = addConfirmed("ims");
  const Key other = keyOf(1);
  EXPECT_TRUE(manager.deleteProfile(key));
  takeKeptLines();
  platform.clearCalls();
  EXPECT_FALSE(manager.deleteProfile(other));
  EXPECT_THAT(takeKeptLines(), ElementsAre(deleting(other), line::unknown,
                                           "Manager::deleteProfile < Delete Failure"));
  EXPECT_FALSE(manager.getProfile(other).has_value());
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheRemoveTest, Remove_EmptyKey_FalseAndOnlyTheTraces) {
  EXPECT_FALSE(manager.deleteProfile(nullptr));
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::deleteProfile > Delete ",
                                           "Manager::deleteProfile < Delete Failure"));
}

// Correct use can lead here: a modify indication whose read fails, then a delete.
TEST_F(ProfileCacheRemoveTest, Remove_EntryCouldNotBeRead_UnknownAndNothingSent) {
  const Key key = addConfirmed("ims");
  platform.rejectNext(0x2B);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  ASSERT_THAT(cached(), ElementsAre(entryLine(key, "null")));
  takeKeptLines();
  platform.clearCalls();
  EXPECT_FALSE(manager.deleteProfile(key));
  EXPECT_THAT(takeKeptLines(),
              ElementsAre(deleting(key), line::unknown, "Manager::deleteProfile < Delete Failure"));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(cached(), ElementsAre(entryLine(key, "null")));
}

}  // namespace
}  // namespace pavo::test
