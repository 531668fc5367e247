// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests repeat a run from its seed and its script.
#include "Answers.h"
#include "ServedModem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

using nlohmann::json;

const json script = json::parse(R"({"seed": 20, "faults": [
    {"message": "create-profile", "nth": 3, "count": 2, "error": 3},
    {"message": "any", "probability": 0.2, "error": 2},
    {"message": "profile-settings", "probability": 0.3, "cutTo": 9},
    {"indication": "any", "probability": 0.3, "lost": true},
    {"indication": "modify", "probability": 0.3, "doubled": true},
    {"indication": "create", "probability": 0.3, "reordered": true},
    {"message": "any", "nth": 60, "power": "before"}]})");

// Returns the transcript of a client that makes the same requests each time.
json transcriptOf(uint64_t seed) {
  Service::Options options;
  options.script = faultScriptFromJson(script);
  options.script.seed = seed;
  options.modem.boot = static_cast<uint32_t>(seed);
  ServedModem served(std::move(options));
  RawClient client = served.newClient();
  client.registerForAll();
  for (int i = 0; i < 40; ++i) {
    const uint8_t index =
        createdIndexOf(client.request(MessageId::CreateProfile, createRequest({.apn = "x"})));
    client.request(MessageId::ProfileSettings, profileRequest(index));
    client.request(MessageId::ModifyProfile, profileRequest(index, {.user = "y"}));
    client.request(MessageId::DeleteProfile, profileRequest(index));
  }
  return served.newControl().call("transcript")["entries"];
}

TEST(Repeat, SameSeedAndScript_MakeTheSameTranscript) {
  const json first = transcriptOf(20);
  EXPECT_EQ(transcriptOf(20), first);
  size_t faults = 0;
  for (const json& entry : first) {
    faults += entry.contains("fault") ? 1 : 0;
  }
  EXPECT_GT(faults, 10u);
}

TEST(Repeat, OtherSeed_MakesAnotherTranscript) { EXPECT_NE(transcriptOf(21), transcriptOf(20)); }

}  // namespace
}  // namespace modem::test
