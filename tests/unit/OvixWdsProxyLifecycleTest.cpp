// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FdLimit.h"
#include "LogLines.h"
#include "MessageBytes.h"
#include "OvixWdsProxy.h"
#include "ProxyTest.h"
#include "Sequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

constexpr const char* addLine =
    "V EventManager::addEventHandler(int #, EventCallback 0x#, void* 0x#, CloseCallback (nil), "
    "events 1) EX";
constexpr const char* armLine = "H OvixWdsProxy::registerOvixSvcUp";
constexpr const char* serviceUpLine =
    "D OvixWdsProxy service is up, trying to initialize svc client";
constexpr const char* handleErrorLine = "D src/OvixWdsProxy:230:handleError";

const Sequence arming{armLine, "init notifier", "register notify callback"};
const Sequence registrations{"send 0xaf", "D OvixWdsProxy bind register request successful!",
                             "send 0x03", "D OvixWdsProxy indication register request successful!",
                             "send 0xa7", "D OvixWdsProxy config register request successful!"};
const Sequence opening =
    Sequence{
        serviceUpLine, "get any service",         "release notifier",
        "init client", "register error callback", "D ovix_client_register_error_cb result: 0"} +
    registrations;
const Sequence recovering =
    Sequence{handleErrorLine, "release client", "I Handling modem down"} + arming;

class OvixWdsProxyLifecycleTest : public ProxyTest {
 protected:
  // Returns the descriptors that the proxy has registered, from the lines of the loop.
  std::vector<int> registeredFds() const {
    std::vector<int> fds;
    for (const std::string& line : platform.logMessages()) {
      int fd = -1;
      if (std::sscanf(line.c_str(), "EventManager::addEventHandler(int %d", &fd) == 1) {
        fds.push_back(fd);
      }
    }
    return fds;
  }

  static void fill(int eventFd) {
    const std::uint64_t most = 0xfffffffffffffffe;
    ASSERT_EQ(write(eventFd, &most, sizeof most), 8);
  }
};

TEST_F(OvixWdsProxyLifecycleTest, Construct_Healthy_ServiceObjectThreeHandlersNotifierArmed) {
  platform.clearCalls();
  construct();
  EXPECT_EQ(recorded(), Sequence({"get service object", addLine, addLine, addLine}) + arming);
  const PlatformCall asked = platform.calls(FakePlatform::Kind::GetServiceObject).front();
  EXPECT_THAT(asked.numbers, testing::ElementsAre(1, 257, 6));
  EXPECT_EQ(platform.armedNotifierCount(), 1U);
  EXPECT_NE(notifier().serviceObject, nullptr);
}

TEST_F(OvixWdsProxyLifecycleTest, Construct_RegistrationRefused_NoLineAndReleasedAllTheSame) {
  platform.setRegisterNotifyCbResult(OVIX_CLIENT_INTERNAL_ERROR);
  platform.clearCalls();
  construct();
  EXPECT_EQ(recorded(), Sequence({"get service object", addLine, addLine, addLine}) + arming);
  EXPECT_EQ(platform.armedNotifierCount(), 1U);
}

TEST_F(OvixWdsProxyLifecycleTest, Construct_NoNotifier_NoLineAndNothingToRelease) {
  platform.setNotifierInitResult(OVIX_CLIENT_INTERNAL_ERROR);
  platform.clearCalls();
  construct();
  EXPECT_EQ(recorded(), Sequence({"get service object", addLine, addLine, addLine}) + arming);
  EXPECT_EQ(platform.calls(FakePlatform::Kind::RegisterNotifyCb).back().handle, nullptr);
  platform.clearCalls();
  destroy();
  EXPECT_EQ(recorded(), Sequence(3, line::removingHandler));
}

// The handle decides, not the result.
TEST_F(OvixWdsProxyLifecycleTest, Construct_NotifierInSpiteOfAnError_ServesAndIsReleased) {
  platform.setNotifierInitResult(OVIX_CLIENT_INTERNAL_ERROR, /*makesNotifier=*/true);
  construct();
  ASSERT_TRUE(platform.notify());
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), opening);
}

TEST_F(OvixWdsProxyLifecycleTest, Construct_NoServiceObject_ErrorAndNoNotifier) {
  platform.setServiceObjectPresent(false);
  platform.clearCalls();
  construct();
  EXPECT_EQ(recorded(), Sequence({"get service object", addLine, addLine, addLine, armLine,
                                  "E cannot obtain service obj, fatal error"}));
}

