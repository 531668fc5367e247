// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/Manager.h>

#include "Aliases.h"
#include "ClientRequestManager.h"
#include "Deadline.h"
#include "FakePlatformTest.h"
#include "FdLimit.h"
#include "LogLines.h"
#include "Sequence.h"
#include "TextKey.h"
#include "ThreadState.h"
#include "base/UniqueFd.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

// These tests use a Manager, as callers do, and read the lines from the Android log.
class WorkerTest : public FakePlatformTest {
 protected:
  WorkerTest() { manager.emplace(); }

  void init() { manager->init(/*subscription=*/7, /*useAndroidLog=*/true); }
  // Initialises the manager while the service stays away.
  void initAlone() {
    platform.setAnnouncement(FakePlatform::Announcement::Never);
    platform.clearCalls();
    init();
    ASSERT_TRUE(platform.waitForLog("PAVO thread started"));
  }
  void initWithClient() {
    init();
    ASSERT_TRUE(platform.waitForLog("OvixWdsProxy config register request successful!"));
    platform.clearCalls();
  }

  Sequence onThisThread() const { return sequenceOn(std::this_thread::get_id(), platform.calls()); }
  Sequence onWorker() const { return sequenceNotOn(std::this_thread::get_id(), platform.calls()); }

  Key add() { return manager->addProfile(AddProfileParams(true, false)); }

  std::optional<Manager> manager;
};

Sequence constructionLines() {
  const std::string add =
      "V EventManager::addEventHandler(int #, EventCallback 0x#, void* 0x#, CloseCallback (nil), "
      "events 1) EX";
  return {"I Manager::init(7)",
          "V EventManager::addEventHandler(int #, EventCallback 0x#, void* (nil), CloseCallback "
          "(nil), events 17) EX",
          "V EventManager is ready. epollFd:#",
          "get service object",
          add,
          add,
          add,
          "I OvixWdsProxy::registerOvixSvcUp",
          "init notifier",
          "register notify callback",
          "D pavo::ClientRequestManager: constructor",
          add};
}

Sequence tearDownLines(const std::string& releasedHandle) {
  return {"D pavo::ClientRequestManager: destructor",
          line::removingHandler,
          "V EventManager::wake() EX",
          releasedHandle,
          line::removingHandler,
          line::removingHandler,
          line::removingHandler,
          line::removingHandler};
}

TEST_F(WorkerTest, Init_ServiceAway_LinesOfBothThreadsInOrder) {
  initAlone();
  EXPECT_EQ(onThisThread(), constructionLines());
  EXPECT_EQ(onWorker(), Sequence{"I PAVO thread started"});
}

TEST_F(WorkerTest, Init_ServiceUp_WorkerOpensTheClient) {
  platform.clearCalls();
  init();
  ASSERT_TRUE(platform.waitForLog("OvixWdsProxy config register request successful!"));
  EXPECT_EQ(onThisThread(), constructionLines());
  EXPECT_EQ(onWorker(),
            Sequence{"I PAVO thread started"} + oneEvent() +
                (Sequence{"D OvixWdsProxy service is up, trying to initialize svc client",
                          "get any service", "release notifier", "init client",
                          "register error callback", "D ovix_client_register_error_cb result: 0",
                          "send 0xaf", "D OvixWdsProxy bind register request successful!",
                          "send 0x03", "D OvixWdsProxy indication register request successful!",
                          "send 0xa7", "D OvixWdsProxy config register request successful!"}));
  EXPECT_EQ(platform.sent().front().as<wds_bind_subscription_req_msg_v01>().subscription, 7);
}

TEST_F(WorkerTest, AnyOperation_OneRequest_WholeSequenceOfTheWorker) {
  initAlone();
  platform.clearCalls();
  EXPECT_EQ(manager->getProfile(nullptr), std::nullopt);
  EXPECT_EQ(onWorker(), oneEvent() + (Sequence{line::handlingRequest, "I Handling Get "}));
  EXPECT_EQ(onThisThread(),
            (Sequence{"I Manager::getProfile > Get ", "I Manager::getProfile < Get Failure "}));
}

