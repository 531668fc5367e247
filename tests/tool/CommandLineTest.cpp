// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"
#include "Errors.h"

#include <gmock/gmock.h>

#include <vector>

namespace pavoctl {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::ThrowsMessage;

CommandLine parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "pavoctl");
  return CommandLine::parse(static_cast<int>(arguments.size()), arguments.data());
}

TEST(CommandLine, Globals_BeforeAndBehindTheVerb) {
  for (const auto& line : {parse({"--json", "--subscription", "-2", "--timeout", "0.5", "list"}),
                           parse({"list", "--json", "--subscription=-2", "--timeout=0.5"})}) {
    EXPECT_EQ(line.verb, "list");
    EXPECT_TRUE(line.isJson);
    EXPECT_EQ(line.session.subscription, -2);
    EXPECT_EQ(line.session.timeout.count(), 500);
    EXPECT_EQ(line.secrets, Secrets::masked);
  }
}

TEST(CommandLine, Defaults_AreAsDocumented) {
  const CommandLine line = parse({"dump"});
  EXPECT_EQ(line.session.subscription, 1);
  EXPECT_EQ(line.session.timeout.count(), 5000);
  EXPECT_FALSE(line.session.useAndroidLog);
  EXPECT_FALSE(line.isJson);
}

TEST(CommandLine, Attributes_All_ReachTheProfile) {
  const CommandLine line = parse(
      {"modify",    "3",    "--apn",          "Net", "--user",      "me", "--password", "p",
       "--auth",    "CHAP", "--home-ip",      "V4",  "--roam-ip",   "V6", "--types",    "MMS|DUN",
       "--class",   "APP",  "--clat",         "yes", "--emergency", "no", "--disabled", "on",
       "--max-pdn", "1",    "--max-pdn-time", "2",   "--wait",      "3"});
  EXPECT_EQ(line.verb, "modify");
  EXPECT_EQ(line.profileId, 3);
  EXPECT_EQ(line.attributes.dump(),
            "ApnName=Net,UserName=me,Password=p,AuthType=CHAP,HomeIPType=V4,RoamIPType=V6,"
            "ApnTypesMask=MMS|DUN|,ApnClass=APP,IsClatEnabled=1,MaxPdnsConnPerBlock=1,"
            "MaxPdnConnTimer=2,PdnReqWaitInterval=3,IsApnDisabled=1,IsEmergencySupported=0,");
}

TEST(CommandLine, TextValues_AwkwardOnes_ArriveUntouched) {
  for (const char* password : {"", "-x", "--json", "[a]", "a,b", "\"q\"", "'q'", "{}", "%%", " ",
                               "a=b", "@file", "# no comment", "\xFF"}) {
    SCOPED_TRACE(password);
    const CommandLine line = parse({"modify", "3", "--password", password});
    EXPECT_TRUE(line.attributes.hasPassword());
    EXPECT_EQ(line.attributes.getPassword(), password);
    EXPECT_FALSE(line.isJson);
  }
}

TEST(CommandLine, ListFilters_All_ReachTheFilter) {
  const CommandLine line = parse({"list",
                                  "--apn",
                                  "net",
                                  "--apn-subset",
                                  "--types",
                                  "MMS",
                                  "--types-subset",
                                  "--home-ip",
                                  "V4",
                                  "--home-ip-subset",
                                  "--home-ip-superset",
                                  "--roam-ip",
                                  "V6",
                                  "--roam-ip-subset",
                                  "--roam-ip-superset",
                                  "--id",
                                  "5",
                                  "--pavo",
                                  "yes",
                                  "--ia",
                                  "no"});
  EXPECT_EQ(line.filter.getFilterMatchCriteria(), 0x3FU);
  EXPECT_EQ(line.filter.getFilterByProfileId(), 5);
  EXPECT_TRUE(line.filter.getIsPavoProfile());
  EXPECT_TRUE(line.filter.hasFilterByIsIAProfile());
  EXPECT_FALSE(line.filter.getIsIAProfile());
}

TEST(CommandLine, ListWithoutFilters_MatchesEverything) {
  EXPECT_EQ(parse({"list"}).filter.dump(), "None: ");
}

