// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests let callers overlap, start, stop and call at the wrong moment. No call may hang, race
// or lose anything.
#include <pavo/Manager.h>

#include "SystemTest.h"
#include "modem/client/ControlClient.h"

#include <array>
#include <atomic>
#include <filesystem>
#include <list>
#include <set>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::IsEmpty;

constexpr int callers = 16;

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

ModifyProfileParams userNamed(const std::string& user) {
  ModifyProfileParams change;
  change.setUserName(user);
  return change;
}

class ConcurrencyTest : public SystemTest {
 protected:
  ConcurrencyTest() : SystemTest({.profiles = nullptr, .arguments = {"--capacity", "200"}}) {}

  // Runs a scenario on an empty table. The scenario is repeated when the machine was so busy that
  // the modem did not answer a request within its second, because then the outcome cannot be
  // predicted. Returns the position at which the scenario's log begins.
  std::size_t runInTime(const std::function<void()>& scenario) {
    constexpr int attemptsMax = 3;
    std::size_t position = 0;
    bool isInTime = false;
    for (int attempt = 0; attempt < attemptsMax && !isInTime; ++attempt) {
      manager = std::make_unique<Manager>();
      for (const auto& [index, profile] : table()) {
        control("delete", {{"index", index}});
      }
      connect();
      position = log.end();
      scenario();
      isInTime = true;
      for (const std::string& message : log.messagesSince(position)) {
        isInTime = isInTime && !message.starts_with("Unable send");
      }
    }
    return position;
  }

  // An Editor is another client that edits one profile of its own, without a pause, while the
  // object lives.
  class Editor {
   public:
    explicit Editor(const std::string& socketPath)
        : client(socketPath),
          index(client.call("create", {{"apn", "edited"}})["index"]),
          thread([this] { edit(); }) {}
    ~Editor() {
      stop = true;
      thread.join();
    }
    int edits() const { return count; }

   private:
    void edit() {
      while (!stop && count < editsMax) {
        const std::string user = "user" + std::to_string(count++);
        client.call("modify", {{"index", index}, {"user", user}});
      }
    }

