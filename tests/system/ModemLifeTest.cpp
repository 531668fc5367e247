// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The modem comes, goes and comes back.
#include <pavo/Manager.h>

#include "SystemTest.h"
#include "wds_v01.h"

#include <atomic>
#include <chrono>
#include <csignal>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ModemLifeTest : public SystemTest {
 protected:
  explicit ModemLifeTest(ModemProcessOptions options = {}) : SystemTest(std::move(options)) {}

  // Waits until the library has read the modem that came back, and compares.
  void expectReadAfterReturn(std::size_t position) {
    ASSERT_TRUE(log.waitFor("ProfileCache: onIndication < 255 ProfileReady", position));
    ASSERT_TRUE(log.waitFor("Refreshed Profiles:", position));
    expectCacheEqualsTable();
  }

  void killAndRestart() {
    const std::size_t position = log.end();
    modem.kill();
    modem.start();
    expectReadAfterReturn(position);
  }
};

class AbsentModemTest : public ModemLifeTest {
 protected:
  AbsentModemTest()
      : ModemLifeTest({.profiles = {{"profiles", {{{"apn", "internet"}}, {{"apn", "ims"}}}}},
                       .arguments = {},
                       .startsAtOnce = false}) {}

  // Like many a client at boot, the test looks for the modem before it is there. Otherwise the
  // library may look only after the modem has come, and then no client of the process has seen an
  // absence.
  static void missTheModem() {
    ovix_service_info info{};
    EXPECT_NE(ovix_client_get_any_service(wds_get_service_object_internal_v01(1, 257, 6), &info),
              OVIX_CLIENT_NO_ERROR);
  }
};

TEST_F(AbsentModemTest, EveryOperation_WithoutAModem_AnswersEmptyAtOnce) {
  manager->init(0, /*useAndroidLog=*/true);
  EXPECT_EQ(manager->addProfile(transientProfile("ims")), nullptr);
  EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
  EXPECT_FALSE(manager->match(FilterProfileParams(), nullptr));
  refresh();
  EXPECT_THAT(keptLogFrom("Manager::addProfile >"),
              Contains("Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message"));
}

TEST_F(AbsentModemTest, Refresh_WithoutAModem_LogsNoFailure) {
  manager->init(0, /*useAndroidLog=*/true);
  ASSERT_TRUE(log.waitFor("PAVO thread started"));
  refresh();
  EXPECT_THAT(keptLogFrom("Manager::refresh >"),
              ElementsAre(testing::StartsWith("Manager::refresh > Refresh"),
                          "Refreshed Profiles:", "Manager::refresh < Refresh Success"));
}

TEST_F(AbsentModemTest, Init_ModemComesLater_ReadsItsProfilesUnasked) {
  manager->init(0, /*useAndroidLog=*/true);
  EXPECT_EQ(manager->addProfile(transientProfile("ims")), nullptr);
  missTheModem();
  const std::size_t position = log.end();
  modem.start();
  expectReadAfterReturn(position);
  EXPECT_EQ(cache().size(), 2u);
}

TEST_F(AbsentModemTest, Destroy_WhileWaitingForTheModem_EndsAtOnce) {
  for (int i = 0; i < rounds(200); ++i) {
    Manager waiting;
    waiting.init(i, /*useAndroidLog=*/true);
  }
  manager->init(0, /*useAndroidLog=*/true);
  missTheModem();
  const std::size_t position = log.end();
  modem.start();
  expectReadAfterReturn(position);
}

class PresentModemTest : public ModemLifeTest {
 protected:
  PresentModemTest() { connect(); }
};

TEST_F(PresentModemTest, Kill_AndRestart_KeepsThePersistentProfilesOnly) {
  const Key lasting = add(persistentProfile("lasting"));
  const Key passing = add(transientProfile("passing"));
  killAndRestart();
  EXPECT_EQ(table().size(), 1u);
  EXPECT_NE(find("lasting"), nullptr);
}

