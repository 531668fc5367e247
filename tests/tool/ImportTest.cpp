// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Tool.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <set>
#include <sstream>

namespace pavo::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using Json = nlohmann::json;

constexpr const char* debiansList = "/usr/share/mobile-broadband-provider-info/apns-conf.xml";
constexpr const char* debiansProviders =
    "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

constexpr const char* smallList = R"(<apns>
<apn carrier="One" mcc="001" mnc="01" apn="One.Net" type="default" protocol="IPV4V6" authtype="1" user="u" password="hush"/>
<apn carrier="Two" mcc="001" mnc="01" apn="two" type="mms" mmsc="http://mms"/>
<apn carrier="Other" mcc="001" mnc="02" apn="other"/>
<apn carrier="None" mcc="001" mnc="01" type="default"/>
<apn carrier="Stray" apn="stray"/>
</apns>
)";

class ImportTest : public ToolTest {
 protected:
  std::string file(const std::string& text) { return writeFile(folder, "apns.xml", text); }

  // Makes a dry run of the whole list without a modem. Each entry must have a line. All entries
  // that are neither refused nor there already would be imported.
  void expectEveryEntryReported(const char* path, std::size_t entries) {
    const ToolResult result =
        runTool(folder.file("nobody"), {"import", path, "--plmn", "all", "--dry-run", "--json"});
    EXPECT_EQ(result.exit, done) << result.errors;
    const Json report = result.json();
    std::set<unsigned long> lines;
    for (const auto& entry : report["imported"]) {
      EXPECT_TRUE(lines.insert(entry["line"].get<unsigned long>()).second) << entry;
    }
    EXPECT_GT(lines.size(), 1000U);
    for (const auto& note : report["notes"]) {
      if (note["note"].get<std::string>().rfind("not added again: ", 0) == 0) {
        EXPECT_TRUE(lines.insert(note["line"].get<unsigned long>()).second) << note;
      }
    }
    EXPECT_EQ(lines.size(), entries);
    EXPECT_THAT(report["notes"].back()["note"].get<std::string>(),
                HasSubstr("no modem has room for more than 255"));
  }

  const TemporaryFolder folder;
};

