// Scenarios in the life of a data-call service. In each the nth message to the modem fails in every
// way there is, for n = 1, 2, 3, ... until the scenario runs clean. Every caller is answered; and
// when the modem is well again, a refresh makes the library know what the modem knows.
#include <pavo/Manager.h>
#include <pavo/Util.h>

#include <algorithm>
#include <set>

#include "FaultEffects.h"
#include "ProcessWideManager.h"
#include "Scenarios.h"
#include "SystemTest.h"

namespace pavo::test {
namespace {

using nlohmann::json;

class SweepTest : public SystemTest {
 protected:
  SweepTest() { manager = processWideManager(); }

  // Once without a fault, then with each.
  void sweep(const Scenario& scenario, bool isInTime) {
    SCOPED_TRACE(scenario.name);
    EXPECT_FALSE(perform(scenario, FaultEffect{}, /*nth=*/1));
    EXPECT_EQ(apns(), scenario.expected);
    int met = 0;
    for (const FaultEffect& effect : effectsOnMessage("any")) {
      if (effect.isInTime == isInTime && !HasFailure()) {
        SCOPED_TRACE(effect);
        met += sweepEffect(scenario, effect);
      }
    }
    EXPECT_GT(met, 3);
  }

 private:
  // How many messages there were to fail.
  int sweepEffect(const Scenario& scenario, const FaultEffect& effect) {
    for (int nth = 1; !HasFailure(); ++nth) {
      SCOPED_TRACE("message " + std::to_string(nth));
      if (!perform(scenario, effect, nth)) {
        return nth - 1;
      }
    }
    return 0;
  }

  // Whether the fault has met a message.
  bool perform(const Scenario& scenario, const FaultEffect& effect, int nth) {
    prepare(scenario, /*isConnected=*/!scenario.startsWithoutModem);
    if (!effect.args.is_null()) {
      setFault(modem, Fault::onMessage("any").nth(nth).with(effect.args));
    }
    if (scenario.startsWithoutModem) {
      // Until the scenario switches it on.
      control("power-cycle", {{"offMs", 3'600'000}});
      manager->init(0, /*useAndroidLog=*/true);
    }
    {
      Util util;
      scenario.run({*manager, util, modem, /*isFaulted=*/!effect.args.is_null()});
    }
    const bool isMet = !effect.args.is_null() && areFaultsUsedUp(modem);
    recover(effect);
    return isMet;
  }

  void prepare(const Scenario& scenario, bool isConnected) {
    for (const auto& [index, settings] : table()) {
      control("delete", {{"index", index}});
    }
    for (const json& settings : scenario.profiles) {
      control("create", settings);
    }
    control("clear-transcript");
    manager->init(0, /*useAndroidLog=*/true);
    awaitRegistered();
    settle();
    if (isConnected) {
      refresh();
    }
    log.clear();
  }

  // The modem is well again; what it still owes is not to come in between.
  void recover(const FaultEffect& effect) {
    clearFaults(modem);
    ASSERT_TRUE(waitUntil([&] { return control("show")["on"] == true; }));
    if (effect.args.contains("delayMs") || effect.args.contains("lateMs")) {
      // A power cycle forgets what was to be taken up later.
      waitUntil([&] { return areAllAnswered(); }, lateAnswerPatience);
    }
    // A registration that failed is not repeated before the modem comes again.
    if (!waitUntil([&] { return control("show")["registered"] == 1; }, registrationPatience)) {
      control("power-cycle");
    }
    awaitRegistered();
    settle();
    refresh();
    expectCacheEqualsTable();
  }

  bool areAllAnswered() {
    const std::vector<json> entries = transcript();
    const auto countOf = [&entries](const char* kind) {
      return std::count_if(entries.begin(), entries.end(),
                           [kind](const json& entry) { return entry["kind"] == kind; });
    };
    return countOf("request") <= countOf("response");
  }

  std::multiset<std::string> apns() {
    std::multiset<std::string> names;
    for (const auto& [index, settings] : table()) {
      names.insert(settings.value("apn", ""));
    }
    return names;
  }

  static constexpr std::chrono::milliseconds registrationPatience{500};
  static constexpr std::chrono::milliseconds lateAnswerPatience{2000};
};

class InTime : public SweepTest, public testing::WithParamInterface<Scenario> {};
class TimingOut : public SweepTest, public testing::WithParamInterface<Scenario> {};

std::string nameOf(const testing::TestParamInfo<Scenario>& info) {
  return std::to_string(info.index);
}

TEST_P(InTime, EveryMessage_FailsInEveryWay_IsSurvived) { sweep(GetParam(), /*isInTime=*/true); }

TEST_P(TimingOut, EveryMessage_FailsInEveryWay_IsSurvived) {
  sweep(GetParam(), /*isInTime=*/false);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, InTime, testing::ValuesIn(scenarios()), nameOf);
INSTANTIATE_TEST_SUITE_P(Scenarios, TimingOut, testing::ValuesIn(scenarios()), nameOf);

}  // namespace
}  // namespace pavo::test
