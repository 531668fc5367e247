// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// In these tests the modem is absent, hangs or dies. The program must end in time with one line,
// the right status and a note about unfinished work.
#include "Tool.h"

#include <gmock/gmock.h>
#include <signal.h>

namespace pavo::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;
using Json = nlohmann::json;

MATCHER(IsOneLine, "") { return !arg.empty() && arg.find('\n') == arg.size() - 1; }

class FaultTest : public ToolTest {
 protected:
  std::string fileOf(std::size_t entries) const {
    std::string text = "<apns>\n";
    for (std::size_t i = 0; i < entries; ++i) {
      text += "<apn mcc='001' mnc='01' type='default' apn='n" + std::to_string(i) + "'/>\n";
    }
    return writeFile(folder, "apns" + std::to_string(entries) + ".xml", text + "</apns>\n");
  }

  void hang() { modem.process().sendSignal(SIGSTOP); }

  // Fills the table. If the modem does not answer the reads, so many profiles keep the library busy
  // for half a minute.
  void fillTable(std::size_t freeSlots = 0) {
    while (modem.control("show")["profiles"].size() + freeSlots < tableSize) {
      modem.control("create", {{"apn", "other"}});
    }
  }

  void tellNoProfile() {
    modem.control("fail", {{"message", "profile-settings"}, {"silent", true}, {"count", 60}});
  }

  // Makes the library read all profiles of the table while the modem does not answer. The table
  // must be full before the tool starts, because a library that still reads new profiles would
  // serve the tool between two of them.
  void keepLibraryBusy() {
    tellNoProfile();
    modem.control("indicate", {{"event", 5}, {"index", 255}});
    ASSERT_TRUE(waitUntil([&] { return modem.control("faults")["faults"][0]["count"] < 60; }));
  }

  // Ends a tool that holds a profile, and expects a note that the profile may be left behind.
  void expectLeftBehind(const std::function<void()>& disturb) {
    const auto holder = start({"add", "--apn", "held", "--hold", "--timeout", "3"});
    ASSERT_TRUE(holder->waitForOutput("isIAProfile")) << holder->errors();
    disturb();
    holder->sendSignal(SIGTERM);
    const ToolResult result = finish(*holder);
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_THAT(result.errors, AllOf(IsOneLine(), HasSubstr("may be left on the modem: it refused "
                                                            "to delete it or did not answer")));
  }

  // Runs the command until the fault has taken effect.
  std::unique_ptr<ChildProcess> startUntil(const Json& fault, const Arguments& arguments) {
    modem.control("clear");
    modem.control("fail", fault);
    auto tool = start(arguments);
    EXPECT_TRUE(waitUntil([&] {
      const Json left = modem.control("faults")["faults"];
      return left.empty() || left[0]["count"] < fault.value("count", 1);
    })) << testing::PrintToString(arguments);
    return tool;
  }

  // Runs every command that asks a modem, in every way in which it does.
  void expectEveryCommandGivesUp(const std::string& socket) const {
    for (Arguments arguments : std::vector<Arguments>{
             {"list"},
             {"list", "--apn", "x", "--explain"},
             {"get", "1"},
             {"add", "--apn", "x", "--persistent"},
             {"add", "--apn", "x", "--hold"},
             {"modify", "1", "--apn", "x"},
             {"modify", "1", "--apn", "x", "--dry-run"},
             {"delete", "1"},
             {"delete", "1", "--dry-run"},
             {"refresh"},
             {"dump"},
             {"watch"},
             {"verify"},
             {"verify", "--for", "600"},
             {"usage"},
             {"setup-data-call", "apn=x"},
             {"setup-data-call", "apn=x", "--hold"},
             {"setup-data-call", "apn=x", "--dry-run"},
             {"emergency", "apn=x"},
             {"lte-attach", "apn=x"},
             {"match-attach", "1"},
             {"apn-class", "class=IMS"},
             {"apn-types", "apn=ims,types=MMS"},
             {"import", path, "--plmn", "00101"},
         }) {
      SCOPED_TRACE(testing::PrintToString(arguments));
      arguments.insert(arguments.end(), {"--timeout", "0.3"});
      const ToolResult result = runTool(socket, arguments);
      EXPECT_EQ(result.exit, failed) << result;
      EXPECT_THAT(result.errors, AllOf(IsOneLine(), StartsWith("pavoctl: no modem answered within "
                                                               "0.3 s (OVIX_MODEM=")));
      if (arguments[0] != "dump") {
        EXPECT_EQ(result.output, "");
      }
    }
  }

  static constexpr std::size_t tableSize = 16;

  const TemporaryFolder folder;
  const std::string path = fileOf(12);
};

