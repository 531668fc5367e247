// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// In these tests the service is missing, cannot be opened, or comes and goes.
#include "FaultTest.h"

#include <atomic>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::IsEmpty;

class ServiceFaultTest : public FaultTest {
 protected:
  void init() { manager->init(0, /*useAndroidLog=*/true); }
  void failNext(const char* occasion, const json& effect, int count = 1) {
    setFault(modem, Fault::onOccasion(occasion).count(count).with(effect));
  }
  // Expects an empty answer of every operation, on a library without a modem.
  void expectEmptyAnswers() {
    EXPECT_EQ(manager->addProfile(transientProfile("new")), nullptr);
    EXPECT_THAT(manager->filter(FilterProfileParams()), IsEmpty());
    refresh();
    EXPECT_THAT(cache(), IsEmpty());
  }
};

TEST_F(ServiceFaultTest, Object_Missing_IsLoggedAndEveryOperationAnswers) {
  failNext("object", {{"refuse", -2}});
  init();
  EXPECT_EQ(log.count("cannot obtain service obj, fatal error"), 1u);
  expectEmptyAnswers();
  EXPECT_EQ(control("show")["clients"], 0);
  recover(/*comesBack=*/false);
}

TEST_F(ServiceFaultTest, Object_NotAnswered_IsTakenForThere) {
  failNext("object", {{"silent", true}});
  init();
  recover();
}

TEST_F(ServiceFaultTest, Open_Refused_IsLoggedWithItsCode) {
  failNext("open", {{"refuse", -7}});
  init();
  ASSERT_TRUE(log.waitFor("ovix_client_init error. ErrCode : -7"));
  expectEmptyAnswers();
  recover(/*comesBack=*/false);
}

TEST_F(ServiceFaultTest, Open_NotAnswered_IsLoggedAfterASecond) {
  failNext("open", {{"silent", true}});
  init();
  ASSERT_TRUE(log.waitFor("ovix_client_init error. ErrCode : -2"));
  expectEmptyAnswers();
  recover(/*comesBack=*/false);
}

TEST_F(ServiceFaultTest, Find_Refused_IsLoggedAndTriedAgainWhenTheServiceReturns) {
  failNext("find", {{"refuse", 77}});
  init();
  ASSERT_TRUE(log.waitFor("error get service."));
  expectEmptyAnswers();
  EXPECT_EQ(control("show")["registered"], 0);
  control("power-cycle");
  recover();
}

TEST_F(ServiceFaultTest, Watch_RefusedAFewTimes_IsWaitedFor) {
  failNext("watch", {{"refuse", -2}}, /*count=*/5);
  init();
  awaitRegistered();
  EXPECT_TRUE(areFaultsUsedUp(modem));
  // The library has seen an absence, so the modem indicates to it when it is ready.
  ASSERT_TRUE(log.waitFor("ProfileCache: onIndication < 255 ProfileReady"));
  recover();
}

TEST_F(ServiceFaultTest, EveryEffect_OnEveryOccasion_IsSurvived) {
  for (const std::string& occasion : faultOccasions()) {
    for (const FaultEffect& effect : effectsOnOccasion()) {
      SCOPED_TRACE(occasion);
      SCOPED_TRACE(effect);
      setFault(modem, Fault::onOccasion(occasion).with(effect.args));
      init();
      // If the library did not reach this fault, the next start uses it up.
      EXPECT_TRUE(waitUntil([&] { return areFaultsUsedUp(modem); }));
      manager->addProfile(transientProfile("new"));
      refresh();
      recover(/*comesBack=*/false);
      deleteOthers();
      manager = std::make_unique<Manager>();
    }
  }
}

TEST_F(ServiceFaultTest, RestartWithinAMillisecond_AtEveryRequest_EndsInAgreement) {
  connect();
  const Key lasting = add(persistentProfile("lasting"));
  for (int nth = 1; nth <= 8; ++nth) {
    for (const char* moment : {"before", "unanswered", "after"}) {
      SCOPED_TRACE(nth);
      SCOPED_TRACE(moment);
      setFault(modem, Fault::onMessage("any").nth(nth).with({{"power", moment}}));
      const Key passing = manager->addProfile(transientProfile("passing"));
      refresh();
      refresh();
      manager->deleteProfile(passing);
      recover();
    }
  }
  EXPECT_NE(find("lasting"), nullptr);
}

// The modem comes and goes 100 times in a second while callers continue.
TEST_F(ServiceFaultTest, HundredTimesASecond_CallersGoOn_AllAreAnswered) {
  connect();
  const Key lasting = add(persistentProfile("lasting"));
  const std::uint64_t boot = control("show")["boot"];
  constexpr int times = 100;
  std::atomic<bool> isOver = false;
  std::atomic<int> answered = 0;
  std::thread cycles([&] {
    control("power-cycle", {{"offMs", 5}, {"onMs", 5}, {"times", times}});
    const auto last = static_cast<std::uint32_t>(boot + times);
    EXPECT_TRUE(waitUntil([&] { return control("show")["boot"] == last; }));
    isOver = true;
  });
  onThreads(4, [&](int thread) {
    while (!isOver) {
      const Key key = manager->addProfile(transientProfile("apn" + std::to_string(thread)));
      manager->filter(FilterProfileParams());
      ++answered;
    }
  });
  cycles.join();
  EXPECT_GT(answered, 4);
  recover();
  EXPECT_NE(find("lasting"), nullptr);
}

}  // namespace
}  // namespace pavo::test
