// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FaultEffects.h"
#include "TemporaryFolder.h"
#include "modem/common/File.h"
#include "modem/core/ProfileJson.h"
#include "modem/faults/Effect.h"
#include "modem/faults/FaultJson.h"
#include "modem/faults/FaultSelector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace modem {
namespace {

using nlohmann::json;
using pavo::test::FaultEffect;
using testing::HasSubstr;
using testing::Not;

class FaultRoundTrip : public testing::TestWithParam<const char*> {};

// The JSON of a pending fault can be parsed again.
TEST_P(FaultRoundTrip, ToJson_OfAParsedFault_IsWhatWasParsed) {
  const json said = json::parse(GetParam());
  EXPECT_EQ(toJson(faultFromJson(said)), said);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FaultRoundTrip,
    testing::Values(
        R"({"message": "any", "count": 1, "error": 3, "result": 1})",
        R"({"message": 39321, "count": 1, "silent": true})",
        R"({"message": "profile-list", "nth": 4, "count": 2, "delayMs": 20})",
        R"({"message": "create-profile", "count": 1, "settings": {"apn": "x", "pdpType": 77}})",
        R"({"message": "any", "count": 1, "power": "unanswered", "offMs": 0})",
        R"({"indication": "any", "count": 1, "power": "after", "offMs": 5, "onMs": 5, "times": 9})",
        R"({"service": "object", "count": 1, "refuse": -2147483648})",
        R"({"message": "any", "probability": 0.5, "seed": 3, "lost": true})",
        R"({"indication": "ready", "count": 3, "probability": 0.5, "doubled": true})",
        R"({"indication": 9, "count": 1, "lateMs": 7})",
        R"({"message": "any", "count": 1, "cutTo": 0})",
        R"({"message": "any", "count": 1, "undecodable": "wide"})",
        R"({"indication": "modify", "count": 1, "withoutField": 16})",
        R"({"indication": "modify", "count": 1, "asMessage": 169})",
        R"({"indication": "modify", "count": 1, "early": true})",
        R"({"indication": "modify", "count": 1, "reordered": true})",
        R"({"indication": "modify", "count": 1, "index": 200})",
        R"({"indication": "modify", "count": 1, "event": 4294967295})",
        R"({"message": "any", "count": 1, "listCount": 65535, "unchecked": true})",
        R"({"message": "profile-settings", "count": 1, "unterminated": true})"));

struct WrongFault {
  const char* args;
  const char* error;
};

void PrintTo(const WrongFault& row, std::ostream* out) { *out << row.args; }

class FaultWrong : public testing::TestWithParam<WrongFault> {};

TEST_P(FaultWrong, FromJson_WrongArguments_IsRefusedInOneLine) {
  try {
    faultFromJson(json::parse(GetParam().args));
    FAIL() << "it was taken";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), HasSubstr(GetParam().error));
    EXPECT_THAT(error.what(), Not(HasSubstr("\n")));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, FaultWrong,
    testing::Values(
        WrongFault{R"([])", "has to be an object"},
        WrongFault{R"({"silent": true})", "one of message, indication and service is missing"},
        WrongFault{R"({"message": "any", "service": "any", "silent": true})", "exclude each other"},
        WrongFault{R"({"message": "any"})", "is needed"},
        WrongFault{R"({"message": "nonsense", "silent": true})", "message has to be one of"},
        WrongFault{R"({"message": "profile-changed", "silent": true})", "message has to be one"},
        WrongFault{R"({"message": 168, "silent": true})", "message has to be one of"},
        WrongFault{R"({"message": 65536, "silent": true})", "message has to be a whole number"},
        WrongFault{R"({"indication": "gone", "lost": true})", "indication has to be one of"},
        WrongFault{R"({"service": 4, "silent": true})", "service has to be a whole number"},
        WrongFault{R"({"message": "any", "silent": false})", "silent has to be true"},
        WrongFault{R"({"message": "any", "silent": true, "error": 1})", "exclude each other"},
        WrongFault{R"({"message": "any", "silent": true, "result": 1})",
                   "unknown argument \"result\""},
        WrongFault{R"({"message": "any", "silent": true, "": 1})", "unknown argument \"\""},
        WrongFault{R"({"message": "any", "silent": true, "often": 1})",
                   "unknown argument \"often\""},
        WrongFault{R"({"message": "any", "error": -1})", "error has to be"},
        WrongFault{R"({"message": "any", "error": "3"})", "error has to be"},
        WrongFault{R"({"message": "any", "delayMs": 3600001})", "delayMs has to be"},
        WrongFault{R"({"message": "any", "silent": true, "count": 0})",
                   "count has to be at least 1"},
        WrongFault{R"({"message": "any", "silent": true, "nth": 0})", "nth has to be at least 1"},
        WrongFault{R"({"message": "any", "silent": true, "probability": 0})",
                   "probability has to be"},
        WrongFault{R"({"message": "any", "silent": true, "probability": 1.5})",
                   "probability has to be"},
        WrongFault{R"({"message": "any", "silent": true, "probability": "1"})",
                   "probability has to be"},
        WrongFault{R"({"message": "any", "silent": true, "seed": 1})", "seed is for"},
        WrongFault{R"({"message": "any", "power": "gone"})", "power has to be one of"},
        WrongFault{R"({"message": "any", "power": "after", "onMs": 5})", "onMs is for"},
        WrongFault{R"({"message": "any", "power": "after", "times": 0})", "times has to be"},
        WrongFault{R"({"indication": "any", "power": "unanswered"})",
                   "power is no fault of this indication"},
        WrongFault{R"({"service": "open", "refuse": 0})", "refuse has to be"},
        WrongFault{R"({"service": "open", "refuse": 2147483648})", "refuse has to be"},
        WrongFault{R"({"service": "open", "lost": true})", "lost is no fault of this service"},
        WrongFault{R"({"message": "any", "early": true})", "early is no fault of this message"},
        WrongFault{R"({"message": "delete-profile", "listCount": 300})",
                   "listCount is no fault of this message"},
        WrongFault{R"({"message": "profile-list", "settings": {"apn": "x"}})",
                   "settings is no fault of this message"},
        WrongFault{R"({"message": "any", "settings": {}})", "settings has to be"},
        WrongFault{R"({"message": "any", "settings": {"index": 1}})",
                   "settings has the unknown member \"index\""},
        WrongFault{R"({"message": "any", "settings": {"apn": 3}})", "settings.apn has to be"},
        WrongFault{R"({"message": "any", "undecodable": "badly"})", "undecodable has to be one of"},
        WrongFault{R"({"message": "any", "withoutField": 256})", "withoutField has to be"},
        WrongFault{R"({"message": "any", "listCount": 1, "unchecked": 1})",
                   "unchecked has to be true"}));

