// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests show the indications that registered clients receive when a fault takes effect on
// one.
#include "FaultTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class IndicationFaultTest : public FaultTest {
 protected:
  IndicationFaultTest() { client.registerForAll(); }

  // Returns the payload of the next frame, which must be an indication.
  Payload nextIndication(MessageId messageId = MessageId::ProfileChanged) {
    const auto frame = client.receive();
    EXPECT_TRUE(frame && frame->kind == FrameKind::Indication &&
                MessageId{frame->messageId} == messageId);
    return frame ? frame->payload : Payload{};
  }
  // Raises a subscription change, which changes no profile.
  void raise() { control.call("indicate", {{"event", 4}, {"index", 9}}); }
};

TEST_F(IndicationFaultTest, Lost_Modify_LeavesTheCreate) {
  fail({{"indication", "modify"}, {"lost", true}});
  create({});
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("create/1"));
}

TEST_F(IndicationFaultTest, Doubled_Create_ComesTwice) {
  fail({{"indication", "create"}, {"doubled", true}});
  create({});
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("create/1", "create/1", "modify/1"));
}

TEST_F(IndicationFaultTest, LateMs_Create_ComesBehindTheModify) {
  fail({{"indication", "create"}, {"lateMs", 100}});
  create({});
  EXPECT_EQ(client.nextEvent(), "modify/1");
  EXPECT_EQ(client.nextEvent(), "create/1");
}

TEST_F(IndicationFaultTest, Reordered_Create_ComesBehindTheNextOne) {
  fail({{"indication", "create"}, {"reordered", true}});
  create({});
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("modify/1", "create/1"));
}

TEST_F(IndicationFaultTest, Reordered_TheLastOne_WaitsForTheNextOfThatClient) {
  RawClient other = served.newClient();
  other.registerForAll();
  fail({{"indication", "modify"}, {"reordered", true}});
  create({});
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("create/1"));
  EXPECT_THAT(other.eventsUntilNow(), ElementsAre("create/1", "modify/1"));
  raise();
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("subscription/9", "modify/1"));
}

TEST_F(IndicationFaultTest, Reordered_FaultsCleared_IsSent) {
  fail({{"indication", "modify"}, {"reordered", true}});
  create({});
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("create/1"));
  control.call("clear");
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("modify/1"));
}

TEST_F(IndicationFaultTest, Early_Modify_ComesBeforeTheAnswer) {
  fail({{"indication", "modify"}, {"early", true}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  EXPECT_THAT(kindsUntilNow(), ElementsAre("modify/1", "response", "create/1"));
}

TEST_F(IndicationFaultTest, Early_OfNobodysRequest_IsSent) {
  fail({{"indication", "any"}, {"early", true}});
  raise();
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("subscription/9"));
}

TEST_F(IndicationFaultTest, Index_AnyEvent_TellsOfThatProfile) {
  fail({{"indication", "modify"}, {"index", 200}});
  create({});
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("create/1", "modify/200"));
}

TEST_F(IndicationFaultTest, Event_EveryCode_IsTold) {
  for (const uint32_t event : {0u, 9u, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(event);
    fail({{"indication", "any"}, {"event", event}});
    raise();
    const Payload payload = nextIndication();
    const auto value = *FieldReader(payload).bytes(tagChangedProfile);
    EXPECT_EQ(numberFrom(value.subspan(5)), event);
    EXPECT_EQ(value[4], 9);
  }
}

TEST_F(IndicationFaultTest, WithoutField_Any_IsNeitherEmptyNorMalformed) {
  fail({{"indication", "any"}, {"withoutField", 16}});
  raise();
  const Payload payload = nextIndication();
  EXPECT_FALSE(payload.empty());
  EXPECT_FALSE(FieldReader(payload).bytes(tagChangedProfile));
}

TEST_F(IndicationFaultTest, CutToNothing_Any_HasZeroLength) {
  fail({{"indication", "any"}, {"cutTo", 0}});
  raise();
  EXPECT_THAT(nextIndication(), IsEmpty());
}

TEST_F(IndicationFaultTest, AsMessage_Any_IsOfThatKind) {
  fail({{"indication", "any"}, {"asMessage", 0x00A9}});
  raise();
  nextIndication(MessageId{0x00A9});
}

TEST_F(IndicationFaultTest, Undecodable_Any_CannotBeRead) {
  for (const char* how : {"noise", "twice", "overrun"}) {
    SCOPED_TRACE(how);
    fail({{"indication", "any"}, {"undecodable", how}});
    raise();
    const Payload payload = nextIndication();
    EXPECT_THROW(FieldReader{payload}, Refusal);
  }
}

TEST_F(IndicationFaultTest, Power_BeforeAnIndication_LeavesTheAnswer) {
  fail({{"indication", "create"}, {"power", "before"}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  EXPECT_EQ(client.receive()->kind, FrameKind::Response);
  EXPECT_TRUE(client.isHungUp());
}

TEST_F(IndicationFaultTest, Power_AfterAnIndication_LosesTheNextOne) {
  fail({{"indication", "create"}, {"power", "after"}});
  client.send(FrameKind::Request, MessageId::CreateProfile, createRequest({}));
  EXPECT_EQ(client.receive()->kind, FrameKind::Response);
  EXPECT_EQ(client.nextEvent(), "create/1");
  EXPECT_TRUE(client.isHungUp());
}

TEST_F(IndicationFaultTest, TwoClients_OneFault_BefallsTheFirst) {
  RawClient other = served.newClient();
  other.registerForAll();
  fail({{"indication", "any"}, {"lost", true}});
  raise();
  EXPECT_THAT(client.eventsUntilNow(), IsEmpty());
  EXPECT_THAT(other.eventsUntilNow(), ElementsAre("subscription/9"));
}

}  // namespace
}  // namespace modem::test