TEST(CommandLine, Import_PersistentUnlessAskedOtherwise) {
  EXPECT_TRUE(parse({"import", "f", "--plmn", "23402"}).isPersistent);
  EXPECT_TRUE(parse({"import", "f", "--plmn", "23402", "--persistent"}).isPersistent);
  const CommandLine line = parse({"import", "f", "--plmn", "23402", "--non-persistent", "--hold"});
  EXPECT_FALSE(line.isPersistent);
  EXPECT_TRUE(line.isHeld);
}

TEST(CommandLine, ImportOfEveryOperator_AndCheck) {
  EXPECT_FALSE(parse({"import", "f", "--plmn", "23402"}).isEveryOperator);
  EXPECT_TRUE(parse({"import", "f", "--plmn", "all"}).isEveryOperator);
  EXPECT_TRUE(parse({"import", "f", "--check"}).isCheck);
}

TEST(CommandLine, Shell_ItsOwnVerbsAndTheGlobalsItWasStartedWith) {
  const CommandLine start = parse({"shell", "--json", "--timeout", "7", "--subscription", "2"});
  EXPECT_EQ(start.verb, "shell");
  const CommandLine line = CommandLine::parseInShell({"release", "all"}, start);
  EXPECT_EQ(line.verb, "release");
  EXPECT_EQ(line.keyNumber, 0);
  EXPECT_TRUE(line.isJson);
  EXPECT_EQ(line.session.timeout.count(), 7000);
  EXPECT_EQ(line.session.subscription, 2);
  EXPECT_EQ(CommandLine::parseInShell({"listen", "4", "--timeout", "1"}, start).keyNumber, 4);
  EXPECT_THROW(CommandLine::parseInShell({"listen", "all"}, start), UsageError);
  EXPECT_THROW(CommandLine::parseInShell({"shell"}, start), UsageError);
}

TEST(CommandLine, Help_EveryVerb_HasExamples) {
  EXPECT_THAT(parse({"--help"}).help, HasSubstr("OVIX_MODEM"));
  for (const char* verb :
       {"list", "get", "add", "modify", "delete", "refresh", "dump", "watch", "import", "shell"}) {
    EXPECT_THAT(parse({verb, "--help"}).help, HasSubstr("Examples:\n  pavoctl ")) << verb;
  }
}

struct BadUsage {
  std::vector<const char*> arguments;
  const char* message;
};

TEST(CommandLine, BadUsage_IsRefusedInOneLine) {
  for (const BadUsage& bad : std::vector<BadUsage>{
           {{}, "no command given"},
           {{"frobnicate"}, "'frobnicate' is not a command"},
           {{"list", "--frobnicate"}, "--frobnicate is not an option"},
           {{"list", "extra"}, "an argument too many"},
           {{"get"}, "ID is required"},
           {{"get", "x"}, "ID: 'x' is not a number"},
           {{"get", "256"}, "ID: '256' is not a number from 0 to 255"},
           {{"delete", "1", "2"}, "an argument too many"},
           {{"add", "--apn", "x"}, "--persistent, or --hold"},
           {{"add", "--persistent", "--hold"}, "excludes"},
           {{"add", "--persistent", "--max-pdn", "65536"}, "--max-pdn: '65536'"},
           {{"add", "--persistent", "--auth", "EAP"}, "--auth: 'EAP'"},
           {{"add", "--persistent", "--apn"}, "--apn"},
           {{"modify", "1"}, "nothing to change"},
           {{"modify", "1", "--json"}, "nothing to change"},
           {{"list", "--apn-subset"}, "--apn"},
           {{"list", "--timeout", "0"}, "--timeout: '0'"},
           {{"list", "--subscription", "4294967296"}, "--subscription"},
           {{"import", "f"}, "--plmn"},
           {{"import", "f", "--check", "--plmn", "all"}, "excludes"},
           {{"import", "f", "--check", "--dry-run"}, "excludes"},
           {{"release", "1"}, "release"},
           {{"import", "f", "--plmn", "234"}, "--plmn: '234'"},
           {{"import", "f", "--plmn", "23402", "--non-persistent"}, "--hold"},
           {{"import", "f", "--plmn", "23402", "--hold"}, "--non-persistent"},
           {{"import", "f", "--plmn", "23402", "--persistent", "--non-persistent"}, "excludes"},
       }) {
    SCOPED_TRACE(bad.message);
    try {
      parse(bad.arguments);
      ADD_FAILURE() << "it was accepted";
    } catch (const UsageError& error) {
      EXPECT_THAT(error.what(), HasSubstr(bad.message));
      EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << error.what();
    }
  }
}

