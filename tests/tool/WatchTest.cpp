// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Tool.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <sstream>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

class WatchTest : public ToolTest {
 protected:
  std::vector<Json> events(const ChildProcess& watcher) {
    std::vector<Json> all;
    std::istringstream lines(watcher.output());
    for (std::string line; std::getline(lines, line) && !lines.eof();) {
      all.push_back(Json::parse(line));
    }
    return all;
  }
  std::vector<Json> events(const ChildProcess& watcher, const std::string& name) {
    std::vector<Json> some = events(watcher);
    std::erase_if(some, [&](const Json& event) { return event["event"] != name; });
    return some;
  }
  bool waitForEvents(const ChildProcess& watcher, const std::string& name, std::size_t count = 1) {
    return waitUntil([&] { return events(watcher, name).size() >= count; });
  }
};

TEST_F(WatchTest, Watch_ChangesByAnotherClient_AreEventsWithBothSides) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching")) << watcher->errors();
  EXPECT_EQ(events(*watcher)[0]["profiles"].size(), 2U);

  modem.control("create", {{"apn", "third"}});
  ASSERT_TRUE(waitForEvents(*watcher, "created")) << watcher->output();
  EXPECT_EQ(events(*watcher).back()["after"]["apnName"], "third");

  modem.control("modify", {{"index", 1}, {"password", "hush2"}, {"apn", "other"}});
  ASSERT_TRUE(waitForEvents(*watcher, "changed")) << watcher->output();
  const Json changed = events(*watcher).back();
  EXPECT_EQ(changed["id"], 1);
  EXPECT_EQ(changed["changes"]["apnName"], Json::parse(R"({"before":"internet","after":"other"})"));
  EXPECT_EQ(changed["changes"]["password"],
            Json::parse(R"({"before":"********","after":"********"})"));

  modem.control("delete", {{"index", 2}});
  ASSERT_TRUE(waitForEvents(*watcher, "deleted")) << watcher->output();
  EXPECT_EQ(events(*watcher).back()["before"]["apnName"], "ims");

  watcher->sendSignal(SIGTERM);
  const ToolResult result = finish(*watcher);
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(events(*watcher).size(), 4U) << result;
  EXPECT_THAT(result.output, Not(HasSubstr("hush")));
  EXPECT_EQ(result.errors, "");
}

TEST_F(WatchTest, Watch_ProfileThatChangesAgain_IsSeenEachTime) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching"));
  for (std::size_t i = 1; i <= 3; ++i) {
    modem.control("modify", {{"index", 1}, {"apn", "name" + std::to_string(i)}});
    ASSERT_TRUE(waitForEvents(*watcher, "changed", i)) << watcher->output();
    EXPECT_EQ(events(*watcher).back()["after"]["apnName"], "name" + std::to_string(i));
  }
}

TEST_F(WatchTest, Watch_PowerCycle_IsSurvived) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching"));
  modem.control("create", {{"apn", "volatile"}, {"persistent", false}});
  ASSERT_TRUE(waitForEvents(*watcher, "created"));
  modem.control("power-cycle");
  ASSERT_TRUE(waitForEvents(*watcher, "deleted")) << watcher->output();
  std::vector<std::string> names;
  for (const auto& event : events(*watcher)) {
    names.push_back(event["event"]);
  }
  EXPECT_THAT(names, ElementsAre("watching", "created", "modem-lost", "refreshed", "deleted"));
  modem.control("modify", {{"index", 1}, {"apn", "after"}});
  EXPECT_TRUE(waitForEvents(*watcher, "changed")) << watcher->output();
}

TEST_F(WatchTest, Watch_ModemKilledAndStarted_IsSurvived) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching"));
  modem.kill();
  ASSERT_TRUE(waitForEvents(*watcher, "modem-lost")) << watcher->output();
  modem.start();
  ASSERT_TRUE(waitForEvents(*watcher, "refreshed")) << watcher->output();
  modem.control("delete", {{"index", 1}});
  ASSERT_TRUE(waitForEvents(*watcher, "deleted")) << watcher->output();
  EXPECT_EQ(events(*watcher).size(), 4U) << watcher->output();
}

TEST_F(WatchTest, Watch_ListRefusedAfterAPowerCycle_IsReadAgain) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching"));
  modem.control("fail", {{"message", "profile-list"}, {"error", 9}});
  modem.control("power-cycle");
  ASSERT_TRUE(waitForEvents(*watcher, "refreshed")) << watcher->output();
  modem.control("modify", {{"index", 1}, {"apn", "after"}});
  ASSERT_TRUE(waitForEvents(*watcher, "changed")) << watcher->output();
  EXPECT_TRUE(events(*watcher, "deleted").empty()) << watcher->output();
}

