// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ServedModem.h"
#include "modem/service/Control.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ControlTest : public testing::Test {
 protected:
  static Service::Options options(size_t capacity = 4) {
    Service::Options chosen;
    chosen.modem.capacity = capacity;
    return chosen;
  }

  ServedModem served{options()};
  ControlClient control = served.newControl();
};

TEST_F(ControlTest, Create_EverySetting_IsShown) {
  const json settings = json::parse(R"({
      "name": "n", "pdpType": "PPP", "apn": "a", "user": "u", "password": "p", "auth": 2,
      "disabled": true, "class": 3, "emergency": true, "maxPdnPerBlock": 1, "maxPdnTimer": 2,
      "pdnWaitInterval": 3, "lteRoam": "V4", "umtsRoam": "V6", "overrideHome": "V4V6",
      "persistent": true, "apnTypes": 1, "clat": false})");
  EXPECT_EQ(control.call("create", settings), json({{"ok", true}, {"index", 1}}));
  json shown = control.call("show")["profiles"][0];
  EXPECT_EQ(shown["index"], 1);
  shown.erase("index");
  EXPECT_EQ(shown, settings);
}

TEST_F(ControlTest, Show_SomeClients_CountsThem) {
  RawClient one = served.newClient();
  RawClient two = served.newClient();
  two.registerForAll();
  const json shown = control.call("show");
  EXPECT_EQ(shown["ok"], true);
  EXPECT_EQ(shown["on"], true);
  EXPECT_EQ(shown["capacity"], 4);
  EXPECT_EQ(shown["clients"], 2);
  EXPECT_EQ(shown["registered"], 1);
  EXPECT_EQ(shown["clientList"][1]["registered"], true);
}

TEST_F(ControlTest, Show_LargestTableOfLongestProfiles_ComesWhole) {
  ServedModem large(options(255));
  ControlClient client = large.newControl();
  const std::string longText(127, '\x01');
  for (int i = 0; i < 255; ++i) {
    ASSERT_EQ(client.call("create", {{"user", longText}, {"password", longText}})["ok"], true);
  }
  const json shown = client.call("show");
  ASSERT_EQ(shown["profiles"].size(), 255u);
  EXPECT_EQ(shown["profiles"][254]["index"], 255);
  EXPECT_FALSE(shown.contains("more"));
}

TEST_F(ControlTest, Indicate_RegisteredClient_IsToldAsAsked) {
  RawClient client = served.newClient();
  client.registerForAll();
  EXPECT_EQ(control.call("indicate", {{"event", 4}, {"index", 9}})["told"], 1);
  EXPECT_EQ(client.nextEvent(), "subscription/9");
  control.call("indicate", {{"event", 77}, {"index", 0}});
  EXPECT_EQ(client.nextEvent(), "77/0");
}

TEST_F(ControlTest, Transcript_SomeMessages_TellsThemInOrder) {
  RawClient client = served.newClient();
  client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}));
  const json reply = control.call("transcript");
  ASSERT_EQ(reply["entries"].size(), 4u);
  EXPECT_EQ(reply["entries"][0]["message"], "hello");
  EXPECT_EQ(reply["entries"][1]["direction"], "out");
  EXPECT_EQ(reply["entries"][2]["fields"]["apn"], "ims");
  EXPECT_EQ(reply["entries"][3]["fields"]["profile"]["index"], 1);
  EXPECT_EQ(reply["next"], 5);
  EXPECT_EQ(control.call("transcript", {{"since", 4}})["entries"].size(), 1u);
  EXPECT_THAT(control.call("transcript", {{"since", 5}})["entries"], IsEmpty());
}

TEST_F(ControlTest, Transcript_MoreThanAFrame_ComesWhole) {
  RawClient client = served.newClient();
  for (int i = 0; i < 500; ++i) {
    client.request(MessageId::ProfileList, {});
  }
  const json entries = control.call("transcript")["entries"];
  ASSERT_EQ(entries.size(), 1002u);
  for (size_t i = 0; i < entries.size(); ++i) {
    ASSERT_EQ(entries[i]["seq"], i + 1);
  }
}

TEST_F(ControlTest, Transcript_Faults_AreMarked) {
  RawClient client = served.newClient();
  control.call("clear-transcript");
  control.call("fail", {{"message", "profile-list"}, {"error", 2}});
  client.request(MessageId::ProfileList, {});
  const json entries = control.call("transcript")["entries"];
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0]["fault"], "error");
  EXPECT_EQ(entries[1]["fault"], "error");
}