TEST_F(FaultTest, ModemThatHangs_EveryCommand_GivesUpInTime) {
  hang();
  expectEveryCommandGivesUp(modem.socketPath());
}

TEST_F(FaultTest, ModemThatAnswersNothing_EveryCommand_GivesUpInTime) {
  modem.control("fail", {{"message", "any"}, {"silent", true}, {"count", 1000}});
  expectEveryCommandGivesUp(modem.socketPath());
}

TEST_F(FaultTest, ModemThatIsNotThere_EveryCommandThatAsksOne_GivesUpInTime) {
  const std::string nobody = folder.file("none");
  expectEveryCommandGivesUp(nobody);
  EXPECT_EQ(runTool(nobody, {"import", path, "--check"}).exit, done);
  EXPECT_EQ(runTool(nobody, {"import", path, "--plmn", "00101", "--dry-run"}).exit, done);
}

TEST_F(FaultTest, ProfilesThatAreNotAnswered_List_GivesUpBeforeTheLibraryDoes) {
  // The library alone would wait a second for each profile.
  tellNoProfile();
  const ToolResult result = run({"list", "--timeout", "0.5"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.errors, AllOf(IsOneLine(), HasSubstr("no modem answered within 0.5 s")));
  // The log shows the library's progress.
  modem.control("clear");
  fillTable();
  tellNoProfile();
  const ToolResult dump = run({"dump", "--timeout", "3"});
  EXPECT_EQ(dump.exit, failed) << dump;
  EXPECT_THAT(dump.output, HasSubstr("OVIX_WDS_GET_PROFILE_LIST_REQ_V01 request successful"));
  EXPECT_THAT(dump.errors, AllOf(IsOneLine(), HasSubstr("no modem answered within 3 s")));
}

TEST_F(FaultTest, ChangesThatAreNotAnswered_MayBeDone) {
  struct Case {
    const char* message;
    Arguments arguments;
    const char* errors;
  };
  for (const Case& c : std::vector<Case>{
           {"create-profile",
            {"add", "--apn", "x", "--persistent"},
            "pavoctl: the modem did not answer; it may have created the profile all the same\n"},
           {"modify-profile",
            {"modify", "1", "--apn", "x"},
            "pavoctl: the modem did not answer; it may have changed the profile all the same\n"},
           {"delete-profile",
            {"delete", "2"},
            "pavoctl: the modem did not answer; it may have deleted the profile all the same\n"},
       }) {
    modem.control("fail", {{"message", c.message}, {"lost", true}});
    const ToolResult result = run(c.arguments);
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, c.errors);
  }
}

TEST_F(FaultTest, ModemThatDies_WhileItIsAsked_IsSaid) {
  modem.control("clear-transcript");
  modem.control("fail", {{"message", "create-profile"}, {"silent", true}});
  const auto tool = start({"add", "--apn", "x", "--persistent"});
  ASSERT_TRUE(waitUntil([&] { return modem.control("faults")["faults"].empty(); }));
  modem.kill();
  const ToolResult result = finish(*tool);
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.errors,
            "pavoctl: the modem was lost before it answered; it may have created the profile all "
            "the same\n");
}

TEST_F(FaultTest, PolicyThatIsNotAnswered_MayBeDone) {
  for (const Arguments& arguments : std::vector<Arguments>{
           {"setup-data-call", "apn=new"},
           {"setup-data-call", "apn=internet,types=MMS", "--allow-update"},
           {"emergency", "apn=sos"},
           {"lte-attach", "apn=new"},
           {"apn-class", "class=IMS,max-pdn=7"},
           {"apn-types", "apn=ims,types=MMS", "--allow-update"},
       }) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    modem.control("clear");
    modem.control("fail", {{"message", "create-profile"}, {"silent", true}, {"count", 2}});
    modem.control("fail", {{"message", "modify-profile"}, {"silent", true}, {"count", 2}});
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_THAT(result.errors,
                AllOf(IsOneLine(),
                      StartsWith("pavoctl: the modem refused 1 of 1 edits or did not answer: "),
                      EndsWith("; what it did not answer may be done all the same\n")));
  }
}

