// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests apply every effect that a fault can have to every message that the library sends.
#include "FaultTest.h"

#include <algorithm>
#include <atomic>
#include <set>

namespace pavo::test {
namespace {

// These are the request's lines in the library's log.
struct ResultLines {
  const char* message;
  const char* done;
  const char* failed;
};

constexpr ResultLines allLines[] = {
    {"bind-subscription", "OvixWdsProxy bind register request successful!",
     "Unable send bind req message"},
    {"indication-register", "OvixWdsProxy indication register request successful!",
     "Unable send indication req message"},
    {"configure-events", "OvixWdsProxy config register request successful!",
     "Unable send config req message"},
    {"create-profile", "OvixWdsProxy OVIX_WDS_CREATE_PROFILE_REQ_V01 request successful!",
     "Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message"},
    {"modify-profile", "OvixWdsProxy OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 request successful!",
     "Unable send OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 message"},
    {"delete-profile", "OvixWdsProxy OVIX_WDS_DELETE_PROFILE_REQ_V01 request successful!",
     "Unable send OVIX_WDS_DELETE_PROFILE_REQ_V01 message"},
    {"profile-list", "OvixWdsProxy OVIX_WDS_GET_PROFILE_LIST_REQ_V01 request successful!",
     "Unable send OVIX_WDS_GET_PROFILE_LIST_REQ_V01 message"},
    {"profile-settings", "OvixWdsProxy OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 request successful!",
     "Unable send OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 message"},
};

const ResultLines& resultLinesOf(const std::string& message) {
  return *std::find_if(std::begin(allLines), std::end(allLines),
                       [&](const ResultLines& lines) { return lines.message == message; });
}

bool isRegistration(const std::string& message) {
  return message == "bind-subscription" || message == "indication-register" ||
         message == "configure-events";
}

bool isWrite(const std::string& message) {
  return message == "create-profile" || message == "modify-profile";
}

// Returns whether the library accepts the answer that the effect leaves.
bool isTaken(const FaultEffect& effect, const std::string& message) {
  const std::string outside = "values outside of their enumerations";
  if (effect.name == outside && isWrite(message)) {
    return false;  // The modem does not write such values.
  }
  static const std::set<std::string> names = {"doubled",
                                              "taken up soon",
                                              "answered soon",
                                              "power lost after",
                                              "a restart after",
                                              "other settings",
                                              outside,
                                              "texts without an end, unchecked",
                                              "a count above what fits, unchecked"};
  return names.contains(effect.name);
}

struct Sweep {
  std::string message;
  bool isInTime;
};

std::ostream& operator<<(std::ostream& out, const Sweep& sweep) {
  return out << sweep.message << (sweep.isInTime ? ", in time" : ", timing out");
}

std::vector<Sweep> sweeps() {
  std::vector<Sweep> all;
  for (const std::string& message : faultMessages()) {
    all.push_back({message, true});
    all.push_back({message, false});
  }
  return all;
}

class RequestFaultTest : public FaultTest, public testing::WithParamInterface<Sweep> {
 protected:
  RequestFaultTest() {
    connect();
    refresh();
  }

  // Makes the library send the message, and lets the fault take effect.
  void send(const std::string& message) {
    if (isRegistration(message)) {
      manager->init(0, /*useAndroidLog=*/true);
      // The faults are used up when the modem has handled the three registration requests.
      ASSERT_TRUE(waitUntil([&] { return areFaultsUsedUp(modem); }));
      manager->getProfile(nullptr);
    } else if (message == "profile-list" || message == "profile-settings") {
      refresh();
    } else {
      edit(message);
    }
  }

  Key own() {
    const auto keys = manager->filter(byId(ownIndex));
    return keys.empty() ? nullptr : keys.front();
  }

  void edit(const std::string& message) {
    if (message == "create-profile") {
      kept = manager->addProfile(transientProfile("new"));
    } else if (message == "modify-profile") {
      ModifyProfileParams change;
      change.setUserName("changed" + std::to_string(++changes));
      EXPECT_TRUE(manager->modifyProfile(change, own()));
    } else {
      manager->deleteProfile(kept);
    }
  }

  // Prepares the state that must exist before the message is sent.
  void prepare(const std::string& message) {
    if (message == "delete-profile") {
      kept = add(transientProfile("doomed"));
      settle();
    }
  }

  void expectLine(const std::string& message, const FaultEffect& effect, std::size_t position) {
    const ResultLines& lines = resultLinesOf(message);
    const char* expected = isTaken(effect, message) ? lines.done : lines.failed;
    EXPECT_TRUE(log.waitFor(expected, position));
  }

  // Waits for late answers and their consequences, so that they do not come during the next check.
  void awaitAnswers(const std::string& message) {
    const auto countOf = [&](const char* kind) {
      const auto entries = transcript();
      return std::count_if(entries.begin(), entries.end(), [&](const nlohmann::json& entry) {
        return entry["kind"] == kind && entry["message"] == message;
      });
    };
    EXPECT_TRUE(waitUntil([&] { return countOf("request") == countOf("response"); }));
  }

