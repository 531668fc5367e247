// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Tool.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>

namespace pavo::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

// Removes the numbers of profiles that the modem has yet to make.
Json withoutNewIds(Json json, int lastId) {
  if (!json.is_structured()) {
    return json;
  }
  for (auto& part : json) {
    part = withoutNewIds(part, lastId);
  }
  if (json.is_object() && json.contains("id") && json["id"].is_number() && json["id"] > lastId) {
    json["id"] = nullptr;
  }
  return json;
}

class PolicyProgramTest : public ToolTest {
 protected:
  int lastId() { return modem.control("show")["profiles"].back()["index"]; }

  Json edits() {
    Json found = Json::array();
    const Json entries = modem.control("transcript")["entries"];
    for (const auto& entry : entries) {
      const std::string message = entry.value("message", "");
      if (entry["direction"] == "in" &&
          (message == "create-profile" || message == "modify-profile" ||
           message == "delete-profile")) {
        found.push_back(entry);
      }
    }
    return found;
  }

  // Waits until that many profiles have been read.
  void awaitReading(int profiles) {
    ASSERT_TRUE(waitUntil([&] {
      const Json entries = modem.control("transcript")["entries"];
      return std::count_if(entries.begin(), entries.end(), [](const Json& entry) {
               return entry["direction"] == "out" && entry["message"] == "profile-settings";
             }) >= profiles;
    }));
  }

  // Makes a dry run and then a real run, and compares them.
  void expectForeseen(Arguments arguments) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.end(), {"--json", "--explain"});
    Arguments dry = arguments;
    dry.emplace_back("--dry-run");
    const Json before = modem.control("show")["profiles"];
    const int last = lastId();
    modem.control("clear-transcript");
    Json foreseen = run(dry).json();
    EXPECT_EQ(edits(), Json::array());
    EXPECT_EQ(modem.control("show")["profiles"], before);
    Json told = run(arguments).json();
    ASSERT_TRUE(foreseen.is_object() && told.is_object());
    EXPECT_EQ(foreseen["isDryRun"], true);
    EXPECT_EQ(foreseen["explanation"]["source"], "foresight");
    EXPECT_EQ(told["isDryRun"], false);
    EXPECT_EQ(told["explanation"]["source"], "library");
    for (Json* json : {&foreseen, &told}) {
      json->erase("isDryRun");
      (*json)["explanation"].erase("source");
    }
    EXPECT_EQ(withoutNewIds(foreseen, last), withoutNewIds(told, last));
  }
};

TEST_F(PolicyProgramTest, DryRun_AnyPolicy_IsWhatTheRunDoes) {
  const std::vector<Arguments> calls{
      {"setup-data-call", "apn=internet,home-ip=V4"},
      {"setup-data-call", "apn=internet,home-ip=V4,types=MMS,user=you"},
      {"setup-data-call", "apn=new,home-ip=V6,roam-ip=V4"},
      {"emergency", "--apn", "sos", "--home-ip", "V4V6"},
      {"emergency", "--apn", "other"},
      {"lte-attach", "apn=ims,home-ip=V6,auth=CHAP"},
      {"lte-attach", "apn=attach,home-ip=V4,roam-ip=V6", "user=u,password=p"},
      {"lte-attach", "apn=elsewhere,home-ip=V6"},
      {"match-attach", "1", "apn=internet,home-ip=V4"},
      {"match-attach", "2", "apn=internet"},
      {"apn-class", "class=IMS,apn=ims2,max-pdn=3", "class=APP,apn=app", "class=APP,clat=yes"},
      {"apn-types", "apn=internet,home-ip=V4,types=DUN", "apn=Internet,home-ip=V6,types=FOTA"},
  };
  for (const Arguments& call : calls) {
    expectForeseen(call);
    Arguments allowed = call;
    allowed.emplace_back("--allow-update");
    expectForeseen(allowed);
  }
}

