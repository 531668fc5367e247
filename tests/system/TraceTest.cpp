// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This test records a session of the library and serves it again. The library must see both alike.
#include "ChildProcess.h"
#include "FaultEffects.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::HasSubstr;

using Words = std::vector<std::string>;

class TraceTest : public testing::Test {
 protected:
  // Returns the faults of the modem in the session.
  static std::vector<json> sessionFaults() {
    return {Fault::onMessage("create-profile").nth(2).with({{"lost", true}}),
            Fault::onMessage("modify-profile").with({{"power", "unanswered"}}),
            Fault::onMessage("profile-settings").nth(2).with({{"settings", {{"user", "other"}}}}),
            Fault::onIndication("create").nth(3).with({{"early", true}})};
  }

  static std::string complaintOf(ChildProcess& process) {
    return process.output() + process.errors();
  }

  // Runs the session against a modem and returns the library's log.
  std::string sessionWith(const Words& modemCommand) {
    ChildProcess modem(modemCommand);
    if (!modem.waitForOutput("pavo-modem: listening on ")) {
      throw std::runtime_error("no modem: " + modem.errors());
    }
    ChildProcess session({PAVO_SYSTEM_SCENARIO_PROGRAM}, {{"OVIX_MODEM=" + socket}, {}, {}});
    const auto exit = session.waitForExit(2 * patience());
    EXPECT_TRUE(exit && exit->code == 0) << complaintOf(session);
    modem.sendSignal(SIGTERM);
    modemExit = modem.waitForExit().value_or(ChildProcess::Exit{});
    modemErrors = modem.errors();
    return session.output();
  }

  std::string record() {
    std::ofstream(script) << json{{"seed", 1}, {"faults", sessionFaults()}};
    const std::string log =
        sessionWith({PAVO_MODEM_PROGRAM, "--socket", socket, "--script", script, "--trace", trace});
    EXPECT_EQ(modemExit, (ChildProcess::Exit{0, 0})) << modemErrors;
    return log;
  }
  std::string replay() {
    return sessionWith({PAVO_MODEM_PROGRAM, "replay", "--socket", socket, trace});
  }

  const TemporaryFolder folder;
  const std::string socket = folder.file("modem.sock");
  const std::string script = folder.file("script.json");
  const std::string trace = folder.file("trace");
  ChildProcess::Exit modemExit;
  std::string modemErrors;
};

TEST_F(TraceTest, Replay_OfARecordedSession_MakesTheSameLog) {
  const std::string recorded = record();
  EXPECT_THAT(recorded, HasSubstr("Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message"));
  EXPECT_THAT(recorded, HasSubstr("Handling modem down"));
  EXPECT_THAT(recorded, HasSubstr("UserName=other"));
  EXPECT_EQ(replay(), recorded);
  EXPECT_EQ(modemExit, (ChildProcess::Exit{0, 0})) << modemErrors;
  const std::regex all("pavo-modem: replayed ([0-9]+) of \\1 requests, 0 differed\n");
  EXPECT_TRUE(std::regex_match(modemErrors, all)) << modemErrors;
}

TEST_F(TraceTest, Record_OfASession_CanBeReadByPeople) {
  record();
  std::ifstream stream(trace);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  EXPECT_THAT(text, HasSubstr("# pavo-modem trace 1\n"));
  EXPECT_THAT(text, ContainsRegex("> hello .*\"purpose\":\"object\""));
  EXPECT_THAT(text, ContainsRegex("> request +create-profile .*\"apn\":\"lasting\""));
  EXPECT_THAT(text, ContainsRegex("> request +create-profile .*\"apn\":\"lost\".*fault: lost"));
  EXPECT_THAT(text, ContainsRegex("< response +create-profile .*success .*\"index\":1"));
  EXPECT_THAT(text, ContainsRegex("< indication +profile-changed .*\"event\":1"));
  EXPECT_THAT(text, ContainsRegex("< end .*the modem hung up"));
}

}  // namespace
}  // namespace pavo::test
