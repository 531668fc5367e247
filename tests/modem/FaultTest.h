// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This fixture has a modem with faults and a client on which their effects show.
#pragma once

#include "Answers.h"
#include "Deadline.h"
#include "ServedModem.h"
#include "modem/core/Refusal.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace modem::test {

class FaultTest : public testing::Test {
 protected:
  explicit FaultTest(Service::Options options = {}) : served(std::move(options)) {}

  void fail(const nlohmann::json& fault) {
    const nlohmann::json reply = control.call("fail", fault);
    ASSERT_EQ(reply["ok"], true) << reply;
  }
  uint8_t create(const Profile& profile) {
    return createdIndexOf(client.request(MessageId::CreateProfile, createRequest(profile)));
  }
  nlohmann::json profiles() { return control.call("show")["profiles"]; }

  // Makes a request and returns the frames before its answer: "create/1" for an indication,
  // "response" for an answer.
  std::vector<std::string> kindsUntilNow() {
    const uint32_t last =
        client.send(FrameKind::Request, MessageId::BindSubscription, bindRequest(0));
    std::vector<std::string> kinds;
    for (auto frame = client.receive(); frame && frame->transaction != last;
         frame = client.receive()) {
      kinds.push_back(frame->kind == FrameKind::Indication ? eventOf(frame->payload) : "response");
    }
    return kinds;
  }
  void expectNothingUntilNow() { EXPECT_EQ(kindsUntilNow(), std::vector<std::string>{}); }

  // Returns one request of each kind, about profile 1. The delete comes last.
  static std::vector<std::pair<MessageId, Payload>> everyRequest() {
    return {{MessageId::IndicationRegister, registerRequest()},
            {MessageId::ConfigureEvents, eventListRequest({}, /*isOn=*/false)},
            {MessageId::BindSubscription, bindRequest(1)},
            {MessageId::CreateProfile, createRequest({})},
            {MessageId::ModifyProfile, profileRequest(1, {.apn = "x"})},
            {MessageId::ProfileSettings, profileRequest(1)},
            {MessageId::ProfileList, listRequest()},
            {MessageId::DeleteProfile, profileRequest(1)}};
  }

  ServedModem served;
  ControlClient control = served.newControl();
  RawClient client = served.newClient();
};

}  // namespace modem::test
