// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests apply every effect that a fault can have to every indication.
#include "FaultTest.h"

#include <algorithm>
#include <map>

namespace pavo::test {
namespace {

using nlohmann::json;

const std::string undecodable = "Unable to decode the nr status ind message";
const std::string seen = "ProfileCache: onIndication < ";

// Returns the library's log line for an indication of this event and index on which the effect
// acts.
std::string lineOf(const std::string& effect, const std::string& event, int index) {
  static const std::map<std::string, std::string> fixed = {
      {"the valid flag down", "Profile changed ind TLV is not valid"},
      {"of an unknown message", "Unknown message ID 169 received"},
      {"cut to nothing", "The ind_cb_data/ind_buf is null or ind_buf_len is 0"},
      {"cut inside a field's header", undecodable},
      {"cut inside a value", undecodable},
      {"noise", undecodable},
      {"a field twice", undecodable},
      {"a field that leaves the message", undecodable},
      {"a field too wide", undecodable},
      {"power lost before", "Handling modem down"},
      {"power lost after", "Handling modem down"},
      {"a restart before", "Handling modem down"},
      {"a restart after", "Handling modem down"},
  };
  static const std::map<std::string, std::string> names = {
      {"create", "Create"},
      {"delete", "Delete"},
      {"modify", "Modify"},
      {"subscription-change", "SubscriptionChange"},
      {"ready", "ProfileReady"}};
  if (const auto found = fixed.find(effect); found != fixed.end()) {
    return found->second;
  }
  if (effect.starts_with("event ")) {
    return seen + std::to_string(index) + " ProfileReady";
  }
  return seen + std::to_string(effect == "for an unknown index" ? 200 : index) + " " +
         names.at(event);
}

class IndicationFaultTest : public FaultTest, public testing::WithParamInterface<std::string> {
 protected:
  IndicationFaultTest() {
    connect();
    refresh();
  }

  // Makes the modem send the indication. Returns the index that the indication is for.
  int raise(const std::string& event) {
    if (event == "create") {
      return control("create", {{"apn", "operator"}})["index"];
    }
    if (event == "modify") {
      control("modify", {{"index", ownIndex}, {"user", "user" + std::to_string(++changes)}});
      return ownIndex;
    }
    if (event == "delete") {
      const int index = doomed;
      control("delete", {{"index", index}});
      return index;
    }
    control("indicate", {{"event", event == "ready" ? 5 : 4}, {"index", 255}});
    return 255;
  }

  void meet(const std::string& event, const FaultEffect& effect) {
    doomed = event == "delete" ? control("create", {{"apn", "doomed"}})["index"].get<int>() : 0;
    settle();
    const std::size_t position = log.end();
    setFault(modem, Fault::onIndication(event).with(effect.args));
    const int index = raise(event);
    EXPECT_TRUE(areFaultsUsedUp(modem));
    clearFaults(modem);
    if (effect.name == "lost") {
      settle();
      EXPECT_EQ(log.count(lineOf(effect.name, event, index), position), 0u);
    } else {
      EXPECT_TRUE(log.waitFor(lineOf(effect.name, event, index), position));
    }
    recover();
    deleteOthers();
  }

  int changes = 0;
  int doomed = 0;
};

TEST_P(IndicationFaultTest, EveryEffect_OnTheIndication_IsSurvived) {
  for (const FaultEffect& effect : effectsOnIndication()) {
    SCOPED_TRACE(effect);
    meet(GetParam(), effect);
  }
}

INSTANTIATE_TEST_SUITE_P(Events, IndicationFaultTest, testing::ValuesIn(faultIndications()));

class OwnIndicationFaultTest : public FaultTest {
 protected:
  OwnIndicationFaultTest() {
    connect();
    refresh();
  }
};

// This test covers the indications that the library expects of its own edits.
TEST_F(OwnIndicationFaultTest, EveryEffect_OnWhatAnAddBringsAbout_IsSurvived) {
  for (const char* event : {"create", "modify"}) {
    for (const FaultEffect& effect : effectsOnIndication()) {
      SCOPED_TRACE(event);
      SCOPED_TRACE(effect);
      setFault(modem, Fault::onIndication(event).with(effect.args));
      const Key key = manager->addProfile(persistentProfile("new"));
      EXPECT_NE(key, nullptr);
      recover();
      deleteOthers();
    }
  }
}

TEST_F(OwnIndicationFaultTest, BeforeTheAnswer_OfAnAdd_LeavesOneEntryAfterARefresh) {
  setFault(modem, Fault::onIndication("create").with({{"early", true}}));
  const std::size_t position = log.end();
  const Key key = add(transientProfile("new"));
  settle();
  EXPECT_EQ(log.count("ProfileCache: onIndication < 2 Create", position), 1u);
  recover();
}

TEST_F(OwnIndicationFaultTest, Doubled_TheSecondOne_ReadsTheProfileAgain) {
  setFault(modem, Fault::onIndication("modify").with({{"doubled", true}}));
  const Key key = add(transientProfile("new"));
  settle();
  control("clear-transcript");
  const std::size_t position = log.end();
  setFault(modem, Fault::onIndication("modify").with({{"doubled", true}}));
  ModifyProfileParams change;
  change.setUserName("someone");
  EXPECT_TRUE(manager->modifyProfile(change, key));
  settle();
  EXPECT_EQ(log.count("ProfileCache: pending transaction confirmed", position), 1u);
  EXPECT_EQ(log.count("ProfileCache: updating cache due to indication!", position),
            1 + fencesSince(position))
      << "the second modify and the fence";
  expectCacheEqualsTable();
}

}  // namespace
}  // namespace pavo::test