TEST_F(PolicyProgramTest, Explain_Text_SaysWhatWasLookedForAndWhyNot) {
  const ToolResult result = run({"setup-data-call", "apnName=internet,homeIPType=V4", "--explain"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output,
              StartsWith("Policy setup-data-call, without leave to change what it finds.\n"
                         "Wanted: apnName = internet, homeIPType = V4\n"
                         "1. Look for a profile of the wanted name and home IP type.\n"
                         "   Filter: apnName = internet, homeIPType = V4\n"
                         "   Found:  none\n"
                         "   Not profile 1 (internet): homeIPType is V4V6, not V4\n"
                         "   Not profile 2 (ims): apnName is ims, not internet\n"
                         "2. Look for a profile of the wanted name whose home IP type contains the "
                         "wanted one or is contained in it.\n"
                         "   Filter: apnName = internet, homeIPType = V4 or wider or narrower\n"
                         "   Found:  profile 1 (internet)\n"
                         "   Not profile 2 (ims): apnName is ims, not internet\n"
                         "\n"
                         "found profile 1 (internet)\n"));
}

TEST_F(PolicyProgramTest, Explain_Changes_ShowBeforeAndAfter) {
  const Json told =
      run({"setup-data-call", "apn=ims,home-ip=V4V6,password=new", "--allow-update", "--json"})
          .json();
  EXPECT_EQ(told["profile"]["homeIPType"], "V4V6");
  EXPECT_EQ(told["isCreated"], false);
  EXPECT_EQ(told["edits"].at(0)["changes"],
            Json::parse(R"({"homeIPType": {"before": "V6", "after": "V4V6"},
                            "password": {"after": "********"}})"));
  EXPECT_EQ(profileOnModem(2)["pdpType"], "V4V6");
  EXPECT_EQ(profileOnModem(2)["password"], "new");
}

TEST_F(PolicyProgramTest, Explain_Passwords_AreMasked) {
  const ToolResult result =
      run({"match-attach", "1", "apn=internet", "--password", "hush", "--explain"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output,
              HasSubstr("profile 1 may not be used for attach: password is another\n"));
  EXPECT_THAT(result.output, testing::Not(HasSubstr("hush")));
}

TEST_F(PolicyProgramTest, Explain_List_SaysWhatDoesNotMatch) {
  const ToolResult text = run({"filter", "--types", "IMS", "--explain"});
  EXPECT_EQ(text.exit, done) << text;
  EXPECT_THAT(text.output,
              HasSubstr("   Not profile 1 (internet): apnTypesMask is DEFAULT|SUPL, not IMS\n"));
  const Json json = run({"list", "--types", "IMS", "--explain", "--json"}).json();
  EXPECT_EQ(json["profiles"].at(0)["id"], 2);
  EXPECT_EQ(json["explanation"]["steps"].at(0)["rejected"].at(0)["attribute"], "apnTypesMask");
}

TEST_F(PolicyProgramTest, MatchAttach_OfTheRightProfile_IsStatus0) {
  const ToolResult result = run({"match-attach", "1", "apn=internet,home-ip=V4"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.output, "profile 1 may be used for attach\n");
  EXPECT_THAT(run({"match-attach", "7"}).output, HasSubstr("there is no such profile"));
}

TEST_F(PolicyProgramTest, SetupDataCall_Created_IsDeletedAtTheEndAndSaysSo) {
  const ToolResult result = run({"setup-data-call", "apn=new"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_THAT(result.output, HasSubstr("profile 3 (new) created, not persistent"));
  EXPECT_THAT(result.output, HasSubstr("deleted again now: give --hold to keep it"));
  EXPECT_EQ(profileOnModem(3), nullptr);
}

TEST_F(PolicyProgramTest, SetupDataCall_Held_LivesUntilTheSignal) {
  const auto holder = start({"setup-data-call", "apn=new", "--hold", "--json"});
  ASSERT_TRUE(holder->waitForOutput("}\n")) << holder->errors();
  EXPECT_EQ(profileOnModem(3)["persistent"], false);
  holder->sendSignal(SIGTERM);
  const ToolResult result = finish(*holder);
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(profileOnModem(3), nullptr);
}

TEST_F(PolicyProgramTest, Emergency_Created_Stays) {
  EXPECT_EQ(run({"emergency", "--apn", "sos"}).exit, done);
  EXPECT_EQ(profileOnModem(3)["emergency"], true);
  EXPECT_EQ(profileOnModem(3)["persistent"], true);
}

TEST_F(PolicyProgramTest, AnyPolicy_CreateRefused_Fails) {
  for (const Arguments& call : std::vector<Arguments>{{"setup-data-call", "apn=new"},
                                                      {"emergency", "apn=new"},
                                                      {"lte-attach", "apn=new"},
                                                      {"apn-class", "class=APP"}}) {
    modem.control("fail", {{"message", "create-profile"}, {"error", 3}});
    const ToolResult result = run(call);
    EXPECT_EQ(result.exit, failed) << result;
    EXPECT_EQ(result.errors,
              "pavoctl: the modem refused 1 of 1 edits or did not answer: the new profile\n");
    EXPECT_THAT(result.output, HasSubstr("the modem refused it or did not answer"));
  }
}

TEST_F(PolicyProgramTest, List_OneChangeRefused_NamesItAndDoesTheRest) {
  modem.control("create", {{"apn", "ims"}, {"class", 1}});
  modem.control("fail", {{"message", "modify-profile"}, {"error", 7}});
  const ToolResult result = run({"apn-class", "class=IMS,clat=yes"});
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_THAT(result.errors,
              StartsWith("pavoctl: the modem refused 1 of 2 edits or did not answer: profile "));
  EXPECT_NE(profileOnModem(2).value("clat", false), profileOnModem(3).value("clat", false));
}

TEST_F(PolicyProgramTest, List_FromFileInputAndWords_IsOneList) {
  const TemporaryFolder folder;
  const std::string file =
      writeFile(folder, "list.json", R"([{"apnClass": "IMS", "isClatEnabled": true}])");
  EXPECT_EQ(run({"apn-class", "--file", file, "class=APP,apn=app", "--class", "ADMN"}).exit, done);
  EXPECT_EQ(profileOnModem(2)["clat"], true);
  EXPECT_EQ(profileOnModem(3)["apn"], "app");
  EXPECT_EQ(profileOnModem(4)["class"], 2);
  ChildProcess shell(
      {"sh", "-c", R"("$1" list --json --show-secrets | "$1" apn-types --file - --json)", "sh",
       PAVOCTL_PROGRAM},
      {.environment = {"OVIX_MODEM=" + modem.socketPath()}, .workingFolder = {}, .input = {}});
  const ToolResult piped = finish(shell);
  EXPECT_EQ(piped.exit, badUsage) << piped;
  EXPECT_THAT(piped.errors, HasSubstr("element 4 has no apnName"));
}

TEST_F(PolicyProgramTest, BadInput_AnyKind_IsOneLineAndChangesNothing) {
  const TemporaryFolder folder;
  const auto file = [&](const std::string& text) { return writeFile(folder, "list.json", text); };
  struct Case {
    Arguments arguments;
    ChildProcess::Exit exit;
    std::string error;
  };
  modem.control("clear-transcript");
  for (const Case& c : std::vector<Case>{
           {{"setup-data-call", "apn"}, badUsage, "an argument is not ATTRIBUTE=VALUE"},
           {{"setup-data-call", "apm=x"}, badUsage, "'apm' is not an attribute of a profile"},
           {{"setup-data-call", "password=a,b"}, badUsage, "an argument is not ATTRIBUTE=VALUE"},
           {{"setup-data-call", "apn=a", "--apn", "b"}, badUsage, "apnName is given twice"},
           {{"setup-data-call", "homeIPType=V5"}, badUsage, "homeIPType: 'V5'"},
           {{"setup-data-call", "max-pdn=x"}, badUsage, "max-pdn: 'x' is not a number"},
           {{"setup-data-call", "apn=" + std::string(151, 'a')}, badUsage, "apn: 151 bytes"},
           {{"match-attach", "x"}, badUsage, "ID: 'x'"},
           {{"match-attach"}, badUsage, "ID is required"},
           {{"apn-class"}, badUsage, "nothing is wanted"},
           {{"apn-class", "apn=x"}, badUsage, "element 1 has no apnClass"},
           {{"apn-types", "types=MMS"}, badUsage, "element 1 has no apnName"},
           {{"apn-class", "--file", folder.file("none")}, failed, "none: No such file"},
           {{"apn-class", "--file", folder.file("")}, failed, "Is a directory"},
           {{"usage", "--capacity", "256"}, badUsage, "--capacity: '256'"},
           {{"verify", "--for", "x"}, badUsage, "--for: 'x'"},
       }) {
    const ToolResult result = run(c.arguments);
    EXPECT_EQ(result.exit, c.exit) << c.error << result;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr(c.error));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
  }
  for (const auto& [text, error] : std::vector<std::pair<std::string, std::string>>{
           {"", "not JSON"},
           {"[{]", "not JSON"},
           {"{}", "not a list"},
           {"[3]", "element 1: a profile is an object"},
           {R"([{"apnClass": 1}, {"apn": "x"}])", "element 2 has no apnClass"},
           {R"([{"apnName": 3}])", "element 1: apnName: a number is not a value"},
           {R"([{"apnClass": true}])", "element 1: apnClass: true or false is not a value"},
           {R"([{"apnClass": 256}])", "element 1: apnClass: '256'"},
           {R"([{"apnTypesMask": ["MMS", "X"]}])", "element 1: apnTypesMask: 'X'"},
           {R"([{"mcc": "234"}])", "element 1: 'mcc' is not an attribute"},
           {R"([{"password": "********"}])", "element 1: password: it has been masked"}}) {
    const ToolResult result = run({"apn-class", "--file", file(text)});
    EXPECT_EQ(result.exit, badUsage) << text << result;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr(error));
    EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
  }
  EXPECT_EQ(modem.control("transcript")["entries"], Json::array());
}

TEST_F(PolicyProgramTest, DryRun_Edits_SayWhatWouldBeDone) {
  const Json before = modem.control("show")["profiles"];
  modem.control("clear-transcript");
  const ToolResult added = run({"add", "--apn", "New", "--home-ip", "V4", "--dry-run", "--json"});
  EXPECT_EQ(added.json()["profile"]["apnName"], "new") << added;
  const ToolResult modified = run({"modify", "2", "--home-ip", "V4", "--dry-run"});
  EXPECT_THAT(modified.output, StartsWith("profile 2 would be changed: homeIPType: V6 -> V4\n"))
      << modified;
  EXPECT_THAT(run({"modify", "2", "--apn", "IMS", "--dry-run"}).output,
              StartsWith("profile 2 is like that already\n"));
  EXPECT_THAT(run({"delete", "1", "--dry-run"}).output, StartsWith("profile 1 would be deleted\n"));
  const ToolResult unknown = run({"delete", "9", "--dry-run"});
  EXPECT_EQ(unknown.exit, failed);
  EXPECT_EQ(unknown.errors, "pavoctl: there is no profile 9\n");
  EXPECT_EQ(edits(), Json::array());
  EXPECT_EQ(modem.control("show")["profiles"], before);
}

TEST_F(PolicyProgramTest, Usage_Slots_HaveOwners) {
  run({"add", "--apn", "own", "--persistent"});
  run({"add", "--apn", "attach", "--persistent", "--ia"});
  const Json usage = run({"usage", "--json", "--capacity", "6"}).json();
  EXPECT_EQ(usage["used"], 4);
  EXPECT_EQ(usage["owners"],
            Json::parse(R"({"modem": 2, "library": 1, "library for initial attach": 1})"));
  EXPECT_EQ(usage["unheld"], Json::parse("[3, 4]"));
  EXPECT_EQ(usage["free"], Json::parse("[5, 6]"));
  EXPECT_EQ(run({"usage"}).output,
            "SLOT  APN       OWNER                       KEYS\n"
            "1     internet  modem                       0\n"
            "2     ims       modem                       0\n"
            "3     own       library                     0\n"
            "4     attach    library for initial attach  0\n"
            "4 slots used: 2 of the modem, 1 of the library, 1 of the library for initial attach\n"
            "made by the library and held by no key of this process: 3, 4\n");
}

TEST_F(PolicyProgramTest, Verify_NothingAmiss_IsStatus0) {
  const ToolResult result = run({"verify"});
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.output, "the cache and the modem agree on 2 profiles\n");
}

TEST_F(PolicyProgramTest, Verify_ModemThatTellsNothing_IsDrift) {
  // The modem refuses to send the first client events, so that client's cache becomes stale.
  modem.control("fail", {{"message", "configure-events"}, {"error", 9}});
  const auto verifier = start({"verify", "--for", "600", "--settle", "0.1", "--json"});
  awaitReading(2);
  modem.control("modify", {{"index", 1}, {"apn", "other"}, {"password", "new"}});
  modem.control("create", {{"apn", "late"}});
  modem.control("delete", {{"index", 2}});
  verifier->sendSignal(SIGTERM);
  const ToolResult result = finish(*verifier);
  EXPECT_EQ(result.exit, failed) << result;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.json()["drift"], Json::parse(R"([
    {"id": 1, "apnName": "internet", "kind": "differs", "changes": {
      "apnName": {"cache": "internet", "modem": "other"},
      "password": {"cache": "********", "modem": "********"}}},
    {"id": 2, "apnName": "ims", "kind": "missing"},
    {"id": 3, "apnName": "late", "kind": "unknown"}])"));
}

TEST_F(PolicyProgramTest, Verify_ModemThatTellsEverything_IsFollowed) {
  const auto verifier = start({"verify", "--for", "600", "--settle", "30"});
  awaitReading(2);
  modem.control("modify", {{"index", 1}, {"apn", "other"}});
  modem.control("delete", {{"index", 2}});
  verifier->sendSignal(SIGTERM);
  const ToolResult result = finish(*verifier);
  EXPECT_EQ(result.exit, done) << result;
  EXPECT_EQ(result.output, "the cache and the modem agree on 1 profile\n");
}

}  // namespace
}  // namespace pavo::test