    // This limits the edits that the library has to catch up with when the test is done.
    static constexpr int editsMax = rounds(20'000);

    modem::ControlClient client;
    const int index;
    std::atomic<bool> stop = false;
    std::atomic<int> count = 0;
    std::thread thread;
  };
};

TEST_F(ConcurrencyTest, InitAndDestroy_WhileIndicationsStreamIn_NeverHangs) {
  connect();
  manager = std::make_unique<Manager>();
  const std::size_t before = openDescriptors();
  {
    const Editor editor(modem.socketPath());
    for (int i = 0; i < rounds(1000); ++i) {
      Manager passing;
      passing.init(i, /*useAndroidLog=*/true);
      if (i % 4 == 0) {
        passing.refresh(PDC_REFRESH_COMPLETED);
      }
      if (i % 16 == 0) {
        EXPECT_TRUE(waitUntil([&] { return control("show")["registered"] == 1; }));
      }
    }
    EXPECT_GT(editor.edits(), 0);
  }
  EXPECT_TRUE(waitUntil([&] { return control("show")["clients"] == 0; }));
  EXPECT_TRUE(waitUntil([&] { return openDescriptors() == before; }))
      << openDescriptors() << " descriptors are open, not " << before;
  connect();
  refresh();
  expectCacheEqualsTable();
}

TEST_F(ConcurrencyTest, InitAgain_WhileIndicationsStreamIn_NeverHangs) {
  connect();
  {
    const Editor editor(modem.socketPath());
    for (int i = 0; i < rounds(300); ++i) {
      manager->init(i, /*useAndroidLog=*/true);
    }
  }
  settle();
  refresh();
  expectCacheEqualsTable();
}

TEST_F(ConcurrencyTest, Drop_KeysOfTheFirstWorker_AfterASecondInit_DoesNothing) {
  connect();
  std::list<Key> keys;
  for (int i = 0; i < 8; ++i) {
    keys.push_back(add(transientProfile("apn" + std::to_string(i))));
  }
  manager->init(0, /*useAndroidLog=*/true);
  awaitRegistered();
  settle();
  control("clear-transcript");
  const std::size_t position = log.end();
  keys.clear();
  EXPECT_EQ(log.count("~ProfileKey", position), 8u);
  EXPECT_THAT(requestsSeen(), IsEmpty());
  EXPECT_EQ(table().size(), 8u);
}

TEST_F(ConcurrencyTest, Drop_KeysOfADestroyedManager_DoesNothing) {
  connect();
  Key key = add(transientProfile("ims"));
  manager.reset();
  key->registerExpirationListener([] {});
  key.reset();
  EXPECT_EQ(table().size(), 1u);
}

TEST_F(ConcurrencyTest, SixteenCallers_EveryOperationAtOnce_LoseNothing) {
  std::atomic<int> failures = 0;
  const auto work = [&](int thread) {
    const std::string own = "thread" + std::to_string(thread);
    for (int i = 0; i < rounds(40); ++i) {
      const std::string apn = own + "-" + std::to_string(i);
      const Key key = manager->addProfile(transientProfile(apn));
      const bool isRight =
          key != nullptr && manager->match(byApn(apn), key) &&
          manager->filter(byApn(apn)).size() == 1 && manager->modifyProfile(userNamed(own), key) &&
          manager->getProfile(key).value_or(ProfileParams()).getUserName() == own &&
          !manager->filter(FilterProfileParams()).empty();
      failures += isRight ? 0 : 1;
      if (i % 5 == 0) {
        failures += manager->deleteProfile(key) ? 0 : 1;
      }
    }
  };
  const std::size_t position = runInTime([&] {
    failures = 0;
    onThreads(callers, work);
  });
  EXPECT_EQ(failures, 0);
  EXPECT_THAT(table(), IsEmpty());
  settle();
  // Apart from settle's own indications, the library's own changes had announced each one.
  EXPECT_EQ(log.count("ProfileCache: updating cache due to indication!", position),
            fencesSince(position));
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(ConcurrencyTest, SixteenCallers_PersistentAndTransient_LeaveExactlyThePersistent) {
  const int each = rounds(10);
  const auto work = [&](int thread) {
    for (int i = 0; i < each; ++i) {
      const std::string apn = std::to_string(thread) + "." + std::to_string(i);
      const Key lasting = manager->addProfile(persistentProfile("lasting" + apn));
      const Key passing = manager->addProfile(transientProfile("passing" + apn));
      manager->modifyProfile(userNamed(apn), lasting);
      manager->modifyProfile(userNamed(apn), passing);
    }
  };
  runInTime([&] { onThreads(callers, work); });
  std::set<std::string> expected;
  for (int thread = 0; thread < callers; ++thread) {
    for (int i = 0; i < each; ++i) {
      const std::string apn = std::to_string(thread) + "." + std::to_string(i);
      expected.insert("lasting" + apn + " " + apn);
    }
  }
  std::set<std::string> left;
  for (const auto& [index, profile] : table()) {
    left.insert(profile.value("apn", "") + " " + profile.value("user", ""));
  }
  EXPECT_EQ(left, expected);
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(ConcurrencyTest, SixteenCallers_DropKeysOfOneProfile_DeleteItOnce) {
  connect();
  for (int round = 0; round < rounds(30); ++round) {
    std::array<Key, callers> keys;
    keys[0] = add(transientProfile("shared"));
    for (int i = 1; i < callers; ++i) {
      keys[static_cast<std::size_t>(i)] = find("shared");
    }
    onThreads(callers, [&](int i) { keys[static_cast<std::size_t>(i)].reset(); });
    EXPECT_THAT(table(), IsEmpty());
  }
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(ConcurrencyTest, SixteenCallers_WithAnEditorAndAModemThatFails_NeverHang) {
  connect();
  const Editor editor(modem.socketPath());
  control("fail", {{"message", "create-profile"}, {"error", 2}, {"count", 20}});
  control("fail", {{"message", "delete-profile"}, {"error", 2}, {"count", 20}});
  control("fail", {{"message", "profile-settings"}, {"error", 2}, {"count", 20}});
  onThreads(callers, [&](int thread) {
    for (int i = 0; i < rounds(20); ++i) {
      const Key key = manager->addProfile(transientProfile("apn" + std::to_string(thread)));
      manager->modifyProfile(userNamed(std::to_string(i)), key);
      manager->filter(FilterProfileParams());
      if (thread == 0 && i % 10 == 0) {
        manager->refresh(PDC_REFRESH_COMPLETED);
      }
    }
  });
  control("clear");
  settle();
  refresh();
  EXPECT_EQ(cache().size(), table().size());
}

TEST_F(ConcurrencyTest, InitAgain_UnderTraffic_NeitherHangsNorLosesAWorker) {
  connect();
  std::atomic<bool> stop = false;
  std::thread replacing([&] {
    for (int i = 0; i < rounds(100); ++i) {
      manager->init(i, /*useAndroidLog=*/true);
    }
    stop = true;
  });
  onThreads(callers, [&](int thread) {
    while (!stop) {
      const Key key = manager->addProfile(transientProfile("apn" + std::to_string(thread)));
      manager->modifyProfile(userNamed("user"), key);
      manager->getProfile(key);
      manager->match(FilterProfileParams(), key);
      manager->filter(FilterProfileParams());
    }
  });
  replacing.join();
  awaitRegistered();
  settle();
  EXPECT_TRUE(waitUntil([&] { return control("show")["clients"] == 1; }));
  refresh();
  expectCacheEqualsTable();
}

TEST_F(ConcurrencyTest, Refresh_UnderTraffic_NeverHangs) {
  connect();
  std::atomic<bool> stop = false;
  std::thread refreshing([&] {
    for (int i = 0; i < rounds(100); ++i) {
      manager->refresh(i % 2 == 0 ? PDC_REFRESH_STARTED : PDC_REFRESH_COMPLETED);
    }
    stop = true;
  });
  onThreads(callers, [&](int thread) {
    for (int i = 0; !stop && i < rounds(100); ++i) {
      const Key key = manager->addProfile(transientProfile("apn" + std::to_string(thread)));
      if (key != nullptr) {
        key->registerExpirationListener([] {});
        manager->deleteProfile(key);
      }
    }
  });
  refreshing.join();
  settle();
  refresh();
  expectCacheEqualsTable();
}

TEST_F(ConcurrencyTest, Dump_WithoutPauseDuringIndicationsAndOperations_IsAlwaysWhole) {
  connect();
  std::atomic<bool> stop = false;
  std::thread dumping([&] {
    while (!stop) {
      const std::vector<std::string> lines = manager->dump();
      EXPECT_EQ(lines.front(), "Cache:");
      EXPECT_THAT(lines, Contains("Pending:"));
      EXPECT_THAT(lines, Contains("Logs:"));
    }
  });
  {
    const Editor editor(modem.socketPath());
    refresh();
    onThreads(4, [&](int thread) {
      for (int i = 0; i < rounds(40); ++i) {
        const Key key = manager->addProfile(transientProfile("apn" + std::to_string(thread)));
        manager->modifyProfile(userNamed(std::to_string(i)), key);
        if (i % 10 == 0) {
          manager->refresh(PDC_REFRESH_COMPLETED);
        }
      }
    });
  }
  stop = true;
  dumping.join();
  settle();
  refresh();
  expectCacheEqualsTable();
}

TEST_F(ConcurrencyTest, Dump_WhileTheModemKeepsSilent_DoesNotWaitForIt) {
  connect();
  const Key key = add(transientProfile("ims"));
  control("fail", {{"message", "create-profile"}, {"silent", true}});
  std::atomic<bool> done = false;
  std::thread caller([&] {
    manager->addProfile(transientProfile("lost"));
    done = true;
  });
  ASSERT_TRUE(waitUntil([&] { return control("faults")["faults"].empty(); }));
  int dumps = 0;
  while (!done) {
    manager->dump();
    ++dumps;
  }
  caller.join();
  EXPECT_GT(dumps, 1);
}

TEST_F(ConcurrencyTest, InitAgain_WithARequestUnderWay_CallerGetsItsAnswer) {
  connect();
  control("fail", {{"message", "create-profile"}, {"delayMs", 300}});
  Key key;
  std::thread caller([&] { key = manager->addProfile(transientProfile("ims")); });
  ASSERT_TRUE(waitUntil([&] { return control("faults")["faults"].empty(); }));
  manager->init(0, /*useAndroidLog=*/true);
  caller.join();
  EXPECT_NE(key, nullptr);
  awaitRegistered();
  settle();
  refresh();
  expectCacheEqualsTable();
}

TEST_F(ConcurrencyTest, Writer_SwappedUnderLoggingThreads_NeverTouchesAFreedOne) {
  const TemporaryFolder folder;
  setenv("PAVO_DIAG_FILE", folder.file("diag.txt").c_str(), /*overwrite=*/1);
  connect();
  {
    const Editor editor(modem.socketPath());
    std::atomic<bool> stop = false;
    std::thread swapping([&] {
      for (int i = 0; i < rounds(200); ++i) {
        Manager other;
        other.init(0, /*useAndroidLog=*/i % 2 == 0);
      }
      stop = true;
    });
    Manager idle;
    onThreads(8, [&](int) {
      while (!stop) {
        EXPECT_FALSE(idle.getProfile(nullptr));
        EXPECT_FALSE(manager->getProfile(nullptr));
      }
    });
    swapping.join();
  }
  unsetenv("PAVO_DIAG_FILE");
}

TEST_F(ConcurrencyTest, Kill_WhileManagersComeAndGo_NeverHangs) {
  std::atomic<bool> stop = false;
  std::thread managing([&] {
    for (int i = 0; !stop; ++i) {
      Manager passing;
      passing.init(i, /*useAndroidLog=*/true);
      passing.addProfile(transientProfile("ims"));
    }
  });
  for (int i = 0; i < rounds(10); ++i) {
    modem.kill();
    modem.start();
    control("power-cycle");
  }
  stop = true;
  managing.join();
  EXPECT_TRUE(waitUntil([&] { return control("show")["clients"] == 0; }));
}

}  // namespace
}  // namespace pavo::test