TEST_F(WorkerTest, AddProfile_ClientOpen_HandlingLineBeforeTheModemMessage) {
  initWithClient();
  const Key key = add();
  ASSERT_NE(key, nullptr);
  const Sequence lines = onWorker();
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(
      Sequence(lines.begin(), lines.end() - 1),
      oneEvent() +
          (Sequence{line::handlingRequest,
                    "I Handling " + AddRequest(AddProfileParams(true, false)).dump(), "send 0x27",
                    "I OvixWdsProxy OVIX_WDS_CREATE_PROFILE_REQ_V01 request successful!"}));
  EXPECT_THAT(lines.back(), testing::StartsWith("I Added: "));
}

TEST_F(WorkerTest, Destroy_NotifierArmed_LinesInOrder) {
  initAlone();
  platform.clearCalls();
  manager.reset();
  EXPECT_EQ(onThisThread(), tearDownLines("release notifier"));
  // The wake-up is the worker's last event, unless the stop has come before its wait.
  EXPECT_THAT(
      onWorker(),
      testing::AnyOf(testing::IsEmpty(),
                     testing::ElementsAre(
                         "V there are 1 file descriptor(s) with events pending",
                         "V processing event number: 0, handling 1 for #",
                         "V file descriptor '#' is processing events [callback:0x#, data:(nil)]")));
}

TEST_F(WorkerTest, Destroy_ClientOpen_ClientReleasedAfterTheThreadEnded) {
  initWithClient();
  manager.reset();
  EXPECT_EQ(onThisThread(), tearDownLines("release client"));
}

// Listeners may still see the modem's client, so the profiles are destroyed before any part of it.
TEST_F(WorkerTest, Destroy_ProfileCached_DiesBeforeTheClientIsReleased) {
  initWithClient();
  const Key key = add();
  ASSERT_NE(key, nullptr);
  platform.clearCalls();
  manager.reset();
  const Sequence lines = onThisThread();
  const auto profile = std::find(lines.begin(), lines.end(), "D ~ModemProfile()");
  const auto client = std::find(lines.begin(), lines.end(), "release client");
  ASSERT_NE(profile, lines.end());
  ASSERT_NE(client, lines.end());
  EXPECT_LT(profile, client);
}

TEST_F(WorkerTest, InitAgain_Running_NewWorkerFirstThenTheOldOneEnds) {
  initAlone();
  platform.clearCalls();
  init();
  EXPECT_EQ(onThisThread(), constructionLines() + tearDownLines("release notifier"));
  EXPECT_EQ(platform.armedNotifierCount(), 1U);
  platform.clearCalls();
  EXPECT_EQ(manager->getProfile(nullptr), std::nullopt);
  EXPECT_THAT(onWorker(), testing::Contains("I Handling Get "));
}

TEST_F(WorkerTest, AnyOperation_SeveralCallers_AllSentByOneThreadNotTheirs) {
  initWithClient();
  std::set<std::thread::id> callers{std::this_thread::get_id()};
  for (int i = 0; i < 3; ++i) {
    std::thread caller([&] { add(); });
    callers.insert(caller.get_id());
    caller.join();
  }
  manager->refresh(PDC_REFRESH_COMPLETED);
  std::set<std::thread::id> senders;
  for (const PlatformCall& call : platform.sent()) {
    senders.insert(call.thread);
  }
  ASSERT_EQ(senders.size(), 1U);
  EXPECT_EQ(callers.count(*senders.begin()), 0U);
}

TEST_F(WorkerTest, AddProfile_ModemRefuses_EmptyKeyInASuccessfulAnswer) {
  initWithClient();
  platform.rejectNext(OVIX_WDS_CREATE_PROFILE_REQ_V01);
  EXPECT_EQ(add(), nullptr);
  EXPECT_TRUE(platform.logged("Manager::addProfile < Add Success "));
}

// A KeyOperation is a call about a key, together with the log lines for a missing key.
struct KeyOperation {
  const char* name;
  // Returns whether the answer was empty.
  std::function<bool(Manager&, const Key&)> isRefused;
  std::function<std::string(const Key&)> requestText;
  std::string exitLine;
};

