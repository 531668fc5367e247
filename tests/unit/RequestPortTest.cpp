// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CapturingLogWriter.h"
#include "ClientRequest.h"
#include "ClientResponse.h"
#include "Deadline.h"
#include "RequestPort.h"
#include "Sequence.h"
#include "ThreadState.h"
#include "WakeFd.h"
#include "base/UniqueFd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

// An Echo is an answer that names the request it is for.
class Echo : public ClientResponse {
 public:
  explicit Echo(const ClientRequest* answered)
      : ClientResponse(ReqRespType::Get), request(answered) {}
  ~Echo() override = default;
  const ClientRequest* const request;
};

std::shared_ptr<ClientRequest> makeRequest() { return std::make_shared<GetRequest>(nullptr); }

std::shared_ptr<ClientRequest> makeRelease(unsigned long long token) {
  auto release = std::make_shared<CallbackRequest>();
  release->setReleaseToken(token);
  return release;
}

std::shared_ptr<ClientResponse> echo(const ClientRequest& request) {
  return std::make_shared<Echo>(&request);
}

class RequestPortTest : public testing::Test {
 protected:
  RequestPortTest() { port->open(wakeFd.get()); }
  ~RequestPortTest() override {
    stopServing();
    port->close();
    port->end();
  }

  // Returns 0 when the port has not been woken since the last call.
  std::uint64_t wakeUps() {
    std::uint64_t count = 0;
    return read(wakeFd.get(), &count, sizeof count) == sizeof count ? count : 0;
  }

  // Serves from a thread of its own, as a worker that polls.
  void startServing() {
    worker = std::thread([this] {
      while (!stop) {
        if (wakeUps() != 0) {
          port->serve(echo);
        } else {
          std::this_thread::yield();
        }
      }
    });
  }
  void stopServing() {
    stop = true;
    if (worker.joinable()) {
      worker.join();
    }
  }

  Sequence logged() const { return sequenceOf(log.lines()); }

  CapturingLogWriter log;
  const UniqueFd wakeFd{eventfd(/*count=*/0, EFD_NONBLOCK | EFD_CLOEXEC)};
  const std::shared_ptr<RequestPort> port = RequestPort::create();
  std::atomic<bool> stop{false};
  std::thread worker;
};

TEST_F(RequestPortTest, Submit_Served_ItsResponse) {
  startServing();
  const auto request = makeRequest();
  const auto response = port->submit(request);
  ASSERT_NE(response, nullptr);
  EXPECT_EQ(static_cast<const Echo&>(*response).request, request.get());
  EXPECT_EQ(logged(), Sequence());
}

// If the worker kept a handle, it would become the last owner of a key once the caller has
// continued.
TEST_F(RequestPortTest, Submit_Answered_WorkerHoldsNothingAnyMore) {
  startServing();
  for (int i = 0; i < 1000; ++i) {
    const auto request = makeRequest();
    const auto response = port->submit(request);
    ASSERT_EQ(request.use_count(), 1) << "call " << i;
    ASSERT_EQ(response.use_count(), 1) << "call " << i;
  }
}

