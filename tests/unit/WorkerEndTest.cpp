// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests state the guarantees to clients while a worker ends, is cut off from its modem or is
// copied by fork().
#include "ClientRequestManager.h"
#include "FdLimit.h"
#include "RunningManagerTest.h"
#include "ThreadState.h"
#include "WatchedByKernel.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

constexpr unsigned int deleteMessage = OVIX_WDS_DELETE_PROFILE_REQ_V01;
constexpr unsigned int settingsMessage = OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01;
constexpr unsigned int lastRegistrationMessage = OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01;
constexpr int exitCode = 42;

// A Client stands for the object that a data-call service's listener captures. It is static and
// only marked as gone, so a listener that runs too late is detected without undefined behaviour.
struct Client {
  std::atomic<bool> isAlive{true};
  std::atomic<bool> wasTouchedDead{false};

  void touch() {
    if (!isAlive) {
      wasTouchedDead = true;
    }
  }
};

// A listener holds this capture. The end of the capture touches the client, too.
struct Capture {
  explicit Capture(Client& captured) : client(captured) {}
  Capture(const Capture& other) : client(other.client) {}
  Capture& operator=(const Capture&) = delete;
  ~Capture() { client.touch(); }
  Client& client;
};

// A Gate holds the library's thread at one place until the test opens it.
class Gate {
 public:
  void pass() {
    isReached = true;
    waitUntil([this] { return isOpen.load(); });
  }
  bool waitUntilReached() {
    return waitUntil([this] { return isReached.load(); });
  }
  void open() { isOpen = true; }

 private:
  std::atomic<bool> isReached{false};
  std::atomic<bool> isOpen{false};
};

std::unique_ptr<Manager> startManager() {
  FakePlatform& platform = FakePlatform::instance();
  const std::size_t before = platform.sentCount(lastRegistrationMessage);
  auto manager = std::make_unique<Manager>();
  manager->init(/*subscription=*/0, /*useAndroidLog=*/true);
  EXPECT_TRUE(platform.waitForSent(lastRegistrationMessage, before + 1));
  return manager;
}