TEST_F(OvixWdsProxyLifecycleTest, Construct_AnnouncedInsideRegistration_Opens) {
  platform.setAnnouncement(FakePlatform::Announcement::Synchronous);
  construct();
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), opening);
}

// The wake-up's two descriptors come first; then one for each of the proxy's events.
TEST(OvixWdsProxyDeathTest, Construct_NoDescriptor_ErrorAndAbort) {
  for (int descriptors = 2; descriptors <= 4; ++descriptors) {
    SCOPED_TRACE(descriptors);
    const auto handlers = static_cast<std::size_t>(descriptors - 1);
    EXPECT_EXIT(
        {
          logToStandardError();
          allowMoreFds(descriptors);
          EventManager loop;
          const OvixWdsProxy proxy(loop, /*subscription=*/0);
        },
        testing::KilledBySignal(SIGABRT),
        testing::AllOf(
            testing::EndsWith("E Cannot create eventfd instance\n"),
            testing::ResultOf(
                [](const std::string& output) { return occurrences(output, "addEventHandler"); },
                handlers)));
  }
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_Healthy_ClientOpenBoundAndRegistered) {
  construct();
  platform.clearCalls();
  ASSERT_TRUE(platform.notify());
  EXPECT_EQ(recorded(), Sequence());
  loop.processEvents();
  EXPECT_EQ(recorded(), oneEvent() + opening);
  EXPECT_EQ(platform.openClientCount(), 1U);
  EXPECT_EQ(platform.armedNotifierCount(), 0U);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_Healthy_RequestsByteForByte) {
  construct();
  platform.notify();
  loop.processEvents();
  const std::vector<PlatformCall> sent = platform.sent();
  ASSERT_EQ(sent.size(), 3U);
  const MessageBytes expected[] = {
      MessageBytes(4).u32(0, subscription),
      MessageBytes(408).u8(16, 1).u8(17, 1),
      MessageBytes(2052).u8(0, 1).u32(4, 1).u32(8, 255).u8(12, 255).u8(2048, 1).u8(2049, 1),
  };
  for (std::size_t i = 0; i < sent.size(); ++i) {
    SCOPED_TRACE(sent[i].msgId);
    EXPECT_EQ(expected[i].differences(MessageBytes::of(sent[i].bytes)), Sequence());
    EXPECT_EQ(sent[i].outLength, 8U);
    EXPECT_EQ(sent[i].timeoutMs, 1000U);
    EXPECT_EQ(sent[i].handle, client().handle);
  }
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_AnySubscription_SentUnchanged) {
  for (const int bound :
       {0, 1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(bound);
    proxy.emplace(loop, bound);
    platform.clearCalls();
    platform.notify();
    loop.processEvents();
    const auto request = platform.sent(OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01)
                             .front()
                             .as<wds_bind_subscription_req_msg_v01>();
    EXPECT_EQ(request.subscription, bound);
    destroy();
  }
}

TEST_F(OvixWdsProxyLifecycleTest, RegisterOvixIndications_OneFails_LoggedAndTheOthersSent) {
  struct Case {
    unsigned int msgId;
    std::size_t line;
    const char* failure;
  };
  const Case cases[] = {
      {OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01, 1, "E Unable send bind req message"},
      {OVIX_WDS_INDICATION_REGISTER_REQ_V01, 3, "E Unable send indication req message"},
      {OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01, 5, "E Unable send config req message"},
  };
  open();
  for (const Case& c : cases) {
    for (const bool isRejected : {false, true}) {
      SCOPED_TRACE(std::string(c.failure) + (isRejected ? ", rejected" : ", not sent"));
      isRejected ? platform.rejectNext(c.msgId) : platform.failNext(c.msgId);
      proxy->registerOvixIndications();
      Sequence expected = registrations;
      expected[c.line] = c.failure;
      EXPECT_EQ(takeRecorded(), expected);
    }
  }
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_NoServiceFound_ErrorAndNotifierKept) {
  construct();
  platform.setGetAnyServiceResult(OVIX_CLIENT_SERVICE_ERROR);
  platform.notify();
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), (Sequence{serviceUpLine, "get any service", "E error get service."}));
  EXPECT_EQ(platform.armedNotifierCount(), 1U);

  // The kept notifier gives the next chance.
  platform.setGetAnyServiceResult(OVIX_CLIENT_NO_ERROR);
  ASSERT_TRUE(platform.notify());
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), opening);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_ClientCannotBeOpened_ErrorWithCodeAndNothingMore) {
  construct();
  platform.setClientInitResult(-42);
  platform.notify();
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), (Sequence{serviceUpLine, "get any service", "release notifier",
                                      "init client", "E ovix_client_init error. ErrCode : -42"}));
  EXPECT_EQ(platform.armedNotifierCount(), 0U);

  // The library keeps no client from the failed attempt, so a late notification leads to a second
  // one.
  platform.setClientInitResult(OVIX_CLIENT_NO_ERROR);
  OvixWdsProxy::ovixNotifyCb(nullptr, nullptr, OVIX_CLIENT_SERVICE_AVAILABLE, &*proxy);
  platform.clearCalls();
  loop.processEvents();
  Sequence again = opening;
  std::erase(again, "release notifier");
  EXPECT_EQ(takeRecorded(), again);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_ErrorCallbackRefused_ResultLoggedAndGoesOn) {
  construct();
  platform.setRegisterErrorCbResult(-5);
  platform.notify();
  platform.clearCalls();
  loop.processEvents();
  Sequence expected = opening;
  expected[5] = "D ovix_client_register_error_cb result: -5";
  EXPECT_EQ(takeRecorded(), expected);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_ClientOpen_SkippedAndNothingSent) {
  open();
  OvixWdsProxy::ovixNotifyCb(nullptr, nullptr, OVIX_CLIENT_SERVICE_AVAILABLE, &*proxy);
  loop.processEvents();
  EXPECT_EQ(takeRecorded(),
            (Sequence{serviceUpLine, "get any service",
                      "D OvixWdsProxy client is already present, so skipping client "
                      "initialization."}));
  EXPECT_EQ(platform.openClientCount(), 1U);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_ClientOpenAndNotifierArmed_NotifierReleased) {
  open();
  proxy->registerOvixSvcUp();
  platform.clearCalls();
  platform.notify();
  loop.processEvents();
  EXPECT_EQ(takeRecorded(),
            (Sequence{serviceUpLine, "get any service", "release notifier",
                      "D OvixWdsProxy client is already present, so skipping client "
                      "initialization."}));
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_NoProxy_DrainedAndError) {
  const UniqueFd fd(eventfd(/*count=*/2, EFD_NONBLOCK | EFD_CLOEXEC));
  platform.clearCalls();
  OvixWdsProxy::handleSvcUp(fd.get(), nullptr);
  EXPECT_EQ(recorded(), (Sequence{serviceUpLine, "E OvixWdsProxy instance is null"}));
  std::uint64_t count = 0;
  EXPECT_EQ(read(fd.get(), &count, sizeof count), -1);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleSvcUp_ReadFails_ErrorAndGoesOn) {
  construct();
  platform.clearCalls();
  OvixWdsProxy::handleSvcUp(-1, &*proxy);
  Sequence expected = opening;
  expected.insert(expected.begin() + 1, "E Error while clearing the read buffer on fd -1");
  EXPECT_EQ(takeRecorded(), expected);
}

