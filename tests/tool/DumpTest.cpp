// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "session/Dump.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

std::string logLine(const std::string& message, int millisecond = 0) {
  return "    2026-11-21 03:00:00." + std::to_string(100 + millisecond) + " [PAVO]" + message;
}

TEST(Dump, Parse_Sections_AreTakenApart) {
  const Dump dump =
      Dump::parse({"Cache:", "  3: ProfileId=1,ApnName=Logs:,", "Pending:", "  1 Create", "",
                   "Logs:", logLine("Manager::init(1)")});
  EXPECT_THAT(dump.cache, ElementsAre("  3: ProfileId=1,ApnName=Logs:,"));
  EXPECT_THAT(dump.pending, ElementsAre("  1 Create"));
  EXPECT_THAT(dump.log, ElementsAre(logLine("Manager::init(1)")));
}

TEST(Dump, Parse_BeforeInit_HasOnlyTheLog) {
  const Dump dump = Dump::parse({"", "Logs:", logLine("Manager not initialized!")});
  EXPECT_THAT(dump.cache, IsEmpty());
  EXPECT_EQ(dump.log.size(), 1U);
}

TEST(Dump, MessageOf_TextThatLooksLikeTheTag_IsKept) {
  EXPECT_EQ(messageOf(logLine("ApnName=a [PAVO]b,")), "ApnName=a [PAVO]b,");
}

TEST(Dump, MessagesSince_LastStart_Counts) {
  const Dump dump = Dump::parse({"Logs:", logLine("Manager::filter > a"), logLine("old"),
                                 logLine("Manager::filter > b"), logLine("new")});
  EXPECT_THAT(dump.messagesSince("Manager::filter > "), Optional(ElementsAre("new")));
}

TEST(Dump, MessagesSince_StartThatIsGone_IsNothing) {
  const Dump dump = Dump::parse({"Logs:", logLine("UserName=Manager::filter > ,")});
  EXPECT_EQ(dump.messagesSince("Manager::filter > "), std::nullopt);
}

TEST(Dump, LastLine_SameMessageLater_IsAnother) {
  Dump dump = Dump::parse({"Logs:", logLine("Refreshed Profiles:", 1)});
  const std::string first(dump.lastLine(message::refreshed));
  dump.log.push_back(logLine("Refreshed Profiles:", 2));
  EXPECT_NE(dump.lastLine(message::refreshed), first);
  EXPECT_EQ(dump.lastLine("no such message"), "");
}

TEST(Dump, HasLostList_LatestAttempt_Decides) {
  Dump dump;
  EXPECT_FALSE(dump.hasLostList());
  dump.log.push_back(logLine(std::string(message::listFailed)));
  EXPECT_TRUE(dump.hasLostList());
  dump.log.push_back(logLine(std::string(message::listRead)));
  EXPECT_FALSE(dump.hasLostList());
}

struct Story {
  std::vector<std::string_view> messages;
  std::optional<bool> hasModemsProfiles;
};

TEST(Dump, HasModemsProfiles_LatestRefresh_Decides) {
  using namespace message;
  for (const Story& story : std::vector<Story>{
           {{waitingForService}, false},
           {{waitingForService, refreshed}, false},
           {{waitingForService, refreshed, listRead}, false},
           {{waitingForService, refreshed, listRead, "settings", refreshed, "profile"}, true},
           {{listRead, refreshed, waitingForService}, false},
           {{listRead, refreshed, listFailed, refreshed}, false},
           {{listRead, refreshed, refreshed}, false},
           {{"settings", refreshed, "profile"}, std::nullopt},
           {{"profile", "profile"}, std::nullopt},
       }) {
    Dump dump;
    std::string printed;
    for (const auto text : story.messages) {
      dump.log.push_back(logLine(std::string(text)));
      printed += std::string(text) + "; ";
    }
    EXPECT_EQ(dump.hasModemsProfiles(), story.hasModemsProfiles) << printed;
  }
}

}  // namespace
}  // namespace pavoctl