Key addTo(Manager& manager) {
  return manager.addProfile(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
}

// A Moment is the state of a listener when its key is dropped.
enum class Moment {
  BeforeItStarts,  // the library has found the key alive and is about to call
  WhileItRuns,
};

// Ends a worker while one of its keys is dropped on another thread. The client is destroyed when
// the drop has returned; the listener must not touch it from then on.
void dropWhileEnding(Moment moment, Client& client, std::unique_ptr<Manager> manager,
                     const std::function<void(std::unique_ptr<Manager>&)>& end) {
  Gate gate;
  Key key = addTo(*manager);
  ASSERT_NE(key, nullptr);
  key->registerExpirationListener([&gate, moment, capture = Capture(client)] {
    capture.client.touch();
    if (moment == Moment::WhileItRuns) {
      gate.pass();
      capture.client.touch();
    }
  });
  if (moment == Moment::BeforeItStarts) {
    FakePlatform::instance().setLogHook([&gate](const std::string& message) {
      if (message == "invoke callback") {
        gate.pass();
      }
    });
  }
  std::atomic<int> dropperId{0};
  std::atomic<bool> hasReturned{false};
  std::thread dropper([&] {
    EXPECT_TRUE(gate.waitUntilReached());
    dropperId = gettid();
    key.reset();
    client.isAlive = false;
    hasReturned = true;
  });
  std::thread opener([&] {
    waitUntil([&] { return hasReturned || (dropperId != 0 && isAsleep(dropperId)); });
    gate.open();
  });
  end(manager);
  dropper.join();
  opener.join();
  FakePlatform::instance().setLogHook({});
}

class WorkerEndTest : public FakePlatformTest {};

TEST_F(WorkerEndTest, Drop_WorkerIsReplaced_ListenerIsOverWhenItReturns) {
  for (const Moment moment : {Moment::BeforeItStarts, Moment::WhileItRuns}) {
    Client client;
    dropWhileEnding(moment, client, startManager(), [](std::unique_ptr<Manager>& manager) {
      manager->init(/*subscription=*/0, /*useAndroidLog=*/true);
    });
    EXPECT_FALSE(client.wasTouchedDead) << "moment " << static_cast<int>(moment);
  }
}

TEST_F(WorkerEndTest, Drop_ManagerIsDestroyed_ListenerIsOverWhenItReturns) {
  for (const Moment moment : {Moment::BeforeItStarts, Moment::WhileItRuns}) {
    Client client;
    dropWhileEnding(moment, client, startManager(),
                    [](std::unique_ptr<Manager>& manager) { manager.reset(); });
    EXPECT_FALSE(client.wasTouchedDead) << "moment " << static_cast<int>(moment);
  }
}

// The process-wide Manager ends among the static objects, on the thread that exits.
void dropWhileExiting(Moment moment) {
  static Client client;
  static Gate gate;
  static Key key;
  static std::atomic<int> dropperId{0};
  static std::atomic<bool> hasReturned{false};
  FakePlatform::instance();
  // The handler runs after the end of the process-wide Manager, because it was registered before
  // the Manager was made.
  std::atexit([] {
    const bool isOver = waitUntil([] { return hasReturned.load(); });
    _exit(isOver && !client.wasTouchedDead ? exitCode : 1);
  });
  Manager& manager = Manager::getInstance();
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  FakePlatform::instance().waitForRegistration();
  key = addTo(manager);
  key->registerExpirationListener([moment, capture = Capture(client)] {
    capture.client.touch();
    if (moment == Moment::WhileItRuns) {
      gate.pass();
      capture.client.touch();
    }
  });
  if (moment == Moment::BeforeItStarts) {
    FakePlatform::instance().setLogHook([](const std::string& message) {
      if (message == "invoke callback") {
        gate.pass();
      }
    });
  }
  std::thread([] {
    gate.waitUntilReached();
    dropperId = gettid();
    key.reset();
    client.isAlive = false;
    hasReturned = true;
  }).detach();
  std::thread([] {
    waitUntil([] { return hasReturned || (dropperId != 0 && isAsleep(dropperId)); });
    gate.open();
  }).detach();
  std::exit(1);
}

TEST(WorkerEndDeathTest, Drop_ProcessExits_ListenerIsOverWhenItReturns) {
  EXPECT_EXIT(dropWhileExiting(Moment::BeforeItStarts), testing::ExitedWithCode(exitCode), "");
  EXPECT_EXIT(dropWhileExiting(Moment::WhileItRuns), testing::ExitedWithCode(exitCode), "");
}

TEST_F(WorkerEndTest, InitAgain_OnSeveralThreadsWithListenersThatDropKeys_EveryCallReturns) {
  const std::unique_ptr<Manager> manager = startManager();
  std::mutex mutex;
  std::vector<Key> keys;
  // Each listener drops all keys that it finds, of this worker and of others.
  const auto dropAll = [&] {
    std::vector<Key> taken;
    const std::lock_guard lock(mutex);
    taken.swap(keys);
  };
  std::vector<std::future<void>> threads;
  for (int i = 0; i < 4; ++i) {
    threads.push_back(std::async(std::launch::async, [&] {
      for (int round = 0; round < 10; ++round) {
        std::vector<Key> made{addTo(*manager), addTo(*manager)};
        for (const Key& key : made) {
          if (key != nullptr) {
            key->registerExpirationListener(dropAll);
          }
        }
        {
          const std::lock_guard lock(mutex);
          keys.insert(keys.end(), made.begin(), made.end());
        }
        made.clear();
        manager->init(/*subscription=*/round, /*useAndroidLog=*/true);
      }
    }));
  }
  for (std::future<void>& thread : threads) {
    ASSERT_EQ(thread.wait_for(patience()), std::future_status::ready);
  }
  dropAll();
}

TEST_F(WorkerEndTest, Destroy_InAListenerOfAnotherManager_StoppedAsUsual) {
  const std::unique_ptr<Manager> manager = startManager();
  const long threads = threadCount();
  const long descriptors = descriptorCount();
  for (int i = 0; i < 5; ++i) {
    std::unique_ptr<Manager> other = startManager();
    const Key key = addTo(*manager);
    key->registerExpirationListener([&other] { other.reset(); });
    EXPECT_TRUE(manager->deleteProfile(key));
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(FakePlatform::instance().openClientCount(), 1U);
  }
  EXPECT_EQ(threadCount(), threads);
  EXPECT_EQ(descriptorCount(), descriptors);
}

// Both are worker threads, and each would wait for the other's end.
void destroyEachOther() {
  std::unique_ptr<Manager> managers[] = {startManager(), startManager()};
  const Key keys[] = {addTo(*managers[0]), addTo(*managers[1])};
  std::atomic<int> inside{0};
  std::atomic<int> returned{0};
  for (int i = 0; i < 2; ++i) {
    keys[i]->registerExpirationListener([&, i] {
      ++inside;
      waitUntil([&] { return inside == 2; });
      managers[1 - i].reset();
      ++returned;
    });
  }
  for (const Key& key : keys) {
    FakePlatform::instance().indicateProfileChanged(static_cast<std::uint8_t>(key->getProfileId()),
                                                    WDS_PROFILE_EVENT_DELETE_V01);
  }
  _exit(waitUntil([&] { return returned == 2; }) ? exitCode : 1);
}

TEST(WorkerEndDeathTest, Destroy_TwoListenersEachOthersManager_BothReturn) {
  EXPECT_EXIT(destroyEachOther(), testing::ExitedWithCode(exitCode), "");
}

// A request to a modem that does not answer takes longer than a turn may last.
ovix_client_error_type staySilent(ModemExchange&) {
  waitUntil([] { return false; }, std::chrono::milliseconds(220));
  return OVIX_CLIENT_TIMEOUT_ERROR;
}

class SilentModemTest : public RunningManagerTest {
 protected:
  // Queues that many reads; the worker is inside the first when this returns.
  void queueReads(std::size_t count) {
    const std::size_t before = platform.sentCount(settingsMessage);
    platform.onEvery(settingsMessage, staySilent);
    for (std::size_t i = 0; i < count; ++i) {
      platform.indicateProfileChanged(1, WDS_PROFILE_EVENT_CREATE_V01);
    }
    ASSERT_TRUE(platform.waitFor([&] { return platform.sentCount(settingsMessage) > before; }));
  }
  std::size_t reads() const { return platform.sentCount(settingsMessage); }
};

TEST_F(SilentModemTest, Call_ManyIndicationsQueued_WaitsForTheRequestInHand) {
  constexpr std::size_t queued = 6;
  queueReads(queued);
  const std::size_t before = reads();
  EXPECT_FALSE(manager.getProfile(nullptr).has_value());
  EXPECT_LE(reads(), before + 1);
  EXPECT_TRUE(platform.waitForSent(settingsMessage, queued)) << "the rest was never handled";
}

TEST_F(SilentModemTest, InitAgain_ManyIndicationsQueued_WaitsForTheRequestInHand) {
  queueReads(10);
  const std::size_t before = reads();
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  EXPECT_LE(reads(), before + 1);
}

TEST(SilentModemDestroyTest, Destroy_ManyIndicationsQueued_WaitsForTheRequestInHand) {
  FakePlatform& platform = FakePlatform::instance();
  platform.reset();
  auto manager = startManager();
  platform.onEvery(settingsMessage, staySilent);
  for (int i = 0; i < 10; ++i) {
    platform.indicateProfileChanged(1, WDS_PROFILE_EVENT_CREATE_V01);
  }
  ASSERT_TRUE(platform.waitFor([&] { return platform.sentCount(settingsMessage) > 0; }));
  manager.reset();
  EXPECT_LE(platform.sentCount(settingsMessage), 2U);
}

TEST_F(SilentModemTest, InitAgain_DuringARefresh_EndsItBetweenTwoRequests) {
  for (std::uint8_t index = 1; index <= 10; ++index) {
    platform.setProfile(index, {});
  }
  auto blocked = platform.blockNext(settingsMessage);
  auto refresh = std::async(std::launch::async, [&] { manager.refresh(PDC_REFRESH_COMPLETED); });
  ASSERT_TRUE(blocked.waitUntilEntered());
  std::atomic<int> id{0};
  std::thread again([&] {
    id = gettid();
    manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  });
  // The second init waits for the old worker.
  EXPECT_TRUE(platform.waitForLog("pavo::ClientRequestManager: destructor"));
  EXPECT_TRUE(waitUntil([&] { return id != 0 && isAsleep(id); }));
  blocked.release();
  again.join();
  refresh.wait();
  EXPECT_EQ(reads(), 1U);
}

class FloodTest : public StartedManagerTest {};

TEST_F(FloodTest, Indications_AMillionWhileTheWorkerIsBusy_BoundedAndTheCacheIsTheModemsTable) {
  LogWrapper::getInstance().setLogWriter(nullptr);
  // The modem's answer waits until the flood is over, however long that takes.
  std::promise<void> isOver;
  platform.onNext(deleteMessage, [&](ModemExchange& exchange) {
    isOver.get_future().wait();
    return platform.answer(exchange);
  });
  Key key = add("ims");
  std::thread dropper([&] { key.reset(); });
  EXPECT_TRUE(platform.waitFor([&] { return platform.sentCount(deleteMessage) == 1; }));
  const std::size_t before = platform.count(FakePlatform::Kind::Decode);
  for (int i = 0; i < 1'000'000; ++i) {
    platform.indicateProfileChanged(200, WDS_PROFILE_EVENT_DELETE_V01);
  }
  // The indications of these profiles are among those that find no room.
  for (const std::uint8_t index : std::vector<std::uint8_t>{7, 8, 9}) {
    platform.setProfile(index, {});
    platform.indicateProfileChanged(index, WDS_PROFILE_EVENT_CREATE_V01);
  }
  isOver.set_value();
  dropper.join();
  std::vector<int> cached;
  EXPECT_TRUE(waitUntil([&] {
    cached.clear();
    for (const Key& found : manager.filter(FilterProfileParams())) {
      cached.push_back(found->getProfileId());
    }
    return cached.size() == 3;
  }));
  EXPECT_THAT(cached, testing::UnorderedElementsAre(7, 8, 9));
  EXPECT_EQ(platform.count(FakePlatform::Kind::Decode) - before, 16384U);
}

// The destructor of a closure may take any lock, including one that another thread holds around a
// call.
TEST_F(WorkerEndTest, Drop_ClosureTakesALockThatACallerHolds_NoDeadlock) {
  const std::unique_ptr<Manager> manager = startManager();
  std::mutex mutex;
  std::atomic<bool> isEnding{false};
  std::atomic<bool> hadTheLock{false};
  const auto capture = [&](void*) {
    isEnding = true;
    hadTheLock = waitUntil([&] { return mutex.try_lock(); });
    if (hadTheLock) {
      mutex.unlock();
    }
  };
  Key key = addTo(*manager);
  const Key other = addTo(*manager);
  {
    const std::shared_ptr<void> captured(nullptr, capture);
    key->registerExpirationListener([captured] {});
  }
  mutex.lock();
  std::thread dropper([&] { key.reset(); });
  EXPECT_TRUE(waitUntil([&] { return isEnding.load(); }));
  EXPECT_TRUE(manager->getProfile(other).has_value());
  mutex.unlock();
  dropper.join();
  EXPECT_TRUE(hadTheLock);
}

TEST(WorkerEndDeathTest, Construct_AnyRegistrationFails_OneErrorAndAbort) {
  for (int nth = 1; nth <= 5; ++nth) {
    EXPECT_EXIT(
        {
          logToStandardError();
          failingRegistration = nth;
          const ClientRequestManager worker(/*subscription=*/0);
        },
        testing::KilledBySignal(SIGABRT),
        testing::ResultOf(
            "error lines",
            [](const std::string& output) {
              return occurrences(output, "E ") == 1 &&
                     occurrences(output, "E Cannot add event handler") == 1;
            },
            true))
        << "registration " << nth;
  }
}

// These tests check the effects of a forked child process on its parent, which continues.
class ForkTest : public RunningManagerTest {
 protected:
  // Runs work in a child and expects the exit code exitCode.
  void inChild(const std::function<void()>& work) {
    platform.clearCalls();
    const std::size_t profiles = platform.profileCount();
    const pid_t child = platform.forkProcess();
    if (child == 0) {
      alarm(static_cast<unsigned int>(patience().count() / 1000));
      work();
      _exit(HasFailure() ? 1 : exitCode);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), exitCode);
    EXPECT_TRUE(manager.getProfile(key).has_value()) << "the parent was disturbed";
    EXPECT_EQ(platform.profileCount(), profiles);
  }

  Key key = addConfirmed("ims");
};

