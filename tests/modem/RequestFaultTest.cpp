// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests show the effects of a fault on a request or on its answer, on the client's side of
// the wire.
#include "Answers.h"
#include "FaultTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

using RequestFaultTest = FaultTest;

const Profile someProfile{.name = "n", .apn = "internet", .user = "someone"};

Payload successPayload() {
  FieldWriter fields;
  fields.result(0, 0);
  return fields.take();
}

TEST_F(RequestFaultTest, Error_NextRequest_IsRefusedAndNotCarriedOut) {
  fail({{"message", "create-profile"}, {"error", 3}, {"result", 9}});
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({}))),
            (Result{9, ErrorCode::NoResources}));
  EXPECT_THAT(profiles(), IsEmpty());
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({}))), success);
}

TEST_F(RequestFaultTest, Silent_NextRequest_IsNeitherDoneNorAnswered) {
  fail({{"message", "create-profile"}, {"silent", true}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  expectNothingUntilNow();
  EXPECT_THAT(profiles(), IsEmpty());
}

TEST_F(RequestFaultTest, Lost_Create_IsDoneAndIndicatedButNotAnswered) {
  client.registerForAll();
  fail({{"message", "create-profile"}, {"lost", true}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({.apn = "ims"}));
  EXPECT_THAT(kindsUntilNow(), ElementsAre("create/1", "modify/1"));
  EXPECT_EQ(profiles(), json::parse(R"([{"index": 1, "apn": "ims"}])"));
}

TEST_F(RequestFaultTest, Doubled_Answer_ComesTwice) {
  fail({{"message", "create-profile"}, {"doubled", true}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  EXPECT_THAT(kindsUntilNow(), ElementsAre("response", "response"));
  EXPECT_EQ(profiles().size(), 1u);
}

// Both requests are sent at once, so the second has certainly arrived before the first one is due.
class RequestFaultLate : public RequestFaultTest {
 protected:
  static constexpr uint32_t late = 101;
  static constexpr uint32_t soon = 102;

  void sendBoth() {
    Payload both = encodeFrame(
        {FrameKind::Request, numberOf(MessageId::CreateProfile), late, createRequest({})});
    const Payload second =
        encodeFrame({FrameKind::Request, numberOf(MessageId::ProfileList), soon, {}});
    both.insert(both.end(), second.begin(), second.end());
    client.sendBytes(both);
  }
};

TEST_F(RequestFaultLate, DelayMs_Request_IsTakenUpAfterTheNextOne) {
  client.registerForAll();
  fail({{"message", "create-profile"}, {"delayMs", 200}});
  sendBoth();
  EXPECT_EQ(client.receive()->transaction, soon);
  EXPECT_EQ(client.receive()->transaction, late);
  EXPECT_EQ(client.nextEvent(), "create/1");
}

TEST_F(RequestFaultLate, LateMs_Answer_ComesBehindWhatItBroughtAbout) {
  client.registerForAll();
  fail({{"message", "create-profile"}, {"lateMs", 200}});
  sendBoth();
  std::vector<std::string> seen;
  for (int i = 0; i < 4; ++i) {
    const auto frame = client.receive();
    ASSERT_TRUE(frame);
    seen.push_back(frame->kind == FrameKind::Indication ? eventOf(frame->payload)
                                                        : std::to_string(frame->transaction));
  }
  EXPECT_THAT(seen, ElementsAre("create/1", "modify/1", "102", "101"));
}

TEST_F(RequestFaultLate, LateMs_ClientLeavesMeanwhile_IsDropped) {
  fail({{"message", "any"}, {"lateMs", 50}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  client.close();
  // The modem has survived if it still serves.
  RawClient other = served.newClient();
  fail({{"message", "any"}, {"lateMs", 100}});
  EXPECT_EQ(resultOf(other.request(MessageId::ProfileList, {})), success);
}

TEST_F(RequestFaultTest, CutTo_Answer_HasItsBeginningOnly) {
  const Payload whole = successPayload();
  for (const size_t bytes : {0u, 1u, 3u, 7u, 11u, 100u}) {
    SCOPED_TRACE(bytes);
    fail({{"message", "modify-profile"}, {"cutTo", bytes}});
    create(someProfile);
    const Payload expected(
        whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(std::min(bytes, whole.size())));
    EXPECT_EQ(client.request(MessageId::ModifyProfile, profileRequest(1, {.apn = "x"})), expected);
  }
}

struct Spoiling {
  const char* how;
  const char* complaint;
};

void PrintTo(const Spoiling& row, std::ostream* out) { *out << row.how; }

class RequestFaultSpoiled : public RequestFaultTest,
                            public testing::WithParamInterface<Spoiling> {};

TEST_P(RequestFaultSpoiled, Undecodable_EveryAnswer_CannotBeRead) {
  create(someProfile);
  for (const auto& [messageId, payload] : everyRequest()) {
    SCOPED_TRACE(messageName(messageId));
    fail({{"message", messageId}, {"undecodable", GetParam().how}});
    const Payload answer = client.request(messageId, payload);
    try {
      const FieldReader fields(answer);
      // A field that is too wide is detected only when that field is read.
      EXPECT_EQ(std::string(GetParam().how), "wide");
      EXPECT_EQ(fields.bytes(tagResult)->size(), 9u);
    } catch (const Refusal& refusal) {
      EXPECT_THAT(refusal.what(), testing::HasSubstr(GetParam().complaint));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Ways, RequestFaultSpoiled,
                         testing::Values(Spoiling{"noise", "runs out of the message"},
                                         Spoiling{"twice", "comes twice"},
                                         Spoiling{"overrun", "runs out of the message"},
                                         Spoiling{"wide", "never"}));

TEST_F(RequestFaultTest, WithoutField_CreateAnswer_LacksThatFieldOnly) {
  fail({{"message", "create-profile"}, {"withoutField", 3}});
  const Payload answer = client.request(MessageId::CreateProfile, createRequest({}));
  EXPECT_EQ(resultOf(answer), success);
  EXPECT_FALSE(FieldReader(answer).bytes(tagAnswer));
}

TEST_F(RequestFaultTest, WithoutField_TheOnlyOne_LeavesAMessageAllTheSame) {
  create(someProfile);
  fail({{"message", "delete-profile"}, {"withoutField", 2}});
  const Payload answer = client.request(MessageId::DeleteProfile, profileRequest(1));
  EXPECT_FALSE(answer.empty());
  EXPECT_FALSE(FieldReader(answer).bytes(tagResult));
}

TEST_F(RequestFaultTest, AsMessage_Answer_HasThatMessagesId) {
  fail({{"message", "profile-list"}, {"asMessage", 0x1234}});
  const uint32_t transaction = client.send(FrameKind::Request, MessageId::ProfileList, {});
  const auto answer = client.receive();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->messageId, 0x1234);
  EXPECT_EQ(answer->transaction, transaction);
}

TEST_F(RequestFaultTest, Settings_Create_WritesOthersThanTheClients) {
  fail({{"message", "create-profile"}, {"settings", {{"apn", "other"}, {"clat", true}}}});
  create(someProfile);
  EXPECT_EQ(profiles(), json::parse(R"([{"index": 1, "name": "n", "apn": "other",
                                         "user": "someone", "clat": true}])"));
}

TEST_F(RequestFaultTest, Settings_Modify_WritesOthersThanTheClients) {
  create(someProfile);
  fail({{"message", "modify-profile"}, {"settings", {{"apn", "other"}}}});
  client.request(MessageId::ModifyProfile, profileRequest(1, {.apn = "wanted", .user = "wanted"}));
  EXPECT_EQ(profiles()[0]["apn"], "other");
  EXPECT_EQ(profiles()[0]["user"], "wanted");
}

TEST_F(RequestFaultTest, Settings_Read_DiffersFromWhatIsKept) {
  create(someProfile);
  fail({{"message", "profile-settings"}, {"settings", {{"apn", "other"}, {"pdpType", 77}}}});
  const Payload answer = client.request(MessageId::ProfileSettings, profileRequest(1));
  EXPECT_EQ(resultOf(answer), success);
  const Profile read = settingsOf(answer);
  EXPECT_EQ(read.apn, "other");
  EXPECT_EQ(read.pdpType, 77u);
  EXPECT_EQ(read.user, "someone");
  EXPECT_EQ(profiles()[0]["apn"], "internet");
  EXPECT_EQ(settingsOf(client.request(MessageId::ProfileSettings, profileRequest(1))), someProfile);
}

TEST_F(RequestFaultTest, Settings_ReadOfNoProfile_StaysRefused) {
  fail({{"message", "profile-settings"}, {"settings", {{"apn", "other"}}}});
  const Payload answer = client.request(MessageId::ProfileSettings, profileRequest(1));
  EXPECT_EQ(resultOf(answer), failure(ErrorCode::InvalidProfileIndex));
  EXPECT_EQ(settingsOf(answer), Profile{});
}

TEST_F(RequestFaultTest, ListCount_AboveWhatFits_HasThatManyElements) {
  create(someProfile);
  fail({{"message", "profile-list"}, {"listCount", 300}});
  const Payload answer = client.request(MessageId::ProfileList, {});
  const FieldReader fields(answer);
  const auto list = *fields.bytes(tagAnswer);
  EXPECT_EQ(numberFrom(list.first(2)), 300u);
  EXPECT_EQ(list.size(), 2 + (6 + 1) + 299 * 6u);
}

TEST_F(RequestFaultTest, ListCount_AllOnes_HasAsManyElementsAsTheMessageHolds) {
  fail({{"message", "profile-list"}, {"listCount", 65535}});
  const Payload answer = client.request(MessageId::ProfileList, {});
  const FieldReader fields(answer);
  const auto list = *fields.bytes(tagAnswer);
  EXPECT_EQ(numberFrom(list.first(2)), 65535u);
  EXPECT_GT(answer.size() + 6, framePayloadBytesMax);
}

TEST_F(RequestFaultTest, Unchecked_ListAndTexts_SaySoInTheirKind) {
  create(someProfile);
  fail({{"message", "any"}, {"listCount", 300}, {"unchecked", true}});
  fail({{"message", "profile-settings"}, {"unterminated", true}, {"unchecked", true}});
  client.send(FrameKind::Request, MessageId::ProfileList, {});
  EXPECT_EQ(client.receive()->kind, FrameKind::UncheckedResponse);
  client.send(FrameKind::Request, MessageId::ProfileSettings, profileRequest(1));
  EXPECT_EQ(client.receive()->kind, FrameKind::UncheckedResponse);
}

TEST_F(RequestFaultTest, Unterminated_Settings_FillEveryTextsPlace) {
  create(someProfile);
  fail({{"message", "profile-settings"}, {"unterminated", true}});
  const Profile read = settingsOf(client.request(MessageId::ProfileSettings, profileRequest(1)));
  EXPECT_EQ(read.name, "n" + std::string(50, 'x'));
  EXPECT_EQ(read.apn, "internet" + std::string(143, 'x'));
  EXPECT_EQ(read.user, "someone" + std::string(121, 'x'));
  EXPECT_EQ(read.password, std::string(128, 'x'));
}

TEST_F(RequestFaultTest, Unterminated_List_FillsEveryNamesPlace) {
  create(someProfile);
  create({});
  fail({{"message", "profile-list"}, {"unterminated", true}});
  const Payload answer = client.request(MessageId::ProfileList, {});
  const FieldReader fields(answer);
  const auto list = *fields.bytes(tagAnswer);
  ASSERT_EQ(list.size(), 2 + 2 * (6 + 51u));
  EXPECT_EQ(list[7], 51);
  EXPECT_EQ(list[8], 'n');
  EXPECT_EQ(list[9], 'x');
  EXPECT_EQ(list[2 + 57 + 5], 51);
}

TEST_F(RequestFaultTest, Power_Before_DoesNotCarryOut) {
  fail({{"message", "create-profile"}, {"power", "before"}});
  client.send(FrameKind::Request, MessageId::CreateProfile,
              createRequest({.persistent = uint8_t{1}}));
  EXPECT_TRUE(client.isHungUp());
  EXPECT_THAT(profiles(), IsEmpty());
}

TEST_F(RequestFaultTest, Power_Unanswered_CarriesOutAndSaysNothing) {
  client.registerForAll();
  fail({{"message", "create-profile"}, {"power", "unanswered"}});
  client.send(FrameKind::Request, MessageId::CreateProfile,
              createRequest({.persistent = uint8_t{1}}));
  EXPECT_TRUE(client.isHungUp());
  EXPECT_EQ(profiles().size(), 1u);
}

TEST_F(RequestFaultTest, Power_After_AnswersAndIndicatesFirst) {
  client.registerForAll();
  fail({{"message", "create-profile"}, {"power", "after"}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  EXPECT_EQ(client.receive()->kind, FrameKind::Response);
  EXPECT_EQ(client.nextEvent(), "create/1");
  EXPECT_EQ(client.nextEvent(), "modify/1");
  EXPECT_TRUE(client.isHungUp());
  EXPECT_THAT(profiles(), IsEmpty()) << "it was not persistent";
}

TEST_F(RequestFaultTest, Power_NoTimeOff_IsBackForTheNextConnection) {
  const auto boot = control.call("show")["boot"];
  fail({{"message", "any"}, {"power", "after"}});
  client.send(FrameKind::Request, MessageId::ProfileList, {});
  EXPECT_TRUE(served.newClient().request(MessageId::ProfileList, {}).size() > 0);
  EXPECT_NE(control.call("show")["boot"], boot);
}

TEST_F(RequestFaultTest, Power_WithTimeOff_TurnsClientsAwayMeanwhile) {
  fail({{"message", "any"}, {"power", "before"}, {"offMs", 3'600'000}});
  client.send(FrameKind::Request, MessageId::ProfileList, {});
  EXPECT_TRUE(client.isHungUp());
  RawClient early(served.connect());
  EXPECT_FALSE(early.hello());
  EXPECT_EQ(control.call("show")["on"], false);
}

TEST_F(RequestFaultTest, Power_ManyTimes_GoesAndReturnsThatOften) {
  const uint64_t boot = control.call("show")["boot"];
  fail({{"message", "any"}, {"power", "before"}, {"offMs", 1}, {"onMs", 1}, {"times", 20}});
  client.send(FrameKind::Request, MessageId::ProfileList, {});
  EXPECT_TRUE(client.isHungUp());
  const auto isThere = [&] { return control.call("show")["boot"] == uint32_t(boot + 20); };
  EXPECT_TRUE(pavo::test::waitUntil(isThere)) << control.call("show");
}

TEST_F(RequestFaultTest, PowerCycleVerb_ManyTimes_GoesAndReturnsThatOften) {
  const uint64_t boot = control.call("show")["boot"];
  control.call("power-cycle", {{"times", 50}});
  const auto isThere = [&] { return control.call("show")["boot"] == uint32_t(boot + 50); };
  EXPECT_TRUE(pavo::test::waitUntil(isThere)) << control.call("show");
}

TEST_F(RequestFaultTest, Nth_OfAnyMessage_CountsAllOfThem) {
  fail({{"message", "any"}, {"nth", 3}, {"error", 2}});
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), success);
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({}))), success);
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), failure(ErrorCode::Internal));
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), success);
}

TEST_F(RequestFaultTest, Transcript_OfEveryEffect_NamesIt) {
  create(someProfile);
  control.call("clear-transcript");
  fail({{"message", "profile-list"}, {"cutTo", 5}});
  fail({{"message", "profile-list"}, {"lost", true}});
  client.request(MessageId::ProfileList, {});
  client.send(FrameKind::Request, MessageId::ProfileList, {});
  expectNothingUntilNow();
  std::vector<std::string> faults;
  const json reply = control.call("transcript");
  for (const json& entry : reply["entries"]) {
    faults.push_back(entry["direction"].get<std::string>() + " " + entry.value("fault", ""));
  }
  EXPECT_THAT(faults, ElementsAre("in cutTo", "out cutTo", "in lost", "in ", "out "));
}

}  // namespace
}  // namespace modem::test
