// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests read every profile from the modem again.
#include "LogLines.h"
#include "RunningManagerTest.h"

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class ProfileCacheRefreshTest : public RunningManagerTest {};

constexpr const char* refreshing = "Manager::refresh > Refresh ";
constexpr const char* left = "Manager::refresh < Refresh Success";

TEST_F(ProfileCacheRefreshTest, Refresh_EmptyModem_OnlyTheHeading) {
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_THAT(takeKeptLines(), ElementsAre(refreshing, line::listed, "Refreshed Profiles:", left));
  EXPECT_THAT(platform.sentIds(), ElementsAre(0x2AU));
}

TEST_F(ProfileCacheRefreshTest, Refresh_SeveralProfiles_ATokenEachInTheModemsOrder) {
  const Key before = addConfirmed("ims");
  platform.eraseProfile(1);
  for (const int index : {3, 4, 250}) {
    setModemProfile(static_cast<std::uint8_t>(index), "apn");
  }
  takeKeptLines();
  platform.clearCalls();
  manager.refresh(PDC_REFRESH_COMPLETED);
  Lines lines = takeKeptLines();
  ASSERT_EQ(lines.size(), 10U);
  EXPECT_THAT(Lines(lines.begin(), lines.begin() + 6),
              ElementsAre(refreshing, line::listed, line::read, line::read, line::read,
                          "Refreshed Profiles:"));
  // The lines come in the map's order, which is unspecified.
  EXPECT_THAT(Lines(lines.begin() + 6, lines.begin() + 9),
              UnorderedElementsAre("ProfileId=3,ApnName=apn,", "ProfileId=4,ApnName=apn,",
                                   "ProfileId=250,ApnName=apn,"));
  EXPECT_EQ(lines.back(), left);
  EXPECT_EQ(tokenOf(keyOf(3)), tokenOf(before) + 1);
  EXPECT_EQ(tokenOf(keyOf(4)), tokenOf(before) + 2);
  EXPECT_EQ(tokenOf(keyOf(250)), tokenOf(before) + 3);
}

TEST_F(ProfileCacheRefreshTest, Refresh_OneReadFails_ANullEntryInItsPlace) {
  const Key before = addConfirmed("ims");
  platform.eraseProfile(1);
  setModemProfile(3, "a");
  setModemProfile(4, "b");
  platform.rejectNext(0x2B);
  takeKeptLines();
  manager.refresh(PDC_REFRESH_COMPLETED);
  const Lines lines = takeKeptLines();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_THAT(
      Lines(lines.begin(), lines.begin() + 5),
      ElementsAre(refreshing, line::listed, line::notRead, line::read, "Refreshed Profiles:"));
  EXPECT_THAT(Lines(lines.begin() + 5, lines.begin() + 7),
              UnorderedElementsAre("null", "ProfileId=4,ApnName=b,"));
  EXPECT_THAT(cached(), UnorderedElementsAre("  " + std::to_string(tokenOf(before) + 1) + ": null",
                                             entryLine(keyOf(4), "ProfileId=4,ApnName=b,")));
}

TEST_F(ProfileCacheRefreshTest, Refresh_ListFails_TheCacheIsEmpty) {
  const Key key = addConfirmed("ims");
  platform.rejectNext(0x2A);
  takeKeptLines();
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_THAT(takeKeptLines(),
              ElementsAre(refreshing, line::notListed, "Refreshed Profiles:", left));
  EXPECT_THAT(cached(), IsEmpty());
}

TEST_F(ProfileCacheRefreshTest, Refresh_OldKeys_AreUnknown) {
  Key key = addConfirmed("ims");
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_EQ(cached().size(), 1U);
  EXPECT_FALSE(manager.getProfile(key).has_value());
  EXPECT_FALSE(manager.deleteProfile(key));
  EXPECT_FALSE(manager.match(FilterProfileParams(), key));
  EXPECT_EQ(lineCount("ProfileCache: token is not present or expired"), 3U);
  const auto token = tokenOf(key);
  takeKeptLines();
  key.reset();
  EXPECT_THAT(
      takeKeptLines(),
      ElementsAre("ProfileCache: releaseProfile token=" + std::to_string(token), line::unknown));
  EXPECT_EQ(cached().size(), 1U);
}

TEST_F(ProfileCacheRefreshTest, Refresh_Pending_StaysAsItIs) {
  const Key key = add("ims");
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_THAT(pending(), ElementsAre("  1 Create", "  1 Modify"));
}

TEST_F(ProfileCacheRefreshTest, Refresh_Listeners_RunBeforeTheModemIsAsked) {
  const Key key = addConfirmed("ims");
  std::size_t sentBefore = 99;
  platform.clearCalls();
  key->registerExpirationListener([&] { sentBefore = platform.sent().size(); });
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_EQ(sentBefore, 0U);
}

TEST_F(ProfileCacheRefreshTest, Refresh_Phases_LogWhatWasAskedFor) {
  struct Row {
    int status;
    const char* line;
  };
  for (const Row& row : {Row{0, "PAVO refresh started"}, Row{1, "PAVO refresh completed"},
                         Row{2, "PAVO refresh completed"}, Row{255, "PAVO refresh completed"}}) {
    SCOPED_TRACE(row.status);
    log->clear();
    manager.refresh(static_cast<PDCRefreshStatus>(row.status));
    Lines mine;
    for (const CapturedLine& line : log->lines()) {
      if (line.message == left || line.level == LogLevel::Info) {
        mine.push_back(line.message);
      }
    }
    EXPECT_THAT(mine, ElementsAre("Handling Refresh ", left, row.line));
  }
}

}  // namespace
}  // namespace pavo::test
