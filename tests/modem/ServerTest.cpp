// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Answers.h"
#include "Deadline.h"
#include "ServedModem.h"
#include "modem/server/Server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

using pavo::test::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Server, Hello_AnyClient_IsAnsweredWithTheBootNumber) {
  ServedModem served;
  RawClient first(served.connect());
  RawClient second(served.connect());
  const auto boot = first.hello();
  ASSERT_TRUE(boot);
  EXPECT_EQ(second.hello(), boot);
}

TEST(Server, Request_Create_AnswersBeforeItIndicates) {
  ServedModem served;
  RawClient client = served.newClient();
  client.registerForAll();
  const uint32_t transaction =
      client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  const auto response = client.receive();
  ASSERT_TRUE(response);
  EXPECT_EQ(response->kind, FrameKind::Response);
  EXPECT_EQ(response->transaction, transaction);
  EXPECT_EQ(response->messageId, numberOf(MessageId::CreateProfile));
  const auto indication = client.receive();
  ASSERT_TRUE(indication);
  EXPECT_EQ(indication->kind, FrameKind::Indication);
  EXPECT_EQ(indication->messageId, numberOf(MessageId::ProfileChanged));
  EXPECT_EQ(indication->transaction, 0u);
}

TEST(Server, Edits_TwoClients_EachSeesTheOthersEdits) {
  ServedModem served;
  RawClient one = served.newClient();
  RawClient two = served.newClient();
  one.registerForAll();
  two.registerForAll();
  one.request(MessageId::CreateProfile, createRequest({.apn = "ims"}));
  EXPECT_EQ(settingsOf(two.request(MessageId::ProfileSettings, profileRequest(1))).apn, "ims");
  two.request(MessageId::ModifyProfile, profileRequest(1, {.apn = "sos"}));
  EXPECT_EQ(settingsOf(one.request(MessageId::ProfileSettings, profileRequest(1))).apn, "sos");
  two.request(MessageId::DeleteProfile, profileRequest(1));
  const auto all = ElementsAre("create/1", "modify/1", "modify/1", "delete/1");
  EXPECT_THAT(one.eventsUntilNow(), all);
  EXPECT_THAT(two.eventsUntilNow(), all);
}

TEST(Server, Edits_UnregisteredClient_IsToldNothing) {
  ServedModem served;
  RawClient one = served.newClient();
  RawClient two = served.newClient();
  one.request(MessageId::CreateProfile, createRequest({}));
  EXPECT_THAT(one.eventsUntilNow(), IsEmpty());
  EXPECT_THAT(two.eventsUntilNow(), IsEmpty());
}

TEST(Server, Edits_ByControl_AreToldToAllRegisteredClients) {
  ServedModem served;
  RawClient one = served.newClient();
  RawClient two = served.newClient();
  one.registerForAll();
  two.registerForAll();
  ControlClient control = served.newControl();
  control.call("create", {{"apn", "ims"}});
  control.call("modify", {{"index", 1}, {"apn", "sos"}});
  control.call("delete", {{"index", 1}});
  const auto all = ElementsAre("create/1", "modify/1", "modify/1", "delete/1");
  EXPECT_THAT(one.eventsUntilNow(), all);
  EXPECT_THAT(two.eventsUntilNow(), all);
}

TEST(Server, Ready_ClientSawAbsence_IsToldBehindTheResponse) {
  ServedModem served;
  RawClient client = served.newClient(/*sawAbsence=*/true);
  client.request(MessageId::IndicationRegister, registerRequest());
  client.send(FrameKind::Request, MessageId::ConfigureEvents, allEventsRequest());
  EXPECT_EQ(client.receive()->kind, FrameKind::Response);
  EXPECT_EQ(client.nextEvent(), "ready/255");
}

struct BadStream {
  const char* name;
  bool saysHello;
  std::vector<uint8_t> bytes;
};

class ServerBadStream : public testing::TestWithParam<BadStream> {};

TEST_P(ServerBadStream, Receive_BadStream_ClosesThatConnectionOnly) {
  ServedModem served;
  RawClient good = served.newClient();
  RawClient bad(served.connect());
  if (GetParam().saysHello) {
    bad.hello();
  }
  bad.sendBytes(GetParam().bytes);
  EXPECT_TRUE(bad.isHungUp());
  EXPECT_EQ(resultOf(good.request(MessageId::ProfileList, {})), success);
}

Payload frameBytes(FrameKind kind, uint32_t transaction, const Payload& payload) {
  return encodeFrame({kind, numberOf(MessageId::ProfileList), transaction, payload});
}

INSTANTIATE_TEST_SUITE_P(
    Streams, ServerBadStream,
    testing::Values(BadStream{"Noise", true, Payload(64, 0xA5)},
                    BadStream{"OversizedFrame", true, {1, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0}},
                    BadStream{"OtherVersion", true, {0, 0, 0, 0, 0, 2, 0, 0, 1, 0, 0, 0}},
                    BadStream{"RequestBeforeHello", false, frameBytes(FrameKind::Request, 1, {})},
                    BadStream{"EmptyHello", false, frameBytes(FrameKind::Hello, 0, {})},
                    BadStream{"LongHello", false, frameBytes(FrameKind::Hello, 0, {0, 0})},
                    BadStream{"SecondHello", true, frameBytes(FrameKind::Hello, 0, {0})},
                    BadStream{"Transaction0", true, frameBytes(FrameKind::Request, 0, {})},
                    BadStream{"Response", true, frameBytes(FrameKind::Response, 1, {})},
                    BadStream{"ControlOnAClient", true,
                              frameBytes(FrameKind::ControlRequest, 1, {})}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Server, Receive_TruncatedFrameThenEnd_ClosesThatConnectionOnly) {
  ServedModem served;
  RawClient good = served.newClient();
  RawClient bad = served.newClient();
  bad.sendBytes(Payload{5, 0, 0, 0, 0, 1, 0, 0});
  bad.endSending();
  EXPECT_TRUE(bad.isHungUp());
  EXPECT_EQ(resultOf(good.request(MessageId::ProfileList, {})), success);
}

TEST(Server, Receive_RequestThenEnd_IsStillAnswered) {
  ServedModem served;
  RawClient client = served.newClient();
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  client.endSending();
  const auto response = client.receive();
  ASSERT_TRUE(response);
  EXPECT_EQ(resultOf(response->payload), success);
  EXPECT_TRUE(client.isHungUp());
}

TEST(Server, Receive_MalformedMessageInAGoodFrame_KeepsTheConnection) {
  ServedModem served;
  RawClient client = served.newClient();
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, {1, 2})),
            failure(ErrorCode::MalformedMessage));
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, {})), success);
}

