// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/ProfileJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>

namespace modem {
namespace {

using nlohmann::json;
using testing::StartsWith;

json everySetting() {
  return {{"name", "carrier"},   {"pdpType", "V4V6"}, {"apn", "internet"},
          {"user", "u"},         {"password", "p"},   {"auth", 3},
          {"disabled", true},    {"class", 7},        {"emergency", false},
          {"maxPdnPerBlock", 1}, {"maxPdnTimer", 2},  {"pdnWaitInterval", 65535},
          {"lteRoam", "V6"},     {"umtsRoam", "V4"},  {"overrideHome", "UNSPECIFIED"},
          {"persistent", true},  {"clat", true},      {"apnTypes", 18446744073709551615u}};
}

TEST(ProfileJson, RoundTrip_EverySetting_GivesTheSameJson) {
  EXPECT_EQ(toJson(profileFromJson(everySetting())), everySetting());
}

TEST(ProfileJson, RoundTrip_NothingSet_GivesNothing) {
  EXPECT_EQ(toJson(profileFromJson(json::object())), json::object());
}

TEST(ProfileJson, RoundTrip_BytesThatAreNoUtf8_KeepsThem) {
  Profile profile;
  profile.name = std::string("\xFF\x00z", 3);
  EXPECT_EQ(toJson(profile), json({{"name", {{"hex", "ff007a"}}}}));
  EXPECT_EQ(profileFromJson(toJson(profile)), profile);
}

TEST(ProfileJson, RoundTrip_FlagThatIsNeither0Nor1_KeepsTheNumber) {
  Profile profile;
  profile.clat = uint8_t{2};
  EXPECT_EQ(toJson(profile)["clat"], 2);
  EXPECT_EQ(profileFromJson(toJson(profile)), profile);
}

TEST(ProfileJson, FromJson_EnumerationAsANumber_Works) {
  EXPECT_EQ(profileFromJson({{"pdpType", 2}}).pdpType, 2u);
}

struct WrongCase {
  const char* member;
  const char* value;
};

void PrintTo(const WrongCase& row, std::ostream* out) { *out << row.member << "=" << row.value; }

class ProfileJsonWrong : public testing::TestWithParam<WrongCase> {};

TEST_P(ProfileJsonWrong, FromJson_WrongForm_NamesTheMember) {
  try {
    profileFromJson({{GetParam().member, json::parse(GetParam().value)}});
    FAIL() << "it was accepted";
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), StartsWith(GetParam().member));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Members, ProfileJsonWrong,
    testing::Values(WrongCase{"name", "1"}, WrongCase{"apn", "null"},
                    WrongCase{"user", R"({"hex": "f"})"}, WrongCase{"user", R"({"hex": "FG"})"},
                    WrongCase{"user", R"({"hex": 1})"}, WrongCase{"pdpType", R"("V5")"},
                    WrongCase{"pdpType", "-1"}, WrongCase{"lteRoam", R"("PPP")"},
                    WrongCase{"auth", "256"}, WrongCase{"auth", R"("PAP")"},
                    WrongCase{"maxPdnTimer", "65536"}, WrongCase{"class", "1.5"},
                    WrongCase{"disabled", R"("yes")"}, WrongCase{"apnTypes", "1e30"}));

}  // namespace
}  // namespace modem