TEST(FaultJson, FromJson_SettingTextTooLongForAControlFrame_IsRefused) {
  const json fault = {{"message", "any"}, {"settings", {{"apn", std::string(513, 'x')}}}};
  EXPECT_THROW(faultFromJson(fault), Error);
}

struct WrongScript {
  const char* text;
  const char* error;
};

void PrintTo(const WrongScript& row, std::ostream* out) { *out << row.text; }

class ScriptWrong : public testing::TestWithParam<WrongScript> {};

TEST_P(ScriptWrong, Read_WrongScript_TellsTheFileAndThePlaceInOneLine) {
  const pavo::test::TemporaryFolder folder;
  const std::string path = folder.file("script.json");
  std::ofstream(path) << GetParam().text;
  try {
    readFaultScript(path);
    FAIL() << "it was taken";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), testing::StartsWith(path + ": "));
    EXPECT_THAT(error.what(), HasSubstr(GetParam().error));
    EXPECT_THAT(error.what(), Not(HasSubstr("\n")));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, ScriptWrong,
    testing::Values(WrongScript{"", "parse error"}, WrongScript{"{\n\"faults\": [,]}", "line 2"},
                    WrongScript{"[]", "an object with the list \"faults\""},
                    WrongScript{R"({"faults": {}})", "an object with the list \"faults\""},
                    WrongScript{R"({"faults": [], "speed": 1})", "no member \"speed\""},
                    WrongScript{R"({"faults": [], "seed": -1})", "seed has to be"},
                    WrongScript{R"({"faults": [], "seed": 9007199254740992})", "seed has to be"},
                    WrongScript{R"({"faults": [{"message": "any", "silent": true}, 3]})",
                                "faults[1]: a fault has to be an object"},
                    WrongScript{R"({"faults": [{"message": "any", "silent": true, "x": 1}]})",
                                "faults[0]: unknown argument \"x\""}));

