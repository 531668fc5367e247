#include "modem/Faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "modem/Messages.h"
#include "modem/ProfileJson.h"

namespace modem {
namespace {

using nlohmann::json;
using testing::IsEmpty;

std::string taken(Faults& faults, uint16_t messageId) {
  const auto effect = faults.take(messageId);
  return effect ? effectName(*effect) : "nothing";
}

TEST(Faults, Take_OtherMessage_MeetsNothing) {
  Faults faults;
  faults.add({{"message", "create-profile"}, {"silent", true}});
  EXPECT_EQ(taken(faults, deleteProfile), "nothing");
  EXPECT_EQ(taken(faults, createProfile), "silent");
}

TEST(Faults, Take_CountGiven_MeetsThatManyRequests) {
  Faults faults;
  faults.add({{"message", 0x27}, {"error", 3}, {"count", 2}});
  EXPECT_EQ(taken(faults, createProfile), "error");
  EXPECT_EQ(taken(faults, createProfile), "error");
  EXPECT_EQ(taken(faults, createProfile), "nothing");
}

TEST(Faults, Take_SeveralFaults_MeetsThemInTheOrderOfAdding) {
  Faults faults;
  faults.add({{"message", "any"}, {"silent", true}});
  faults.add({{"message", "profile-list"}, {"delayMs", 5}});
  EXPECT_EQ(taken(faults, profileList), "silent");
  EXPECT_EQ(taken(faults, profileList), "delayMs");
}

TEST(Faults, Take_ErrorWithResult_HasBoth) {
  Faults faults;
  faults.add({{"message", "any"}, {"error", 77}, {"result", 5}});
  const auto effect = faults.take(0x9999);
  ASSERT_TRUE(effect);
  EXPECT_EQ(std::get<AnswerError>(*effect).error, 77);
  EXPECT_EQ(std::get<AnswerError>(*effect).result, 5);
}

TEST(Faults, ToJson_SomePending_TellsWhatIsLeft) {
  Faults faults;
  faults.add({{"message", "any"}, {"silent", true}, {"count", 3}});
  faults.take(profileList);
  EXPECT_EQ(faults.toJson(), json::parse(R"([{"message": "any", "count": 2, "silent": true}])"));
}

TEST(Faults, Clear_SomePending_LeavesNone) {
  Faults faults;
  faults.add({{"message", "any"}, {"silent", true}});
  faults.clear();
  EXPECT_EQ(taken(faults, profileList), "nothing");
}

TEST(Faults, Add_TooMany_IsRefused) {
  Faults faults;
  for (size_t i = 0; i < Faults::pendingMax; ++i) {
    faults.add({{"message", "any"}, {"silent", true}});
  }
  EXPECT_THROW(faults.add({{"message", "any"}, {"silent", true}}), JsonError);
}

class FaultsWrong : public testing::TestWithParam<const char*> {};

TEST_P(FaultsWrong, Add_WrongArguments_IsRefusedAndAddsNothing) {
  Faults faults;
  EXPECT_THROW(faults.add(json::parse(GetParam())), JsonError);
  EXPECT_THAT(faults.toJson(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Arguments, FaultsWrong,
                         testing::Values(R"({"silent": true})", R"({"message": "any"})",
                                         R"({"message": "nonsense", "silent": true})",
                                         R"({"message": "profile-changed", "silent": true})",
                                         R"({"message": 65536, "silent": true})",
                                         R"({"message": "any", "silent": false})",
                                         R"({"message": "any", "silent": true, "error": 1})",
                                         R"({"message": "any", "silent": true, "result": 1})",
                                         R"({"message": "any", "error": -1})",
                                         R"({"message": "any", "error": "3"})",
                                         R"({"message": "any", "delayMs": 3600001})",
                                         R"({"message": "any", "silent": true, "count": 0})",
                                         R"({"message": "any", "silent": true, "often": 1})"));

}  // namespace
}  // namespace modem