TEST_F(FaultTest, PolicyThatTakesTooLong_IsGivenUp) {
  // Each element takes a second.
  modem.control("fail", {{"message", "create-profile"}, {"silent", true}, {"count", 60}});
  modem.control("fail", {{"message", "modify-profile"}, {"silent", true}, {"count", 60}});
  const ToolResult result = run({"apn-class", "class=IMS,max-pdn=7", "class=APP", "class=ADMN",
                                 "class=INET", "--timeout", "3.5"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "pavoctl: apn-class takes too long: the modem does not answer; what was done until now "
            "stays, and the last edit may be done all the same: see pavoctl list\n");
}

TEST_F(FaultTest, ModemThatDies_DuringAPolicy_IsSaid) {
  const auto tool = startUntil({{"message", "create-profile"}, {"silent", true}},
                               {"apn-class", "class=IMS,max-pdn=7", "class=APP,apn=x"});
  modem.kill();
  const ToolResult result = finish(*tool);
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.errors,
            "pavoctl: the modem refused 1 of 2 edits or did not answer: the new profile; what it "
            "did not answer may be done all the same\n");
  EXPECT_THAT(result.output, HasSubstr("profile 2 (ims) changed: maxPdnsConnPerBlock: "));
}

TEST_F(FaultTest, Signal_WhileTheModemIsAsked_SaysWhatMayBeDone) {
  const std::string came = "pavoctl: a signal came before the modem answered";
  const std::string policy =
      ": a signal came before the modem answered; what was done until now stays, and the last edit "
      "may be done all the same: see pavoctl list\n";
  struct Case {
    const char* message;
    Arguments arguments;
    std::string errors;
  };
  for (const Case& c : std::vector<Case>{
           {"any", {"delete", "2"}, came + "\n"},
           {"any", {"apn-class", "class=APP"}, came + "\n"},
           {"create-profile",
            {"add", "--apn", "x", "--persistent"},
            came + "; it may have created the profile all the same\n"},
           {"modify-profile",
            {"modify", "1", "--apn", "x"},
            came + "; it may have changed the profile all the same\n"},
           {"delete-profile",
            {"delete", "2"},
            came + "; it may have deleted the profile all the same\n"},
           {"create-profile", {"setup-data-call", "apn=x"}, "pavoctl: setup-data-call" + policy},
           {"create-profile", {"emergency", "apn=x"}, "pavoctl: emergency" + policy},
           {"create-profile", {"lte-attach", "apn=x"}, "pavoctl: lte-attach" + policy},
           {"create-profile", {"apn-class", "class=APP"}, "pavoctl: apn-class" + policy},
           {"modify-profile",
            {"apn-types", "apn=ims,types=MMS", "--allow-update"},
            "pavoctl: apn-types" + policy},
       }) {
    for (const int signal : {SIGINT, SIGTERM}) {
      const auto tool =
          startUntil({{"message", c.message}, {"silent", true}, {"count", 60}}, c.arguments);
      tool->sendSignal(signal);
      const ToolResult result = finish(*tool);
      EXPECT_EQ(result.exit, failed) << result;
      EXPECT_EQ(result.errors, c.errors);
      EXPECT_EQ(result.output, "");
    }
  }
}

TEST_F(FaultTest, Signal_WhileATemporaryProfileComesOrGoes_DeletesIt) {
  struct Case {
    const char* message;
    Arguments arguments;
  };
  for (const Case& c : std::vector<Case>{
           {"create-profile", {"add", "--apn", "x", "--hold"}},
           {"create-profile", {"setup-data-call", "apn=x", "--hold"}},
           {"delete-profile", {"setup-data-call", "apn=x"}},
       }) {
    const auto tool = startUntil({{"message", c.message}, {"delayMs", 300}}, c.arguments);
    tool->sendSignal(SIGTERM);
    const ToolResult result = finish(*tool);
    EXPECT_EQ(result.exit, done) << result;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(profileOnModem(3), nullptr);
  }
}

TEST_F(FaultTest, Verify_ModemHangsInTheFreshReading_GivesUpInTime) {
  fillTable();
  for (const Json& fault : {Json{{"message", "profile-list"}, {"nth", 2}},
                            Json{{"message", "profile-settings"}, {"nth", tableSize + 1}}}) {
    Json silent = fault;
    silent.update(Json{{"silent", true}, {"count", 600}});
    modem.control("clear");
    modem.control("fail", silent);
    const ToolResult result = run({"verify", "--timeout", "4"});
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors,
                AllOf(IsOneLine(), StartsWith("pavoctl: the modem could not be read afresh: no "
                                              "modem answered within 4 s (OVIX_MODEM=")));
  }
}

TEST_F(FaultTest, Verify_ProfilesThatCannotBeReadAfresh_AreNotSaidToBeMissing) {
  modem.control("fail",
                {{"message", "profile-settings"}, {"nth", 3}, {"error", 3}, {"count", 600}});
  const ToolResult result = run({"verify", "--settle", "0.1"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "pavoctl: 2 of the modem's profiles could not be read\n");
}

TEST_F(FaultTest, Verify_ModemDiesMeanwhile_IsSaid) {
  // The verifier has read its cache when it asks for the second profile.
  const auto verifier = startUntil({{"message", "profile-settings"}, {"nth", 2}, {"delayMs", 1}},
                                   {"verify", "--for", "600", "--timeout", "2"});
  modem.kill();
  verifier->sendSignal(SIGTERM);
  const ToolResult result = finish(*verifier);
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, AllOf(IsOneLine(), HasSubstr("no modem answered within 2 s")));
}