std::vector<KeyOperation> keyOperations() {
  return {
      {"modify",
       [](Manager& m, const Key& key) { return !m.modifyProfile(ModifyProfileParams(), key); },
       [](const Key& key) { return ModifyRequest(ModifyProfileParams(), key).dump(); },
       "I Manager::modifyProfile < Modify Failure"},
      {"delete", [](Manager& m, const Key& key) { return !m.deleteProfile(key); },
       [](const Key& key) { return DeleteRequest(key).dump(); },
       "I Manager::deleteProfile < Delete Failure"},
      {"match", [](Manager& m, const Key& key) { return !m.match(FilterProfileParams(), key); },
       [](const Key& key) { return MatchRequest(FilterProfileParams(), key).dump(); },
       "I Manager::match < Match Failure false"},
      {"get", [](Manager& m, const Key& key) { return !m.getProfile(key).has_value(); },
       [](const Key& key) { return GetRequest(key).dump(); },
       "I Manager::getProfile < Get Failure "},
  };
}

TEST_F(WorkerTest, KeyOperation_EmptyKey_FailureWithoutCacheOrModem) {
  initWithClient();
  for (const KeyOperation& operation : keyOperations()) {
    SCOPED_TRACE(operation.name);
    platform.clearCalls();
    EXPECT_TRUE(operation.isRefused(*manager, nullptr));
    EXPECT_EQ(onWorker(), oneEvent() + (Sequence{line::handlingRequest,
                                                 "I Handling " + operation.requestText(nullptr)}));
    EXPECT_EQ(onThisThread().back(), operation.exitLine);
  }
}

// The interface is public, so a caller may pass a test double or a wrapper.
TEST_F(WorkerTest, KeyOperation_KeyOfAnotherMake_FailureWithoutTouchingTheModem) {
  initWithClient();
  const Key foreign = std::make_shared<TextKey>("foreign");
  for (const KeyOperation& operation : keyOperations()) {
    SCOPED_TRACE(operation.name);
    platform.clearCalls();
    EXPECT_TRUE(operation.isRefused(*manager, foreign));
    EXPECT_TRUE(platform.logged("Handling " + operation.requestText(foreign)));
    EXPECT_EQ(onThisThread().back(), operation.exitLine);
    EXPECT_EQ(platform.sentIds(), std::vector<unsigned int>());
  }
}

TEST_F(WorkerTest, GetProfile_KeyNoLongerKnown_FailureAndCacheError) {
  initWithClient();
  const Key key = add();
  manager->refresh(PDC_REFRESH_COMPLETED);
  platform.clearCalls();
  EXPECT_EQ(manager->getProfile(key), std::nullopt);
  EXPECT_EQ(onWorker(),
            oneEvent() + (Sequence{line::handlingRequest, "I Handling Get " + key->dump(),
                                   "E ProfileCache: token is not present or expired"}));
  EXPECT_EQ(onThisThread().back(), "I Manager::getProfile < Get Failure ");
}

TEST_F(WorkerTest, Filter_NothingMatches_EmptyListInASuccessfulAnswer) {
  initWithClient();
  EXPECT_TRUE(manager->filter(FilterProfileParams()).empty());
  EXPECT_EQ(onThisThread().back(), "I Manager::filter < Filter Success ");
}

TEST_F(WorkerTest, Filter_SeveralMatch_InTheCachesOrder) {
  for (std::uint8_t index = 1; index <= 20; ++index) {
    platform.setProfile(index, {});
  }
  initWithClient();
  manager->refresh(PDC_REFRESH_COMPLETED);
  std::vector<std::string> tokens;
  for (const Key& key : manager->filter(FilterProfileParams())) {
    const std::string text = key->dump();
    tokens.push_back("  " + text.substr(text.find("token=") + 6) + ":");
  }
  std::vector<std::string> cached;
  for (const std::string& line : manager->dump()) {
    if (line == "Pending:") {
      break;
    }
    cached.push_back(line.substr(0, line.find(':') + 1));
  }
  ASSERT_EQ(tokens.size(), 20U);
  cached.erase(cached.begin());
  EXPECT_EQ(tokens, cached);
}