TEST_F(ForkTest, Calls_InTheChild_EmptyWithOneErrorEach) {
  inChild([this] {
    takeKeptLines();
    const auto refused = [](const std::string& call) {
      return Lines{"Error: called in a forked child, refused: " + call};
    };
    EXPECT_FALSE(manager.getProfile(key).has_value());
    EXPECT_EQ(takeKeptLines(), refused("Manager::getProfile"));
    EXPECT_EQ(addTo(manager), nullptr);
    EXPECT_EQ(takeKeptLines(), refused("Manager::addProfile"));
    EXPECT_TRUE(manager.filter(FilterProfileParams()).empty());
    EXPECT_EQ(takeKeptLines(), refused("Manager::filter"));
    manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
    EXPECT_EQ(takeKeptLines(), refused("Manager::init"));
    EXPECT_THAT(manager.dump(), testing::Not(testing::Contains("Cache:")));
    EXPECT_EQ(takeKeptLines(), refused("Manager::dump"));
    key->registerExpirationListener([] {});
    EXPECT_EQ(takeKeptLines().size(), 1U);
    EXPECT_EQ(platform.sent().size(), 0U);
  });
}

TEST_F(ForkTest, Drop_InTheChild_NeitherLogsNorAsksTheModem) {
  inChild([this] {
    log->clear();
    key.reset();
    EXPECT_TRUE(log->lines().empty());
    EXPECT_EQ(platform.sent().size(), 0U);
  });
}

TEST_F(ForkTest, Destroy_InTheChild_LeavesTheWorkerAlone) {
  auto own = startManager();
  const Key ownKey = addTo(*own);
  inChild([&] {
    platform.clearCalls();
    log->clear();
    own.reset();
    EXPECT_EQ(platform.calls().size(), 0U);
    EXPECT_TRUE(log->lines().empty());
  });
  EXPECT_TRUE(own->getProfile(ownKey).has_value());
}

// A thread that logs may hold the log's locks at the moment of the fork.
TEST_F(ForkTest, Fork_WhileOthersLog_TheChildLogsToo) {
  std::atomic<bool> isDone{false};
  std::vector<std::thread> loggers;
  for (int i = 0; i < 2; ++i) {
    loggers.emplace_back([&] {
      while (!isDone) {
        LogWrapper::log(LogLevel::Error, logTag, "busy");
        log->clear();
      }
    });
  }
  LogWrapper::getInstance().setLogWriter(nullptr);
  for (int i = 0; i < 100; ++i) {
    inChild([this] { EXPECT_FALSE(manager.getProfile(key).has_value()); });
  }
  isDone = true;
  for (std::thread& logger : loggers) {
    logger.join();
  }
}

}  // namespace
}  // namespace pavo::test
