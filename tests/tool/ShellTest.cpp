// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Tool.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <sstream>

namespace pavo::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

class ShellTest : public ToolTest {
 protected:
  ToolResult shell(const std::string& lines) { return run({"shell"}, lines); }

  // Starts a shell on a terminal and waits for its prompt.
  std::unique_ptr<TerminalProcess> terminalShell() {
    auto terminal = startToolOnTerminal(modem.socketPath(), {"shell"});
    EXPECT_TRUE(terminal->waitForOutput("pavoctl> ")) << terminal->output();
    return terminal;
  }
  // Waits for the text and the next prompt. Keys typed before the prompt would be interpreted by
  // the terminal.
  static bool waitForAnswer(TerminalProcess& terminal, const std::string& text) {
    return terminal.waitForOutput(text) && terminal.waitForOutput("pavoctl> ");
  }
};

TEST_F(ShellTest, Keys_LiveOnBetweenCommands_AndCount) {
  const ToolResult result = shell(
      "add --apn held --hold\n"
      "hold 3\n"
      "keys\n"
      "release 1\n"
      "get 3\n"
      "release 2\n"
      "keys\n");
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, HasSubstr("key 1 holds profile 3\nkey 2 holds profile 3\n"
                                       "key 1: profile 3 token=2, listener none\n"
                                       "key 2: profile 3 token=2, listener none\n"
                                       "released key 1: profile 3 stays\n"));
  EXPECT_THAT(result.output,
              EndsWith("released key 2: profile 3 is deleted from the modem\nno keys\n"));
  EXPECT_EQ(profileOnModem(3), nullptr);
}

TEST_F(ShellTest, Keys_AtTheEnd_AreReleased) {
  for (const char* end : {"", "quit\nlist\n"}) {
    const ToolResult result = shell(std::string("add --apn held --hold --json\n") + end);
    EXPECT_EQ(result.exit, done) << result;
    EXPECT_THAT(result.output, EndsWith("released key 1: profile 3 is deleted from the modem\n"));
    EXPECT_EQ(profileOnModem(3), nullptr);
  }
}

TEST_F(ShellTest, Release_DryRun_SaysWhatWouldGoAndReleasesNothing) {
  const ToolResult result = shell(
      "add --apn held --hold\n"
      "hold 3\n"
      "hold 1\n"
      "release 1 --dry-run\n"
      "release all --dry-run\n"
      "release 3 --dry-run --json\n"
      "keys\n"
      "refresh\n"
      "release 2 --dry-run\n"
      "release 7 --dry-run\n");
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.errors, "pavoctl: line 10: there is no key 7\n");
  const std::string shared =
      "key 1 would be released: profile 3 would stay, this process has other keys of it\n";
  EXPECT_THAT(
      result.output,
      HasSubstr(shared + shared +
                "key 2 would be released: it is the last key of profile 3 in this process; the "
                "profile would be deleted from the modem if the library made it in this process "
                "without --persistent, and stay otherwise\n"
                "key 3 would be released: it is the last key of profile 1 in this process; the "
                "profile would stay, the library has not made it\n"
                R"({"isDryRun":true,"would":"release","key":3,"profile":1,"isKnown":true,)"
                R"("isLastKey":true,"isPavoProfile":false})"
                "\nkey 1: profile 3 token=2, listener none\n"));
  EXPECT_THAT(result.output, HasSubstr("key 2 would be released: profile 3 would stay, the library "
                                       "no longer knows the key\n"));
}

TEST_F(ShellTest, Help_OfAnUnknownCommand_IsBadUsage) {
  const ToolResult result = shell("help frobnicate\n");
  EXPECT_EQ(result.exit, badUsage) << result;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "pavoctl: line 1: help: 'frobnicate' is not a command (try help)\n");
}

TEST_F(ShellTest, Keys_AfterARefresh_AreUnknown) {
  const ToolResult result = shell("hold 1\nlisten 1\nrefresh\nkeys --json\nlisten 1\n");
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.output, HasSubstr("key 1: profile 1 has gone or changed\n"));
  EXPECT_THAT(result.output, HasSubstr(R"("isKnown": false)"));
  EXPECT_THAT(result.output, HasSubstr(R"("listener": "called")"));
  EXPECT_EQ(result.errors, "pavoctl: line 5: key 1 has its listener already\n");
}