TEST_F(OvixWdsProxyLifecycleTest, OvixNotifyCb_NoProxy_Error) {
  platform.clearCalls();
  OvixWdsProxy::ovixNotifyCb(nullptr, nullptr, OVIX_CLIENT_SERVICE_AVAILABLE, nullptr);
  EXPECT_EQ(recorded(), Sequence{"E OvixWdsProxy instance is null"});
}

TEST_F(OvixWdsProxyLifecycleTest, OvixNotifyCb_OtherEvent_ErrorAndNoWakeUp) {
  construct();
  const int svcUpFd = registeredFds().at(1);
  platform.clearCalls();
  for (const int event : {1, 2, -1}) {
    SCOPED_TRACE(event);
    platform.notify(event);
    EXPECT_EQ(takeRecorded(), Sequence{"E OvixWdsProxy notify cb: unsupported service event"});
  }
  std::uint64_t count = 0;
  EXPECT_EQ(read(svcUpFd, &count, sizeof count), -1);
}

TEST_F(OvixWdsProxyLifecycleTest, OvixNotifyCb_CounterFull_Error) {
  construct();
  fill(registeredFds().at(1));
  platform.clearCalls();
  platform.notify();
  EXPECT_EQ(recorded(),
            Sequence{"E error in writing rv:-1, error:Resource temporarily unavailable"});
}

