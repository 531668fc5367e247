// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "OvixWdsProxy.h"
#include "ProxyTest.h"
#include "Sequence.h"
#include "base/UniqueFd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

constexpr const char* callbackLine =
    "V static void pavo::OvixWdsProxy::ovixIndCb(ovix_client_type, unsigned int, void *, unsigned "
    "int, void *):116";
constexpr const char* receivedLine = "D OvixWdsProxy ProfileChangedInd received!";
constexpr const char* decodeLine = "E Unable to decode the nr status ind message";

std::string sizeLine(int size) {
  return "D OvixWdsProxy: handleIndication indQueue.size[" + std::to_string(size) + "]";
}

class OvixWdsProxyIndicationTest : public ProxyTest {
 protected:
  OvixWdsProxyIndicationTest() { open(); }

  void indicate(std::uint8_t index, std::int32_t event = WDS_PROFILE_EVENT_CREATE_V01) {
    ASSERT_TRUE(platform.indicateProfileChanged(index, event));
  }
  // Runs the worker's part and returns its record, without the lines of the earlier callbacks.
  Sequence process() {
    platform.clearCalls();
    loop.processEvents();
    return takeRecorded();
  }
};

TEST_F(OvixWdsProxyIndicationTest, Indicate_One_WholeSequence) {
  indicate(3);
  EXPECT_EQ(recorded(), Sequence{callbackLine});
  platform.clearCalls();
  loop.processEvents();
  EXPECT_EQ(recorded(), oneEvent() + Sequence({sizeLine(1), "decode", receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), Sequence{"3 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_ThreeBeforeTheWorkerRuns_OneWakeUpOldestFirst) {
  indicate(3);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  indicate(2, WDS_PROFILE_EVENT_DELETE_V01);
  EXPECT_EQ(process(), (Sequence{sizeLine(3), "decode", receivedLine, sizeLine(2), "decode",
                                 receivedLine, sizeLine(1), "decode", receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), (Sequence{"3 Create", "1 Modify", "2 Delete"}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_AnyEventCode_ItsEventOrProfileReady) {
  struct Case {
    std::int32_t code;
    const char* delivery;
  };
  const Case cases[] = {
      {1, "9 Create"},
      {2, "9 Delete"},
      {3, "9 Modify"},
      {4, "9 SubscriptionChange"},
      {5, "9 ProfileReady"},
      {0, "9 ProfileReady"},
      {9, "9 ProfileReady"},
      {-1, "9 ProfileReady"},
      {0x7fffffff, "9 ProfileReady"},
      {0x101, "9 ProfileReady"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.code);
    received.clear();
    indicate(9, c.code);
    loop.processEvents();
    EXPECT_EQ(deliveries(), Sequence{c.delivery});
  }
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_AnyIndex_Unsigned) {
  for (const int index : {0, 1, 127, 128, 200, 255}) {
    SCOPED_TRACE(index);
    received.clear();
    indicate(static_cast<std::uint8_t>(index));
    loop.processEvents();
    EXPECT_EQ(deliveries(), Sequence{std::to_string(index) + " Create"});
  }
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_AnyProfileType_NotLookedAt) {
  auto indication = FakePlatform::profileChanged(/*profileIndex=*/4, WDS_PROFILE_EVENT_DELETE_V01);
  indication.profile_changed_event.profile_type = WDS_PROFILE_TYPE_ANY_V01;
  platform.indicateBytes(indication);
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence{"4 Delete"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_AnyValue_DecodedAsTheModemSentIt) {
  std::uint8_t encoded[16] = {1, 0xa1, 0xa2, 0xa3, 0, 0, 0, 0, 3, 0xa9, 0xaa, 0xab, 1, 0, 0, 0};
  platform.indicate(OVIX_WDS_PROFILE_CHANGED_IND_V01, encoded, sizeof encoded);
  loop.processEvents();
  const std::vector<PlatformCall> decodes = platform.calls(FakePlatform::Kind::Decode);
  ASSERT_EQ(decodes.size(), 1U);
  const PlatformCall& decode = decodes.front();
  EXPECT_EQ(decode.handle, client().handle);
  EXPECT_EQ(decode.numbers[0], 2);
  EXPECT_EQ(decode.msgId, 0xA8U);
  EXPECT_EQ(decode.outLength, 16U);
  EXPECT_THAT(decode.bytes, testing::ElementsAreArray(encoded));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_BufferOverwrittenAfterTheCall_CopyDelivered) {
  auto indication = FakePlatform::profileChanged(/*profileIndex=*/3, WDS_PROFILE_EVENT_MODIFY_V01);
  const FakePlatform::Client raw = client();
  raw.indicationCallback(raw.handle, OVIX_WDS_PROFILE_CHANGED_IND_V01, &indication,
                         sizeof indication, raw.indicationData);
  std::memset(&indication, 0xee, sizeof indication);
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence{"3 Modify"});
}

TEST_F(OvixWdsProxyIndicationTest, OvixIndCb_NothingToCopy_ErrorAndNothingQueued) {
  char byte = 0;
  struct Case {
    void* buffer;
    unsigned int length;
    bool hasProxy;
    const char* line;
  };
  const Case cases[] = {
      {&byte, 0, true, "E The ind_cb_data/ind_buf is null or ind_buf_len is 0"},
      {nullptr, 5, true, "E The ind_cb_data/ind_buf is null or ind_buf_len is 5"},
      {&byte, 1, false, "E The ind_cb_data/ind_buf is null or ind_buf_len is 1"},
      {nullptr, 0, false, "E The ind_cb_data/ind_buf is null or ind_buf_len is 0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.line) + (c.hasProxy ? "" : ", no proxy"));
    platform.clearCalls();
    OvixWdsProxy::ovixIndCb(client().handle, OVIX_WDS_PROFILE_CHANGED_IND_V01, c.buffer, c.length,
                            c.hasProxy ? &*proxy : nullptr);
    EXPECT_EQ(recorded(), (Sequence{callbackLine, c.line}));
  }
  // The next indication finds an empty queue, so none of these was queued.
  indicate(1);
  EXPECT_EQ(process(), (Sequence{sizeLine(1), "decode", receivedLine, sizeLine(0)}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_DecodeFails_DroppedAndTheRestWaitForTheNextWakeUp) {
  indicate(1);
  indicate(2);
  platform.setDecodeResult(OVIX_CLIENT_DECODE_ERROR);
  EXPECT_EQ(process(), (Sequence{sizeLine(2), "decode", decodeLine}));
  EXPECT_EQ(deliveries(), Sequence());

  platform.setDecodeResult(OVIX_CLIENT_NO_ERROR);
  indicate(3);
  EXPECT_EQ(process(), (Sequence{sizeLine(2), "decode", receivedLine, sizeLine(1), "decode",
                                 receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), (Sequence{"2 Create", "3 Create"}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_FieldAbsent_ErrorAndTheNextOneDelivered) {
  auto indication = FakePlatform::profileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_CREATE_V01);
  indication.profile_changed_event_valid = 0;
  platform.indicateBytes(indication);
  indicate(2);
  EXPECT_EQ(process(), (Sequence{sizeLine(2), "decode", "E Profile changed ind TLV is not valid",
                                 sizeLine(1), "decode", receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), Sequence{"2 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_AnyNonZeroFlag_FieldPresent) {
  auto indication = FakePlatform::profileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_CREATE_V01);
  indication.profile_changed_event_valid = 0x80;
  platform.indicateBytes(indication);
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence{"1 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_OtherMessage_VerboseLineAndTheNextOneDelivered) {
  const char byte = 1;
  platform.indicate(/*msgId=*/0x1234, &byte, sizeof byte);
  indicate(2);
  EXPECT_EQ(process(), (Sequence{sizeLine(2), "V Unknown message ID 4660 received", sizeLine(1),
                                 "decode", receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), Sequence{"2 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_LargestMessageId_PrintedUnsigned) {
  const char byte = 1;
  platform.indicate(/*msgId=*/0xffffffffU, &byte, sizeof byte);
  EXPECT_EQ(process(),
            (Sequence{sizeLine(1), "V Unknown message ID 4294967295 received", sizeLine(0)}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_CounterFull_ErrorYetQueued) {
  destroy();
  platform.clearCalls();
  construct();
  int indicationFd = -1;
  std::vector<std::string> lines = platform.logMessages();
  std::erase_if(lines, [](const std::string& line) {
    return line.find("addEventHandler") == std::string::npos;
  });
  ASSERT_EQ(lines.size(), 3U);
  ASSERT_EQ(std::sscanf(lines[2].c_str(), "EventManager::addEventHandler(int %d", &indicationFd),
            1);
  platform.notify();
  loop.processEvents();
  const std::uint64_t most = 0xfffffffffffffffe;
  ASSERT_EQ(write(indicationFd, &most, sizeof most), 8);
  platform.clearCalls();
  indicate(3);
  EXPECT_EQ(recorded(),
            (Sequence{callbackLine,
                      "E Error in writing rv: -1, error: Resource temporarily unavailable"}));
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence{"3 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, HandleIndication_NoProxy_DrainedAndError) {
  const UniqueFd fd(eventfd(/*count=*/2, EFD_NONBLOCK | EFD_CLOEXEC));
  platform.clearCalls();
  OvixWdsProxy::handleIndication(fd.get(), nullptr);
  EXPECT_EQ(recorded(), Sequence{"E OvixWdsProxy nullptr in handleIndication"});
  std::uint64_t count = 0;
  EXPECT_EQ(read(fd.get(), &count, sizeof count), -1);
}

TEST_F(OvixWdsProxyIndicationTest, HandleIndication_ReadFails_ErrorAndGoesOn) {
  platform.clearCalls();
  OvixWdsProxy::handleIndication(-1, &*proxy);
  EXPECT_EQ(recorded(), (Sequence{"E Error while clearing the read buffer on fd -1", sizeLine(0)}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_NobodyRegistered_DefaultLine) {
  proxy.emplace(loop, subscription);
  platform.notify();
  loop.processEvents();
  indicate(1);
  EXPECT_EQ(process(),
            (Sequence{sizeLine(1), "decode", receivedLine,
                      "D OvixWdsProxy::no profileChangedIndCb registered!", sizeLine(0)}));
}

// In operation the loop turns on another thread. Here it turns inside the last line of the
// construction.
TEST_F(OvixWdsProxyIndicationTest, Indicate_DuringConstruction_DefaultLine) {
  const ovix_client_type opened = client().handle;
  void* constructed = nullptr;
  onLine = [&](const std::string& message) {
    std::sscanf(message.c_str(),
                "EventManager::addEventHandler(int %*d, EventCallback %*p, void* %p", &constructed);
    if (message == "OvixWdsProxy::registerOvixSvcUp") {
      auto indication =
          FakePlatform::profileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_CREATE_V01);
      OvixWdsProxy::ovixIndCb(opened, OVIX_WDS_PROFILE_CHANGED_IND_V01, &indication,
                              sizeof indication, constructed);
      loop.processEvents();
    }
  };
  const OvixWdsProxy another(loop, subscription);
  onLine = [](const std::string&) {};
  EXPECT_EQ(constructed, &another);
  EXPECT_TRUE(platform.logged("OvixWdsProxy::no profileChangedIndCb registered!"));
}

TEST_F(OvixWdsProxyIndicationTest, RegisterProfileChangedInd_Again_Replaced) {
  Sequence second;
  proxy->registerProfileChangedInd([&](ProfileChangedInd ind) { second.push_back(ind.dump()); });
  indicate(1);
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence());
  EXPECT_EQ(second, Sequence{"1 Create"});
}

// The dead client cannot decode the queued indications, and they describe a modem that is gone.
TEST_F(OvixWdsProxyIndicationTest, HandleError_IndicationsQueued_DroppedUndecoded) {
  platform.raiseError();
  indicate(1);
  indicate(2);
  platform.clearCalls();
  loop.processEvents();
  EXPECT_THAT(recorded(), testing::Contains(sizeLine(0)).Times(1));
  EXPECT_EQ(platform.count(FakePlatform::Kind::Decode), 0U);
  EXPECT_EQ(deliveries(), Sequence());

  platform.notify();
  loop.processEvents();
  indicate(3);
  EXPECT_EQ(process(), (Sequence{sizeLine(1), "decode", receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), Sequence{"3 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_InsideTheProfileCallback_DeliveredByTheSameTurn) {
  proxy->registerProfileChangedInd([this](ProfileChangedInd ind) {
    received.push_back(ind);
    if (received.size() == 1) {
      indicate(8);
    }
  });
  indicate(1);
  EXPECT_EQ(process(), (Sequence{sizeLine(1), "decode", receivedLine, callbackLine, sizeLine(1),
                                 "decode", receivedLine, sizeLine(0)}));
  EXPECT_EQ(deliveries(), (Sequence{"1 Create", "8 Create"}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_ModemNeverPauses_TurnEndsAndTheRestHasAWakeUp) {
  proxy->registerProfileChangedInd([this](ProfileChangedInd ind) {
    received.push_back(ind);
    indicate(1);
  });
  indicate(1);
  loop.processEvents();
  const std::size_t ofOneTurn = received.size();
  // The last indication is the one that the turn left behind.
  proxy->registerProfileChangedInd([this](ProfileChangedInd ind) { received.push_back(ind); });
  loop.processEvents();
  EXPECT_EQ(received.size(), ofOneTurn) << "the turn gives way once";
  loop.wake();
  loop.processEvents();
  EXPECT_EQ(received.size(), ofOneTurn + 1);
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_StopRequestedMeanwhile_TurnEndsAfterTheOneInHand) {
  proxy->registerProfileChangedInd([this](ProfileChangedInd ind) {
    received.push_back(ind);
    loop.requestStop();
  });
  indicate(1);
  indicate(2);
  indicate(3);
  EXPECT_EQ(process(), (Sequence{sizeLine(3), "decode", receivedLine}));
  EXPECT_EQ(deliveries(), Sequence{"1 Create"});
}

TEST_F(OvixWdsProxyIndicationTest,
       Indicate_MoreThanTheQueueHolds_DroppedWithOneLineAndReportedOnce) {
  constexpr auto queuedMax = static_cast<int>(OvixWdsProxy::indicationsQueuedMax);
  const std::string dropping =
      "E 16384 indications are queued, dropping more until they are handled";
  int reports = 0;
  std::size_t deliveredBeforeReport = 0;
  proxy->registerIndicationsLost([&] {
    ++reports;
    deliveredBeforeReport = received.size();
  });
  for (int episode = 1; episode <= 2; ++episode) {
    received.clear();
    platform.clearCalls();
    for (int i = 0; i < queuedMax; ++i) {
      indicate(1);
    }
    EXPECT_THAT(recorded(), testing::Not(testing::Contains(dropping)));
    for (int i = 0; i < 3; ++i) {
      indicate(2);
    }
    EXPECT_THAT(recorded(), testing::Contains(dropping).Times(1));
    for (int turn = 0; reports < episode && turn < 1000; ++turn) {
      loop.wake();
      loop.processEvents();
    }
    EXPECT_EQ(reports, episode);
    EXPECT_EQ(deliveredBeforeReport, OvixWdsProxy::indicationsQueuedMax);
    EXPECT_EQ(received.size(), OvixWdsProxy::indicationsQueuedMax);
  }
}

TEST_F(OvixWdsProxyIndicationTest, HandleError_IndicationsWereDropped_ReportedWithTheNextClient) {
  int reports = 0;
  proxy->registerIndicationsLost([&] { ++reports; });
  for (std::size_t i = 0; i <= OvixWdsProxy::indicationsQueuedMax; ++i) {
    indicate(1);
  }
  const UniqueFd errorFd{eventfd(/*count=*/1, EFD_NONBLOCK | EFD_CLOEXEC)};
  OvixWdsProxy::handleError(errorFd.get(), &*proxy);
  loop.processEvents();
  EXPECT_EQ(reports, 0) << "nothing can be read without a client";
  // The service is back. Its event opens the client, and the client wakes the handler.
  platform.notify();
  for (int event = 0; reports == 0 && event < 5; ++event) {
    loop.wake();
    loop.processEvents();
  }
  EXPECT_EQ(reports, 1);
  EXPECT_EQ(received.size(), 0U);
}

// A log daemon that uses the modem causes such indications.
TEST_F(OvixWdsProxyIndicationTest, Indicate_InsideALogLine_NoDeadlock) {
  bool raised = false;
  onLine = [&](const std::string& message) {
    if (message == "OvixWdsProxy: handleIndication indQueue.size[1]" && !raised) {
      raised = true;
      indicate(8);
    }
  };
  indicate(1);
  loop.processEvents();
  EXPECT_EQ(deliveries(), (Sequence{"1 Create", "8 Create"}));
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_InsideALineOfAnotherCallback_NoDeadlock) {
  proxy->registerOvixSvcUp();
  onLine = [&](const std::string& message) {
    if (message == "OvixWdsProxy notify cb: unsupported service event") {
      indicate(8);
    }
  };
  platform.notify(OVIX_CLIENT_SERVICE_GONE);
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence{"8 Create"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_InsideASend_QueuedAndDeliveredLater) {
  platform.onNext(OVIX_WDS_DELETE_PROFILE_REQ_V01, [this](ModemExchange& exchange) {
    indicate(5, WDS_PROFILE_EVENT_DELETE_V01);
    platform.raiseError();
    exchange.respondResult(0);
    return OVIX_CLIENT_NO_ERROR;
  });
  EXPECT_TRUE(proxy->remove(5));
  EXPECT_EQ(deliveries(), Sequence());
  loop.processEvents();
  EXPECT_EQ(deliveries(), Sequence{"5 Delete"});
}

TEST_F(OvixWdsProxyIndicationTest, Indicate_ManyThreads_AllDelivered) {
  constexpr int threads = 4;
  constexpr int each = 50;
  std::vector<std::thread> library;
  for (int i = 0; i < threads; ++i) {
    library.emplace_back([this] {
      for (int n = 0; n < each; ++n) {
        platform.indicateProfileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_MODIFY_V01);
      }
    });
  }
  // The loop turns meanwhile, and once more when all are queued. A turn without an event would wait
  // for ever.
  loop.processEvents();
  for (std::thread& thread : library) {
    thread.join();
  }
  indicate(2);
  loop.processEvents();
  EXPECT_EQ(received.size(), std::size_t{threads * each + 1});
}

}  // namespace
}  // namespace pavo::test
