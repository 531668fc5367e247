// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests serve a trace again to clients on the wire.
#include "Answers.h"
#include "Deadline.h"
#include "FaultTest.h"
#include "TemporaryFolder.h"
#include "modem/trace/Replay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace modem::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Serves sessions on a thread of its own, and keeps the replay's complaints.
class ServedReplay {
 public:
  explicit ServedReplay(const std::string& path)
      : server({.listenFd = -1, .report = [this](const std::string& line) { keep(line); }}),
        replay(readTraceSessions(path), server),
        thread([this] { server.run(replay); }) {}
  ~ServedReplay() { end(); }

  RawClient connect() {
    auto [modemsEnd, clientsEnd] = ServedModem::makePair();
    server.adopt(std::move(modemsEnd));
    return RawClient(std::move(clientsEnd));
  }
  ControlClient newControl() {
    auto [modemsEnd, clientsEnd] = ServedModem::makePair();
    server.adopt(std::move(modemsEnd));
    return ControlClient(clientsEnd.release());
  }
  // Ends the replay. The counts do not change any more after this.
  const Replay& end() {
    server.stop();
    if (thread.joinable()) {
      thread.join();
    }
    return replay;
  }
  std::vector<std::string> complaints() {
    const std::lock_guard lock(mutex);
    return lines;
  }

 private:
  void keep(const std::string& line) {
    const std::lock_guard lock(mutex);
    lines.push_back(line);
  }

  std::mutex mutex;
  std::vector<std::string> lines;
  Server server;
  Replay replay;
  std::thread thread;
};

class ReplayTest : public testing::Test {
 protected:
  // Runs work with a client of a modem. All that work does with the client is in the trace when
  // this returns.
  void record(const std::function<void(ServedModem& modem, RawClient& client)>& work) {
    Service::Options options;
    options.trace = std::make_unique<TraceWriter>(path);
    ServedModem modem(std::move(options));
    RawClient client = modem.newClient();
    work(modem, client);
  }

  pavo::test::TemporaryFolder folder;
  const std::string path = folder.file("trace");
};

TEST_F(ReplayTest, SameRequests_MeetTheSameAnswersAndIndications) {
  Payload listed;
  record([&](ServedModem&, RawClient& client) {
    client.registerForAll();
    client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}));
    listed = client.request(MessageId::ProfileList, listRequest());
    client.request(MessageId::DeleteProfile, profileRequest(1));
    client.eventsUntilNow();
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  EXPECT_TRUE(client.hello());
  client.registerForAll();
  EXPECT_EQ(createdIndexOf(client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}))),
            1);
  EXPECT_EQ(client.nextEvent(), "create/1");
  EXPECT_EQ(client.nextEvent(), "modify/1");
  EXPECT_EQ(client.request(MessageId::ProfileList, listRequest()), listed);
  EXPECT_EQ(resultOf(client.request(MessageId::DeleteProfile, profileRequest(1))), success);
  EXPECT_THAT(client.eventsUntilNow(), ElementsAre("delete/1"));
  const Replay& served = replay.end();
  EXPECT_EQ(served.requestsServed(), served.requestsOfTrace());
  EXPECT_EQ(served.requestsDiffering(), 0u);
  EXPECT_THAT(replay.complaints(), IsEmpty());
}