TEST_F(OvixWdsProxyLifecycleTest, OvixErrorCb_NoProxy_Error) {
  platform.clearCalls();
  OvixWdsProxy::ovixErrorCb(nullptr, -2, nullptr);
  EXPECT_EQ(recorded(),
            (Sequence{"D src/OvixWdsProxy:161:ovixErrorCb", "E OvixWdsProxy NULL in ovixErrorCb"}));
}

TEST_F(OvixWdsProxyLifecycleTest, OvixErrorCb_CounterFull_Error) {
  platform.clearCalls();
  construct();
  const int errorFd = registeredFds().at(1);
  platform.notify();
  loop.processEvents();
  fill(errorFd);
  platform.clearCalls();
  platform.raiseError();
  EXPECT_EQ(recorded(),
            (Sequence{"D src/OvixWdsProxy:161:ovixErrorCb",
                      "E error in writing rv: -1, error: Resource temporarily unavailable"}));
}

TEST_F(OvixWdsProxyLifecycleTest, HandleError_ClientOpen_ReleasedAndNotifierArmedAgain) {
  open();
  ASSERT_TRUE(platform.raiseError());
  EXPECT_EQ(recorded(), Sequence{"D src/OvixWdsProxy:161:ovixErrorCb"});
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(recorded(), oneEvent() + recovering);
  EXPECT_EQ(platform.openClientCount(), 0U);
  EXPECT_EQ(platform.armedNotifierCount(), 1U);

  platform.clearCalls();
  ASSERT_TRUE(platform.notify());
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), opening);
  EXPECT_EQ(platform.clients().size(), 2U);
}

// Late errors of the client that is already gone arrive while the notifier is armed.
TEST_F(OvixWdsProxyLifecycleTest, HandleError_TwiceWithoutServiceUp_OneNotifierLeft) {
  open();
  const FakePlatform::Client lost = client();
  lost.errorCallback(lost.handle, OVIX_CLIENT_SERVICE_ERROR, lost.errorData);
  loop.processEvents();
  platform.clearCalls();
  lost.errorCallback(lost.handle, OVIX_CLIENT_SERVICE_ERROR, lost.errorData);
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), (Sequence{"D src/OvixWdsProxy:161:ovixErrorCb", handleErrorLine,
                                      "I Handling modem down", armLine, "release notifier",
                                      "init notifier", "register notify callback"}));
  EXPECT_EQ(platform.armedNotifierCount(), 1U);
}

// The released handle must not stay in place, because the end would release it again.
TEST_F(OvixWdsProxyLifecycleTest, HandleError_ArmedAndNoNewNotifier_OldOneReleasedOnce) {
  open();
  const FakePlatform::Client lost = client();
  platform.raiseError();
  loop.processEvents();
  const FakePlatform::Notifier armed = notifier();
  platform.setNotifierInitResult(OVIX_CLIENT_INTERNAL_ERROR);
  lost.errorCallback(lost.handle, OVIX_CLIENT_SERVICE_ERROR, lost.errorData);
  loop.processEvents();
  EXPECT_EQ(platform.releaseCount(armed.handle), 1U);
  EXPECT_EQ(platform.calls(FakePlatform::Kind::RegisterNotifyCb).back().handle, nullptr);
  destroy();
  EXPECT_EQ(platform.releaseCount(armed.handle), 1U);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleError_SeveralBeforeTheWorkerRuns_HandledOnce) {
  open();
  platform.raiseError();
  platform.raiseError();
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(takeRecorded(), recovering);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleError_NoClient_NothingReleased) {
  platform.setAnnouncement(FakePlatform::Announcement::Never);
  construct();
  platform.clearCalls();
  const UniqueFd fd(eventfd(/*count=*/1, EFD_NONBLOCK | EFD_CLOEXEC));
  OvixWdsProxy::handleError(fd.get(), &*proxy);
  EXPECT_EQ(takeRecorded(),
            (Sequence{handleErrorLine, "I Handling modem down", armLine, "release notifier",
                      "init notifier", "register notify callback"}));
}