TEST_F(ImportTest, Import_SmallFile_ReportsEveryEntry) {
  const std::string path = file(smallList);
  const ToolResult result = run({"import", path, "--plmn", "00101"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.output,
            "note: entries without a proper mcc and mnc belong to no network; lines 6\n"
            "line 2: One: one.net (DEFAULT): profile 3\n"
            "line 3: note: a profile has no place for mmsc\n"
            "line 3: Two: two (MMS): profile 4\n"
            "2 imported, 1 refused, 2 notes\n");
  EXPECT_EQ(result.errors, "pavoctl: " + path + ":5: refused: it names no access point\n");
  EXPECT_EQ(profileOnModem(3)["persistent"], true);
  EXPECT_EQ(profileOnModem(3)["auth"], 1);
  EXPECT_EQ(profileOnModem(3)["password"], "hush");
}

TEST_F(ImportTest, Import_Json_SaysTheSame) {
  const ToolResult result = run({"import", file(smallList), "--plmn", "00101", "--json"});
  const Json report = result.json();
  ASSERT_TRUE(report.is_object()) << result;
  EXPECT_EQ(report["imported"].size(), 2U);
  EXPECT_EQ(report["imported"][0]["profile"]["apnName"], "one.net");
  EXPECT_EQ(report["imported"][0]["profile"]["password"], "********");
  EXPECT_EQ(report["refused"][0]["line"], 5);
  EXPECT_EQ(report["notes"].size(), 2U);
  EXPECT_THAT(result.output, Not(HasSubstr("hush")));
}

TEST_F(ImportTest, Import_Twice_AddsNothingNew) {
  run({"import", file(smallList), "--plmn", "00101"});
  const ToolResult result = run({"import", file(smallList), "--plmn", "00101"});
  EXPECT_THAT(result.output, HasSubstr("line 2: note: not added again: the same profile is on the "
                                       "modem as profile 3\n"));
  EXPECT_THAT(result.output, EndsWith("0 imported, 1 refused, 4 notes\n"));
  EXPECT_EQ(modem.control("show")["profiles"].size(), 4U);
}

TEST_F(ImportTest, Import_SameEntryTwiceInTheFile_IsAddedOnce) {
  const std::string entry = "<apn mcc='001' mnc='01' apn='x' type='default'/>\n";
  const ToolResult result =
      run({"import", file("<apns>" + entry + entry + "</apns>"), "--plmn", "00101"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output,
              HasSubstr("line 2: note: not added again: the same profile is that of line 1\n"));
}

TEST_F(ImportTest, Import_DryRun_NeedsNoModem) {
  const ToolResult result =
      runTool(folder.file("nobody"), {"import", file(smallList), "--plmn", "00102", "--dry-run"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, HasSubstr("line 4: Other: other (DEFAULT|MMS|SUPL|DUN|HIPRI|FOTA|CBS)"
                                       ": would be added\n"));
  EXPECT_THAT(result.output, EndsWith("1 would be imported, 0 refused, 1 notes\n"));
}

TEST_F(ImportTest, Import_EveryOperatorOfDebiansLists_ReportsEveryEntry) {
  expectEveryEntryReported(debiansList, 1304);
  expectEveryEntryReported(debiansProviders, 1304);
}

TEST_F(ImportTest, Import_EveryOperatorIntoAFullTable_StopsWithOneLine) {
  const ToolResult result = run({"import", debiansProviders, "--plmn", "all"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_THAT(result.output, HasSubstr("\n14 imported, 3 refused, "));
  std::vector<std::string> errors;
  std::istringstream lines(result.errors);
  for (std::string line; std::getline(lines, line);) {
    errors.push_back(line);
  }
  ASSERT_EQ(errors.size(), 4U) << result.errors;
  EXPECT_THAT(errors[0], HasSubstr(": refused: the modem refused the new profile"));
  EXPECT_THAT(errors[3], MatchesRegex("pavoctl: .*: stopped: the modem takes no more profiles; 14 "
                                      "imported, 12[0-9]{2} from line [0-9]+ on not done"));
  EXPECT_EQ(modem.control("show")["profiles"].size(), 16U);
}

TEST_F(ImportTest, Import_GnomesFormat_IsRecognised) {
  const ToolResult result = run({"import", debiansProviders, "--plmn", "26207"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, HasSubstr("note: network 26207 has 5 operators, all are taken: 'O2', "
                                       "'Tchibo-Mobil', 'FONIC', 'Alice', 'Netzclub'\n"));
  EXPECT_THAT(result.output, HasSubstr("o2 MMS: internet (MMS): profile 6\n"));
  EXPECT_EQ(profileOnModem(6)["apn"], "internet");
  EXPECT_EQ(profileOnModem(6)["apnTypes"], 4);
}

TEST_F(ImportTest, Import_OnATerminal_ShowsAndWipesItsProgress) {
  const auto terminal = startToolOnTerminal(modem.socketPath(),
                                            {"import", debiansList, "--plmn", "all", "--dry-run"});
  EXPECT_TRUE(terminal->waitForOutput("\rimporting: 0 of 1304\r\033[K"));
  EXPECT_EQ(terminal->waitForExit(), done);
  EXPECT_THAT(terminal->output(), EndsWith(" notes\r\n"));
  // The progress is shown on a terminal only; the other tests show this when they compare standard
  // error.
}

TEST_F(ImportTest, Check_Findings_AreLinesAndStatus1) {
  const std::string path = file(smallList);
  const ToolResult result = runTool("/nonexistent", {"import", path, "--check"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, path + ":5: <apn> without apn\n" + path + ":6: <apn> without mcc\n" +
                               path + ":6: <apn> without mnc\n5 entries, 3 findings\n");
  const Json report = runTool("/nonexistent", {"import", path, "--check", "--json"}).json();
  EXPECT_EQ(report["entries"], 5);
  EXPECT_EQ(report["findings"][0],
            Json::parse(R"({"line": 5, "kind": "missing", "finding": "<apn> without apn"})"));
}

TEST_F(ImportTest, Check_CleanFile_IsStatus0) {
  const ToolResult result = runTool(
      "/nonexistent",
      {"import", file("<apns><apn mcc='001' mnc='01' apn='x' carrier='X'/></apns>"), "--check"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.output, "1 entries, 0 findings\n");
}

TEST_F(ImportTest, Import_TableFull_RefusesTheRest) {
  std::string text = "<apns>\n";
  for (int i = 0; i < 15; ++i) {
    text += "<apn mcc='001' mnc='01' type='default' apn='n" + std::to_string(i) + "'/>\n";
  }
  const ToolResult result = run({"import", file(text + "</apns>"), "--plmn", "00101"});
  EXPECT_EQ(result.exit, failed);
  EXPECT_THAT(result.output, EndsWith("14 imported, 1 refused, 0 notes\n"));
  EXPECT_THAT(result.errors, HasSubstr(":16: refused: the modem refused the new profile"));
}

TEST_F(ImportTest, Import_HeldNonPersistent_LivesUntilTheSignal) {
  const auto holder =
      start({"import", file(smallList), "--plmn", "00102", "--non-persistent", "--hold"});
  ASSERT_TRUE(holder->waitForOutput("1 imported")) << holder->errors();
  EXPECT_EQ(profileOnModem(3)["persistent"], false);
  holder->sendSignal(SIGTERM);
  EXPECT_EQ(finish(*holder).exit, done);
  EXPECT_EQ(profileOnModem(3), nullptr);
}

TEST_F(ImportTest, Import_UnusableFile_IsOneLine) {
  struct Case {
    std::string path;
    const char* complaint;
  };
  for (const Case& c : std::vector<Case>{
           {folder.file("missing"), "No such file or directory"},
           {folder.path().string(), "Is a directory"},
           {writeFile(folder, "empty", ""), "the file is empty"},
           {writeFile(folder, "broken", "<apns>\n<apn"), ":2: unclosed token"},
           {writeFile(folder, "bomb", "<!DOCTYPE a [<!ENTITY a 'b'>]><apns/>"), "entities"},
           {writeFile(folder, "stranger", smallList), "none of its 5 entries is for network 23402"},
           {writeFile(folder, "nothing", "<apns/>"), "there is no access point in it"},
           {writeFile(folder, "json", "{\"apns\": []}"), ":1: not well-formed"},
           {writeFile(folder, "laughs",
                      "<!DOCTYPE a [<!ENTITY a 'ha'><!ENTITY b '&a;&a;'>]><apns>&b;</apns>"),
            "entities"},
           {"/dev/zero", "not well-formed"},
       }) {
    const ToolResult result = run({"import", c.path, "--plmn", "23402"});
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("pavoctl: " + c.path));
    EXPECT_THAT(result.errors, HasSubstr(c.complaint));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
  }
}

TEST_F(ImportTest, Import_OperatorOfDebiansList_IsWhatTheModemHas) {
  const ToolResult result =
      run({"import", debiansList, "--plmn", "23402", "--json", "--show-secrets"});
  EXPECT_EQ(result.exit, done) << result;
  const Json imported = result.json()["imported"];
  EXPECT_GE(imported.size(), 9U);
  for (const auto& entry : imported) {
    const Json& profile = entry["profile"];
    const Json onModem = profileOnModem(profile["id"]);
    EXPECT_EQ(onModem["apn"], profile["apnName"]);
    EXPECT_EQ(onModem["user"], profile["userName"]);
    EXPECT_EQ(onModem["password"], profile["password"]);
    EXPECT_EQ(onModem["pdpType"], "V4");
  }
}

}  // namespace
}  // namespace pavo::test