TEST_F(WatchTest, Watch_LastProfileDeletedAfterALongTime_IsSeen) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching"));
  modem.control("delete", {{"index", 2}});
  ASSERT_TRUE(waitForEvents(*watcher, "deleted"));
  // These log lines push everything about the first reading out of the library's log.
  for (int i = 0; i < 100; ++i) {
    modem.control("modify", {{"index", 1}, {"apn", "name" + std::to_string(i)}});
  }
  ASSERT_TRUE(watcher->waitForOutput("name99")) << watcher->output();
  modem.control("delete", {{"index", 1}});
  EXPECT_TRUE(waitForEvents(*watcher, "deleted", 2)) << watcher->output();
}

TEST_F(WatchTest, Watch_ProfileThatCannotBeRead_IsNotSaidToBeDeleted) {
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(waitForEvents(*watcher, "watching"));
  modem.control("fail", {{"message", "profile-settings"}, {"error", 9}, {"count", 2}});
  modem.control("modify", {{"index", 1}, {"apn", "other"}});
  ASSERT_TRUE(waitForEvents(*watcher, "unreadable")) << watcher->output();
  EXPECT_EQ(events(*watcher, "unreadable").back()["count"], 1);
  // The watcher tries again, and then shows the change with both sides.
  ASSERT_TRUE(waitForEvents(*watcher, "changed")) << watcher->output();
  EXPECT_EQ(events(*watcher).back()["changes"]["apnName"],
            Json::parse(R"({"before":"internet","after":"other"})"));
  EXPECT_TRUE(events(*watcher, "deleted").empty()) << watcher->output();
  EXPECT_TRUE(events(*watcher, "created").empty()) << watcher->output();
}

TEST_F(WatchTest, Watch_EveryEvent_HasItsTime) {
  const auto json = start({"watch", "--json"});
  const auto text = start({"watch"});
  ASSERT_TRUE(json->waitForOutput("watching"));
  ASSERT_TRUE(text->waitForOutput("watching"));
  modem.control("create", {{"apn", "new"}, {"user", "u"}});
  modem.control("delete", {{"index", 2}});
  ASSERT_TRUE(waitForEvents(*json, "deleted")) << json->output();
  ASSERT_TRUE(text->waitForOutput("profile 2 deleted: ")) << text->output();
  modem.control("power-cycle");
  ASSERT_TRUE(waitForEvents(*json, "refreshed")) << json->output();
  ASSERT_TRUE(text->waitForOutput("read from the modem again")) << text->output();
  const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}Z";
  for (const Json& event : events(*json)) {
    EXPECT_THAT(event["time"].get<std::string>(), testing::MatchesRegex(time));
  }
  std::istringstream lines(text->output());
  for (std::string line; std::getline(lines, line);) {
    EXPECT_THAT(line, testing::MatchesRegex(time + " .+"));
  }
  EXPECT_THAT(text->output(),
              HasSubstr(" profile 3 created: apnName: (absent) -> new, userName: (absent) -> u\n"));
  EXPECT_THAT(text->output(), HasSubstr(" profile 2 deleted: apnName: ims -> (absent), "));
}

// The table is so long that reading it pushes all other lines out of the library's log.
TEST(WatchLongTable, Watch_PowerCycle_IsSurvived) {
  ModemProcessOptions options;
  options.profiles["profiles"] = Json::array();
  for (int i = 1; i <= 250; ++i) {
    options.profiles["profiles"].push_back({{"index", i}, {"apn", "n" + std::to_string(i)}});
  }
  options.arguments = {"--capacity", "255"};
  ModemProcess modem(options);
  const auto watcher = startTool(modem.socketPath(), {"watch", "--timeout", "60"});
  ASSERT_TRUE(watcher->waitForOutput("watching 250 profiles\n")) << watcher->errors();
  modem.control("power-cycle");
  ASSERT_TRUE(watcher->waitForOutput("read from the modem again")) << watcher->output();
  modem.control("modify", {{"index", 250}, {"apn", "after"}});
  ASSERT_TRUE(watcher->waitForOutput("profile 250 changed: apnName: n250 -> after\n"));
  EXPECT_THAT(watcher->output(), Not(HasSubstr("deleted")));
  EXPECT_EQ(runTool(modem.socketPath(), {"refresh", "--timeout", "60"}).output,
            "read 250 profiles\n");
  EXPECT_EQ(runTool(modem.socketPath(), {"modify", "200", "--apn", "z", "--timeout", "60"}).exit,
            done);
}

TEST_F(WatchTest, Watch_Text_IsOneLineForEachChange) {
  const auto watcher = start({"watch"});
  ASSERT_TRUE(watcher->waitForOutput("watching 2 profiles\n"));
  modem.control("modify", {{"index", 2}, {"apn", "ims2"}});
  EXPECT_TRUE(watcher->waitForOutput(" profile 2 changed: apnName: ims -> ims2\n"))
      << watcher->output();
  watcher->sendSignal(SIGINT);
  EXPECT_EQ(finish(*watcher).exit, done);
}

}  // namespace
}  // namespace pavo::test
