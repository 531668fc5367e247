// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Tool.h"

#include <gmock/gmock.h>
#include <signal.h>

namespace pavo::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Json = nlohmann::json;

class ProgramTest : public ToolTest {};

TEST_F(ProgramTest, List_Table_MasksPasswords) {
  const ToolResult result = run({"list"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output,
            "ID  APN       TYPES         HOME  ROAM  AUTH      USER  PASSWORD  CLASS  FLAGS\n"
            "1   internet  DEFAULT|SUPL  V4V6  -     PAP_CHAP  me    ********  -      -\n"
            "2   ims       IMS           V6    -     -         -     -         IMS    -\n");
}

TEST_F(ProgramTest, List_Json_IsNothingButJson) {
  const ToolResult result = run({"list", "--json", "--show-secrets"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.json(), Json::parse(R"([
    {"id": 1, "apnName": "internet", "userName": "me", "password": "hush,AuthType=PAP,hush",
     "authType": "PAP_CHAP", "homeIPType": "V4V6", "apnTypesMask": ["DEFAULT", "SUPL"],
     "isPavoProfile": false, "isIAProfile": false},
    {"id": 2, "apnName": "ims", "homeIPType": "V6", "apnTypesMask": ["IMS"], "apnClass": "IMS",
     "isPavoProfile": false, "isIAProfile": false}])"));
  EXPECT_THAT(run({"list", "--json"}).output, Not(HasSubstr("hush")));
}

TEST_F(ProgramTest, List_Filters_SelectProfiles) {
  struct Case {
    Arguments arguments;
    std::vector<int> ids;
  };
  for (const Case& c : std::vector<Case>{
           {{"--apn", "IMS"}, {2}},
           {{"--apn", "net"}, {}},
           {{"--apn", "net", "--apn-subset"}, {1}},
           {{"--types", "SUPL"}, {}},
           {{"--types", "SUPL", "--types-subset"}, {1}},
           {{"--home-ip", "V6"}, {2}},
           {{"--home-ip", "V6", "--home-ip-subset"}, {1, 2}},
           {{"--home-ip", "V4V6", "--home-ip-superset"}, {1, 2}},
           {{"--id", "2"}, {2}},
           {{"--pavo", "yes"}, {}},
           {{"--ia", "no"}, {1, 2}},
           {{"--user", "me", "--auth", "PAP_CHAP"}, {1}},
       }) {
    Arguments arguments{"list", "--json"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    std::vector<int> ids;
    for (const auto& profile : run(arguments).json()) {
      ids.push_back(profile["id"]);
    }
    EXPECT_EQ(ids, c.ids) << c.arguments[0] << " " << c.arguments[1];
  }
}

TEST_F(ProgramTest, List_NothingMatches_SaysSo) {
  const ToolResult result = run({"list", "--apn", "nothing"});
  EXPECT_EQ(result.exit, done);
  EXPECT_EQ(result.output, "no profiles\n");
  EXPECT_EQ(run({"list", "--apn", "nothing", "--json"}).json(), Json::array());
}

TEST_F(ProgramTest, List_ProfileThatCannotBeRead_FailsAndShowsTheRest) {
  modem.control("fail", {{"message", "profile-settings"}, {"error", 2}});
  const ToolResult result = run({"list", "--json"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.json().size(), 1U);
  EXPECT_EQ(result.errors,
            "pavoctl: 1 of the modem's profiles could not be read and are missing\n");
}

TEST_F(ProgramTest, List_ModemRefusesTheListAtFirst_IsAskedAgain) {
  modem.control("fail", {{"message", "profile-list"}, {"error", 9}, {"count", 2}});
  const ToolResult result = run({"list", "--json"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.json().size(), 2U);
}

TEST_F(ProgramTest, Get_UnknownProfile_Fails) {
  const ToolResult result = run({"get", "9"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "pavoctl: there is no profile 9\n");
}

TEST_F(ProgramTest, Get_OneProfile_ShowsItsAttributes) {
  const ToolResult result = run({"get", "2"});
  EXPECT_EQ(result.exit, done);
  EXPECT_THAT(result.output, HasSubstr("apnName:        ims\n")) << result;
  EXPECT_EQ(run({"get", "1", "--json"}).json()["password"], "********");
}

TEST_F(ProgramTest, Add_Persistent_IsOnTheModem) {
  const ToolResult result = run({"add", "--apn", "New.Net", "--types", "MMS|DUN", "--home-ip", "V4",
                                 "--roam-ip", "V6", "--persistent", "--json"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.json()["id"], 3);
  EXPECT_EQ(result.json()["apnName"], "new.net");
  EXPECT_EQ(result.json()["isPavoProfile"], true);
  const Json profile = profileOnModem(3);
  EXPECT_EQ(profile["apn"], "new.net");
  EXPECT_EQ(profile["apnTypes"], 0xC);
  EXPECT_EQ(profile["overrideHome"], "V4");
  EXPECT_EQ(profile["persistent"], true);
  EXPECT_EQ(profile["name"], "pavo_profile");
}

TEST_F(ProgramTest, Add_InitialAttach_HasItsName) {
  run({"add", "--apn", "attach", "--persistent", "--ia"});
  EXPECT_EQ(profileOnModem(3)["name"], "pavo_profile_ia");
}

TEST_F(ProgramTest, Add_NeitherPersistentNorHeld_SendsNothing) {
  modem.control("clear-transcript");
  const ToolResult result = run({"add", "--apn", "x"});
  EXPECT_EQ(result.exit, badUsage);
  EXPECT_THAT(result.errors, StartsWith("pavoctl: add: a profile that is not persistent"));
  EXPECT_EQ(modem.control("transcript")["entries"], Json::array());
}

TEST_F(ProgramTest, Add_Refused_Fails) {
  modem.control("fail", {{"message", "create-profile"}, {"error", 3}});
  const ToolResult result = run({"add", "--apn", "x", "--persistent", "--json"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "pavoctl: the modem refused the new profile or did not answer\n");
}

TEST_F(ProgramTest, Add_Held_LivesUntilTheSignal) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    SCOPED_TRACE(signal);
    const auto holder = start({"add", "--apn", "held", "--hold"});
    ASSERT_TRUE(holder->waitForOutput("isIAProfile")) << holder->errors();
    EXPECT_THAT(holder->output(), StartsWith("holding profile 3\n"));
    EXPECT_EQ(profileOnModem(3)["persistent"], false);
    holder->sendSignal(signal);
    const ToolResult result = finish(*holder);
    EXPECT_EQ(result.exit, done) << result;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(profileOnModem(3), nullptr);
  }
}

TEST_F(ProgramTest, Add_HeldWhileItsInputIsOpen_EndsWithThePipe) {
  ChildProcess shell(
      {"sh", "-c", R"(: | "$1" add --apn held --hold --json)", "sh", PAVOCTL_PROGRAM},
      {.environment = {"OVIX_MODEM=" + modem.socketPath()}, .workingFolder = {}, .input = {}});
  const ToolResult result = finish(shell);
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.json()["id"], 3);
  EXPECT_EQ(profileOnModem(3), nullptr);
}

TEST_F(ProgramTest, Add_HeldProfileChangedByAnother_IsLeftAndReported) {
  const auto holder = start({"add", "--apn", "held", "--hold", "--json"});
  ASSERT_TRUE(holder->waitForOutput("}"));
  const auto watcher = start({"watch", "--json"});
  ASSERT_TRUE(watcher->waitForOutput("watching"));
  modem.control("modify", {{"index", 3}, {"apn", "other"}});
  ASSERT_TRUE(watcher->waitForOutput("changed"));
  // The watcher has seen the change. The holder may see it a moment later, and from then on its
  // release does not delete.
  holder->sendSignal(SIGTERM);
  const ToolResult result = finish(*holder);
  EXPECT_EQ(result.exit, done) << result;
  if (profileOnModem(3) != nullptr) {
    EXPECT_THAT(result.errors, StartsWith("pavoctl: profile 3 was not this process's to delete"));
  }
}

TEST_F(ProgramTest, Modify_Attributes_AreOnTheModem) {
  const ToolResult result = run({"modify", "2", "--disabled", "yes", "--password", "a,b"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, StartsWith("changed profile 2\n"));
  EXPECT_THAT(result.output, Not(HasSubstr("a,b")));
  EXPECT_EQ(profileOnModem(2)["disabled"], true);
  EXPECT_EQ(profileOnModem(2)["password"], "a,b");
}

TEST_F(ProgramTest, Modify_AsItIsAlready_SaysSo) {
  const ToolResult result = run({"modify", "2", "--apn", "IMS"});
  EXPECT_EQ(result.exit, done);
  EXPECT_THAT(result.output, StartsWith("profile 2 is like that already\n"));
}

TEST_F(ProgramTest, Modify_RefusedByTheModem_Fails) {
  modem.control("fail", {{"message", "modify-profile"}, {"error", 7}});
  const ToolResult result = run({"modify", "2", "--apn", "other", "--json"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "pavoctl: the modem refused to change profile 2 or did not answer\n");
  EXPECT_EQ(profileOnModem(2)["apn"], "ims");
}

TEST_F(ProgramTest, Delete_Profile_IsGone) {
  const ToolResult result = run({"delete", "2", "--json"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.json(), Json::parse(R"({"deleted": 2})"));
  EXPECT_EQ(profileOnModem(2), nullptr);
  EXPECT_EQ(run({"delete", "2"}).exit, failed);
}

TEST_F(ProgramTest, Delete_RefusedByTheModem_Fails) {
  modem.control("fail", {{"message", "delete-profile"}, {"error", 2}});
  const ToolResult result = run({"delete", "2"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.errors, "pavoctl: the modem refused to delete profile 2 or did not answer\n");
  EXPECT_NE(profileOnModem(2), nullptr);
}

TEST_F(ProgramTest, Refresh_Count_IsTheModems) {
  EXPECT_EQ(run({"refresh"}).output, "read 2 profiles\n");
  EXPECT_EQ(run({"refresh", "--json"}).json(), Json::parse(R"({"profiles": 2, "unreadable": 0})"));
}

TEST_F(ProgramTest, Dump_Text_MasksPasswords) {
  const ToolResult result = run({"dump"});
  EXPECT_EQ(result.exit, done);
  EXPECT_THAT(result.output, StartsWith("Cache:\n"));
  EXPECT_THAT(result.output, HasSubstr("Password=********,AuthType=PAP_CHAP,CommonIPType=V4V6"));
  EXPECT_THAT(result.output, Not(HasSubstr("hush")));
  EXPECT_THAT(run({"dump", "--show-secrets"}).output,
              HasSubstr("Password=hush,AuthType=PAP,hush,"));
}

TEST_F(ProgramTest, Dump_Json_HasThreeLists) {
  const Json dump = run({"dump", "--json"}).json();
  EXPECT_EQ(dump["cache"].size(), 2U);
  EXPECT_EQ(dump["pending"], Json::array());
  EXPECT_THAT(dump["log"].at(0).get<std::string>(), EndsWith("[PAVO]Manager::init(1)"));
}

TEST_F(ProgramTest, Subscription_Option_ReachesTheModem) {
  modem.control("clear-transcript");
  EXPECT_EQ(run({"list", "--subscription", "7"}).exit, done);
  EXPECT_THAT(modem.control("transcript").dump(), HasSubstr(R"("subscription":7)"));
}

TEST_F(ProgramTest, Output_Full_IsAFailure) {
  ChildProcess shell(
      {"sh", "-c", R"("$1" list > /dev/full)", "sh", PAVOCTL_PROGRAM},
      {.environment = {"OVIX_MODEM=" + modem.socketPath()}, .workingFolder = {}, .input = {}});
  const ToolResult result = finish(shell);
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.errors, "pavoctl: cannot write the output: No space left on device\n");
}

TEST_F(ProgramTest, Output_Closed_IsAFailure) {
  ChildProcess shell(
      {"sh", "-c", R"("$1" list >&-)", "sh", PAVOCTL_PROGRAM},
      {.environment = {"OVIX_MODEM=" + modem.socketPath()}, .workingFolder = {}, .input = {}});
  const ToolResult result = finish(shell);
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.errors, "pavoctl: cannot write the output: it is closed\n");
}

TEST(ProgramWithoutModem, List_NobodyAnswers_FailsInTime) {
  const TemporaryFolder folder;
  const std::string socket = folder.file("nobody");
  const ToolResult result = runTool(socket, {"list", "--timeout", "0.3"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "pavoctl: no modem answered within 0.3 s (OVIX_MODEM=" + socket + ")\n");
}

TEST(ProgramWithoutModem, Dump_NobodyAnswers_ShowsTheLogAllTheSame) {
  const TemporaryFolder folder;
  const ToolResult result = runTool(folder.file("nobody"), {"dump", "--timeout", "3"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_THAT(result.output, HasSubstr("OvixWdsProxy::registerOvixSvcUp"));
}

TEST(ProgramWithoutModem, Embedded_EachRun_StartsEmpty) {
  for (int run = 0; run < 2; ++run) {
    ChildProcess process({"env", "-u", "OVIX_MODEM", PAVOCTL_PROGRAM, "add", "--apn", "x",
                          "--persistent", "--json"});
    const ToolResult result = finish(process);
    EXPECT_EQ(result.exit, done) << result;
    EXPECT_EQ(result.json()["id"], 1);
  }
}

TEST(ProgramWithoutModem, BadUsage_AnyKind_IsOneLineAndStatus2) {
  for (const Arguments& arguments :
       std::vector<Arguments>{{},
                              {"nonsense"},
                              {"get", "x"},
                              {"get", ""},
                              {"get", "1e1"},
                              {"get", "256"},
                              {"list", "--auth", "EAP"},
                              {"list", "--types", "DEFAULT|TV"},
                              {"modify", "1", "--apn", std::string(151, 'a')},
                              {"modify", "1", "--password", std::string(128, 'a')},
                              {"modify", "1", "--max-pdn", "65536"},
                              {"modify", "1", "--clat", "perhaps"},
                              {"list", "--timeout", "nan"},
                              {"list", "--timeout", "1\n2"},
                              {"import", "/dev/null"},
                              {"import", "/dev/null", "--plmn", "x"}}) {
    const ToolResult result = runTool("/nonexistent", arguments);
    EXPECT_EQ(result.exit, badUsage) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("pavoctl: "));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
  }
}

TEST(ProgramWithoutModem, Version_Option_IsOneLine) {
  const ToolResult result = runTool("/nonexistent", {"--version"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, testing::MatchesRegex("pavoctl [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(ProgramWithoutModem, Help_AnyVerb_IsOutputAndStatus0) {
  for (const Arguments& arguments : std::vector<Arguments>{{"--help"}, {"watch", "--help"}}) {
    const ToolResult result = runTool("/nonexistent", arguments);
    EXPECT_EQ(result.exit, done);
    EXPECT_THAT(result.output, HasSubstr("Usage: pavoctl"));
    EXPECT_EQ(result.errors, "");
  }
}

}  // namespace
}  // namespace pavo::test