TEST_F(RequestPortTest, Submit_CallersOverlap_EachGetsItsOwn) {
  startServing();
  std::atomic<int> wrong{0};
  std::vector<std::thread> callers;
  for (int caller = 0; caller < 4; ++caller) {
    callers.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        const auto request = makeRequest();
        const auto response = port->submit(request);
        if (response == nullptr || static_cast<const Echo&>(*response).request != request.get()) {
          ++wrong;
        }
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  EXPECT_EQ(wrong, 0);
}

TEST_F(RequestPortTest, Submit_WakeUpFails_ErrorAndEmptyAndNothingToServe) {
  const std::uint64_t most = 0xfffffffffffffffe;
  ASSERT_EQ(write(wakeFd.get(), &most, sizeof most), 8);
  EXPECT_EQ(port->submit(makeRequest()), nullptr);
  EXPECT_EQ(logged(),
            Sequence{"E error in writing rv: -1 error: Resource temporarily unavailable"});
  int served = 0;
  port->serve([&](const ClientRequest&) {
    ++served;
    return nullptr;
  });
  EXPECT_EQ(served, 0);
}

TEST_F(RequestPortTest, Submit_NoDescriptorYet_ErrorAndEmpty) {
  const auto young = RequestPort::create();
  EXPECT_EQ(young->submit(makeRequest()), nullptr);
  EXPECT_EQ(logged(), Sequence{"E error in writing rv: -1 error: Bad file descriptor"});
  young->close();
  young->end();
}

TEST_F(RequestPortTest, Serve_NoRequest_HandlerNotCalled) {
  bool called = false;
  port->serve([&](const ClientRequest&) {
    called = true;
    return nullptr;
  });
  EXPECT_FALSE(called);
}

TEST_F(RequestPortTest, Serve_NoAnswer_CallerWaitsThroughWakeUpsUntilClosed) {
  const auto request = makeRequest();
  std::atomic<bool> returned{false};
  std::shared_ptr<ClientResponse> response = std::make_shared<Echo>(nullptr);
  std::thread caller([&] {
    response = port->submit(request);
    returned = true;
  });
  // The write comes before the request is in the slot. Serving waits for the lock between the two.
  ASSERT_TRUE(waitUntil([&] { return wakeUps() != 0; }));
  int served = 0;
  const auto answerNothing = [&](const ClientRequest&) {
    ++served;
    return nullptr;
  };
  port->serve(answerNothing);
  EXPECT_EQ(served, 1);
  // The slot is empty, so these calls only wake the caller.
  for (int i = 0; i < 100; ++i) {
    port->serve(answerNothing);
  }
  EXPECT_EQ(served, 1);
  EXPECT_FALSE(returned);
  port->close();
  caller.join();
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(request.use_count(), 1);
}

TEST_F(RequestPortTest, Close_CallerWaitsUnserved_EmptyAndRequestDropped) {
  const auto request = makeRequest();
  std::shared_ptr<ClientResponse> response = std::make_shared<Echo>(nullptr);
  std::thread caller([&] { response = port->submit(request); });
  ASSERT_TRUE(waitUntil([&] { return wakeUps() != 0; }));
  port->close();
  caller.join();
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(request.use_count(), 1);
  EXPECT_EQ(logged(), Sequence());
}

TEST_F(RequestPortTest, Submit_Closed_EmptyWithoutWakeUpOrLine) {
  port->close();
  EXPECT_EQ(port->submit(makeRequest()), nullptr);
  EXPECT_EQ(wakeUps(), 0U);
  EXPECT_EQ(logged(), Sequence());
}

TEST_F(RequestPortTest, GetRequestFunction_Open_Submits) {
  startServing();
  const auto request = makeRequest();
  const requestFunction function = port->getRequestFunction();
  const auto response = function(request);
  ASSERT_NE(response, nullptr);
  EXPECT_EQ(static_cast<const Echo&>(*response).request, request.get());
}

TEST(RequestPortLifetimeTest, GetRequestFunction_PortGone_EmptyWithoutLine) {
  const CapturingLogWriter log;
  auto port = RequestPort::create();
  const requestFunction function = port->getRequestFunction();
  port->close();
  port->end();
  const std::weak_ptr<RequestPort> watched = port;
  port.reset();
  EXPECT_TRUE(watched.expired()) << "the function keeps the port alive";
  EXPECT_EQ(function(makeRequest()), nullptr);
  EXPECT_EQ(sequenceOf(log.lines()), Sequence());
}

TEST(RequestPortLifetimeTest, GetRequestFunction_AnotherPortOpened_NotTakenForTheOldOne) {
  auto first = RequestPort::create();
  const requestFunction function = first->getRequestFunction();
  first->close();
  first->end();
  first.reset();
  const UniqueFd fd{eventfd(/*count=*/0, EFD_NONBLOCK | EFD_CLOEXEC)};
  const auto second = RequestPort::create();
  second->open(fd.get());
  EXPECT_EQ(function(makeRequest()), nullptr);
  std::uint64_t count = 0;
  EXPECT_EQ(read(fd.get(), &count, sizeof count), -1) << "the second port was woken";
  second->close();
  second->end();
}

// The test's thread ends the port. The worker's thread waits for nothing.
class PortEndTest : public RequestPortTest {
 protected:
  PortEndTest() {
    EXPECT_TRUE(port->beginEnd(idOfAnotherThread()));
    port->close();
    port->workerJoined();
  }

  static std::thread::id idOfAnotherThread() {
    std::thread other([] {});
    const std::thread::id id = other.get_id();
    other.join();
    return id;
  }
};

TEST_F(PortEndTest, Submit_ReleaseOnAnotherThread_ReturnsWhenThePortHasEnded) {
  std::atomic<int> id{0};
  std::atomic<bool> hasReturned{false};
  bool hasEnded = false;
  bool hadEnded = false;
  std::thread caller([&] {
    id = gettid();
    EXPECT_EQ(port->submit(makeRelease(3)), nullptr);
    hasReturned = true;
    hadEnded = hasEnded;
  });
  EXPECT_TRUE(waitUntil([&] { return hasReturned || (id != 0 && isAsleep(id)); }));
  hasEnded = true;
  port->end();
  caller.join();
  EXPECT_TRUE(hadEnded);
}

TEST_F(PortEndTest, Submit_OtherRequestOnAnotherThread_DoesNotWait) {
  std::thread caller([&] { EXPECT_EQ(port->submit(makeRequest()), nullptr); });
  caller.join();
}

TEST_F(PortEndTest, Submit_ReleaseOnTheEndingThread_DoesNotWait) {
  EXPECT_EQ(port->submit(makeRelease(3)), nullptr);
}

TEST_F(PortEndTest, Submit_ReleaseOnAWorkerThread_DoesNotWait) {
  std::thread caller([&] {
    RequestPort::becomeWorkerThread();
    EXPECT_EQ(port->submit(makeRelease(3)), nullptr);
  });
  caller.join();
}

// Each of two threads ends a port and meanwhile drops a key of the other's port.
TEST_F(PortEndTest, Submit_ReleasesOfTwoEndingThreads_OneDoesNotWait) {
  const auto second = RequestPort::create();
  std::atomic<int> id{0};
  std::thread ending([&] {
    EXPECT_TRUE(second->beginEnd(idOfAnotherThread()));
    second->workerJoined();
    second->close();
    id = gettid();
    EXPECT_EQ(port->submit(makeRelease(3)), nullptr);
    second->end();
  });
  EXPECT_TRUE(waitUntil([&] { return id != 0 && isAsleep(id); }));
  EXPECT_EQ(second->submit(makeRelease(4)), nullptr);
  port->end();
  ending.join();
}

TEST_F(RequestPortTest, BeginEnd_OnTheWorkersThread_Refused) {
  EXPECT_FALSE(port->beginEnd(std::this_thread::get_id()));
}

TEST_F(RequestPortTest, BeginEnd_WorkerWaitsForTheCaller_Refused) {
  const auto second = RequestPort::create();
  const std::thread::id first = std::this_thread::get_id();
  std::thread::id other;
  std::thread waiting([&] {
    other = std::this_thread::get_id();
    EXPECT_TRUE(port->beginEnd(first));
  });
  waiting.join();
  EXPECT_FALSE(second->beginEnd(other));
}

class WorkerThreadTest : public RequestPortTest {
 protected:
  // Runs work on a thread that is marked as a worker's.
  template <typename Work>
  void onWorker(const Work& work) {
    std::thread([&work] {
      RequestPort::becomeWorkerThread();
      work();
    }).join();
  }
};

TEST_F(WorkerThreadTest, OnWorkerThread_OnlyWhereMarked) {
  EXPECT_FALSE(RequestPort::onWorkerThread());
  bool marked = false;
  onWorker([&] { marked = RequestPort::onWorkerThread(); });
  EXPECT_TRUE(marked);
  EXPECT_FALSE(RequestPort::onWorkerThread());
}

TEST_F(WorkerThreadTest, Submit_OnWorker_OneErrorAndEmptyAndNotPutOff) {
  std::shared_ptr<ClientResponse> response = std::make_shared<Echo>(nullptr);
  onWorker([&] { response = port->submit(makeRequest()); });
  EXPECT_EQ(response, nullptr);
  EXPECT_EQ(wakeUps(), 0U);
  EXPECT_EQ(port->takePutOff(), nullptr);
  const Sequence lines = logged();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_THAT(lines[0], testing::StartsWith("E "));
}

// Inside a client's request the worker holds the lock of the slots.
TEST_F(WorkerThreadTest, Submit_InsideTheHandler_NoDeadlock) {
  std::shared_ptr<ClientResponse> inner = std::make_shared<Echo>(nullptr);
  std::thread caller([&] { EXPECT_NE(port->submit(makeRequest()), nullptr); });
  ASSERT_TRUE(waitUntil([&] { return wakeUps() != 0; }));
  onWorker([&] {
    port->serve([&](const ClientRequest& request) {
      inner = port->submit(makeRequest());
      return echo(request);
    });
  });
  caller.join();
  EXPECT_EQ(inner, nullptr);
}

TEST_F(WorkerThreadTest, Submit_ReleasesOnWorker_PutOffInOrderAndWorkerWoken) {
  const auto first = makeRelease(3);
  const auto second = makeRelease(4);
  onWorker([&] {
    EXPECT_EQ(port->submit(first), nullptr);
    EXPECT_EQ(port->submit(second), nullptr);
  });
  EXPECT_EQ(logged().size(), 2U);
  EXPECT_EQ(wakeUps(), 2U);
  EXPECT_EQ(port->takePutOff(), first);
  EXPECT_EQ(wakeUps(), 1U) << "the second release has no wake-up of its own";
  EXPECT_EQ(port->takePutOff(), second);
  EXPECT_EQ(wakeUps(), 0U);
  EXPECT_EQ(port->takePutOff(), nullptr);
}

TEST_F(WorkerThreadTest, Submit_RegistrationOnWorker_NotPutOff) {
  const auto registration = std::make_shared<CallbackRequest>();
  registration->setExpirationInfo([] {}, std::weak_ptr<IProfileKey>(), 3);
  onWorker([&] { EXPECT_EQ(port->submit(registration), nullptr); });
  EXPECT_EQ(logged().size(), 1U);
  EXPECT_EQ(port->takePutOff(), nullptr);
  EXPECT_EQ(wakeUps(), 0U);
}

TEST_F(WorkerThreadTest, Submit_ReleaseOnWorkerAfterClose_DroppedWithoutWakeUp) {
  port->close();
  onWorker([&] { EXPECT_EQ(port->submit(makeRelease(3)), nullptr); });
  EXPECT_EQ(port->takePutOff(), nullptr);
  EXPECT_EQ(wakeUps(), 0U);
}

TEST_F(WorkerThreadTest, Close_ReleasesPutOff_Dropped) {
  const auto release = makeRelease(3);
  onWorker([&] { port->submit(release); });
  port->close();
  EXPECT_EQ(port->takePutOff(), nullptr);
  EXPECT_EQ(release.use_count(), 1);
}

}  // namespace
}  // namespace pavo::test