TEST_F(PresentModemTest, Kill_AndRestart_MakesEarlierKeysUnknownAndRunsTheirListeners) {
  const Key key = add(persistentProfile("lasting"));
  std::atomic<int> runs = 0;
  key->registerExpirationListener([&runs] { ++runs; });
  killAndRestart();
  EXPECT_EQ(runs, 1);
  EXPECT_FALSE(manager->getProfile(key));
}

TEST_F(PresentModemTest, Kill_AndRestart_RegistersAgainInTheSameOrder) {
  killAndRestart();
  EXPECT_THAT(requestsSeen(), ElementsAre("bind-subscription", "indication-register",
                                          "configure-events", "profile-list"));
}

TEST_F(PresentModemTest, Kill_WithoutRestart_KeepsTheCacheAndRefusesChanges) {
  const Key key = add(persistentProfile("lasting"));
  settle();
  const std::size_t position = log.end();
  modem.kill();
  ASSERT_TRUE(log.waitFor("Handling modem down", position));
  EXPECT_EQ(manager->addProfile(transientProfile("new")), nullptr);
  EXPECT_FALSE(manager->deleteProfile(key));
  ASSERT_TRUE(manager->getProfile(key));
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "lasting");
}

TEST_F(PresentModemTest, Kill_WithoutRestart_RefreshEmptiesTheCacheSilently) {
  const Key key = add(persistentProfile("lasting"));
  settle();
  const std::size_t position = log.end();
  modem.kill();
  ASSERT_TRUE(log.waitFor("Handling modem down", position));
  refresh();
  EXPECT_THAT(cache(), IsEmpty());
}

TEST_F(PresentModemTest, Kill_WithoutRestart_DroppingKeysAndManagerEnds) {
  Key key = add(transientProfile("passing"));
  modem.kill();
  key.reset();
  manager.reset();
}

TEST_F(PresentModemTest, Terminate_AndRestart_EndsCleanlyAndIsReadAgain) {
  const Key key = add(persistentProfile("lasting"));
  const std::size_t position = log.end();
  EXPECT_EQ(modem.terminate(), (ChildProcess::Exit{.code = 0, .signal = 0}));
  modem.start();
  expectReadAfterReturn(position);
  EXPECT_EQ(cache().size(), 1u);
}

TEST_F(PresentModemTest, PowerCycle_ByTheModemItself_IsReadAgain) {
  const Key lasting = add(persistentProfile("lasting"));
  const Key passing = add(transientProfile("passing"));
  const std::size_t position = log.end();
  control("power-cycle");
  expectReadAfterReturn(position);
  EXPECT_EQ(cache().size(), 1u);
}

TEST_F(PresentModemTest, PowerCycle_WithTimeOff_IsReadAgain) {
  const Key lasting = add(persistentProfile("lasting"));
  const std::size_t position = log.end();
  control("power-cycle", {{"offMs", 300}});
  expectReadAfterReturn(position);
  EXPECT_EQ(cache().size(), 1u);
}

TEST_F(PresentModemTest, PowerCycle_OverAndOver_AlwaysEndsInAgreement) {
  const Key lasting = add(persistentProfile("lasting"));
  for (int i = 0; i < rounds(30); ++i) {
    const std::size_t position = log.end();
    control("power-cycle", {{"offMs", i % 3}});
    expectReadAfterReturn(position);
    const Key key = add(transientProfile("passing"));
    expectCacheEqualsTable();
  }
}

TEST_F(PresentModemTest, Kill_OverAndOver_AlwaysEndsInAgreement) {
  const Key first = add(persistentProfile("lasting0"));
  const int count = rounds(20);
  for (int i = 1; i <= count; ++i) {
    killAndRestart();
    const Key key = add(persistentProfile("lasting" + std::to_string(i)));
    expectCacheEqualsTable();
    if (key != nullptr && i % 2 == 0) {
      control("delete", {{"index", key->getProfileId()}});
    }
  }
}