  void meet(const std::string& message, const FaultEffect& effect) {
    prepare(message);
    control("clear-transcript");
    const std::size_t position = log.end();
    setFault(modem, Fault::onMessage(message).with(effect.args));
    send(message);
    EXPECT_TRUE(areFaultsUsedUp(modem));
    expectLine(message, effect, position);
    if (effect.args.contains("delayMs") || effect.args.contains("lateMs")) {
      awaitAnswers(message);
    }
    recover(/*comesBack=*/!isRegistration(message));
    kept.reset();
    deleteOthers();
  }

  Key kept;
  int changes = 0;
};

TEST_P(RequestFaultTest, EveryEffect_OnTheMessage_IsSurvived) {
  int count = 0;
  for (const FaultEffect& effect : effectsOnMessage(GetParam().message)) {
    if (effect.isInTime == GetParam().isInTime) {
      SCOPED_TRACE(effect);
      meet(GetParam().message, effect);
      ++count;
    }
  }
  EXPECT_GT(count, 2);
}

INSTANTIATE_TEST_SUITE_P(Messages, RequestFaultTest, testing::ValuesIn(sweeps()));

class HardeningTest : public FaultTest {
 protected:
  HardeningTest() { connect(); }
};

// This test shows that the library finds the end of a text without a terminator.
TEST_F(HardeningTest, TextsWithoutAnEnd_HandedOn_AreReadToTheirBounds) {
  setFault(
      modem,
      Fault::onMessage("profile-settings").with({{"unterminated", true}, {"unchecked", true}}));
  refresh();
  const auto keys = manager->filter(FilterProfileParams());
  ASSERT_EQ(keys.size(), 1u);
  const auto params = manager->getProfile(keys.front());
  ASSERT_TRUE(params);
  EXPECT_EQ(params->getApnName(), "internet" + std::string(142, 'x'));
  EXPECT_EQ(params->getUserName(), "someone" + std::string(120, 'x'));
  EXPECT_EQ(params->getPassword(), "secret" + std::string(121, 'x'));
  recover();
}

TEST_F(HardeningTest, CountAboveWhatFits_HandedOn_IsReadToTheBound) {
  setFault(modem, Fault::onMessage("profile-list").with({{"listCount", 300}, {"unchecked", true}}));
  control("clear-transcript");
  refresh();
  const auto requests = requestsSeen();
  EXPECT_EQ(std::count(requests.begin(), requests.end(), "profile-settings"), 255);
  EXPECT_EQ(dumpedEntries().size(), 255u);
  recover();
}

TEST_F(HardeningTest, ReadThatDiffersFromTheWrite_IsWhatTheLibraryKnows) {
  const Key key = add(persistentProfile("written"));
  settle();
  setFault(modem, Fault::onMessage("profile-settings").with({{"settings", {{"apn", "read"}}}}));
  control("modify", {{"index", key->getProfileId()}, {"user", "someone"}});
  settle();
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "read");
  recover();
  EXPECT_NE(find("written"), nullptr);
}

TEST_F(HardeningTest, WriteThatDiffersFromTheRequest_IsFoundByARefresh) {
  setFault(modem, Fault::onMessage("create-profile").with({{"settings", {{"apn", "kept"}}}}));
  const Key key = add(persistentProfile("asked"));
  settle();
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "asked");
  recover();
  EXPECT_NE(find("kept"), nullptr);
}

TEST_F(HardeningTest, CreateWhoseAnswerIsLost_IsLearntFromItsIndications) {
  setFault(modem, Fault::onMessage("create-profile").with({{"lost", true}}));
  EXPECT_EQ(manager->addProfile(transientProfile("lost")), nullptr);
  settle();
  EXPECT_TRUE(manager->deleteProfile(find("lost")));
  recover();
  EXPECT_EQ(table().size(), 1u);
}

// Faults of every kind come at random while several threads call; no caller may wait forever.
TEST_F(HardeningTest, FaultsAtRandom_CallersOverlap_AllAreAnswered) {
  setScript(modem, /*seed=*/7,
            {Fault::onMessage("any").probability(0.1, 1).with({{"error", 2}}),
             Fault::onMessage("any").probability(0.1, 2).with({{"undecodable", "noise"}}),
             Fault::onMessage("any").probability(0.1, 3).with({{"doubled", true}}),
             Fault::onMessage("any").probability(0.02, 4).with({{"power", "unanswered"}}),
             Fault::onMessage("profile-list").probability(0.2, 5).with({{"listCount", 300}}),
             Fault::onIndication("any").probability(0.2, 6).with({{"lost", true}}),
             Fault::onIndication("any").probability(0.2, 7).with({{"reordered", true}}),
             Fault::onIndication("any").probability(0.2, 8).with({{"index", 99}}),
             Fault::onIndication("any").probability(0.2, 9).with({{"event", 9}}),
             Fault::onIndication("any").probability(0.2, 10).with({{"cutTo", 0}})});
  std::atomic<int> answered = 0;
  const int each = rounds(30);
  onThreads(4, [&](int thread) {
    for (int i = 0; i < each; ++i) {
      const Key key = manager->addProfile(transientProfile("apn" + std::to_string(thread)));
      ModifyProfileParams change;
      change.setUserName("user" + std::to_string(i));
      manager->modifyProfile(change, key);
      manager->filter(FilterProfileParams());
      manager->deleteProfile(key);
      ++answered;
    }
  });
  EXPECT_EQ(answered, 4 * each);
  // A fault may have hit a registration, so the library is initialised again.
  recover(/*comesBack=*/false);
}

}  // namespace
}  // namespace pavo::test