TEST_F(OvixWdsProxyLifecycleTest, HandleError_NoProxy_DrainedAndError) {
  const UniqueFd fd(eventfd(/*count=*/2, EFD_NONBLOCK | EFD_CLOEXEC));
  platform.clearCalls();
  OvixWdsProxy::handleError(fd.get(), nullptr);
  EXPECT_EQ(recorded(), (Sequence{handleErrorLine, "E arg is null"}));
  std::uint64_t count = 0;
  EXPECT_EQ(read(fd.get(), &count, sizeof count), -1);
}

TEST_F(OvixWdsProxyLifecycleTest, HandleError_ReadFails_ErrorAndGoesOn) {
  open();
  OvixWdsProxy::handleError(-1, &*proxy);
  Sequence expected = recovering;
  expected.insert(expected.begin() + 1, "E Error while clearing the read buffer on fd -1");
  EXPECT_EQ(takeRecorded(), expected);
}

TEST_F(OvixWdsProxyLifecycleTest, Destroy_NotifierArmed_ReleasedThenHandlersRemoved) {
  construct();
  platform.clearCalls();
  destroy();
  EXPECT_EQ(recorded(), (Sequence{"release notifier", line::removingHandler, line::removingHandler,
                                  line::removingHandler}));
}

TEST_F(OvixWdsProxyLifecycleTest, Destroy_ClientAndNotifierHeld_NotifierFirst) {
  open();
  proxy->registerOvixSvcUp();
  platform.clearCalls();
  destroy();
  EXPECT_EQ(recorded(), (Sequence{"release notifier", "release client", line::removingHandler,
                                  line::removingHandler, line::removingHandler}));
}

TEST_F(OvixWdsProxyLifecycleTest, Destroy_EventsPending_NeitherDeliveredNorLeftToTheLoop) {
  open();
  platform.indicateProfileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_DELETE_V01);
  platform.raiseError();
  platform.clearCalls();
  destroy();
  EXPECT_EQ(recorded(), (Sequence{"release client", line::removingHandler, line::removingHandler,
                                  line::removingHandler}));
  loop.wake();
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(withoutEventLines(recorded()), Sequence());
  EXPECT_EQ(deliveries(), Sequence());
}

TEST_F(OvixWdsProxyLifecycleTest, Destroy_CallbacksComeLate_DoNothing) {
  open();
  proxy->registerOvixSvcUp();
  const FakePlatform::Client lateClient = client();
  const FakePlatform::Notifier lateNotifier = notifier();
  destroy();
  platform.clearCalls();

  auto indication = FakePlatform::profileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_READY_V01);
  lateNotifier.callback(lateNotifier.handle, lateNotifier.serviceObject,
                        OVIX_CLIENT_SERVICE_AVAILABLE, lateNotifier.data);
  lateClient.errorCallback(lateClient.handle, OVIX_CLIENT_SERVICE_ERROR, lateClient.errorData);
  lateClient.indicationCallback(lateClient.handle, OVIX_WDS_PROFILE_CHANGED_IND_V01, &indication,
                                sizeof indication, lateClient.indicationData);
  EXPECT_THAT(recorded(),
              testing::ElementsAre("D src/OvixWdsProxy:161:ovixErrorCb",
                                   testing::StartsWith("V static void pavo::OvixWdsProxy")));
}

// This test is for the address and thread sanitizers: the messaging library does not wait for its
// callbacks when a handle is released.
TEST_F(OvixWdsProxyLifecycleTest, Destroy_CallbacksInProgress_NoneTouchesTheProxy) {
  for (int round = 0; round < 50; ++round) {
    open();
    const FakePlatform::Client raw = client();
    std::atomic<int> calls{0};
    std::atomic<bool> stop{false};
    std::thread library([&] {
      auto indication =
          FakePlatform::profileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_READY_V01);
      while (!stop) {
        raw.indicationCallback(raw.handle, OVIX_WDS_PROFILE_CHANGED_IND_V01, &indication,
                               sizeof indication, raw.indicationData);
        raw.errorCallback(raw.handle, OVIX_CLIENT_SERVICE_ERROR, raw.errorData);
        OvixWdsProxy::ovixNotifyCb(nullptr, nullptr, OVIX_CLIENT_SERVICE_AVAILABLE,
                                   raw.indicationData);
        ++calls;
      }
    });
    EXPECT_TRUE(waitUntil([&] { return calls > 0; }));
    destroy();
    const int before = calls;
    EXPECT_TRUE(waitUntil([&] { return calls > before + 1; }));
    stop = true;
    library.join();
    platform.clearCalls();
  }
}

}  // namespace
}  // namespace pavo::test
