// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests show the effects of a fault on the hello, on the side of the client that sends it.
#include "FaultTest.h"
#include "wire/Hello.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

class ServiceFaultTest : public FaultTest {
 protected:
  RawClient saying(Purpose purpose) {
    RawClient fresh(served.connect());
    fresh.sendBytes(encodeFrame({FrameKind::Hello, 0, 0, encodeHello({purpose, false})}));
    return fresh;
  }
  static std::optional<HelloAnswer> answerTo(RawClient& fresh) {
    const auto frame = fresh.receive();
    return frame && frame->kind == FrameKind::Hello ? decodeHelloAnswer(frame->payload)
                                                    : std::nullopt;
  }
  // Returns 0 when the client is welcome.
  int refusalOf(Purpose purpose) {
    RawClient fresh = saying(purpose);
    const auto answer = answerTo(fresh);
    return answer ? answer->refusal : -12345;
  }
};

TEST_F(ServiceFaultTest, Hello_EveryPurpose_IsWelcome) {
  for (const Purpose purpose : {Purpose::Open, Purpose::Find, Purpose::Watch, Purpose::Object}) {
    EXPECT_EQ(refusalOf(purpose), 0) << purposeName(purpose);
  }
}

TEST_F(ServiceFaultTest, Refuse_OnePurpose_LeavesTheOthers) {
  fail({{"service", "open"}, {"refuse", -7}});
  EXPECT_EQ(refusalOf(Purpose::Find), 0);
  EXPECT_EQ(refusalOf(Purpose::Watch), 0);
  EXPECT_EQ(refusalOf(Purpose::Object), 0);
  EXPECT_EQ(refusalOf(Purpose::Open), -7);
  EXPECT_EQ(refusalOf(Purpose::Open), 0);
}

TEST_F(ServiceFaultTest, Refuse_Nth_CountsHellos) {
  fail({{"service", "any"}, {"refuse", 77}, {"nth", 3}});
  EXPECT_EQ(refusalOf(Purpose::Find), 0);
  EXPECT_EQ(refusalOf(Purpose::Watch), 0);
  EXPECT_EQ(refusalOf(Purpose::Open), 77);
}

TEST_F(ServiceFaultTest, Silent_Open_IsNotAnswered) {
  fail({{"service", "open"}, {"silent", true}});
  RawClient silent = saying(Purpose::Open);
  // The next request is answered, and no frame came before that answer.
  const uint32_t transaction = silent.send(FrameKind::Request, MessageId::ProfileList, {});
  const auto frame = silent.receive();
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->transaction, transaction);
  EXPECT_EQ(resultOf(frame->payload), failure(ErrorCode::NotReady));
}

TEST_F(ServiceFaultTest, DelayMs_Open_IsWelcomeLater) {
  fail({{"service", "open"}, {"delayMs", 50}});
  RawClient late = saying(Purpose::Open);
  EXPECT_EQ(refusalOf(Purpose::Open), 0);
  EXPECT_TRUE(answerTo(late));
  EXPECT_EQ(resultOf(late.request(MessageId::ProfileList, {})), success);
}

TEST_F(ServiceFaultTest, Power_Before_HangsUp) {
  fail({{"service", "find"}, {"power", "before"}});
  RawClient fresh = saying(Purpose::Find);
  EXPECT_TRUE(fresh.isHungUp());
  EXPECT_TRUE(client.isHungUp()) << "the power is everybody's";
  EXPECT_EQ(refusalOf(Purpose::Find), 0);
}

TEST_F(ServiceFaultTest, Power_After_WelcomesFirst) {
  fail({{"service", "open"}, {"power", "after"}, {"offMs", 3'600'000}});
  RawClient fresh = saying(Purpose::Open);
  EXPECT_TRUE(answerTo(fresh));
  EXPECT_TRUE(fresh.isHungUp());
  EXPECT_EQ(control.call("show")["on"], false);
}

TEST_F(ServiceFaultTest, Refuse_PowerOff_WaitsForOneThatIsHeard) {
  fail({{"service", "open"}, {"refuse", -7}});
  control.call("power-cycle", {{"offMs", 20}});
  const auto isRefused = [&] { return refusalOf(Purpose::Open) == -7; };
  EXPECT_TRUE(pavo::test::waitUntil(isRefused));
}

}  // namespace
}  // namespace modem::test
