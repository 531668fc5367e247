// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests follow keys and listeners that callers hold: registration, release, calls from the
// worker's own thread and the end of the process.
#include <pavo/Manager.h>

#include "Aliases.h"
#include "FakePlatformTest.h"
#include "LogLines.h"
#include "Sequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

constexpr const char* lostLine = "E ProfileCache: token is not present or expired";
constexpr const char* deletedLine =
    "I OvixWdsProxy OVIX_WDS_DELETE_PROFILE_REQ_V01 request successful!";
constexpr const char* listenerRuns = "D invoke callback";
constexpr const char* indicationsDone = "OvixWdsProxy: handleIndication indQueue.size[0]";

std::string tokenText(const Key& key) {
  const std::string text = key->dump();
  return text.substr(text.find("token=") + 6);
}

class KeyLifetimeTest : public FakePlatformTest {
 protected:
  KeyLifetimeTest() {
    manager.emplace();
    manager->init(/*subscription=*/0, /*useAndroidLog=*/true);
    EXPECT_TRUE(platform.waitForStart());
    platform.clearCalls();
  }

  // Adds a profile of the library's own that ends with its last key.
  Key add() {
    return manager->addProfile(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  }
  // Returns one key for each of these profiles of the modem's own, freshly read.
  std::vector<Key> keysOfModemProfiles(const std::vector<std::uint8_t>& indices) {
    for (const std::uint8_t index : indices) {
      platform.setProfile(index, {});
    }
    manager->refresh(PDC_REFRESH_COMPLETED);
    std::vector<Key> keys;
    for (const std::uint8_t index : indices) {
      FilterProfileParams filter;
      filter.setFilterByProfileId(index);
      keys.push_back(manager->filter(filter).front());
    }
    platform.clearCalls();
    return keys;
  }

  // Sends the modem's indication of a change, and waits until the worker has handled it.
  void indicate(int index, std::int32_t event) {
    const auto done = [this] {
      const auto lines = platform.logMessages();
      return std::count(lines.begin(), lines.end(), indicationsDone);
    };
    const auto before = static_cast<std::size_t>(done());
    ASSERT_TRUE(platform.indicateProfileChanged(static_cast<std::uint8_t>(index), event));
    ASSERT_TRUE(platform.waitForLog(indicationsDone, before + 1));
  }

  Sequence onThisThread() const { return sequenceOn(std::this_thread::get_id(), platform.calls()); }
  Sequence onWorker() const {
    return withoutEventLines(sequenceNotOn(std::this_thread::get_id(), platform.calls()));
  }

  std::optional<Manager> manager;
};

TEST_F(KeyLifetimeTest, Accessors_AddedProfile_ModemsIndexAndToken) {
  platform.setNextProfileIndex(200);
  const Key key = add();
  EXPECT_EQ(key->getProfileId(), 200);
  EXPECT_THAT(key->dump(), testing::MatchesRegex("200 token=[0-9]+"));
}

TEST_F(KeyLifetimeTest, RegisterExpirationListener_KnownProfile_HandledWhenItReturns) {
  const Key key = add();
  platform.clearCalls();
  key->registerExpirationListener([] {});
  EXPECT_EQ(onWorker(), (Sequence{line::handlingRequest,
                                  "I Handling Callback Register " + key->dump() + tokenText(key),
                                  "V ProfileCache: registerExpirationListener " + tokenText(key)}));
}

TEST_F(KeyLifetimeTest, Drop_OnlyKeyOfOwnProfile_DeletedFromTheModemThenTheLine) {
  Key key = add();
  Key copy = key;
  const std::string token = tokenText(key);
  platform.clearCalls();
  copy.reset();
  EXPECT_EQ(platform.calls().size(), 0U) << "a copy of the handle was heard of";
  key.reset();
  EXPECT_EQ(onWorker(), (Sequence{line::handlingRequest, "I Handling Callback Release " + token,
                                  "I ProfileCache: releaseProfile token=" + token, "send 0x29",
                                  deletedLine, "I Released profile 1", line::profileEnd}));
  EXPECT_EQ(onThisThread(), Sequence{"D ~ProfileKey"});
  EXPECT_EQ(described(platform.calls().back()), "D ~ProfileKey");
}

TEST_F(KeyLifetimeTest, Drop_TwoKeysOfOneProfile_OneReleaseEach) {
  Key first = add();
  Key second = manager->filter(FilterProfileParams()).front();
  const std::string release = "I ProfileCache: releaseProfile token=" + tokenText(first);
  ASSERT_EQ(tokenText(second), tokenText(first));
  platform.clearCalls();
  first.reset();
  EXPECT_THAT(onWorker(), testing::Contains(release).Times(1));
  EXPECT_EQ(platform.profileCount(), 1U);
  second.reset();
  EXPECT_THAT(onWorker(), testing::Contains(release).Times(2));
  EXPECT_THAT(onThisThread(), testing::Contains("D ~ProfileKey").Times(2));
  EXPECT_EQ(platform.profileCount(), 0U);
}

TEST_F(KeyLifetimeTest, Drop_ProfileNoLongerCached_ErrorAndTheLine) {
  Key key = add();
  const std::string token = tokenText(key);
  manager->refresh(PDC_REFRESH_COMPLETED);
  platform.clearCalls();
  key.reset();
  EXPECT_EQ(onWorker(), (Sequence{line::handlingRequest, "I Handling Callback Release " + token,
                                  "I ProfileCache: releaseProfile token=" + token, lostLine}));
  EXPECT_EQ(onThisThread(), Sequence{"D ~ProfileKey"});
}

TEST_F(KeyLifetimeTest, Listener_ProfileGoes_RunsOnceOnTheWorker) {
  struct Case {
    const char* cause;
    std::function<void(const Key&)> end;
  };
  const Case cases[] = {
      {"changed on the modem",
       [this](const Key& k) { indicate(k->getProfileId(), WDS_PROFILE_EVENT_MODIFY_V01); }},
      {"deleted on the modem",
       [this](const Key& k) { indicate(k->getProfileId(), WDS_PROFILE_EVENT_DELETE_V01); }},
      {"refresh", [this](const Key&) { manager->refresh(PDC_REFRESH_COMPLETED); }},
      {"deleteProfile", [this](const Key& k) { manager->deleteProfile(k); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.cause);
    const std::vector<Key> keys = keysOfModemProfiles({5, 6});
    std::atomic<int> calls{0};
    std::thread::id thread;
    keys[0]->registerExpirationListener([&] {
      ++calls;
      thread = std::this_thread::get_id();
    });
    c.end(keys[0]);
    EXPECT_EQ(calls, 1);
    EXPECT_NE(thread, std::this_thread::get_id());
    manager->refresh(PDC_REFRESH_COMPLETED);
    EXPECT_EQ(calls, 1);
  }
}

TEST_F(KeyLifetimeTest, Listener_ItsOwnKeyEndsTheProfile_DoesNotRun) {
  int calls = 0;
  Key key = add();
  key->registerExpirationListener([&] { ++calls; });
  key.reset();
  EXPECT_EQ(platform.profileCount(), 0U);
  EXPECT_EQ(calls, 0);
}

TEST_F(KeyLifetimeTest, Listener_KeyDropped_DoesNotRunWhileAnotherKeysDoes) {
  std::vector<Key> keys = keysOfModemProfiles({5});
  keys.push_back(manager->filter(FilterProfileParams()).front());
  int dropped = 0;
  int kept = 0;
  keys[0]->registerExpirationListener([&] { ++dropped; });
  keys[1]->registerExpirationListener([&] { ++kept; });
  keys[0].reset();
  manager->deleteProfile(keys[1]);
  EXPECT_EQ(dropped, 0);
  EXPECT_EQ(kept, 1);
}

TEST_F(KeyLifetimeTest, Listener_WorkerReplaced_RunsAndOldKeysAreHarmless) {
  std::vector<Key> keys = keysOfModemProfiles({5, 6});
  int calls = 0;
  keys[0]->registerExpirationListener([&] {
    ++calls;
    keys[1].reset();
  });
  manager->init(/*subscription=*/0, /*useAndroidLog=*/true);
  EXPECT_EQ(calls, 1);
  platform.clearCalls();
  keys[0]->registerExpirationListener([] {});
  keys[0].reset();
  EXPECT_EQ(onThisThread(), Sequence{"D ~ProfileKey"});
  EXPECT_THAT(onWorker(), testing::Not(testing::Contains(line::handlingRequest)));
}

TEST_F(KeyLifetimeTest, Drop_ManagerDestroyed_LineAlone) {
  Key key = add();
  manager.reset();
  platform.clearCalls();
  key->registerExpirationListener([] {});
  key.reset();
  EXPECT_EQ(sequenceOf(platform.calls()), Sequence{"D ~ProfileKey"});
}

// A key in a static object that is older than the process-wide manager is dropped after the
// manager's end.
TEST(KeyLifetimeDeathTest, Drop_AfterTheProcessWideManager_ExitEnds) {
  EXPECT_EXIT(
      {
        static Key held;
        alarm(120);
        Manager& manager = Manager::getInstance();
        manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
        FakePlatform::instance().waitForRegistration();
        held = manager.addProfile(AddProfileParams(/*isPersistent=*/false, false));
        std::exit(held != nullptr ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(KeyLifetimeDeathTest, Listener_EndsTheProcess_ExitEnds) {
  EXPECT_EXIT(
      {
        alarm(120);
        Manager& manager = Manager::getInstance();
        manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
        FakePlatform::instance().waitForRegistration();
        const Key key = manager.addProfile(AddProfileParams(/*isPersistent=*/true, false));
        key->registerExpirationListener([] { std::exit(7); });
        manager.deleteProfile(key);
      },
      testing::ExitedWithCode(7), "");
}

// A WorkerCall is a call that a listener must not make, together with its result.
struct WorkerCall {
  const char* name;
  // Returns whether the answer was empty.
  std::function<bool(Manager&, Key&)> isRefused;
};

std::vector<WorkerCall> workerCalls() {
  const AddProfileParams params(/*isPersistent=*/true, /*isIAProfile=*/false);
  return {
      {"addProfile", [params](Manager& m, Key&) { return m.addProfile(params) == nullptr; }},
      {"modifyProfile", [](Manager& m, Key& k) { return !m.modifyProfile({}, k); }},
      {"deleteProfile", [](Manager& m, Key& k) { return !m.deleteProfile(k); }},
      {"filter", [](Manager& m, Key&) { return m.filter({}).empty(); }},
      {"getProfile", [](Manager& m, Key& k) { return !m.getProfile(k).has_value(); }},
      {"match", [](Manager& m, Key& k) { return !m.match({}, k); }},
      {"refresh",
       [](Manager& m, Key&) {
         m.refresh(PDC_REFRESH_COMPLETED);
         return true;
       }},
      {"init",
       [](Manager& m, Key&) {
         m.init(/*subscription=*/0, /*useAndroidLog=*/true);
         return true;
       }},
      {"registerExpirationListener",
       [](Manager&, Key& k) {
         k->registerExpirationListener([] { ADD_FAILURE() << "the listener was stored"; });
         return true;
       }},
      {"drop",
       [](Manager&, Key& k) {
         k.reset();
         return true;
       }},
  };
}

class CallsOnTheWorkerTest : public KeyLifetimeTest {
 protected:
  // Makes the call from the listener of a profile that ends in this way, and expects it to be
  // refused.
  void expectRefused(const WorkerCall& call, const std::function<void(const Key&)>& end) {
    SCOPED_TRACE(call.name);
    std::vector<Key> keys = keysOfModemProfiles({5, 6});
    std::optional<bool> isRefused;
    std::vector<std::string> errors;
    std::vector<unsigned int> sent;
    keys[0]->registerExpirationListener([&] {
      platform.clearCalls();
      isRefused = call.isRefused(*manager, keys[1]);
      errors = platform.logMessages(LogError);
      sent = platform.sentIds();
    });
    end(keys[0]);
    EXPECT_EQ(isRefused, true);
    EXPECT_EQ(errors.size(), 1U) << testing::PrintToString(errors);
    EXPECT_EQ(sent, std::vector<unsigned int>());
    // The worker still serves calls.
    EXPECT_FALSE(manager->filter(FilterProfileParams()).empty());
  }
};

TEST_F(CallsOnTheWorkerTest, AnyCall_InsideARequest_OneErrorAndEmpty) {
  for (const WorkerCall& call : workerCalls()) {
    expectRefused(call, [this](const Key& key) { manager->deleteProfile(key); });
  }
}

TEST_F(CallsOnTheWorkerTest, AnyCall_InsideAnIndication_OneErrorAndEmpty) {
  for (const WorkerCall& call : workerCalls()) {
    expectRefused(call, [this](const Key& key) {
      ASSERT_TRUE(platform.indicateProfileChanged(static_cast<std::uint8_t>(key->getProfileId()),
                                                  WDS_PROFILE_EVENT_DELETE_V01));
      ASSERT_TRUE(platform.waitForLog(indicationsDone));
    });
  }
}

TEST_F(CallsOnTheWorkerTest, Dump_InsideAListener_CacheWithoutTheProfile) {
  const std::vector<Key> keys = keysOfModemProfiles({5, 6});
  std::vector<std::string> lines;
  keys[0]->registerExpirationListener([&] { lines = manager->dump(); });
  manager->deleteProfile(keys[0]);
  const auto isOfToken = [](const Key& key) {
    return testing::StartsWith("  " + tokenText(key) + ": ");
  };
  EXPECT_THAT(lines, testing::Contains(isOfToken(keys[1])));
  EXPECT_THAT(lines, testing::Not(testing::Contains(isOfToken(keys[0]))));
}

TEST_F(CallsOnTheWorkerTest, Drop_InsideARequest_ReleaseCarriedOutAfterIt) {
  std::vector<Key> keys = keysOfModemProfiles({5});
  Key own = add();
  const std::string token = tokenText(own);
  const std::string text = keys[0]->dump();
  const std::string released = "I Released profile " + std::to_string(own->getProfileId());
  keys[0]->registerExpirationListener([&] { own.reset(); });
  platform.clearCalls();
  EXPECT_TRUE(manager->deleteProfile(keys[0]));
  ASSERT_TRUE(platform.waitForLog("~ModemProfile()", /*atLeast=*/2));
  EXPECT_THAT(onWorker(),
              testing::ElementsAre(line::handlingRequest, "I Handling Delete " + text, "send 0x29",
                                   deletedLine, line::profileEnd, listenerRuns,
                                   testing::StartsWith("E "), "D ~ProfileKey",
                                   line::handlingRequest, "I Handling Callback Release " + token,
                                   "I ProfileCache: releaseProfile token=" + token, "send 0x29",
                                   deletedLine, released, line::profileEnd));
}

TEST_F(CallsOnTheWorkerTest, Drop_InsideAnIndication_ReleaseCarriedOutAfterIt) {
  std::vector<Key> keys = keysOfModemProfiles({5});
  Key own = add();
  const std::string token = tokenText(own);
  const std::string released = "I Released profile " + std::to_string(own->getProfileId());
  keys[0]->registerExpirationListener([&] { own.reset(); });
  platform.clearCalls();
  platform.indicateProfileChanged(/*profileIndex=*/5, WDS_PROFILE_EVENT_DELETE_V01);
  ASSERT_TRUE(platform.waitForLog("~ModemProfile()", /*atLeast=*/2));
  EXPECT_THAT(
      onWorker(),
      testing::ElementsAre(
          "D OvixWdsProxy: handleIndication indQueue.size[1]", "decode",
          "D OvixWdsProxy ProfileChangedInd received!", "I ProfileCache: onIndication < 5 Delete",
          "I ProfileCache: updating cache due to indication!", line::profileEnd, listenerRuns,
          testing::StartsWith("E "), "D ~ProfileKey",
          "D OvixWdsProxy: handleIndication indQueue.size[0]", line::handlingRequest,
          "I Handling Callback Release " + token, "I ProfileCache: releaseProfile token=" + token,
          "send 0x29", deletedLine, released, line::profileEnd));
}

TEST_F(CallsOnTheWorkerTest, Drop_ByTheListenersClosure_ReleaseCarriedOut) {
  std::vector<Key> keys = keysOfModemProfiles({5});
  Key own = add();
  const std::string released = "Released profile " + std::to_string(own->getProfileId());
  keys[0]->registerExpirationListener([held = std::move(own)] {});
  EXPECT_TRUE(manager->deleteProfile(keys[0]));
  EXPECT_TRUE(platform.waitForLog(released));
}

// The worker checks whether a listener's key still lives. If it held the key meanwhile, it could
// become the key's last owner.
TEST_F(CallsOnTheWorkerTest, Drop_WhileAnIndicationEndsTheProfile_KeyNeverDiesOnTheWorker) {
  for (int round = 0; round < 100; ++round) {
    Key key = add();
    const int index = key->getProfileId();
    key->registerExpirationListener([] {});
    platform.clearCalls();
    std::atomic<bool> started{false};
    std::thread modem([&] {
      started = true;
      platform.indicateProfileChanged(static_cast<std::uint8_t>(index),
                                      WDS_PROFILE_EVENT_DELETE_V01);
    });
    EXPECT_TRUE(waitUntil([&] { return started.load(); }));
    key.reset();
    modem.join();
    EXPECT_THAT(onThisThread(), testing::Contains("D ~ProfileKey")) << "round " << round;
  }
}

}  // namespace
}  // namespace pavo::test
