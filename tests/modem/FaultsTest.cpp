// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/Messages.h"
#include "modem/core/ProfileJson.h"
#include "modem/faults/Effect.h"
#include "modem/faults/Faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem {
namespace {

using nlohmann::json;
using testing::IsEmpty;

constexpr Subject request(MessageId messageId) {
  return {Subject::Kind::Message, numberOf(messageId)};
}
constexpr Subject indication(uint32_t event) { return {Subject::Kind::Indication, event}; }

void add(Faults& faults, const json& args) { faults.add(faultFromJson(args)); }

std::string taken(Faults& faults, Subject subject) {
  const auto effect = faults.take(subject);
  return effect ? effect->name() : "nothing";
}

// Returns one letter for each of the next subjects: X when a fault takes effect on it.
std::string pattern(Faults& faults, Subject subject, int count) {
  std::string met;
  for (int i = 0; i < count; ++i) {
    met += faults.take(subject) ? 'X' : '.';
  }
  return met;
}

TEST(Faults, Take_OtherMessage_MeetsNothing) {
  Faults faults;
  add(faults, {{"message", "create-profile"}, {"silent", true}});
  EXPECT_EQ(taken(faults, request(MessageId::DeleteProfile)), "nothing");
  EXPECT_EQ(taken(faults, indication(numberOf(MessageId::CreateProfile))), "nothing");
  EXPECT_EQ(taken(faults, request(MessageId::CreateProfile)), "silent");
}

TEST(Faults, Take_CountGiven_MeetsThatManySubjects) {
  Faults faults;
  add(faults, {{"message", 0x27}, {"error", 3}, {"count", 2}});
  EXPECT_EQ(pattern(faults, request(MessageId::CreateProfile), 4), "XX..");
}

TEST(Faults, Take_NthGiven_LetsTheFirstOnesGoBy) {
  Faults faults;
  add(faults, {{"indication", "modify"}, {"lost", true}, {"nth", 3}});
  EXPECT_EQ(taken(faults, indication(eventCreate)), "nothing");
  EXPECT_EQ(pattern(faults, indication(eventModify), 5), "..X..");
}

TEST(Faults, Take_NthAndCountGiven_BeginsAtTheNth) {
  Faults faults;
  add(faults, {{"service", "any"}, {"silent", true}, {"nth", 2}, {"count", 3}});
  EXPECT_EQ(pattern(faults, {Subject::Kind::Service, 0}, 6), ".XXX..");
}

TEST(Faults, Take_SeveralFaults_MeetsThemInTheOrderOfAdding) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}});
  add(faults, {{"message", "profile-list"}, {"delayMs", 5}});
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "silent");
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "delayMs");
}

TEST(Faults, Take_FaultThatIsBeaten_HasCountedTheSubject) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}});
  add(faults, {{"message", "any"}, {"error", 1}, {"nth", 2}});
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "silent");
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "error");
}

TEST(Faults, Take_EffectOfSomeMessagesOnly_CountsThoseOnly) {
  Faults faults;
  add(faults, {{"message", "any"}, {"listCount", 300}, {"nth", 2}});
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "nothing");
  EXPECT_EQ(taken(faults, request(MessageId::CreateProfile)), "nothing");
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "listCount");
}

TEST(Faults, Take_Certainty_IsWithoutEndUnlessCounted) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}, {"probability", 1}});
  EXPECT_EQ(pattern(faults, request(MessageId::ProfileList), 100), std::string(100, 'X'));
}

TEST(Faults, Take_Probability_MeetsAboutThatShare) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}, {"probability", 0.25}});
  const std::string met = pattern(faults, request(MessageId::ProfileList), 4000);
  EXPECT_NEAR(static_cast<double>(std::ranges::count(met, 'X')), 1000, 200);
}