TEST_F(FaultTest, Hold_ModemRefusesAtTheEnd_SaysWhatMayBeLeft) {
  expectLeftBehind([&] { modem.control("fail", {{"message", "delete-profile"}, {"error", 1}}); });
}

TEST_F(FaultTest, Hold_ModemHangsAtTheEnd_SaysWhatMayBeLeft) {
  expectLeftBehind([&] { hang(); });
}

// The library is busy for longer than the tool waits.
TEST_F(FaultTest, Hold_LibraryIsBusyAtTheEnd_SaysWhatMayBeLeft) {
  fillTable(/*freeSlots=*/1);
  expectLeftBehind([&] { keepLibraryBusy(); });
}

TEST_F(FaultTest, Watch_ModemHangs_CanBeStopped) {
  fillTable();
  const auto watcher = start({"watch", "--timeout", "3"});
  ASSERT_TRUE(watcher->waitForOutput("watching"));
  keepLibraryBusy();
  watcher->sendSignal(SIGINT);
  const ToolResult result = finish(*watcher);
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.errors, "");
}

TEST_F(FaultTest, Import_ModemDoesNotAnswer_StopsThere) {
  modem.control("fail", {{"message", "create-profile"}, {"delayMs", 10}});
  modem.control("fail", {{"message", "create-profile"}, {"silent", true}});
  const ToolResult result = run({"import", path, "--plmn", "00101"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.output, EndsWith("1 imported, 0 refused, 0 notes\n"));
  EXPECT_EQ(result.errors, "pavoctl: " + path +
                               ": stopped: the modem did not answer; it may have created the "
                               "profile all the same; 1 imported, 11 from line 3 on not done\n");
}

TEST_F(FaultTest, Import_ModemDies_SaysHowFarItCame) {
  const auto import = startUntil({{"message", "create-profile"}, {"nth", 3}, {"delayMs", 60'000}},
                                 {"import", path, "--plmn", "00101"});
  modem.kill();
  const ToolResult result = finish(*import);
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.errors, MatchesRegex("pavoctl: .*: stopped: .*; 2 imported, 10 from line 4 on "
                                          "not done\n"));
}

TEST_F(FaultTest, Import_Signal_SaysHowFarItCame) {
  constexpr std::size_t entries = 200;
  ModemProcess large({.profiles = {}, .keepsStore = false, .arguments = {"--capacity", "255"}});
  const auto profiles = [&] { return large.control("show")["profiles"].size(); };
  large.control("fail", {{"message", "create-profile"}, {"delayMs", 100}, {"count", entries}});
  const auto import =
      startTool(large.socketPath(), {"import", fileOf(entries), "--plmn", "00101", "--json"});
  ASSERT_TRUE(waitUntil([&] { return profiles() >= 2; }));
  import->sendSignal(SIGINT);
  const ToolResult result = finish(*import);
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.errors, HasSubstr(": stopped: a signal came; "));
  const Json report = result.json();
  ASSERT_TRUE(report.is_object()) << result;
  const std::size_t imported = report["imported"].size();
  EXPECT_EQ(imported + report["stopped"]["notDone"].get<std::size_t>(), entries);
  EXPECT_EQ(report["stopped"]["fromLine"], imported + 2);
  EXPECT_EQ(profiles(), imported);
}

TEST_F(FaultTest, OutputThatFails_AfterAChange_SaysWhatWasDone) {
  struct Case {
    const char* arguments;
    std::string end;
  };
  for (const Case& c : std::vector<Case>{
           {"add --apn x --persistent", "added profile 3"},
           {"modify 1 --apn x", "changed profile 1"},
           {"delete 2", "deleted profile 2"},
           {"import \"$2\" --plmn 00101", "1 imported, 11 from line 3 on not done"},
       }) {
    ChildProcess shell(
        {"sh", "-c", std::string("\"$1\" ") + c.arguments + " > /dev/full", "sh", PAVOCTL_PROGRAM,
         path},
        {.environment = {"OVIX_MODEM=" + modem.socketPath()}, .workingFolder = {}, .input = {}});
    const ToolResult result = finish(shell);
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_EQ(result.errors,
              "pavoctl: cannot write the output: No space left on device; " + c.end + "\n");
  }
}

}  // namespace
}  // namespace pavo::test
