// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover workers that are replaced, keys that outlive them, and the end of the process.
#include "FdLimit.h"
#include "RunningManagerTest.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Raises an indication and gives the worker the time to read it. A modem is slow; indications that
// come faster than they are read would let the queue grow without end.
void indicateAtModemSpeed(std::uint8_t index, std::int32_t event) {
  FakePlatform& platform = FakePlatform::instance();
  const std::size_t before = platform.count(FakePlatform::Kind::Decode);
  if (platform.indicateProfileChanged(index, event)) {
    waitUntil([&] { return platform.count(FakePlatform::Kind::Decode) > before; },
              std::chrono::milliseconds(100));
  }
}

class ManagerLifetimeTest : public RunningManagerTest {
 protected:
  void initAgain() {
    platform.clearCalls();
    manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
    ASSERT_TRUE(platform.waitForStart());
    captureLog();
  }

  // The old capture has to go first, because its end uninstalls any writer.
  void captureLog() {
    log.reset();
    log = std::make_unique<CapturingLogWriter>();
  }
};

TEST_F(ManagerLifetimeTest, InitAgain_NewWorkerIsBuiltBeforeTheOldIsGone) {
  platform.clearCalls();
  manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  std::vector<PlatformCall::Kind> kinds;
  for (const PlatformCall& call : platform.calls()) {
    // The new proxy releases its own notifier when the service is up. The old proxy releases its
    // client.
    const bool isOldClient = !platform.clients().empty() &&
                             call.kind == PlatformCall::Kind::Release &&
                             call.handle == platform.clients().front().handle;
    if (call.kind == PlatformCall::Kind::NotifierInit || isOldClient) {
      kinds.push_back(call.kind);
    }
  }
  EXPECT_THAT(kinds, ElementsAre(PlatformCall::Kind::NotifierInit, PlatformCall::Kind::Release));
  EXPECT_EQ(platform.openClientCount(), 1U);
}

TEST_F(ManagerLifetimeTest, InitAgain_CacheIsEmptyAndTokensGoOn) {
  const Key old = addConfirmed("ims");
  initAgain();
  EXPECT_THAT(cached(), IsEmpty());
  const Key key = add("net");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(tokenOf(key), tokenOf(old) + 1);
}