TEST_F(ReplayTest, OtherTransactions_AreAnsweredUnderTheirOwn) {
  record([&](ServedModem&, RawClient& client) {
    client.request(MessageId::ProfileList, listRequest());
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  client.sendBytes(
      encodeFrame({FrameKind::Request, numberOf(MessageId::ProfileList), 4711, listRequest()}));
  EXPECT_EQ(client.receive()->transaction, 4711u);
}

TEST_F(ReplayTest, IndicationOfAnothersEdit_ComesBetweenTheSameRequests) {
  record([&](ServedModem& modem, RawClient& client) {
    client.registerForAll();
    modem.newControl().call("create", {{"apn", "operator"}});
    client.request(MessageId::ProfileSettings, profileRequest(1));
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  client.registerForAll();
  // The test does not wait for the indications here: they must come before the next answer.
  EXPECT_EQ(settingsOf(client.request(MessageId::ProfileSettings, profileRequest(1))).apn,
            "operator");
  EXPECT_EQ(client.nextEvent(), "create/1");
  EXPECT_EQ(client.nextEvent(), "modify/1");
}

TEST_F(ReplayTest, FaultyAnswers_AreAsFaulty) {
  Payload cut;
  record([&](ServedModem& modem, RawClient& client) {
    ControlClient control = modem.newControl();
    control.call("fail", {{"message", "profile-list"}, {"cutTo", 5}});
    cut = client.request(MessageId::ProfileList, listRequest());
    control.call("fail", {{"message", "profile-list"}, {"silent", true}});
    client.send(FrameKind::Request, MessageId::ProfileList, listRequest());
    client.request(MessageId::BindSubscription, bindRequest(1));
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  EXPECT_EQ(client.request(MessageId::ProfileList, listRequest()), cut);
  client.send(FrameKind::Request, MessageId::ProfileList, listRequest());
  const uint32_t last =
      client.send(FrameKind::Request, MessageId::BindSubscription, bindRequest(1));
  EXPECT_EQ(client.receive()->transaction, last);
}

TEST_F(ReplayTest, LateAnswer_ComesAsLate) {
  constexpr std::chrono::milliseconds late{120};
  record([&](ServedModem& modem, RawClient& client) {
    modem.newControl().call("fail", {{"message", "profile-list"}, {"lateMs", late.count()}});
    client.request(MessageId::ProfileList, listRequest());
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, listRequest())), success);
  EXPECT_GE(std::chrono::steady_clock::now() - start, late);
}

TEST_F(ReplayTest, PowerLoss_HangsUpInItsPlace) {
  record([&](ServedModem& modem, RawClient& client) {
    client.request(MessageId::ProfileList, listRequest());
    modem.newControl().call("fail", {{"message", "any"}, {"power", "after"}});
    client.request(MessageId::CreateProfile, createRequest({}));
    EXPECT_TRUE(client.isHungUp());
    RawClient again = modem.newClient(/*sawAbsence=*/true);
    again.request(MessageId::BindSubscription, bindRequest(1));
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, listRequest())), success);
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({}))), success);
  EXPECT_TRUE(client.isHungUp());
  RawClient again = replay.connect();
  again.hello(/*sawAbsence=*/true);
  EXPECT_EQ(resultOf(again.request(MessageId::BindSubscription, bindRequest(1))), success);
  EXPECT_EQ(replay.end().requestsDiffering(), 0u);
}

TEST_F(ReplayTest, HelloRefused_IsRefusedAgain) {
  record([&](ServedModem& modem, RawClient&) {
    modem.newControl().call("fail", {{"service", "open"}, {"refuse", -7}});
    RawClient refused(modem.connect());
    EXPECT_FALSE(refused.hello());
  });
  ServedReplay replay(path);
  EXPECT_TRUE(replay.connect().hello());
  RawClient refused = replay.connect();
  EXPECT_FALSE(refused.hello());
}

TEST_F(ReplayTest, OtherRequest_IsToldAndRefusedAndLeavesTheTraceWhereItWas) {
  record([&](ServedModem&, RawClient& client) {
    client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}));
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({.apn = "other"}))),
            failure(ErrorCode::Internal));
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}))),
            success);
  EXPECT_EQ(replay.end().requestsDiffering(), 1u);
  EXPECT_THAT(replay.complaints(),
              ElementsAre("client 1: the request create-profile {\"apn\":\"other\",\"type\":0} "
                          "differs from the trace, which has create-profile "
                          "{\"apn\":\"ims\",\"type\":0} in line 5; refused"));
}

TEST_F(ReplayTest, RequestsInAnotherOrder_AreToldAndServed) {
  record([&](ServedModem&, RawClient& client) {
    client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}));
    client.request(MessageId::ProfileList, listRequest());
    client.request(MessageId::BindSubscription, bindRequest(1));
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, listRequest())), success);
  EXPECT_EQ(resultOf(client.request(MessageId::CreateProfile, createRequest({.apn = "ims"}))),
            success);
  EXPECT_EQ(resultOf(client.request(MessageId::BindSubscription, bindRequest(1))), success);
  const Replay& served = replay.end();
  EXPECT_EQ(served.requestsServed(), 3u);
  EXPECT_EQ(served.requestsDiffering(), 2u);
  EXPECT_THAT(replay.complaints(),
              ElementsAre(HasSubstr("has create-profile {\"apn\":\"ims\",\"type\":0} in line 5; "
                                    "answered as in line 7"),
                          HasSubstr("answered as in line 5")));
}

TEST_F(ReplayTest, MoreRequestsThanTheTraceHas_AreToldAndRefused) {
  record([&](ServedModem&, RawClient& client) {
    client.request(MessageId::ProfileList, listRequest());
  });
  ServedReplay replay(path);
  RawClient client = replay.connect();
  client.hello();
  client.request(MessageId::ProfileList, listRequest());
  EXPECT_EQ(resultOf(client.request(MessageId::ProfileList, listRequest())),
            failure(ErrorCode::Internal));
  EXPECT_THAT(replay.complaints(), ElementsAre(HasSubstr("which has no further request; refused")));
}

TEST_F(ReplayTest, MoreClientsThanTheTraceHas_AreToldAndRefused) {
  record([&](ServedModem&, RawClient&) {});
  ServedReplay replay(path);
  replay.connect().hello();
  RawClient second = replay.connect();
  EXPECT_TRUE(second.hello());
  EXPECT_EQ(resultOf(second.request(MessageId::ProfileList, listRequest())),
            failure(ErrorCode::Internal));
  EXPECT_THAT(replay.complaints(), ElementsAre(HasSubstr("the trace has no further client")));
  EXPECT_EQ(replay.end().requestsDiffering(), 1u);
}

TEST_F(ReplayTest, OtherHello_IsToldAndAnsweredAsInTheTrace) {
  record([&](ServedModem&, RawClient&) {});
  ServedReplay replay(path);
  EXPECT_TRUE(replay.connect().hello(/*sawAbsence=*/true));
  EXPECT_THAT(replay.complaints(), ElementsAre(HasSubstr("the hello differs from the trace")));
}

TEST_F(ReplayTest, Control_ShowAndQuit_AreServed) {
  record([&](ServedModem&, RawClient& client) {
    client.request(MessageId::ProfileList, listRequest());
  });
  ServedReplay replay(path);
  ControlClient control = replay.newControl();
  EXPECT_EQ(control.call("show")["replay"],
            json::parse(R"({"requests": 1, "served": 0, "differing": 0})"));
  EXPECT_EQ(control.call("create")["ok"], false);
  EXPECT_EQ(control.call("quit")["ok"], true);
}

}  // namespace
}  // namespace modem::test