TEST(Server, Send_ClientThatDoesNotRead_IsDisconnectedAndHoldsUpNobody) {
  Service::Options options;
  options.modem.capacity = 255;
  for (unsigned index = 1; index <= 255; ++index) {
    Profile named;
    named.name = std::string(50, 'n');
    options.modem.ownProfiles.emplace(static_cast<uint8_t>(index), named);
  }
  ServedModem served(std::move(options));
  ControlClient control = served.newControl();
  RawClient busy = served.newClient();
  RawClient lazy = served.newClient();
  for (int i = 0; i < 200; ++i) {
    lazy.send(FrameKind::Request, MessageId::ProfileList, {});
  }
  EXPECT_TRUE(waitUntil([&] { return control.call("show")["clients"] == 1; }));
  EXPECT_EQ(resultOf(busy.request(MessageId::ProfileList, {})), success);
}

TEST(Server, Close_ClientLeaves_IsForgotten) {
  ServedModem served;
  ControlClient control = served.newControl();
  RawClient client = served.newClient();
  EXPECT_EQ(control.call("show")["clients"], 1);
  client.close();
  EXPECT_TRUE(waitUntil([&] { return control.call("show")["clients"] == 0; }));
}

TEST(Server, PowerCycle_AnyClients_HangsUpOnThemAndKeepsControl) {
  ServedModem served;
  ControlClient control = served.newControl();
  RawClient client(served.connect());
  const auto boot = client.hello();
  client.request(MessageId::CreateProfile, createRequest({}));
  client.request(MessageId::CreateProfile, createRequest({.persistent = uint8_t{1}}));
  const auto reply = control.call("power-cycle");
  EXPECT_EQ(reply["on"], true);
  EXPECT_TRUE(client.isHungUp());
  EXPECT_EQ(control.call("show")["profiles"].size(), 1u);
  RawClient again(served.connect());
  const auto bootAgain = again.hello(/*sawAbsence=*/true);
  ASSERT_TRUE(bootAgain);
  EXPECT_NE(bootAgain, boot);
}

TEST(Server, PowerCycle_WithOffTime_TurnsClientsAndEditsAway) {
  ServedModem served;
  ControlClient control = served.newControl();
  EXPECT_EQ(control.call("power-cycle", {{"offMs", 3'600'000}})["on"], false);
  RawClient early(served.connect());
  EXPECT_FALSE(early.hello());
  EXPECT_TRUE(early.isHungUp());
  EXPECT_EQ(control.call("create")["ok"], false);
  EXPECT_EQ(control.call("power-cycle")["ok"], false);
  EXPECT_EQ(control.call("show")["on"], false);
}

TEST(Server, PowerOn_OffTimeIsNotOver_ServesAgain) {
  ServedModem served;
  ControlClient control = served.newControl();
  const auto boot = control.call("show")["boot"];
  control.call("power-cycle", {{"offMs", 3'600'000}});
  const auto reply = control.call("power-on");
  EXPECT_EQ(reply["on"], true);
  EXPECT_NE(reply["boot"], boot);
  EXPECT_TRUE(RawClient(served.connect()).hello());
}

TEST(Server, PowerOn_IsOnAlready_DoesNothing) {
  ServedModem served;
  ControlClient control = served.newControl();
  const auto boot = control.call("show")["boot"];
  EXPECT_EQ(control.call("power-on")["boot"], boot);
}

TEST(Server, PowerCycle_OffTimeIsOver_ServesAgain) {
  ServedModem served;
  ControlClient control = served.newControl();
  const auto boot = control.call("show")["boot"];
  control.call("power-cycle", {{"offMs", 20}});
  EXPECT_TRUE(waitUntil([&] { return RawClient(served.connect()).hello().has_value(); }));
  EXPECT_NE(control.call("show")["boot"], boot);
}

TEST(Server, FaultDelay_ClientLeavesMeanwhile_IsDropped) {
  ServedModem served;
  ControlClient control = served.newControl();
  control.call("fail", {{"message", "any"}, {"delayMs", 200}, {"count", 2}});
  // The client has sent everything and ended its side before the modem sees the connection.
  auto [modemsEnd, clientsEnd] = ServedModem::makePair();
  RawClient client(std::move(clientsEnd));
  client.sendBytes(encodeFrame({FrameKind::Hello, 0, 0, {0}}));
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  client.endSending();
  served.adopt(std::move(modemsEnd));
  ASSERT_TRUE(waitUntil([&] { return control.call("faults")["faults"][0]["count"] == 1; }));
  // A request that is delayed later is also answered later, when the first one has been due.
  EXPECT_EQ(resultOf(served.newClient().request(MessageId::ProfileList, {})), success);
  EXPECT_THAT(control.call("show")["profiles"], IsEmpty());
}

}  // namespace
}  // namespace modem::test