TEST_F(ManagerLifetimeTest, InitAgain_OldKey_IsUnknownToTheNewWorker) {
  const Key key = addConfirmed("ims");
  initAgain();
  takeKeptLines();
  platform.clearCalls();
  ModifyProfileParams params;
  params.setPassword("x");
  EXPECT_FALSE(manager.modifyProfile(params, key));
  EXPECT_FALSE(manager.deleteProfile(key));
  EXPECT_FALSE(manager.getProfile(key).has_value());
  EXPECT_FALSE(manager.match(FilterProfileParams(), key));
  const std::string text = key->dump();
  const std::string unknown = "ProfileCache: token is not present or expired";
  EXPECT_THAT(
      takeKeptLines(),
      ElementsAre("Manager::modifyProfile > Modify " + text + " Password=x,", unknown,
                  "Manager::modifyProfile < Modify Failure",
                  "Manager::deleteProfile > Delete " + text, "Error: " + unknown,
                  "Manager::deleteProfile < Delete Failure", "Manager::getProfile > Get " + text,
                  "Error: " + unknown, "Manager::getProfile < Get Failure ",
                  "Manager::match > Match " + text + " None: ", "Error: " + unknown,
                  "Manager::match < Match Success false"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ManagerLifetimeTest, InitAgain_OldKeyDropped_NobodyHears) {
  Key key = addConfirmed("ims");
  initAgain();
  log->clear();
  platform.clearCalls();
  key->registerExpirationListener([] {});
  key.reset();
  EXPECT_THAT(log->lines(), ElementsAre(CapturedLine{LogLevel::Debug, "PAVO", "~ProfileKey"}));
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_EQ(platform.profileCount(), 1U);
}

TEST_F(ManagerLifetimeTest, Destroy_KeyDroppedAfterwards_NobodyHears) {
  auto own = std::make_unique<Manager>();
  own->init(/*subscription=*/2, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  Key key = own->addProfile(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  ASSERT_NE(key, nullptr);
  own.reset();
  captureLog();
  platform.clearCalls();
  EXPECT_EQ(key->getProfileId(), 1);
  key->registerExpirationListener([] {});
  key.reset();
  EXPECT_THAT(log->lines(), ElementsAre(CapturedLine{LogLevel::Debug, "PAVO", "~ProfileKey"}));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

// Listeners run on the thread that replaces the worker. Their calls to the old worker are answered
// empty at once.
TEST_F(ManagerLifetimeTest, InitAgain_ListenersOfLiveKeys_RunOnTheCallersThread) {
  const Key key = addConfirmed("ims");
  Key dropped = addConfirmed("net");
  std::thread::id thread;
  key->registerExpirationListener([&] {
    thread = std::this_thread::get_id();
    key->registerExpirationListener([] {});
    dropped.reset();
    EXPECT_FALSE(manager.getProfile(key).has_value());
  });
  manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(dropped, nullptr);
}

TEST_F(ManagerLifetimeTest, Destroy_ListenersOfLiveKeys_RunAndFindNoManager) {
  auto own = std::make_unique<Manager>();
  own->init(/*subscription=*/2, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  const Key key = own->addProfile(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  ASSERT_NE(key, nullptr);
  bool hasRun = false;
  key->registerExpirationListener([&, inside = own.get()] {
    hasRun = true;
    EXPECT_FALSE(inside->getProfile(key).has_value());
    key->registerExpirationListener([] {});
  });
  own.reset();
  EXPECT_TRUE(hasRun);
}

TEST_F(ManagerLifetimeTest, InitAgain_CallersInside_EveryCallReturns) {
  const Key key = addConfirmed("ims");
  auto blocked = platform.blockNext(0x27);
  auto first = std::async(std::launch::async, [&] { return add("net"); });
  ASSERT_TRUE(blocked.waitUntilEntered());
  auto second = std::async(std::launch::async, [&] { return manager.getProfile(key); });
  auto again = std::async(std::launch::async,
                          [&] { manager.init(/*subscription=*/1, /*useAndroidLog=*/true); });
  // The new worker is there while the old one is still inside the modem's request.
  ASSERT_TRUE(platform.waitFor([&] { return platform.openClientCount() == 2; }));
  blocked.release();
  EXPECT_EQ(again.wait_for(patience()), std::future_status::ready);
  EXPECT_EQ(first.wait_for(patience()), std::future_status::ready);
  EXPECT_EQ(second.wait_for(patience()), std::future_status::ready);
}

TEST_F(ManagerLifetimeTest, InitAgain_UnderIndications_NoTokenTwiceAndNoHang) {
  setModemProfile(5, "net");
  std::atomic<bool> isDone{false};
  auto indications = std::async(std::launch::async, [&] {
    while (!isDone) {
      indicateAtModemSpeed(5, WDS_PROFILE_EVENT_CREATE_V01);
    }
  });
  std::set<unsigned long long> tokens;
  std::size_t keys = 0;
  for (int round = 0; round < 10; ++round) {
    manager.init(/*subscription=*/round, /*useAndroidLog=*/round % 2 == 0);
    const Key key = add("ims");
    if (key != nullptr) {
      ++keys;
      tokens.insert(tokenOf(key));
    }
  }
  isDone = true;
  indications.get();
  EXPECT_EQ(tokens.size(), keys);
}

// This function is for a process of its own, whose end it examines. The handler prints the
// platform's counts. It runs after the Manager's destructor, because it was registered before the
// Manager was made.
void reportHandlesAtExit() {
  FakePlatform::instance();
  std::atexit([] {
    FakePlatform& platform = FakePlatform::instance();
    fprintf(stderr, "clients=%zu notifiers=%zu misuses=%zu\n", platform.openClientCount(),
            platform.armedNotifierCount(), platform.misuses().size());
  });
}

Manager& startProcessWide() {
  Manager& manager = Manager::getInstance();
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  FakePlatform::instance().waitForRegistration();
  return manager;
}

constexpr int exitCode = 42;

TEST(ManagerExitDeathTest, Exit_WorkerRunning_CodeKeptAndHandlesReleased) {
  EXPECT_EXIT(
      {
        reportHandlesAtExit();
        startProcessWide();
        std::exit(exitCode);
      },
      testing::ExitedWithCode(exitCode), "clients=0 notifiers=0 misuses=0");
}

TEST(ManagerExitDeathTest, Exit_WorkerRunning_TheWakeLineOnStandardOutput) {
  EXPECT_EXIT(
      {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        startProcessWide();
        std::exit(exitCode);
      },
      testing::ExitedWithCode(exitCode),
      testing::ResultOf(
          "wake() lines", [](const std::string& output) { return occurrences(output, "wake()\n"); },
          1U));
}

TEST(ManagerExitDeathTest, Exit_KeyInAnOlderStatic_DiesAfterTheManager) {
  EXPECT_EXIT(
      {
        // The key is built before the process-wide Manager, so it is destroyed after the Manager
        // and after the log.
        static Key key;
        reportHandlesAtExit();
        key = startProcessWide().addProfile(
            AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
        std::exit(key != nullptr ? exitCode : 1);
      },
      testing::ExitedWithCode(exitCode), "clients=0 notifiers=0 misuses=0");
}

TEST(ManagerExitDeathTest, Exit_UnderIndications_NoCrashAndNoHang) {
  EXPECT_EXIT(
      {
        reportHandlesAtExit();
        startProcessWide();
        std::thread([] {
          for (;;) {
            indicateAtModemSpeed(1, WDS_PROFILE_EVENT_MODIFY_V01);
          }
        }).detach();
        FakePlatform::instance().waitForCalls(FakePlatform::Kind::Decode, 10);
        std::exit(exitCode);
      },
      testing::ExitedWithCode(exitCode), "clients=0");
}

TEST(ManagerExitDeathTest, Exit_InAListener_EndsTheProcess) {
  EXPECT_EXIT(
      {
        Manager& manager = startProcessWide();
        const Key key =
            manager.addProfile(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
        key->registerExpirationListener([] { std::exit(exitCode); });
        manager.refresh(PDC_REFRESH_COMPLETED);
        pause();
      },
      testing::ExitedWithCode(exitCode), "");
}

TEST_F(ManagerLifetimeTest, InitInAListener_RefusedAndTheWorkerGoesOn) {
  const Key key = addConfirmed("ims");
  key->registerExpirationListener(
      [&] { manager.init(/*subscription=*/9, /*useAndroidLog=*/true); });
  takeKeptLines();
  ASSERT_TRUE(manager.deleteProfile(key));
  EXPECT_EQ(platform.clients().size(), 1U);
  EXPECT_THAT(takeKeptLines(),
              testing::Contains("Error: called on the worker thread, refused: Manager::init"));
  EXPECT_NE(add("alive"), nullptr);
}

TEST(ManagerExitDeathTest, Tokens_FreshProcess_FromZeroAcrossWorkers) {
  EXPECT_EXIT(
      {
        Manager& manager = startProcessWide();
        const AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
        const Key first = manager.addProfile(params);
        manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
        FakePlatform::instance().waitForRegistration(2);
        const Key second = manager.addProfile(params);
        const bool counts = first != nullptr && second != nullptr && first->dump() == "1 token=0" &&
                            second->dump() == "2 token=1";
        _exit(counts ? exitCode : 1);
      },
      testing::ExitedWithCode(exitCode), "");
}

}  // namespace
}  // namespace pavo::test