TEST_F(ShellTest, Policy_Held_GivesItsKeyToTheShell) {
  const ToolResult result = shell("setup-data-call apn=call --hold\nkeys\nusage\nrelease 1\n");
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, HasSubstr("key 1 holds profile 3\nkey 1: profile 3 "));
  EXPECT_THAT(result.output,
              HasSubstr("3     call      library  1\n"
                        "3 slots used: 2 of the modem, 1 of the library, "
                        "0 of the library for initial attach\n"
                        "made by the library and held by no key of this process: none\n"
                        "released key 1: profile 3 is deleted from the modem\n"));
}

TEST_F(ShellTest, Verify_IndicationThatNeverCame_IsDrift) {
  modem.control("fail", {{"indication", "modify"}, {"lost", true}});
  const ToolResult result = shell("modify 1 --apn other\nverify --settle 0.1\n");
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.output, HasSubstr("expected, but never told by the modem: profile 1"));
}

TEST_F(ShellTest, Listen_ProfileDeleted_IsToldOnce) {
  const ToolResult result = run({"shell", "--json"}, "hold 2\nlisten 1\ndelete 2\nrelease 1\n");
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.output,
            "{\"key\":1,\"profile\":2}\n{\"listening\":1}\n{\n  \"deleted\": 2\n}\n"
            "{\"event\":\"expired\",\"key\":1,\"profile\":2}\n"
            "{\"released\":1,\"profile\":2,\"isDeleted\":false}\n")
      << result;
}

TEST_F(ShellTest, Errors_OfEveryKind_DoNotEndIt) {
  const ToolResult result = shell(
      "frobnicate\nget x\nget 9\nadd --apn x\n'\nrelease 7\nlisten 7\nhold 77\nrelease x\n"
      "import /nonexistent --check\nlist --subscription 2\nlist --apn net --apn-subset\n");
  EXPECT_EQ(result.exit, badUsage) << result;
  EXPECT_THAT(result.output, HasSubstr("internet"));
  std::istringstream errors(result.errors);
  int lineNumber = 0;
  for (std::string line; std::getline(errors, line);) {
    EXPECT_THAT(line, testing::StartsWith("pavoctl: line " + std::to_string(++lineNumber) + ": "));
  }
  EXPECT_EQ(lineNumber, 11);
}

TEST_F(ShellTest, Commands_AreTheProgramsOwn) {
  const ToolResult result = shell(
      "# a comment\n\n  list --json\nmodify 2 --apn 'a \"b' # changed\nhelp modify\n--help\n"
      "dump --json\nshell\nget 2");
  EXPECT_THAT(result.output, HasSubstr("\"apnName\": \"internet\""));
  EXPECT_THAT(result.output, HasSubstr("changed profile 2\n"));
  EXPECT_THAT(result.output, HasSubstr("Usage: pavoctl modify"));
  EXPECT_THAT(result.output, HasSubstr("release"));
  EXPECT_THAT(result.output, HasSubstr("\"pending\""));
  EXPECT_EQ(profileOnModem(2)["apn"], "a \"b");
  EXPECT_EQ(result.exit, badUsage);
  EXPECT_THAT(result.errors, HasSubstr("line 8: ")) << "there is no shell in the shell";
}

TEST_F(ShellTest, Import_Held_KeepsTheKeys) {
  const TemporaryFolder folder;
  const std::string path =
      writeFile(folder, "a.xml",
                "<apns><apn mcc='001' mnc='01' apn='x'/><apn mcc='001' mnc='01' apn='y'/></apns>");
  const ToolResult result =
      shell("import " + path + " --plmn 00101 --non-persistent --hold\nrelease all\nlist\n");
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, HasSubstr("key 1 holds profile 3\nkey 2 holds profile 4\n"
                                       "released key 1: profile 3 is deleted from the modem\n"
                                       "released key 2: profile 4 is deleted from the modem\n"));
}

TEST_F(ShellTest, SecretsAndJson_OfItsOwnCommandLine_CountForAll) {
  EXPECT_THAT(shell("get 1").output, Not(HasSubstr("hush")));
  const ToolResult result = run({"shell", "--show-secrets", "--json"}, "get 1");
  EXPECT_EQ(result.json()["password"], "hush,AuthType=PAP,hush");
}

