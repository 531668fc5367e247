// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Each test runs a scenario in the life of a data-call service with a fault. The fault hits the nth
// message to the modem, the nth indication from it or the nth hello of a client. Every effect is
// tried for n = 1, 2, 3, ... until the scenario runs without the fault taking effect. Every caller
// must be answered. When the modem is well again, a refresh must make the library's view equal to
// the modem's table.
#include <pavo/Manager.h>
#include <pavo/Util.h>

#include "FaultEffects.h"
#include "ProcessWideManager.h"
#include "Scenarios.h"
#include "Stress.h"
#include "SystemTest.h"

#include <algorithm>
#include <iostream>
#include <set>
#include <span>

namespace pavo::test {
namespace {

using nlohmann::json;
using Effects = std::vector<FaultEffect>;

// Victims are the subjects on which the faults take effect, with the effects to try.
struct Victims {
  const char* kind;  // the kind's name in the modem's transcript
  Fault first;
  Effects effects;
  // If true, the subjects occur at the start of the library, and a fault can end the start. Then
  // the library has to be initialised again.
  bool areOfTheStart = false;
};

// This effect makes the modem go and come twenty times, off for 5 ms and on for 5 ms each time.
FaultEffect comesAndGoes() {
  return {"comes and goes",
          {{"power", "before"}, {"offMs", 5}, {"onMs", 5}, {"times", 20}},
          /*isInTime=*/false};
}

// Returns the effects with a long wait, or the others.
Effects waiting(bool areLong, Effects effects) {
  effects.push_back(comesAndGoes());
  std::erase_if(effects, [&](const FaultEffect& one) { return one.isInTime == areLong; });
  return effects;
}

// Returns the effects that a scenario has to try: all of them in an ordinary build. A sanitizer
// makes a scenario several times as long, so there each scenario tries about a third, and the next
// one another third.
Effects shareOf(const Scenario& scenario, const Effects& effects) {
  const auto all = std::span(scenarios());
  const auto isThis = [&](const Scenario& one) { return one.name == scenario.name; };
  const auto number = std::ranges::find_if(all, isThis) - all.begin();
  const std::size_t stride = std::min<std::size_t>(sanitizerFactor > 1 ? 3 : 1, effects.size());
  Effects share;
  for (std::size_t i = 0; i < effects.size(); ++i) {
    if (i % stride == static_cast<std::size_t>(number) % stride) {
      share.push_back(effects[i]);
    }
  }
  return share;
}

class SweepTest : public SystemTest, public testing::WithParamInterface<Scenario> {
 protected:
  SweepTest() { manager = processWideManager(); }

  // Runs the scenario once without a fault, then with each effect.
  void sweep(const Victims& victims) {
    const Scenario& scenario = GetParam();
    SCOPED_TRACE(scenario.name);
    EXPECT_FALSE(perform(victims, FaultEffect{}, /*nth=*/1));
    EXPECT_EQ(apns(), scenario.expected);
    const int there = seen;
    int met = 0;
    const Effects effects = shareOf(scenario, victims.effects);
    for (const FaultEffect& effect : effects) {
      if (!HasFailure()) {
        SCOPED_TRACE(effect);
        met += sweepEffect(victims, effect, there);
      }
    }
    std::cout << "swept " << scenario.name << ": " << effects.size() << " effects on " << there
              << " " << victims.kind << "s and more, " << met << " faults, " << runs << " runs\n";
    EXPECT_GE(met, scenario.racesWithTheModem ? std::min(there, 1) : there);
  }

 private:
  // Returns how often the fault took effect. It tries each n until the fault finds no subject any
  // more, and at least as many as there are subjects without a fault. A run that is a race may have
  // fewer subjects.
  int sweepEffect(const Victims& victims, const FaultEffect& effect, int atLeast) {
    int met = 0;
    for (int nth = 1; !HasFailure(); ++nth) {
      SCOPED_TRACE(std::string(victims.kind) + " " + std::to_string(nth));
      if (perform(victims, effect, nth)) {
        ++met;
      } else if (nth > atLeast) {
        break;
      }
    }
    return met;
  }

  // Runs the scenario, and returns whether the fault took effect.
  bool perform(const Victims& victims, const FaultEffect& effect, int nth) {
    const Scenario& scenario = GetParam();
    const bool isFaulted = !effect.args.is_null();
    ++runs;
    prepare(scenario);
    if (isFaulted) {
      setFault(modem, Fault(victims.first).nth(nth).with(effect.args));
    }
    if (scenario.startsWithoutModem) {
      // The modem stays off until the scenario switches it on.
      control("power-cycle", {{"offMs", 3'600'000}});
    }
    Util util;
    const Stage stage = {*manager, util, modem, isFaulted};
    const int before = countOf(victims.kind);
    if (scenario.startsWithoutModem || victims.areOfTheStart) {
      manager->init(0, /*useAndroidLog=*/true);
    }
    if (!scenario.startsWithoutModem && victims.areOfTheStart) {
      // The round trip makes the modem handle the end of the former connection. No other end
      // follows.
      control("show");
      stage.awaitModem();
      refresh();
    }
    scenario.run(stage);
    // The modem may still be on its way back.
    stage.awaitModem();
    seen = countOf(victims.kind) - before;
    const bool isMet = isFaulted && areFaultsUsedUp(modem);
    recover(victims, effect, isMet);
    return isMet;
  }