TEST_F(PresentModemTest, PowerCycles_WithoutPause_EndInAgreement) {
  const Key lasting = add(persistentProfile("lasting"));
  std::size_t position = 0;
  for (int i = 0; i < rounds(100); ++i) {
    position = log.end();
    control("power-cycle");
  }
  expectReadAfterReturn(position);
  EXPECT_EQ(cache().size(), 1u);
}

TEST_F(PresentModemTest, Kill_WhileTheModemOwesAnAnswer_EndsTheOperationBeforeItsTimeout) {
  control("fail", {{"message", "create-profile"}, {"delayMs", 60'000}});
  const auto start = std::chrono::steady_clock::now();
  Key key;
  std::thread caller([&] { key = manager->addProfile(transientProfile("ims")); });
  ASSERT_TRUE(waitUntil([&] { return control("faults")["faults"].empty(); }));
  const std::size_t position = log.end();
  modem.kill();
  caller.join();
  EXPECT_LT(std::chrono::steady_clock::now() - start, patience());
  EXPECT_EQ(key, nullptr);
  modem.start();
  expectReadAfterReturn(position);
}

TEST_F(PresentModemTest, Kill_InTheMiddleOfARefresh_IsReadAgain) {
  for (int i = 0; i < 5; ++i) {
    control("create", {{"apn", "apn" + std::to_string(i)}, {"persistent", true}});
  }
  settle();
  control("fail", {{"message", "profile-settings"}, {"delayMs", 60'000}});
  std::thread caller([&] { refresh(); });
  ASSERT_TRUE(waitUntil([&] { return control("faults")["faults"].empty(); }));
  const std::size_t position = log.end();
  modem.kill();
  caller.join();
  modem.start();
  expectReadAfterReturn(position);
  EXPECT_EQ(cache().size(), 5u);
}

TEST_F(PresentModemTest, PowerCycle_WithOperationsUnderWay_EndsInAgreement) {
  for (int i = 0; i < rounds(20); ++i) {
    std::atomic<bool> stop = false;
    std::thread caller([&] {
      while (!stop) {
        const Key key = manager->addProfile(transientProfile("ims"));
        manager->getProfile(key);
      }
    });
    const std::size_t position = log.end();
    control("power-cycle");
    EXPECT_TRUE(log.waitFor("ProfileCache: onIndication < 255 ProfileReady", position));
    stop = true;
    caller.join();
  }
  settle();
  // Keys from the time of the power cycles are unknown, so their profiles stay until they are
  // deleted.
  refresh();
  expectCacheEqualsTable();
}

TEST_F(PresentModemTest, Init_Again_ForgetsTheFirstWorkersKeysAndConnection) {
  const Key key = add(transientProfile("ims"));
  manager->init(1, /*useAndroidLog=*/true);
  EXPECT_FALSE(manager->getProfile(key));
  EXPECT_FALSE(manager->deleteProfile(key));
  EXPECT_TRUE(waitUntil([&] {
    const json shown = control("show");
    return shown["clients"] == 1 && shown["registered"] == 1 &&
           shown["clientList"][0]["subscription"] == 1;
  })) << control("show").dump(2);
  EXPECT_THAT(cache(), IsEmpty());
  refresh();
  expectCacheEqualsTable();
}

TEST_F(PresentModemTest, Destroy_Manager_EndsItsConnection) {
  manager.reset();
  EXPECT_TRUE(waitUntil([&] { return control("show")["clients"] == 0; }));
}

TEST_F(PresentModemTest, Stop_ModemProcessFrozen_TimesOutAndGoesOnWhenItThaws) {
  modem.process().sendSignal(SIGSTOP);
  EXPECT_EQ(manager->addProfile(transientProfile("frozen")), nullptr);
  modem.process().sendSignal(SIGCONT);
  // The modem carries out the requests that it was sent before it froze, and indicates the change.
  ASSERT_TRUE(waitUntil([&] { return table().size() == 1; }));
  expectCacheEqualsTable();
}

}  // namespace
}  // namespace pavo::test