TEST_F(ControlTest, Faults_AddedAndCleared_AreTold) {
  control.call("fail", {{"message", "any"}, {"silent", true}});
  EXPECT_EQ(control.call("faults")["faults"].size(), 1u);
  control.call("clear");
  EXPECT_THAT(control.call("faults")["faults"], IsEmpty());
}

TEST_F(ControlTest, Quit_ModemThatMayNot_IsRefused) {
  EXPECT_EQ(control.call("quit")["ok"], false);
  EXPECT_EQ(control.call("show")["ok"], true);
}

TEST_F(ControlTest, Refusal_ByTheModem_HasTheErrorCode) {
  const json reply = control.call("delete", {{"index", 3}});
  EXPECT_EQ(reply["code"], static_cast<int>(ErrorCode::InvalidProfileIndex));
  EXPECT_EQ(reply["error"], "invalid profile index: there is no profile 3");
}

TEST_F(ControlTest, Call_NoJson_IsAnsweredAndTheConnectionStays) {
  RawClient raw(served.connect());
  raw.send(FrameKind::ControlRequest, MessageId{0}, {'{'});
  const auto reply = raw.receive();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->kind, FrameKind::ControlResponse);
  EXPECT_EQ(json::parse(reply->payload)["ok"], false);
  raw.send(FrameKind::ControlRequest, MessageId{0}, {'[', ']'});
  EXPECT_EQ(json::parse(raw.receive()->payload)["ok"], false);
}

TEST_F(ControlTest, Call_AnswerWouldQuoteMoreThanAFrameHolds_IsRefused) {
  RawClient raw(served.connect());
  const json request{{"verb", std::string(framePayloadBytesMax - 20, 'a')}};
  const std::string text = request.dump();
  ASSERT_LE(text.size(), framePayloadBytesMax);
  raw.send(FrameKind::ControlRequest, MessageId{0}, {text.begin(), text.end()});
  const auto reply = raw.receive();
  ASSERT_TRUE(reply);
  EXPECT_EQ(json::parse(reply->payload)["error"], "the request is too long to be answered");
  EXPECT_EQ(control.call("show")["ok"], true);
}

struct WrongCall {
  const char* verb;
  const char* args;
  const char* error;
};

void PrintTo(const WrongCall& row, std::ostream* out) { *out << row.verb << " " << row.args; }

class ControlWrong : public ControlTest, public testing::WithParamInterface<WrongCall> {};

TEST_P(ControlWrong, Call_WrongArguments_IsRefusedInOneLineAndDoesNothing) {
  control.call("create", {{"apn", "ims"}});
  const json before = control.call("show");
  const json reply = control.call(GetParam().verb, json::parse(GetParam().args));
  EXPECT_EQ(reply["ok"], false);
  EXPECT_THAT(reply["error"].get<std::string>(), HasSubstr(GetParam().error));
  EXPECT_THAT(reply["error"].get<std::string>(), Not(HasSubstr("\n")));
  EXPECT_EQ(control.call("show"), before);
  EXPECT_THAT(control.call("faults")["faults"], IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Calls, ControlWrong,
    testing::Values(WrongCall{"nonsense", "{}", "unknown verb \"nonsense\""},
                    WrongCall{"show", R"({"x": 1})", "unknown argument \"x\""},
                    WrongCall{"show", R"({"since": "a"})", "since has to be"},
                    WrongCall{"create", R"({"index": 1})", "unknown argument \"index\""},
                    WrongCall{"create", R"({"apn": 1})", "apn has to be a text"},
                    WrongCall{"create", R"({"pdpType": 7})", "pdpType has no value 7"},
                    WrongCall{"modify", R"({"apn": "x"})", "index is missing"},
                    WrongCall{"modify", R"({"index": 2, "apn": "x"})", "no profile 2"},
                    WrongCall{"modify", R"({"index": 1, "persistent": true})",
                              "persistent is fixed"},
                    WrongCall{"modify", R"({"index": 1, "apn": "x", "auth": -1})", "auth has to"},
                    WrongCall{"delete", "{}", "index is missing"},
                    WrongCall{"delete", R"({"index": 256})", "index has to be"},
                    WrongCall{"indicate", R"({"index": 1})", "event is missing"},
                    WrongCall{"indicate", R"({"event": 4})", "index is missing"},
                    WrongCall{"power-cycle", R"({"offMs": -1})", "offMs has to be"},
                    WrongCall{"power-cycle", R"({"offMs": 1.5})", "offMs has to be"},
                    WrongCall{"fail", R"({"message": "any"})", "is needed"},
                    WrongCall{"transcript", R"({"since": -1})", "since has to be"},
                    WrongCall{"clear", R"({"all": true})", "unknown argument"}));

}  // namespace
}  // namespace modem::test