  void prepare(const Scenario& scenario) {
    for (const auto& [index, settings] : table()) {
      control("delete", {{"index", index}});
    }
    for (const json& settings : scenario.profiles) {
      control("create", settings);
    }
    control("clear-transcript");
    start();
    settle();
    refresh();
    log.clear();
  }

  // Makes the modem well again, and waits for its delayed messages so that they do not come in
  // between.
  void recover(const Victims& victims, const FaultEffect& effect, bool isMet) {
    clearFaults(modem);
    if (effect.name == comesAndGoes().name) {
      awaitPower();
    }
    ASSERT_TRUE(waitUntil([&] { return control("show")["on"] == true; }));
    if (isMet && (effect.args.contains("delayMs") || effect.args.contains("lateMs"))) {
      // A power cycle drops delayed messages, so wait for them first.
      waitUntil([&] { return isNothingOwed(effect); }, lateAnswerPatience);
    }
    // A failed registration is not repeated before the modem comes again.
    if (!victims.areOfTheStart && !isRegistered(registrationPatience)) {
      control("power-cycle");
    }
    if (victims.areOfTheStart || !isRegistered(startPatience)) {
      start();
    }
    settle();
    refresh();
    expectCacheEqualsTable();
  }

  // Repeats the start when it fails: on a busy machine the modem's answer may come too late.
  void start() {
    ASSERT_TRUE(waitUntil([&] {
      manager->init(0, /*useAndroidLog=*/true);
      return isRegistered(startPatience);
    }));
  }

  bool isRegistered(std::chrono::milliseconds limit) {
    return waitUntil([&] { return control("show")["registered"] == 1; }, limit);
  }

  // Waits until the power has stayed on over many polls. Each poll shows that the modem has run,
  // however busy the machine is, and could have lost its power.
  void awaitPower() {
    json before;
    int same = 0;
    EXPECT_TRUE(waitUntil([&] {
      json now = control("show");
      now.erase("profiles");
      same = now == before && now["on"] == true ? same + 1 : 0;
      before = std::move(now);
      return same == looks;
    }));
  }

  bool isNothingOwed(const FaultEffect& effect) {
    const std::vector<json> entries = transcript();
    const auto isLate = [](const json& entry) {
      return entry["direction"] == "out" && entry.value("fault", "") == "lateMs";
    };
    return countOf("request") <= countOf("response") &&
           (effect.args.contains("delayMs") || std::any_of(entries.begin(), entries.end(), isLate));
  }

  int countOf(const std::string& kind) {
    const std::vector<json> entries = transcript();
    return static_cast<int>(std::count_if(entries.begin(), entries.end(), [&](const json& entry) {
      return entry["kind"] == kind && (kind != "hello" || entry["direction"] == "in");
    }));
  }

  std::multiset<std::string> apns() {
    std::multiset<std::string> names;
    for (const auto& [index, settings] : table()) {
      names.insert(settings.value("apn", ""));
    }
    return names;
  }

  static constexpr int looks = 50;
  static constexpr std::chrono::milliseconds registrationPatience{500};
  static constexpr std::chrono::milliseconds startPatience{4000};
  static constexpr std::chrono::milliseconds lateAnswerPatience{2000};

  int seen = 0;  // the number of subjects in the last run
  int runs = 0;
};

// Each of these suites has a process of its own.
class InTime : public SweepTest {};
class TimingOut : public SweepTest {};
class Indications : public SweepTest {};
class Service : public SweepTest {};
class ServiceTimingOut : public SweepTest {};

std::string nameOf(const testing::TestParamInfo<Scenario>& info) {
  return std::to_string(info.index);
}

TEST_P(InTime, EveryMessage_FailsInEveryWay_IsSurvived) {
  sweep({"request", Fault::onMessage("any"), waiting(false, effectsOnMessage("any"))});
}

TEST_P(TimingOut, EveryMessage_FailsInEveryWay_IsSurvived) {
  sweep({"request", Fault::onMessage("any"), waiting(true, effectsOnMessage("any"))});
}

TEST_P(Indications, EveryIndication_FailsInEveryWay_IsSurvived) {
  sweep({"indication", Fault::onIndication("any"), effectsOnIndication()});
}

TEST_P(Service, EveryoneWhoAsksForIt_IsFailedInEveryWay_IsSurvived) {
  sweep({"hello", Fault::onOccasion("any"), waiting(false, effectsOnOccasion()), true});
}

TEST_P(ServiceTimingOut, EveryoneWhoAsksForIt_IsFailedInEveryWay_IsSurvived) {
  sweep({"hello", Fault::onOccasion("any"), waiting(true, effectsOnOccasion()), true});
}

INSTANTIATE_TEST_SUITE_P(Scenarios, InTime, testing::ValuesIn(scenarios()), nameOf);
INSTANTIATE_TEST_SUITE_P(Scenarios, TimingOut, testing::ValuesIn(scenarios()), nameOf);
INSTANTIATE_TEST_SUITE_P(Scenarios, Indications, testing::ValuesIn(scenarios()), nameOf);
INSTANTIATE_TEST_SUITE_P(Scenarios, Service, testing::ValuesIn(scenarios()), nameOf);
INSTANTIATE_TEST_SUITE_P(Scenarios, ServiceTimingOut, testing::ValuesIn(scenarios()), nameOf);

}  // namespace
}  // namespace pavo::test
