// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests drop keys.
#include "LogLines.h"
#include "RunningManagerTest.h"

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCacheReleaseTest : public RunningManagerTest {
 protected:
  // Drops the key and returns the lines of the drop alone.
  Lines drop(Key& key) {
    takeKeptLines();
    platform.clearCalls();
    key.reset();
    return takeKeptLines();
  }
};

constexpr const char* ignoring = "ProfileCache: ignoring non-persistent or non-pavo created";

std::string released(unsigned long long token) {
  return "ProfileCache: releaseProfile token=" + std::to_string(token);
}

TEST_F(ProfileCacheReleaseTest, Release_LastKey_ProfileIsDeleted) {
  platform.setNextProfileIndex(9);
  Key key = addConfirmed("ims");
  const auto token = tokenOf(key);
  EXPECT_THAT(drop(key), ElementsAre(released(token), line::deleted, "Released profile 9"));
  const auto sent = platform.sent();
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].msgId, 0x29U);
  EXPECT_THAT(MessageBytes(8).u8(4, 9).differences(MessageBytes::of(sent[0].bytes)), IsEmpty());
  EXPECT_THAT(cached(), IsEmpty());
  EXPECT_THAT(pending(), ElementsAre("  9 Delete"));
}

TEST_F(ProfileCacheReleaseTest, Release_LastKeyModemFails_EntryAndCountStay) {
  for (const bool isRefused : {true, false}) {
    SCOPED_TRACE(isRefused);
    Key key = addConfirmed("ims");
    const int index = key->getProfileId();
    const auto token = tokenOf(key);
    const Lines before = cached();
    if (isRefused) {
      platform.rejectNext(0x29);
    } else {
      platform.failNext(0x29);
    }
    EXPECT_THAT(drop(key), ElementsAre(released(token), line::notDeleted,
                                       "Error: ProfileCache: failed to release profile"));
    EXPECT_EQ(cached(), before);
    EXPECT_THAT(pending(), IsEmpty());
    // The count stayed at one: the next key makes two.
    Key again = keyOf(index);
    EXPECT_THAT(drop(again), ElementsAre(released(token)));
    again = keyOf(index);
    Key second = keyOf(index);
    EXPECT_THAT(drop(again), ElementsAre(released(token)));
    EXPECT_THAT(drop(second), ElementsAre(released(token)));
    EXPECT_TRUE(pending().empty());
    manager.refresh(PDC_REFRESH_COMPLETED);
    platform.eraseProfile(static_cast<std::uint8_t>(index));
  }
}

TEST_F(ProfileCacheReleaseTest, Release_ThreeKeys_OnlyTheLastDeletes) {
  Key added = addConfirmed("ims");
  Key first = keyOf(1);
  Key second = keyOf(1);
  const auto token = tokenOf(added);
  EXPECT_EQ(tokenOf(first), token);
  EXPECT_EQ(tokenOf(second), token);
  EXPECT_THAT(drop(first), ElementsAre(released(token)));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(drop(added), ElementsAre(released(token)));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(drop(second), ElementsAre(released(token), line::deleted, "Released profile 1"));
  EXPECT_THAT(platform.sentIds(), ElementsAre(0x29U));
}

TEST_F(ProfileCacheReleaseTest, Release_CopiesOfAHandle_OneRelease) {
  Key key = addConfirmed("ims");
  Key copy = key;
  EXPECT_THAT(drop(key), IsEmpty());
  const auto token = tokenOf(copy);
  EXPECT_THAT(drop(copy), ElementsAre(released(token), line::deleted, "Released profile 1"));
}

TEST_F(ProfileCacheReleaseTest, Release_PersistentProfile_IsIgnoredAndKeepsItsCount) {
  Key key = addConfirmed("ims", /*isPersistent=*/true);
  const auto token = tokenOf(key);
  const Lines before = cached();
  EXPECT_THAT(drop(key), ElementsAre(released(token), ignoring));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_EQ(cached(), before);
  EXPECT_THAT(pending(), IsEmpty());
  // The count is still one, so a new key makes it two and its release only counts down.
  Key found = keyOf(1);
  EXPECT_THAT(drop(found), ElementsAre(released(token)));
  found = keyOf(1);
  EXPECT_THAT(drop(found), ElementsAre(released(token)));
}

// A profile that was read from the modem is not the library's own, whatever its name and
// persistence.
TEST_F(ProfileCacheReleaseTest, Release_ReadFromTheModem_IsIgnored) {
  for (const bool isPersistent : {false, true}) {
    SCOPED_TRACE(isPersistent);
    setModemProfile(5, emptySettings()
                           .u8(8, 1)
                           .text(9, "pavo_profile")
                           .u8(2188, 1)
                           .u8(2189, isPersistent ? 1 : 0));
    manager.refresh(PDC_REFRESH_COMPLETED);
    Key key = keyOf(5);
    const auto token = tokenOf(key);
    EXPECT_THAT(drop(key), ElementsAre(released(token), ignoring));
    EXPECT_THAT(platform.sent(), IsEmpty());
    EXPECT_EQ(cached().size(), 1U);
  }
}

TEST_F(ProfileCacheReleaseTest, Release_AddedThenReadAgain_IsIgnored) {
  Key key = addConfirmed("ims");
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  const auto token = tokenOf(key);
  EXPECT_THAT(drop(key), ElementsAre(released(token), ignoring));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_EQ(cached().size(), 1U);
}

TEST_F(ProfileCacheReleaseTest, Release_UnknownToken_AnError) {
  Key key = addConfirmed("ims");
  const auto token = tokenOf(key);
  ASSERT_TRUE(manager.deleteProfile(key));
  EXPECT_THAT(drop(key), ElementsAre(released(token), line::unknown));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheReleaseTest, Release_NullEntry_NothingMore) {
  Key key = addConfirmed("ims");
  platform.rejectNext(0x2B);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  const auto token = tokenOf(key);
  EXPECT_THAT(drop(key), ElementsAre(released(token)));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(cached(), ElementsAre("  " + std::to_string(token) + ": null"));
}

TEST_F(ProfileCacheReleaseTest, Release_DuringARefresh_IsRefused) {
  Key key = addConfirmed("ims");
  manager.refresh(PDC_REFRESH_STARTED);
  EXPECT_THAT(drop(key), IsEmpty());
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_EQ(platform.profileCount(), 1U);
}

}  // namespace
}  // namespace pavo::test