TEST_F(WorkerTest, AnyOperation_RefreshStarted_RefusedBeforeCacheAndModem) {
  initWithClient();
  const Key key = add();
  manager->refresh(PDC_REFRESH_STARTED);
  const auto expectRefused = [this](const std::string& requestText, const std::string& exitLine) {
    SCOPED_TRACE(requestText);
    EXPECT_EQ(onWorker(),
              oneEvent() + (Sequence{line::handlingRequest, "I Handling " + requestText}));
    EXPECT_EQ(onThisThread().back(), exitLine);
    platform.clearCalls();
  };
  platform.clearCalls();
  EXPECT_EQ(add(), nullptr);
  expectRefused(AddRequest(AddProfileParams(true, false)).dump(),
                "I Manager::addProfile < Add Failure ");
  EXPECT_TRUE(manager->filter(FilterProfileParams()).empty());
  expectRefused(FilterRequest(FilterProfileParams()).dump(), "I Manager::filter < Filter Failure ");
  for (const KeyOperation& operation : keyOperations()) {
    EXPECT_TRUE(operation.isRefused(*manager, key));
    expectRefused(operation.requestText(key), operation.exitLine);
  }
}

TEST_F(WorkerTest, DropKey_RefreshStarted_ReleaseRefusedAndKeyGone) {
  initWithClient();
  Key key = manager->addProfile(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  const std::string text = key->dump();
  manager->refresh(PDC_REFRESH_STARTED);
  platform.clearCalls();
  key.reset();
  EXPECT_EQ(onWorker(), oneEvent() + (Sequence{line::handlingRequest,
                                               "I Handling Callback Release " +
                                                   text.substr(text.find("token=") + 6)}));
  EXPECT_EQ(onThisThread(), Sequence{"D ~ProfileKey"});
  EXPECT_EQ(platform.profileCount(), 1U);
}

// The client's code may be unloaded once its last key is gone.
TEST_F(WorkerTest, DropKey_RefreshStarted_ListenerGoesWithTheKey) {
  initWithClient();
  Key key = add();
  const auto captured = std::make_shared<int>(0);
  key->registerExpirationListener([captured] {});
  EXPECT_EQ(captured.use_count(), 2);
  manager->refresh(PDC_REFRESH_STARTED);
  key.reset();
  EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(WorkerTest, Refresh_StartedTwice_AcceptedAndNothingSent) {
  initWithClient();
  manager->refresh(PDC_REFRESH_STARTED);
  manager->refresh(PDC_REFRESH_STARTED);
  EXPECT_EQ(onThisThread(),
            (Sequence{"I Manager::refresh > Refresh ", "I Manager::refresh < Refresh Success",
                      "I PAVO refresh started", "I Manager::refresh > Refresh ",
                      "I Manager::refresh < Refresh Success", "I PAVO refresh started"}));
  EXPECT_EQ(withoutEventLines(onWorker()),
            (Sequence{line::handlingRequest, "I Handling Refresh ", line::handlingRequest,
                      "I Handling Refresh "}));
}

TEST_F(WorkerTest, Refresh_Completed_ReloadsAndAcceptsAgain) {
  platform.setProfile(3, {});
  for (const bool isStarted : {true, false}) {
    SCOPED_TRACE(isStarted ? "after started" : "without started");
    manager.emplace();
    platform.clearCalls();
    initWithClient();
    if (isStarted) {
      manager->refresh(PDC_REFRESH_STARTED);
    }
    platform.clearCalls();
    manager->refresh(PDC_REFRESH_COMPLETED);
    EXPECT_EQ(platform.sentIds(), (std::vector<unsigned int>{0x2A, 0x2B}));
    EXPECT_EQ(manager->filter(FilterProfileParams()).size(), 1U);
  }
}

TEST_F(WorkerTest, Refresh_NoClient_ListLineAlone) {
  initAlone();
  platform.clearCalls();
  manager->refresh(PDC_REFRESH_COMPLETED);
  EXPECT_EQ(onWorker(), oneEvent() + (Sequence{line::handlingRequest, "I Handling Refresh ",
                                               "I Refreshed Profiles:"}));
}

TEST_F(WorkerTest, Refresh_SomeProfiles_OneRequestMoreThanProfiles) {
  for (std::uint8_t index = 1; index <= 7; ++index) {
    platform.setProfile(index, {});
  }
  initWithClient();
  manager->refresh(PDC_REFRESH_COMPLETED);
  EXPECT_EQ(platform.sent().size(), 8U);
}

TEST_F(WorkerTest, ServiceError_ProfilesCached_CacheIsNotTold) {
  initWithClient();
  const Key key = add();
  platform.raiseError();
  ASSERT_TRUE(platform.waitForRegistration());
  EXPECT_TRUE(manager->getProfile(key).has_value());
  EXPECT_EQ(platform.sentCount(OVIX_WDS_GET_PROFILE_LIST_REQ_V01), 0U);
}

// This test adds the drop of a key, which is a call like any other.
TEST_F(WorkerTest, AnyOperation_CallersOverlap_EachGetsItsOwnAnswer) {
  initWithClient();
  std::atomic<int> wrong{0};
  std::vector<std::thread> callers;
  for (int caller = 0; caller < 4; ++caller) {
    callers.emplace_back([&, caller] {
      for (int i = 0; i < 25; ++i) {
        AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
        const std::string apn = "apn" + std::to_string(caller) + "x" + std::to_string(i);
        params.setApnName(apn);
        const Key key = manager->addProfile(params);
        const auto got = manager->getProfile(key);
        FilterProfileParams filter;
        filter.setApnName(apn);
        wrong += key == nullptr || !got || got->getApnName() != apn ||
                 !manager->match(filter, key) || manager->filter(filter).size() != 1;
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(platform.profileCount(), 0U);
}

TEST_F(WorkerTest, Init_ManyTimesInARow_NeverHangs) {
  for (int i = 0; i < 200; ++i) {
    init();
  }
  EXPECT_TRUE(platform.waitForRegistration());
}

// These tests use the ClientRequestManager by itself, with its requests and responses.
class ClientRequestManagerTest : public FakePlatformTest {
 protected:
  static Status statusOf(const std::shared_ptr<ClientResponse>& response) {
    EXPECT_NE(response, nullptr);
    return response != nullptr ? response->getStatus() : Status::Failure;
  }

  LogRecorder recorder;
};

TEST_F(ClientRequestManagerTest, ConstructAndDestroy_AtOnce_NeverHangs) {
  for (int i = 0; i < 200; ++i) {
    const ClientRequestManager worker(/*subscription=*/0);
  }
}

// The service-up event is there before the worker's thread, which dispatches it while the request's
// descriptor is being registered.
TEST_F(ClientRequestManagerTest, ConstructAndDestroy_EventsFromTheStart_NoRace) {
  platform.setAnnouncement(FakePlatform::Announcement::Synchronous);
  for (int i = 0; i < 100; ++i) {
    ClientRequestManager worker(/*subscription=*/0);
    platform.indicateProfileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_DELETE_V01);
    EXPECT_EQ(statusOf(worker.processClientRequest(std::make_shared<DeleteRequest>(nullptr))),
              Status::Failure);
    platform.indicateProfileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_DELETE_V01);
  }
}

// Makes the creation of threads fail: their stack would be larger than any address space.
void refuseThreads() {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, std::size_t{1} << 60);
  pthread_setattr_default_np(&attributes);
}

TEST_F(ClientRequestManagerTest, Construct_NoThread_ProcessEndsWithThatText) {
  platform.setAnnouncement(FakePlatform::Announcement::Never);
  EXPECT_EXIT(
      {
        refuseThreads();
        const ClientRequestManager worker(/*subscription=*/0);
      },
      testing::KilledBySignal(SIGABRT), "thread constructor failed");
}

TEST_F(ClientRequestManagerTest, Construct_NoDescriptorForRequests_ErrorAndAbort) {
  platform.setAnnouncement(FakePlatform::Announcement::Never);
  const auto occurrencesOf = [](const char* text) {
    return [text](const std::string& output) { return occurrences(output, text); };
  };
  EXPECT_EXIT(
      {
        // The undefined-behaviour sanitizer needs descriptors itself the first time that a thread
        // gets this far.
        { const ClientRequestManager first(/*subscription=*/0); }
        logToStandardError();
        allowMoreFds(5);
        const ClientRequestManager worker(/*subscription=*/0);
      },
      testing::KilledBySignal(SIGABRT),
      testing::AllOf(
          testing::ResultOf(occurrencesOf("addEventHandler"), 4U),
          testing::ResultOf(occurrencesOf("D pavo::ClientRequestManager: constructor"), 1U),
          testing::ResultOf(occurrencesOf("E Cannot create eventfd instance"), 1U)));
}

TEST_F(ClientRequestManagerTest, HandleClientRequest_NoWorker_DrainedAndError) {
  const UniqueFd fd(eventfd(/*count=*/2, EFD_NONBLOCK | EFD_CLOEXEC));
  ClientRequestManager::handleClientRequest(fd.get(), nullptr);
  EXPECT_EQ(sequenceOf(platform.calls()), (Sequence{line::handlingRequest, "E arg is null"}));
  std::uint64_t count = 0;
  EXPECT_EQ(read(fd.get(), &count, sizeof count), -1) << "two wake-ups are one call";
}

TEST_F(ClientRequestManagerTest, HandleClientRequest_ReadFails_ErrorAndGoesOn) {
  platform.setAnnouncement(FakePlatform::Announcement::Never);
  ClientRequestManager worker(/*subscription=*/0);
  ASSERT_TRUE(platform.waitForLog("PAVO thread started"));
  platform.clearCalls();
  ClientRequestManager::handleClientRequest(-1, &worker);
  EXPECT_EQ(sequenceOf(platform.calls()),
            (Sequence{line::handlingRequest, "E Error while clearing the read buffer on fd -1"}));
  EXPECT_NE(worker.processClientRequest(std::make_shared<GetRequest>(nullptr)), nullptr);
}

// An overlapping dump or call keeps the worker object alive longer than its Manager does.
TEST_F(ClientRequestManagerTest, Stop_SomebodyElseHoldsTheWorker_EndsTheCacheHere) {
  const auto worker = std::make_shared<ClientRequestManager>(/*subscription=*/0);
  ASSERT_TRUE(platform.waitForLog("OvixWdsProxy config register request successful!"));
  const auto added = std::static_pointer_cast<AddResponse>(
      worker->processClientRequest(std::make_shared<AddRequest>(AddProfileParams(true, false))));
  const Key key = added->getAddProfileKey();
  ASSERT_NE(key, nullptr);
  std::thread::id listenersThread;
  key->registerExpirationListener([&] { listenersThread = std::this_thread::get_id(); });
  EXPECT_FALSE(worker->dump().empty());
  worker->stop();
  EXPECT_EQ(listenersThread, std::this_thread::get_id());
  EXPECT_EQ(worker->dump(), std::vector<std::string>());
  EXPECT_FALSE(platform.indicateProfileChanged(1, WDS_PROFILE_EVENT_MODIFY_V01))
      << "a client is open";
}

// A closed descriptor's number may be reused at once. The worker would then drain or close another
// owner's descriptor.
TEST_F(ClientRequestManagerTest, Stop_WorkerHasTheRequestsEventInHand_DescriptorClosedAfterIt) {
  platform.setAnnouncement(FakePlatform::Announcement::Never);
  std::atomic<bool> isHeld{false};
  std::promise<void> release;
  const LogRecorder hooked([&](const std::string& message) {
    if (message == ":77:handleClientRequest") {
      isHeld = true;
      release.get_future().wait();
    }
  });
  ClientRequestManager worker(/*subscription=*/0);
  int requestFd = -1;
  for (const std::string& message : platform.logMessages()) {
    // The loop ends with the descriptor that was registered last.
    std::sscanf(message.c_str(), "EventManager::addEventHandler(int %d", &requestFd);
  }
  std::thread caller([&] { worker.processClientRequest(std::make_shared<GetRequest>(nullptr)); });
  EXPECT_TRUE(waitUntil([&] { return isHeld.load(); }));
  std::atomic<pid_t> stoppingThread{0};
  std::thread stopping([&] {
    stoppingThread = gettid();
    worker.stop();
  });
  EXPECT_TRUE(platform.waitForLog("EventManager::wake() EX"));
  EXPECT_TRUE(waitUntil([&] { return isAsleep(stoppingThread); })) << "it waits for the worker";
  EXPECT_NE(fcntl(requestFd, F_GETFD), -1);
  release.set_value();
  stopping.join();
  caller.join();
  EXPECT_EQ(fcntl(requestFd, F_GETFD), -1);
}

// The library must know that a client's code in a log writer runs on a worker, from the first line
// on.
TEST_F(ClientRequestManagerTest, Construct_FirstLineOfTheThread_ThreadIsMarked) {
  enum class Mark { unknown, present, missing };
  std::atomic<Mark> mark{Mark::unknown};
  const LogRecorder hooked([&](const std::string& message) {
    if (message == "PAVO thread started") {
      mark = RequestPort::onWorkerThread() ? Mark::present : Mark::missing;
    }
  });
  const ClientRequestManager worker(/*subscription=*/0);
  EXPECT_TRUE(waitUntil([&] { return mark != Mark::unknown; }));
  EXPECT_EQ(mark, Mark::present);
}

// The worker is kept busy with an indication, so the request is still there for this thread.
TEST_F(ClientRequestManagerTest, HandleClientRequest_AnyWakeUps_AnswersTheOneRequest) {
  const UniqueFd twice(eventfd(/*count=*/2, EFD_NONBLOCK | EFD_CLOEXEC));
  for (const int fd : {-1, twice.get()}) {
    SCOPED_TRACE(fd);
    auto busy = platform.blockNext(OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01);
    ClientRequestManager worker(/*subscription=*/0);
    ASSERT_TRUE(platform.waitForLog("OvixWdsProxy config register request successful!"));
    platform.indicateProfileChanged(/*profileIndex=*/1, WDS_PROFILE_EVENT_CREATE_V01);
    ASSERT_TRUE(busy.waitUntilEntered());
    platform.clearCalls();
    auto answer = std::async(std::launch::async, [&worker] {
      return worker.processClientRequest(std::make_shared<DeleteRequest>(nullptr));
    });
    const auto isAnswered = [&answer] {
      return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    EXPECT_TRUE(waitUntil([&] {
      ClientRequestManager::handleClientRequest(fd, &worker);
      return isAnswered();
    }));
    const Sequence lines = sequenceOf(platform.calls());
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "I Handling " + DeleteRequest(nullptr).dump()),
              1)
        << testing::PrintToString(lines);
    busy.release();
    EXPECT_EQ(statusOf(answer.get()), Status::Failure);
  }
}

TEST_F(ClientRequestManagerTest, HandleClientRequest_NoRequest_NoLineOfOne) {
  platform.setAnnouncement(FakePlatform::Announcement::Never);
  ClientRequestManager worker(/*subscription=*/0);
  ASSERT_TRUE(platform.waitForLog("PAVO thread started"));
  platform.clearCalls();
  const UniqueFd fd(eventfd(/*count=*/1, EFD_NONBLOCK | EFD_CLOEXEC));
  ClientRequestManager::handleClientRequest(fd.get(), &worker);
  EXPECT_EQ(sequenceOf(platform.calls()), Sequence{line::handlingRequest});
}

TEST_F(ClientRequestManagerTest, ProcessClientRequest_UnknownType_WaitsUntilTheWorkerStops) {
  ClientRequestManager worker(/*subscription=*/0);
  const auto unknown = std::make_shared<ClientRequest>(static_cast<ReqRespType>(99));
  std::shared_ptr<ClientResponse> response = std::make_shared<RefreshResponse>(Status::Success);
  std::thread caller([&] { response = worker.processClientRequest(unknown); });
  EXPECT_TRUE(platform.waitForLog("Handling 99 "));
  EXPECT_TRUE(waitUntil([&] { return unknown.use_count() == 1; })) << "the slot still holds it";
  worker.stop();
  caller.join();
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(unknown.use_count(), 1);
}

TEST_F(ClientRequestManagerTest, ProcessClientRequest_Stopped_EmptyWithoutLine) {
  ClientRequestManager worker(/*subscription=*/0);
  worker.stop();
  platform.clearCalls();
  EXPECT_EQ(worker.processClientRequest(std::make_shared<GetRequest>(nullptr)), nullptr);
  worker.stop();
  EXPECT_EQ(sequenceOf(platform.calls()), Sequence());
}

TEST_F(ClientRequestManagerTest, ProcessClientRequest_CallbackWithoutContent_Failure) {
  ClientRequestManager worker(/*subscription=*/0);
  const auto response = worker.processClientRequest(std::make_shared<CallbackRequest>());
  EXPECT_EQ(statusOf(response), Status::Failure);
  EXPECT_EQ(response->dump(), "Callback Failure");
}

TEST_F(ClientRequestManagerTest, ProcessClientRequest_Callbacks_RegistrationFailsReleaseSucceeds) {
  ClientRequestManager worker(/*subscription=*/0);
  ASSERT_TRUE(platform.waitForRegistration());
  const auto added = std::static_pointer_cast<AddResponse>(worker.processClientRequest(
      std::make_shared<AddRequest>(AddProfileParams(/*isPersistent=*/true, false))));
  const auto key = std::static_pointer_cast<ProfileKey>(added->getAddProfileKey());
  ASSERT_NE(key, nullptr);

  int calls = 0;
  const auto registration = std::make_shared<CallbackRequest>();
  registration->setExpirationInfo([&] { ++calls; }, std::weak_ptr<IProfileKey>(key),
                                  key->getToken());
  EXPECT_EQ(statusOf(worker.processClientRequest(registration)), Status::Failure);

  const auto release = std::make_shared<CallbackRequest>();
  release->setReleaseToken(key->getToken());
  EXPECT_EQ(statusOf(worker.processClientRequest(release)), Status::Success);
  const auto unknown = std::make_shared<CallbackRequest>();
  unknown->setReleaseToken(~0ULL);
  EXPECT_EQ(statusOf(worker.processClientRequest(unknown)), Status::Failure);

  worker.processClientRequest(std::make_shared<DeleteRequest>(key));
  EXPECT_EQ(calls, 1) << "the listener was not stored";
}

TEST_F(ClientRequestManagerTest, Dump_OneProfile_TheCachesLines) {
  ClientRequestManager worker(/*subscription=*/0);
  EXPECT_EQ(worker.dump(), (std::vector<std::string>{"Cache:", "Pending:"}));
  ASSERT_TRUE(platform.waitForRegistration());
  platform.setNextProfileIndex(9);
  const auto added = std::static_pointer_cast<AddResponse>(worker.processClientRequest(
      std::make_shared<AddRequest>(AddProfileParams(/*isPersistent=*/true, false))));
  const auto key = std::static_pointer_cast<ProfileKey>(added->getAddProfileKey());
  ASSERT_NE(key, nullptr);
  EXPECT_THAT(worker.dump(),
              testing::ElementsAre(
                  "Cache:", testing::StartsWith("  " + std::to_string(key->getToken()) + ": "),
                  "Pending:", "  9 Create", "  9 Modify"));
}

// A caller that loses this race would wait for a thread that no longer exists.
TEST_F(ClientRequestManagerTest, Stop_CallersInside_EveryoneReturns) {
  for (int round = 0; round < 50; ++round) {
    ClientRequestManager worker(/*subscription=*/0);
    std::atomic<int> answered{0};
    std::vector<std::thread> callers;
    for (int i = 0; i < 3; ++i) {
      callers.emplace_back([&] {
        while (worker.processClientRequest(std::make_shared<GetRequest>(nullptr)) != nullptr) {
          ++answered;
        }
      });
    }
    EXPECT_TRUE(waitUntil([&] { return answered > 3; }));
    worker.stop();
    for (std::thread& caller : callers) {
      caller.join();
    }
    platform.clearCalls();
  }
}

}  // namespace
}  // namespace pavo::test