TEST(Faults, Take_ProbabilityAndCount_EndsWhenUsedUp) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}, {"probability", 0.5}, {"count", 5}});
  const std::string met = pattern(faults, request(MessageId::ProfileList), 1000);
  EXPECT_EQ(std::ranges::count(met, 'X'), 5);
  EXPECT_THAT(faults.toJson(), IsEmpty());
}

TEST(Faults, Take_SameSeed_MeetsTheSameSubjects) {
  const json chance = {{"message", "any"}, {"silent", true}, {"probability", 0.5}, {"seed", 7}};
  Faults one;
  Faults two;
  add(one, chance);
  // A fault with a seed of its own does not depend on its place among other faults.
  add(two, {{"message", 1}, {"silent", true}, {"probability", 0.5}});
  add(two, chance);
  EXPECT_EQ(pattern(one, request(MessageId::ProfileList), 200),
            pattern(two, request(MessageId::ProfileList), 200));
}

// A seed gives the same results on every machine and in every build, because scripts are kept.
TEST(Faults, Take_KnownSeed_MeetsTheKnownSubjects) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}, {"probability", 0.5}, {"seed", 1}});
  EXPECT_EQ(pattern(faults, request(MessageId::ProfileList), 24), "XXXXX.XX..X..XXXX.XXX.XX");
}

TEST(Faults, Replace_SameScript_RepeatsTheRun) {
  const auto script = faultScriptFromJson(json::parse(R"({"seed": 5, "faults": [
      {"message": "any", "silent": true, "probability": 0.5},
      {"message": "any", "lost": true, "probability": 0.5}]})"));
  Faults faults;
  faults.replace(script);
  const std::string first = pattern(faults, request(MessageId::ProfileList), 100);
  faults.replace(script);
  EXPECT_EQ(pattern(faults, request(MessageId::ProfileList), 100), first);
}

TEST(Faults, Replace_OtherSeed_ChangesTheRun) {
  auto script = faultScriptFromJson(
      json::parse(R"({"faults": [{"message": "any", "silent": true, "probability": 0.5}]})"));
  Faults faults;
  faults.replace(script);
  const std::string unseeded = pattern(faults, request(MessageId::ProfileList), 100);
  script.seed = 6;
  faults.replace(script);
  EXPECT_NE(pattern(faults, request(MessageId::ProfileList), 100), unseeded);
}

TEST(Faults, Replace_TwoFaultsOfOneProbability_StrikeApart) {
  Faults faults;
  faults.replace(faultScriptFromJson(json::parse(R"({"faults": [
      {"message": "profile-list", "silent": true, "probability": 0.5},
      {"message": "create-profile", "silent": true, "probability": 0.5}]})")));
  EXPECT_NE(pattern(faults, request(MessageId::ProfileList), 100),
            pattern(faults, request(MessageId::CreateProfile), 100));
}

TEST(Faults, Replace_SomePending_LeavesTheNewOnesOnly) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}});
  faults.replace({});
  EXPECT_THAT(faults.toJson(), IsEmpty());
}

TEST(Faults, ToJson_SomePending_TellsWhatIsLeft) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}, {"count", 3}});
  add(faults, {{"message", "any"}, {"lost", true}, {"nth", 3}});
  faults.take(request(MessageId::ProfileList));
  EXPECT_EQ(faults.toJson(), json::parse(R"([{"message": "any", "count": 2, "silent": true},
                                             {"message": "any", "nth": 2, "count": 1,
                                              "lost": true}])"));
}

TEST(Faults, Clear_SomePending_LeavesNone) {
  Faults faults;
  add(faults, {{"message", "any"}, {"silent", true}});
  faults.clear();
  EXPECT_EQ(taken(faults, request(MessageId::ProfileList)), "nothing");
}

TEST(Faults, Add_TooMany_IsRefused) {
  Faults faults;
  for (size_t i = 0; i < faultsMax; ++i) {
    add(faults, {{"message", "any"}, {"silent", true}});
  }
  EXPECT_THROW(add(faults, {{"message", "any"}, {"silent", true}}), Error);
}

}  // namespace
}  // namespace modem