TEST_F(ShellTest, ModemGoneAndBack_TheSessionGoesOn) {
  const auto terminal = terminalShell();
  terminal->type("list\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "internet")) << terminal->output();
  modem.kill();
  // This command always asks the modem, even if the library knows that the modem has gone.
  terminal->type("refresh --timeout 0.3\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "no modem answered within 0.3 s")) << terminal->output();
  modem.start();
  terminal->type("list --timeout 10\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "internet")) << terminal->output();
  terminal->type("quit\r");
  EXPECT_EQ(terminal->waitForExit(), done);
}

TEST_F(ShellTest, Terminal_EditingHistoryAndCompletion) {
  const auto terminal = terminalShell();
  // The keys are a Backspace, then the completion of an option.
  terminal->type("getx\x7f 2 --js\t\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "\"apnName\": \"ims\"")) << terminal->output();
  // Ctrl-P brings the previous line back, and its number is changed.
  terminal->type(
      "\x10\x01\x06\x06\x06\x06\x04"
      "1\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "\"apnName\": \"internet\"")) << terminal->output();
  // There are several completions, so all are shown.
  terminal->type("re\t");
  ASSERT_TRUE(waitForAnswer(*terminal, "refresh  release")) << terminal->output();
  // Ctrl-C drops the line, not the session.
  terminal->type("\x03");
  ASSERT_TRUE(waitForAnswer(*terminal, "^C")) << terminal->output();
  terminal->type("get 9\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "pavoctl: there is no profile 9\r\n")) << terminal->output();
  terminal->type("\x04");
  EXPECT_EQ(terminal->waitForExit(), done);
}

TEST_F(ShellTest, Terminal_ListenerCalledAtThePrompt_TellsAtOnce) {
  const auto terminal = terminalShell();
  terminal->type("hold 1\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "key 1 holds profile 1")) << terminal->output();
  terminal->type("listen 1\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "listening for the end of key 1")) << terminal->output();
  terminal->type("ke");
  ASSERT_TRUE(terminal->waitForOutput("ke"));
  modem.control("modify", {{"index", 1}, {"apn", "other"}});
  // The shell shows the typed text again after the message.
  ASSERT_TRUE(waitForAnswer(*terminal, "key 1: profile 1 has gone or changed"))
      << terminal->output();
  terminal->type("ys\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "listener called")) << terminal->output();
}

TEST_F(ShellTest, Terminal_ModemThatHangs_IsOutlastedOrLeft) {
  const auto terminal = terminalShell();
  modem.control("fail", {{"message", "profile-settings"}, {"silent", true}, {"count", 2}});
  terminal->type("refresh --timeout 0.3\r");
  ASSERT_TRUE(terminal->waitForOutput("no modem answered within 0.3 s")) << terminal->output();
  ASSERT_TRUE(terminal->waitForOutput("; still waiting, Ctrl-C ends the session"));
  ASSERT_TRUE(terminal->waitForOutput("pavoctl> ")) << terminal->output();
  // The faults keep the library busy until the Ctrl-C arrives.
  for (int profile = 3; profile <= 16; ++profile) {
    modem.control("create", {{"apn", "other"}});
  }
  modem.control("fail", {{"message", "profile-settings"}, {"silent", true}, {"count", 60}});
  terminal->type("refresh --timeout 0.3\r");
  ASSERT_TRUE(terminal->waitForOutput("; still waiting, Ctrl-C ends the session"));
  terminal->type("\x03");
  EXPECT_EQ(terminal->waitForExit(), failed);
}

TEST_F(ShellTest, Terminal_SignalToACommand_ReturnsToThePrompt) {
  const auto terminal = terminalShell();
  terminal->type("watch\r");
  ASSERT_TRUE(terminal->waitForOutput("watching 2 profiles")) << terminal->output();
  terminal->type("\x03");
  ASSERT_TRUE(terminal->waitForOutput("pavoctl> ")) << terminal->output();
  terminal->type("add --apn held --hold\r");
  ASSERT_TRUE(waitForAnswer(*terminal, "key 1 holds profile 3")) << terminal->output();
  // The end of the terminal is the end of the session.
  kill(terminal->pid(), SIGHUP);
  EXPECT_EQ(terminal->waitForExit(), done);
  EXPECT_EQ(profileOnModem(3), nullptr);
}

}  // namespace
}  // namespace pavo::test
