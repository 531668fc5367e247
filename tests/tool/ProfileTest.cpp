// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Table.h"
#include "profiles/Profile.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using testing::HasSubstr;
using testing::Not;

pavo::ProfileParams fullParams() {
  pavo::ProfileParams params;
  params.setApnName("net");
  params.setUserName("me");
  params.setPassword("hush");
  params.setAuthType(pavo::AuthType::PAP_CHAP);
  params.setHomeIPType(pavo::IPType::V4V6);
  params.setRoamIPType(pavo::IPType::UNKNOWN);
  params.setApnTypesMask(pavo::DEFAULT | pavo::RCS);
  params.setApnClass(pavo::ApnClass::UNCLASSIFIED);
  params.setIsClatEnabled(true);
  params.setIsEmergencySupported(false);
  params.setIsApnDisabled(false);
  params.setMaxPdnsConnPerBlock(1);
  params.setMaxPdnConnTimer(2);
  params.setPdnReqWaitInterval(3);
  return params;
}

TEST(Profile, ToJson_EveryAttribute_InItsOrder) {
  EXPECT_EQ(dumpJson(toJson(Profile{7, fullParams()}, Secrets::shown)),
            R"({"id":7,"apnName":"net","userName":"me","password":"hush","authType":"PAP_CHAP",)"
            R"("homeIPType":"V4V6","roamIPType":"UNKNOWN","apnTypesMask":["DEFAULT","RCS"],)"
            R"("apnClass":"UNCLASSIFIED","isClatEnabled":true,"isEmergencySupported":false,)"
            R"("isApnDisabled":false,"maxPdnsConnPerBlock":1,"maxPdnConnTimer":2,)"
            R"("pdnReqWaitInterval":3,"isPavoProfile":false,"isIAProfile":false})");
}

TEST(Profile, ToJson_NothingPresent_IsEmpty) {
  EXPECT_EQ(dumpJson(toJson(pavo::ProfileParams(), Secrets::shown)), "{}");
}

TEST(Profile, ToJson_Masked_HidesEvenAnEmptyPassword) {
  pavo::ProfileParams params;
  params.setPassword("");
  EXPECT_EQ(dumpJson(toJson(params, Secrets::masked)), R"({"password":"********"})");
}

TEST(Profile, ToJson_ValuesWithoutName_AreNumbers) {
  pavo::ProfileParams params;
  params.setAuthType(static_cast<pavo::AuthType>(9));
  params.setApnClass(static_cast<pavo::ApnClass>(-1));
  params.setApnTypesMask(0x13001);
  EXPECT_EQ(dumpJson(toJson(params, Secrets::masked)),
            R"({"authType":9,"apnTypesMask":["DEFAULT","0x13000"],"apnClass":-1})");
}

TEST(Profile, ToJson_EmptyMask_IsAnEmptyArray) {
  pavo::ProfileParams params;
  params.setApnTypesMask(0);
  EXPECT_EQ(dumpJson(toJson(params, Secrets::masked)), R"({"apnTypesMask":[]})");
}

TEST(Profile, DumpJson_BytesThatAreNoUtf8_AreReplaced) {
  pavo::ProfileParams params;
  params.setApnName("a\xFF\nb");
  EXPECT_EQ(dumpJson(toJson(params, Secrets::masked)), "{\"apnName\":\"a\xEF\xBF\xBD\\nb\"}");
}

TEST(Profile, Changes_OnlyDifferences_WithBothSides) {
  Profile before{1, {}};
  Profile after{1, {}};
  before.params.setApnName("net");
  after.params.setApnName("net");
  before.params.setPassword("old");
  after.params.setPassword("new");
  after.params.setApnTypesMask(pavo::MMS);
  before.params.setMaxPdnConnTimer(5);
  EXPECT_EQ(dumpJson(changes(before, after, Secrets::masked)),
            R"({"password":{"before":"********","after":"********"},)"
            R"("maxPdnConnTimer":{"before":5},"apnTypesMask":{"after":["MMS"]}})");
  EXPECT_EQ(dumpJson(changes(before, before, Secrets::shown)), "{}");
}

TEST(Profile, ChangesText_Sides_ReadLeftToRight) {
  Profile before{1, {}};
  Profile after{1, {}};
  before.params.setApnName("a");
  after.params.setApnName("b\n");
  after.params.setIsClatEnabled(true);
  EXPECT_EQ(changesText(changes(before, after, Secrets::masked)),
            "apnName: a -> b\\x0A, isClatEnabled: (absent) -> yes");
}

TEST(Profile, ProfileTable_Columns_AreAligned) {
  Profile plain{12, {}};
  plain.params.setApnName("zürich");
  const Json rows = {toJson(Profile{1, fullParams()}, Secrets::masked),
                     toJson(plain, Secrets::masked)};
  EXPECT_EQ(
      profileTable(rows),
      "ID  APN     TYPES        HOME  ROAM     AUTH      USER  PASSWORD  CLASS         FLAGS\n"
      "1   net     DEFAULT|RCS  V4V6  UNKNOWN  PAP_CHAP  me    ********  UNCLASSIFIED  clat\n"
      "12  zürich  -            -     -        -         -     -         -             -\n");
}

TEST(Profile, ProfileText_Secrets_AreMasked) {
  const std::string text = profileText(toJson(Profile{1, fullParams()}, Secrets::masked));
  EXPECT_THAT(text, HasSubstr("password:              ********\n"));
  EXPECT_THAT(text, Not(HasSubstr("hush")));
}

}  // namespace
}  // namespace pavoctl