// A password behind a misspelt option would reach places that are not made for passwords.
TEST(CommandLine, MisspeltWord_NamedWithoutWhatWasGivenToIt) {
  for (const BadUsage& bad : std::vector<BadUsage>{
           {{"add", "--pasword", "hunter2", "--persistent"}, "--pasword is not an option"},
           {{"add", "--pasword=hunter2", "--persistent"}, "--pasword is not an option"},
           {{"add", "-phunter2", "--persistent"}, "-p is not an option"},
           {{"add", "-password", "hunter2", "--persistent"}, "-p is not an option"},
           {{"add", "--pasword", "--hunter2", "--persistent"}, "--pasword is not an option"},
           {{"modify", "3", "--pasword", "hunter2"}, "--pasword is not an option"},
           {{"modify", "--pasword", "hunter2", "3"}, "--pasword is not an option"},
           {{"modify", "--pasword", "hunter2"}, "--pasword is not an option"},
           {{"modify", "3", "--password", "my", "hunter2"}, "an argument too many"},
           {{"modify", "3", "password=hunter2"}, "an argument too many"},
           {{"modify", "password=hunter2"}, "ID: 'password'=... is not a number"},
           {{"import", "f", "--plmn", "all", "--pasword", "hunter2"}, "--pasword is not an option"},
           {{"--pasword", "hunter2", "list"}, "--pasword is not an option"},
           {{"--pasword", "hunter2"}, "--pasword is not an option"},
           {{"ad", "--password", "hunter2"}, "'ad' is not a command"},
           {{"pasword=hunter2"}, "'pasword' is not a command"},
           {{"=hunter2"}, "'' is not a command"},
           {{"list", ""}, "an argument too many"},
           {{"list", "--json=hunter2"}, "json was given"},
           {{"add", "--persistent=hunter2"}, "persistent was given"},
           {{"add", "--password", "hunter2", "--password", "hunter2"}, "--password"},
           {{"setup-data-call", "--pasword", "hunter2"}, "--pasword is not an option"},
           {{"setup-data-call", "--pasword", "a=hunter2"}, "--pasword is not an option"},
           {{"setup-data-call", "hunter2"}, "an argument is not ATTRIBUTE=VALUE"},
           {{"setup-data-call", "pasword=hunter2"}, "'pasword' is not an attribute of a profile"},
           {{"setup-data-call", "password=a,hunter2"}, "an argument is not ATTRIBUTE=VALUE"},
           {{"setup-data-call", "password=a,hunter2=b"}, "an argument is not ATTRIBUTE=VALUE"},
           {{"apn-class", "class=IMS,pasword=hunter2"}, "'pasword' is not an attribute"},
           {{"match-attach", "password=hunter2"}, "ID: 'password'=... is not a number"},
           {{"match-attach", "--pasword", "hunter2", "3"}, "--pasword is not an option"},
       }) {
    SCOPED_TRACE(bad.message);
    EXPECT_THAT(
        [&] { parse(bad.arguments); },
        ThrowsMessage<UsageError>(AllOf(HasSubstr(bad.message), Not(HasSubstr("hunter2")))));
  }
}

TEST(CommandLine, MisspeltWordInTheShell_NamedWithoutWhatWasGivenToIt) {
  struct Case {
    std::vector<std::string> words;
    const char* message;
  };
  const CommandLine start = parse({"shell"});
  for (const Case& c : std::vector<Case>{
           {{"release", "--pasword", "hunter2"}, "--pasword is not an option (try help)"},
           {{"listen", "password=hunter2"}, "KEY: 'password'=... is not a number"},
           {{"hold", "3", "hunter2"}, "an argument too many (try help)"},
           {{"help", "add", "hunter2"}, "an argument too many (try help)"},
           {{"ad", "--password", "hunter2"}, "'ad' is not a command (try help)"},
       }) {
    SCOPED_TRACE(c.message);
    EXPECT_THAT([&] { CommandLine::parseInShell(c.words, start); },
                ThrowsMessage<UsageError>(AllOf(HasSubstr(c.message), Not(HasSubstr("hunter2")))));
  }
}

}  // namespace
}  // namespace pavoctl