TEST(FaultJson, ToJson_PowerCycleOnce_LeavesOutItsDefaults) {
  const Fault fault = faultFromJson(
      {{"message", "any"}, {"power", "after"}, {"offMs", 3}, {"times", 1}, {"onMs", 9}});
  EXPECT_EQ(toJson(fault),
            (json{{"message", "any"}, {"count", 1}, {"power", "after"}, {"offMs", 3}}));
}

TEST(FaultScript, Read_NoSuchFile_IsTold) {
  EXPECT_THROW(readFaultScript("/nonexistent/script.json"), Error);
}

TEST(FaultScript, FromJson_TooManyFaults_IsRefused) {
  const json fault = {{"message", "any"}, {"silent", true}};
  EXPECT_NO_THROW(faultScriptFromJson({{"faults", json(faultsMax, fault)}}));
  EXPECT_THROW(faultScriptFromJson({{"faults", json(faultsMax + 1, fault)}}), Error);
}

// The sweeps use FaultEffects, which must list every effect.

std::set<std::string> namesIn(const std::vector<FaultEffect>& effects, Subject subject) {
  std::set<std::string> names;
  for (const FaultEffect& effect : effects) {
    const EffectPtr parsed = effectFromJson(effect.args);
    EXPECT_TRUE(parsed->fits(subject)) << effect;
    names.insert(parsed->name());
  }
  return names;
}

std::set<std::string> knownNames(Subject subject) {
  const auto names = effectNamesFor(subject);
  return {names.begin(), names.end()};
}

std::vector<std::string> selectableNames(Subject::Kind kind) {
  std::vector<std::string> names;
  for (const Subject subject : subjectsOf({kind, std::nullopt})) {
    json told;
    selectorToJson({kind, subject.code}, told);
    names.push_back(told[selectorName(kind)]);
  }
  return names;
}

TEST(FaultEffects, OnMessages_OfEveryKind_AreAll) {
  EXPECT_EQ(pavo::test::faultMessages(), selectableNames(Subject::Kind::Message));
  for (const std::string& message : pavo::test::faultMessages()) {
    SCOPED_TRACE(message);
    const Subject subject = subjectsOf(selectorFromJson({{"message", message}})).front();
    EXPECT_EQ(namesIn(pavo::test::effectsOnMessage(message), subject), knownNames(subject));
  }
}

TEST(FaultEffects, OnIndications_OfEveryKind_AreAll) {
  EXPECT_EQ(pavo::test::faultIndications(), selectableNames(Subject::Kind::Indication));
  const Subject subject{Subject::Kind::Indication, 1};
  EXPECT_EQ(namesIn(pavo::test::effectsOnIndication(), subject), knownNames(subject));
}

TEST(FaultEffects, OnOccasions_OfEveryKind_AreAll) {
  EXPECT_EQ(pavo::test::faultOccasions(), selectableNames(Subject::Kind::Service));
  const Subject subject{Subject::Kind::Service, 0};
  EXPECT_EQ(namesIn(pavo::test::effectsOnOccasion(), subject), knownNames(subject));
}

}  // namespace
}  // namespace modem
