// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "MessageBytes.h"
#include "Modem3gppProfile.h"
#include "RunningManagerTest.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A Place is the position of a field, its valid flag and its value, in the create request, the
// modify request and the settings response.
struct Place {
  std::size_t createValid;
  std::size_t createValue;
  std::size_t modifyValid;
  std::size_t modifyValue;
  std::size_t responseValid;
  std::size_t responseValue;
  int bits;  // 0 for a text
};

constexpr Place profileNamePlace{4, 5, 8, 9, 8, 9, 0};
constexpr Place pdpTypePlace{56, 60, 60, 64, 60, 64, 32};
constexpr Place apnNamePlace{80, 81, 84, 85, 84, 85, 0};
constexpr Place userNamePlace{400, 401, 404, 405, 404, 405, 0};
constexpr Place passwordPlace{529, 530, 533, 534, 533, 534, 0};
constexpr Place authPlace{658, 659, 662, 663, 662, 663, 8};
constexpr Place disabledPlace{980, 981, 984, 985, 984, 985, 8};
constexpr Place classPlace{988, 989, 992, 993, 992, 993, 8};
constexpr Place emergencyPlace{1000, 1001, 1008, 1009, 1008, 1009, 8};
constexpr Place perBlockPlace{1016, 1018, 1024, 1026, 1024, 1026, 16};
constexpr Place timerPlace{1020, 1022, 1028, 1030, 1028, 1030, 16};
constexpr Place waitPlace{1024, 1026, 1032, 1034, 1032, 1034, 16};
constexpr Place lteRoamPlace{1042, 1044, 1050, 1052, 1050, 1052, 32};
constexpr Place umtsRoamPlace{1048, 1052, 1056, 1060, 1056, 1060, 32};
constexpr Place overridePlace{1104, 1108, 1112, 1116, 1112, 1116, 32};
constexpr Place maskPlace{3232, 3240, 3236, 3240, 3240, 3248, 64};
constexpr Place clatPlace{3248, 3249, 3248, 3249, 3256, 3257, 8};

void putValue(MessageBytes& message, const Place& place, std::size_t at, std::uint64_t number,
              const std::string& text) {
  switch (place.bits) {
    case 0:
      message.text(at, text);
      break;
    case 8:
      message.u8(at, static_cast<std::uint8_t>(number));
      break;
    case 16:
      message.u16(at, static_cast<std::uint16_t>(number));
      break;
    case 32:
      message.u32(at, static_cast<std::uint32_t>(number));
      break;
    default:
      message.u64(at, number);
      break;
  }
}

// Returns a create request of a non-persistent profile without an attribute.
MessageBytes emptyCreate() { return MessageBytes(createRequestSize).u8(2180, 1); }

MessageBytes emptyModify(int index) {
  return MessageBytes(modifyRequestSize).u8(4, static_cast<std::uint8_t>(index));
}

struct RequestRow {
  const char* what;
  Place place;
  std::function<void(Modem3gppProfile&)> set;
  std::uint64_t number = 0;
  std::string text = {};
};

const std::string longText(300, 'x');

std::vector<RequestRow> requestRows() {
  using P = Modem3gppProfile;
  return {
      {"name", profileNamePlace, [](P& p) { p.setProfileName("pavo_profile"); }, 0, "pavo_profile"},
      {"long name", profileNamePlace, [](P& p) { p.setProfileName(longText); }, 0,
       std::string(50, 'x')},
      {"name with a NUL", profileNamePlace, [](P& p) { p.setProfileName(std::string("a\0b", 3)); },
       0, "a"},
      {"APN", apnNamePlace, [](P& p) { p.setApnName("internet"); }, 0, "internet"},
      {"empty APN", apnNamePlace, [](P& p) { p.setApnName(""); }, 0, ""},
      {"APN of 150", apnNamePlace, [](P& p) { p.setApnName(std::string(150, 'y')); }, 0,
       std::string(150, 'y')},
      {"long APN", apnNamePlace, [](P& p) { p.setApnName(longText); }, 0, std::string(150, 'x')},
      {"user", userNamePlace, [](P& p) { p.setUserName("User"); }, 0, "User"},
      {"user of 127", userNamePlace, [](P& p) { p.setUserName(std::string(127, 'u')); }, 0,
       std::string(127, 'u')},
      {"long user", userNamePlace, [](P& p) { p.setUserName(longText); }, 0, std::string(127, 'x')},
      {"password", passwordPlace, [](P& p) { p.setPassword("Secret"); }, 0, "Secret"},
      {"long password", passwordPlace, [](P& p) { p.setPassword(longText); }, 0,
       std::string(127, 'x')},
      {"PDP type V4", pdpTypePlace, [](P& p) { p.setCommonIPType(IPType::V4); }, 0},
      {"PDP type V6", pdpTypePlace, [](P& p) { p.setCommonIPType(IPType::V6); }, 2},
      {"PDP type V4V6", pdpTypePlace, [](P& p) { p.setCommonIPType(IPType::V4V6); }, 3},
      {"PDP type unknown", pdpTypePlace, [](P& p) { p.setCommonIPType(IPType::UNKNOWN); }, 3},
      {"PDP type 77", pdpTypePlace, [](P& p) { p.setCommonIPType(IPType{77}); }, 3},
      {"override V4", overridePlace, [](P& p) { p.setOverrideHomeIPType(IPType::V4); }, 0},
      {"override V6", overridePlace, [](P& p) { p.setOverrideHomeIPType(IPType::V6); }, 1},
      {"override V4V6", overridePlace, [](P& p) { p.setOverrideHomeIPType(IPType::V4V6); }, 2},
      {"override unknown", overridePlace, [](P& p) { p.setOverrideHomeIPType(IPType::UNKNOWN); },
       255},
      {"LTE roaming V4", lteRoamPlace, [](P& p) { p.setLteRoamIPType(IPType::V4); }, 0},
      {"LTE roaming V6", lteRoamPlace, [](P& p) { p.setLteRoamIPType(IPType::V6); }, 1},
      {"LTE roaming V4V6", lteRoamPlace, [](P& p) { p.setLteRoamIPType(IPType::V4V6); }, 2},
      {"LTE roaming unknown", lteRoamPlace, [](P& p) { p.setLteRoamIPType(IPType::UNKNOWN); }, 255},
      {"UMTS roaming V4", umtsRoamPlace, [](P& p) { p.setUmtsRoamIPType(IPType::V4); }, 0},
      {"UMTS roaming V6", umtsRoamPlace, [](P& p) { p.setUmtsRoamIPType(IPType::V6); }, 1},
      {"UMTS roaming V4V6", umtsRoamPlace, [](P& p) { p.setUmtsRoamIPType(IPType::V4V6); }, 2},
      {"UMTS roaming -1", umtsRoamPlace, [](P& p) { p.setUmtsRoamIPType(IPType{-1}); }, 2},
      {"emergency", emergencyPlace, [](P& p) { p.setIsEmergencySupported(true); }, 1},
      {"no emergency", emergencyPlace, [](P& p) { p.setIsEmergencySupported(false); }, 0},
      {"per block 5", perBlockPlace, [](P& p) { p.setMaxPdnsConnPerBlock(5); }, 5},
      {"per block 65537", perBlockPlace, [](P& p) { p.setMaxPdnsConnPerBlock(65537); }, 1},
      {"per block -1", perBlockPlace, [](P& p) { p.setMaxPdnsConnPerBlock(-1); }, 65535},
      {"timer 300", timerPlace, [](P& p) { p.setMaxPdnConnTimer(300); }, 300},
      {"timer 65537", timerPlace, [](P& p) { p.setMaxPdnConnTimer(65537); }, 1},
      {"timer -2", timerPlace, [](P& p) { p.setMaxPdnConnTimer(-2); }, 65534},
      {"wait 258", waitPlace, [](P& p) { p.setPdnReqWaitInterval(258); }, 258},
      {"wait 65536", waitPlace, [](P& p) { p.setPdnReqWaitInterval(65536); }, 0},
      {"wait -1", waitPlace, [](P& p) { p.setPdnReqWaitInterval(-1); }, 65535},
      {"disabled", disabledPlace, [](P& p) { p.setIsApnDisabled(true); }, 1},
      {"not disabled", disabledPlace, [](P& p) { p.setIsApnDisabled(false); }, 0},
      {"auth none", authPlace, [](P& p) { p.setAuthType(AuthType::NONE); }, 0},
      {"auth PAP", authPlace, [](P& p) { p.setAuthType(AuthType::PAP); }, 1},
      {"auth CHAP", authPlace, [](P& p) { p.setAuthType(AuthType::CHAP); }, 2},
      {"auth both", authPlace, [](P& p) { p.setAuthType(AuthType::PAP_CHAP); }, 3},
      {"auth 5", authPlace, [](P& p) { p.setAuthType(AuthType{5}); }, 1},
      {"auth -1", authPlace, [](P& p) { p.setAuthType(AuthType{-1}); }, 3},
      {"class IMS", classPlace, [](P& p) { p.setApnClass(ApnClass::IMS); }, 1},
      {"class 300", classPlace, [](P& p) { p.setApnClass(ApnClass{300}); }, 44},
      {"class -1", classPlace, [](P& p) { p.setApnClass(ApnClass{-1}); }, 255},
      {"mask", maskPlace, [](P& p) { p.setApnTypesMask(0x8000'0000'0000'0003); },
       0x8000'0000'0000'0003},
      {"mask 0", maskPlace, [](P& p) { p.setApnTypesMask(0); }, 0},
      {"CLAT", clatPlace, [](P& p) { p.setIsClatEnabled(true); }, 1},
      {"no CLAT", clatPlace, [](P& p) { p.setIsClatEnabled(false); }, 0},
  };
}

TEST(Modem3gppProfileRequestTest, ConstructAddRequest_OneAttribute_OnlyItsBytesAreSet) {
  for (const RequestRow& row : requestRows()) {
    SCOPED_TRACE(row.what);
    Modem3gppProfile profile{ProfileParams()};
    row.set(profile);
    MessageBytes expected = emptyCreate().u8(row.place.createValid, 1);
    putValue(expected, row.place, row.place.createValue, row.number, row.text);
    EXPECT_THAT(expected.differences(MessageBytes::of(profile.constructAddRequest())), IsEmpty());
  }
}

TEST(Modem3gppProfileRequestTest, ConstructModifyRequest_OneAttribute_OnlyItsBytesAreSet) {
  for (const RequestRow& row : requestRows()) {
    SCOPED_TRACE(row.what);
    Modem3gppProfile profile{ProfileParams()};
    profile.setProfileId(258);
    // This flag is never sent, because persistence cannot be changed.
    profile.setIsPersistent(true);
    row.set(profile);
    MessageBytes expected = emptyModify(2).u8(row.place.modifyValid, 1);
    putValue(expected, row.place, row.place.modifyValue, row.number, row.text);
    EXPECT_THAT(expected.differences(MessageBytes::of(profile.constructModifyRequest())),
                IsEmpty());
  }
}

TEST(Modem3gppProfileRequestTest, ConstructAddRequest_Persistence_IsAlwaysSent) {
  for (const bool isPersistent : {false, true}) {
    SCOPED_TRACE(isPersistent);
    Modem3gppProfile profile{ProfileParams()};
    profile.setIsPersistent(isPersistent);
    EXPECT_THAT(emptyCreate()
                    .u8(2181, isPersistent ? 1 : 0)
                    .differences(MessageBytes::of(profile.constructAddRequest())),
                IsEmpty());
  }
}

struct IPTypesRow {
  std::optional<IPType> home;
  std::optional<IPType> roam;
  std::optional<std::uint32_t> pdp;
  std::optional<std::uint32_t> homeOverride;
  std::optional<std::uint32_t> roaming;
  const char* readBack;
};

const IPTypesRow ipTypesRows[] = {
    {{}, {}, {}, {}, {}, ""},
    {IPType::V4, {}, 0, {}, {}, "HomeIPType=V4,"},
    {IPType::V6, {}, 2, {}, {}, "HomeIPType=V6,"},
    {IPType::V4V6, {}, 3, {}, {}, "HomeIPType=V4V6,"},
    {IPType::UNKNOWN, {}, 3, {}, {}, "HomeIPType=UNKNOWN,"},
    {{}, IPType::V4, {}, {}, 0, "RoamIPType=V4,"},
    {{}, IPType::V6, {}, {}, 1, "RoamIPType=V6,"},
    {IPType::V6, IPType::V6, 2, {}, 1, "HomeIPType=V6,RoamIPType=V6,"},
    {IPType::V4V6, IPType::V4V6, 3, {}, 2, "HomeIPType=V4V6,RoamIPType=V4V6,"},
    {IPType::V4, IPType::V6, 3, 0, 1, "HomeIPType=V4,RoamIPType=V6,"},
    {IPType::V6, IPType::V4, 3, 1, 0, "HomeIPType=V6,RoamIPType=V4,"},
    {IPType::V4V6, IPType::V4, 3, 2, 0, "HomeIPType=V4V6,RoamIPType=V4,"},
    // An override of UNKNOWN counts as absent.
    {IPType::UNKNOWN, IPType::V4, 3, 255, 0, "HomeIPType=V4V6,RoamIPType=V4,"},
};

std::string describe(const IPTypesRow& row) {
  ProfileParams params;
  if (row.home) {
    params.setHomeIPType(*row.home);
  }
  if (row.roam) {
    params.setRoamIPType(*row.roam);
  }
  return params.dump();
}

class Modem3gppProfileTest : public RunningManagerTest {};

TEST_F(Modem3gppProfileTest, AddProfile_IPTypes_BecomeThoseOfTheModemAndReadBack) {
  for (const IPTypesRow& row : ipTypesRows) {
    SCOPED_TRACE(describe(row));
    AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
    MessageBytes expected = emptyCreate().u8(4, 1).text(5, "pavo_profile");
    if (row.home) {
      params.setHomeIPType(*row.home);
    }
    if (row.roam) {
      params.setRoamIPType(*row.roam);
    }
    if (row.pdp) {
      expected.u8(56, 1).u32(60, *row.pdp);
    }
    if (row.homeOverride) {
      expected.u8(1104, 1).u32(1108, *row.homeOverride);
    }
    if (row.roaming) {
      expected.u8(1042, 1).u32(1044, *row.roaming).u8(1048, 1).u32(1052, *row.roaming);
    }
    platform.clearCalls();
    const Key key = manager.addProfile(params);
    ASSERT_NE(key, nullptr);
    const auto sent = platform.sent(0x27);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_THAT(expected.differences(MessageBytes::of(sent[0].bytes)), IsEmpty());
    const auto read = manager.getProfile(key);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->dump(), row.readBack + std::string("IsPavoProfile=1,IsIAProfile=0,"));
  }
}

ProfileParams allAttributes() {
  ProfileParams params;
  params.setApnName("InterNet");
  params.setUserName("User");
  params.setPassword("Secret");
  params.setAuthType(AuthType::CHAP);
  params.setHomeIPType(IPType::V4);
  params.setRoamIPType(IPType::V6);
  params.setApnTypesMask(0x8041);
  params.setApnClass(ApnClass::INET);
  params.setIsClatEnabled(true);
  params.setMaxPdnsConnPerBlock(20);
  params.setMaxPdnConnTimer(300);
  params.setPdnReqWaitInterval(7);
  params.setIsApnDisabled(true);
  params.setIsEmergencySupported(true);
  return params;
}

constexpr const char* allAttributesDump =
    "ApnName=internet,UserName=User,Password=Secret,AuthType=CHAP,HomeIPType=V4,RoamIPType=V6,"
    "ApnTypesMask=DEFAULT|IMS|RCS|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=20,"
    "MaxPdnConnTimer=300,PdnReqWaitInterval=7,IsApnDisabled=1,IsEmergencySupported=1,";

TEST_F(Modem3gppProfileTest, AddProfile_AllAttributes_EveryByteOfTheCreateRequest) {
  const Key key = manager.addProfile(
      AddProfileParams(allAttributes(), /*isPersistent=*/true, /*isIAProfile=*/true));
  ASSERT_NE(key, nullptr);
  MessageBytes expected(createRequestSize);
  expected.u8(4, 1).text(5, "pavo_profile_ia").u8(56, 1).u32(60, 3).u8(80, 1).text(81, "internet");
  expected.u8(400, 1).text(401, "User").u8(529, 1).text(530, "Secret").u8(658, 1).u8(659, 2);
  expected.u8(980, 1).u8(981, 1).u8(988, 1).u8(989, 3).u8(1000, 1).u8(1001, 1);
  expected.u8(1016, 1).u16(1018, 20).u8(1020, 1).u16(1022, 300).u8(1024, 1).u16(1026, 7);
  expected.u8(1042, 1).u32(1044, 1).u8(1048, 1).u32(1052, 1).u8(1104, 1).u32(1108, 0);
  expected.u8(2180, 1).u8(2181, 1).u8(3232, 1).u64(3240, 0x1003).u8(3248, 1).u8(3249, 1);
  const auto sent = platform.sent(0x27);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_THAT(expected.differences(MessageBytes::of(sent[0].bytes)), IsEmpty());

  const auto read = manager.getProfile(key);
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->dump(), allAttributesDump + std::string("IsPavoProfile=1,IsIAProfile=1,"));
  EXPECT_THAT(cached(),
              ElementsAre(entryLine(
                  key,
                  "ProfileId=1,ApnName=internet,UserName=User,Password=Secret,AuthType=CHAP,"
                  "CommonIPType=V4V6,ApnTypesMask=4099,ApnClass=INET,IsClatEnabled=1,"
                  "OverrideHomeIPType=V4,LteRoamIP=V6,UmtsRoamIP=V6,MaxPdnsConnPerBlock=20,"
                  "MaxPdnConnTimer=300,PdnReqWaitInterval=7,IsApnDisabled=1,"
                  "IsEmergencySupported=1,ProfileName=pavo_profile_ia,")));
}

TEST_F(Modem3gppProfileTest, ModifyProfile_AllAttributes_EveryByteOfTheModifyRequest) {
  setModemProfile(200, "old");
  manager.refresh(PDC_REFRESH_COMPLETED);
  ASSERT_TRUE(manager.modifyProfile(ModifyProfileParams(allAttributes()), keyOf(200)));
  MessageBytes expected = emptyModify(200);
  expected.u8(60, 1).u32(64, 3).u8(84, 1).text(85, "internet");
  expected.u8(404, 1).text(405, "User").u8(533, 1).text(534, "Secret").u8(662, 1).u8(663, 2);
  expected.u8(984, 1).u8(985, 1).u8(992, 1).u8(993, 3).u8(1008, 1).u8(1009, 1);
  expected.u8(1024, 1).u16(1026, 20).u8(1028, 1).u16(1030, 300).u8(1032, 1).u16(1034, 7);
  expected.u8(1050, 1).u32(1052, 1).u8(1056, 1).u32(1060, 1).u8(1112, 1).u32(1116, 0);
  expected.u8(3236, 1).u64(3240, 0x1003).u8(3248, 1).u8(3249, 1);
  const auto sent = platform.sent(0x28);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_THAT(expected.differences(MessageBytes::of(sent[0].bytes)), IsEmpty());
}

TEST_F(Modem3gppProfileTest, Refresh_AllFields_ReadFromTheirPlaces) {
  MessageBytes settings = emptySettings();
  settings.u8(8, 1).text(9, "PAVO_profile").u8(60, 1).u32(64, 2).u8(84, 1).text(85, "IMS_1\xC3");
  settings.u8(404, 1).text(405, "User").u8(533, 1).text(534, "Secret").u8(662, 1).u8(663, 7);
  settings.u8(984, 1).u8(985, 1).u8(992, 1).u8(993, 9).u8(1008, 1).u8(1009, 2);
  settings.u8(1024, 1).u16(1026, 65535).u8(1028, 1).u16(1030, 65534).u8(1032, 1).u16(1034, 65533);
  settings.u8(1050, 1).u32(1052, 0).u8(1056, 1).u32(1060, 0).u8(1112, 1).u32(1116, 2);
  settings.u8(2188, 1).u8(2189, 1).u8(3240, 1).u64(3248, 0xF000'0000'0000'3041);
  settings.u8(3256, 1).u8(3257, 255);
  setModemProfile(255, settings);
  manager.refresh(PDC_REFRESH_COMPLETED);
  const Key key = keyOf(255);
  ASSERT_NE(key, nullptr);
  EXPECT_THAT(cached(),
              ElementsAre(entryLine(
                  key,
                  "ProfileId=255,ApnName=ims_1\xC3,UserName=User,Password=Secret,"
                  "AuthType=PAP_CHAP,CommonIPType=V6,ApnTypesMask=17293822569102716993,ApnClass=9,"
                  "IsClatEnabled=1,OverrideHomeIPType=V4V6,LteRoamIP=V4,UmtsRoamIP=V4,"
                  "MaxPdnsConnPerBlock=65535,MaxPdnConnTimer=65534,PdnReqWaitInterval=65533,"
                  "IsApnDisabled=1,IsEmergencySupported=1,ProfileName=PAVO_profile,")));
  const auto read = manager.getProfile(key);
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->dump(),
            "ApnName=ims_1\xC3,UserName=User,Password=Secret,AuthType=PAP_CHAP,HomeIPType=V4V6,"
            "RoamIPType=V4,ApnTypesMask=DEFAULT|FOTA|RCS|,ApnClass=9,IsClatEnabled=1,"
            "MaxPdnsConnPerBlock=65535,MaxPdnConnTimer=65534,PdnReqWaitInterval=65533,"
            "IsApnDisabled=1,IsEmergencySupported=1,IsPavoProfile=0,IsIAProfile=0,");
}

struct ResponseRow {
  const char* what;
  Place place;
  std::uint64_t number;
  std::string text;
  std::string dump;
  std::vector<std::string> debugLines = {};
};

std::string unknownType(int number) { return "Unknown pdp_type_enum " + std::to_string(number); }

std::vector<ResponseRow> responseRows() {
  return {
      {"name", profileNamePlace, 0, "Some", "ProfileName=Some,"},
      {"empty name", profileNamePlace, 0, "", "ProfileName=,"},
      {"name of 50", profileNamePlace, 0, std::string(50, 'n'),
       "ProfileName=" + std::string(50, 'n') + ","},
      {"unterminated name", profileNamePlace, 0, std::string(51, 'n'),
       "ProfileName=" + std::string(50, 'n') + ","},
      {"APN", apnNamePlace, 0, "IMS", "ApnName=ims,"},
      {"APN of 150", apnNamePlace, 0, std::string(150, 'A'),
       "ApnName=" + std::string(150, 'a') + ","},
      {"unterminated APN", apnNamePlace, 0, std::string(151, 'A'),
       "ApnName=" + std::string(150, 'a') + ","},
      {"user", userNamePlace, 0, "User", "UserName=User,"},
      {"unterminated user", userNamePlace, 0, std::string(128, 'u'),
       "UserName=" + std::string(127, 'u') + ","},
      {"password", passwordPlace, 0, "Secret", "Password=Secret,"},
      {"unterminated password", passwordPlace, 0, std::string(128, 'p'),
       "Password=" + std::string(127, 'p') + ","},
      {"PDP 0", pdpTypePlace, 0, "", "CommonIPType=V4,"},
      {"PDP PPP", pdpTypePlace, 1, "", "CommonIPType=UNKNOWN,", {unknownType(1)}},
      {"PDP 2", pdpTypePlace, 2, "", "CommonIPType=V6,"},
      {"PDP 3", pdpTypePlace, 3, "", "CommonIPType=V4V6,"},
      {"PDP 4", pdpTypePlace, 4, "", "CommonIPType=UNKNOWN,", {unknownType(4)}},
      {"PDP -1", pdpTypePlace, 0xFFFF'FFFF, "", "CommonIPType=UNKNOWN,", {unknownType(-1)}},
      {"override 0", overridePlace, 0, "", "OverrideHomeIPType=V4,"},
      {"override 1", overridePlace, 1, "", "OverrideHomeIPType=V6,"},
      {"override 2", overridePlace, 2, "", "OverrideHomeIPType=V4V6,"},
      {"override 3", overridePlace, 3, "", "OverrideHomeIPType=UNKNOWN,", {unknownType(3)}},
      {"override 255", overridePlace, 255, "", "OverrideHomeIPType=UNKNOWN,", {unknownType(255)}},
      {"LTE 0", lteRoamPlace, 0, "", "LteRoamIP=V4,"},
      {"LTE 1", lteRoamPlace, 1, "", "LteRoamIP=V6,"},
      {"LTE 2", lteRoamPlace, 2, "", "LteRoamIP=V4V6,"},
      {"LTE 3", lteRoamPlace, 3, "", "LteRoamIP=UNKNOWN,", {unknownType(3)}},
      {"LTE 255", lteRoamPlace, 255, "", ""},
      {"UMTS 0", umtsRoamPlace, 0, "", "UmtsRoamIP=V4,"},
      {"UMTS 1", umtsRoamPlace, 1, "", "UmtsRoamIP=V6,"},
      {"UMTS 2", umtsRoamPlace, 2, "", "UmtsRoamIP=V4V6,"},
      {"UMTS 256", umtsRoamPlace, 256, "", "UmtsRoamIP=UNKNOWN,", {unknownType(256)}},
      {"UMTS 255", umtsRoamPlace, 255, "", ""},
      {"class 0", classPlace, 0, "", "ApnClass=0,"},
      {"class 2", classPlace, 2, "", "ApnClass=ADMN,"},
      {"class 200", classPlace, 200, "", "ApnClass=200,"},
      {"emergency 0", emergencyPlace, 0, "", "IsEmergencySupported=0,"},
      {"emergency 2", emergencyPlace, 2, "", "IsEmergencySupported=1,"},
      {"auth 4", authPlace, 4, "", "AuthType=NONE,"},
      {"auth 253", authPlace, 253, "", "AuthType=PAP,"},
      {"auth 2", authPlace, 2, "", "AuthType=CHAP,"},
      {"per block", perBlockPlace, 40000, "", "MaxPdnsConnPerBlock=40000,"},
      {"timer", timerPlace, 40001, "", "MaxPdnConnTimer=40001,"},
      {"wait", waitPlace, 40002, "", "PdnReqWaitInterval=40002,"},
      {"disabled 0", disabledPlace, 0, "", "IsApnDisabled=0,"},
      {"disabled 128", disabledPlace, 128, "", "IsApnDisabled=1,"},
      {"mask", maskPlace, 0x2000, "", "ApnTypesMask=8192,"},
      {"CLAT 0", clatPlace, 0, "", "IsClatEnabled=0,"},
      {"CLAT 2", clatPlace, 2, "", "IsClatEnabled=1,"},
  };
}

TEST(Modem3gppProfileResponseTest, Construct_OneField_IsReadAndTheRestAbsent) {
  for (const ResponseRow& row : responseRows()) {
    SCOPED_TRACE(row.what);
    // Any flag but 0 means that the field is there.
    MessageBytes settings = emptySettings().u8(row.place.responseValid, 0x80);
    putValue(settings, row.place, row.place.responseValue, row.number, row.text);
    const CapturingLogWriter log;
    const Modem3gppProfile profile(7, settings.as<wds_get_profile_settings_resp_msg_v01>());
    EXPECT_EQ(log.messages(LogLevel::Debug), row.debugLines);
    EXPECT_EQ(log.lines().size(), row.debugLines.size());
    EXPECT_EQ(profile.dump(), "ProfileId=7," + row.dump);
    EXPECT_FALSE(profile.getIsPersistent());
    EXPECT_FALSE(profile.getIsPavoCreated());
    EXPECT_EQ(profile.getRefCount(), 0);
  }
}

TEST(Modem3gppProfileResponseTest, Construct_ValueWithoutItsFlag_IsAbsent) {
  for (const ResponseRow& row : responseRows()) {
    SCOPED_TRACE(row.what);
    MessageBytes settings = emptySettings();
    putValue(settings, row.place, row.place.responseValue, row.number, row.text);
    const Modem3gppProfile profile(7, settings.as<wds_get_profile_settings_resp_msg_v01>());
    EXPECT_EQ(profile.dump(), "ProfileId=7,");
  }
}

TEST(Modem3gppProfileResponseTest, Construct_Persistent_ByFlagAndValue) {
  struct Row {
    std::uint8_t valid;
    std::uint8_t value;
    bool isPersistent;
  };
  for (const Row& row :
       {Row{0, 0, false}, Row{0, 1, false}, Row{1, 0, false}, Row{1, 1, true}, Row{2, 3, true}}) {
    SCOPED_TRACE(testing::Message() << int{row.valid} << " " << int{row.value});
    const auto settings = emptySettings().u8(2188, row.valid).u8(2189, row.value);
    const Modem3gppProfile profile(7, settings.as<wds_get_profile_settings_resp_msg_v01>());
    EXPECT_EQ(profile.getIsPersistent(), row.isPersistent);
    EXPECT_EQ(profile.dump(), "ProfileId=7,");
  }
}

// Every byte of the message is set, so no field in it may be trusted.
TEST(Modem3gppProfileResponseTest, Construct_EveryByteSet_TextsAreBounded) {
  MessageBytes settings = emptySettings();
  for (std::size_t at = 8; at < settingsResponseSize; ++at) {
    settings.u8(at, 0xFF);
  }
  const Modem3gppProfile profile(-3, settings.as<wds_get_profile_settings_resp_msg_v01>());
  EXPECT_EQ(profile.getProfileId(), -3);
  EXPECT_EQ(profile.getProfileName(), std::string(50, '\xFF'));
  EXPECT_EQ(profile.getApnName(), std::string(150, '\xFF'));
  EXPECT_EQ(profile.getUserName(), std::string(127, '\xFF'));
  EXPECT_EQ(profile.getPassword(), std::string(127, '\xFF'));
  EXPECT_EQ(profile.getAuthType(), AuthType::PAP_CHAP);
  EXPECT_EQ(profile.getApnTypesMask(), ~0ULL);
  EXPECT_EQ(profile.getMaxPdnsConnPerBlock(), 65535);
  EXPECT_EQ(profile.getApnClass(), ApnClass{255});
  EXPECT_EQ(profile.getCommonIPType(), IPType::UNKNOWN);
  // 0xFFFFFFFF differs from the 255 of an unspecified type.
  EXPECT_TRUE(profile.hasLteRoamIPType());
  EXPECT_EQ(profile.getLteRoamIPType(), IPType::UNKNOWN);
}

struct GetRow {
  const char* what;
  MessageBytes settings;
  std::string expected;
};

// These rows give a client's view of a profile as the modem describes it.
std::vector<GetRow> getRows() {
  const std::string foreign = "IsPavoProfile=0,IsIAProfile=0,";
  return {
      {"nothing", emptySettings(), foreign},
      {"name pavo_profile", emptySettings().u8(8, 1).text(9, "pavo_profile"),
       "IsPavoProfile=1,IsIAProfile=0,"},
      {"name pavo_profile_ia", emptySettings().u8(8, 1).text(9, "pavo_profile_ia"),
       "IsPavoProfile=1,IsIAProfile=1,"},
      {"other case", emptySettings().u8(8, 1).text(9, "PAVO_profile"), foreign},
      {"IA in other case", emptySettings().u8(8, 1).text(9, "pavo_profile_IA"), foreign},
      {"longer name", emptySettings().u8(8, 1).text(9, "pavo_profile_iab"), foreign},
      {"prefix", emptySettings().u8(8, 1).text(9, "pavo_profil"), foreign},
      {"empty name", emptySettings().u8(8, 1), foreign},
      {"name without flag", emptySettings().text(9, "pavo_profile"), foreign},
      {"common only", emptySettings().u8(60, 1).u32(64, 2), "HomeIPType=V6," + foreign},
      {"override and common", emptySettings().u8(60, 1).u32(64, 3).u8(1112, 1).u32(1116, 1),
       "HomeIPType=V6," + foreign},
      {"override unspecified", emptySettings().u8(60, 1).u32(64, 0).u8(1112, 1).u32(1116, 255),
       "HomeIPType=V4," + foreign},
      {"override alone", emptySettings().u8(1112, 1).u32(1116, 0), "HomeIPType=V4," + foreign},
      {"override unspecified alone", emptySettings().u8(1112, 1).u32(1116, 255), foreign},
      {"common unknown", emptySettings().u8(60, 1).u32(64, 1), "HomeIPType=UNKNOWN," + foreign},
      {"both roaming", emptySettings().u8(1050, 1).u32(1052, 1).u8(1056, 1).u32(1060, 1),
       "RoamIPType=V6," + foreign},
      {"roaming differ", emptySettings().u8(1050, 1).u32(1052, 1).u8(1056, 1).u32(1060, 2),
       foreign},
      {"LTE alone", emptySettings().u8(1050, 1).u32(1052, 1), foreign},
      {"UMTS alone", emptySettings().u8(1056, 1).u32(1060, 1), foreign},
      {"LTE unspecified", emptySettings().u8(1050, 1).u32(1052, 255).u8(1056, 1).u32(1060, 1),
       foreign},
      {"both unspecified", emptySettings().u8(1050, 1).u32(1052, 255).u8(1056, 1).u32(1060, 255),
       foreign},
      {"mask without a client bit", emptySettings().u8(3240, 1).u64(3248, 0x1'0000'2000),
       "ApnTypesMask=NONE," + foreign},
  };
}

TEST_F(Modem3gppProfileTest, GetProfile_ReadFromTheModem_IsTheClientsView) {
  for (const GetRow& row : getRows()) {
    SCOPED_TRACE(row.what);
    setModemProfile(9, row.settings);
    manager.refresh(PDC_REFRESH_COMPLETED);
    const auto read = manager.getProfile(keyOf(9));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->dump(), row.expected);
  }
}

TEST_F(Modem3gppProfileTest, AddProfile_LongTexts_AreCutSilently) {
  std::string mixed;
  for (int i = 0; i < 100; ++i) {
    mixed += "aB";
  }
  AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
  params.setApnName(mixed);
  params.setUserName(longText);
  params.setPassword(longText);
  const Key key = manager.addProfile(params);
  std::string lower;
  for (int i = 0; i < 75; ++i) {
    lower += "ab";
  }
  const auto sent = platform.sent(0x27);
  ASSERT_EQ(sent.size(), 1U);
  const std::string cut(127, 'x');
  EXPECT_THAT(emptyCreate()
                  .u8(4, 1)
                  .text(5, "pavo_profile")
                  .u8(80, 1)
                  .text(81, lower)
                  .u8(400, 1)
                  .text(401, cut)
                  .u8(529, 1)
                  .text(530, cut)
                  .differences(MessageBytes::of(sent[0].bytes)),
              IsEmpty());
  const auto read = manager.getProfile(key);
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->getApnName(), lower);
}

TEST(Modem3gppProfileRecordTest, Construct_FromParams_NothingElseIsSet) {
  const Modem3gppProfile profile{ProfileParams()};
  EXPECT_EQ(profile.dump(), "ProfileId=-1,");
  EXPECT_EQ(profile.getProfileId(), -1);
  EXPECT_FALSE(profile.getIsPersistent());
  EXPECT_FALSE(profile.getIsPavoCreated());
  EXPECT_EQ(profile.getRefCount(), 0);
}

TEST(Modem3gppProfileRecordTest, Getters_AbsentAttributes_ReadAsZero) {
  const Modem3gppProfile profile{ProfileParams()};
  EXPECT_FALSE(profile.hasLteRoamIPType());
  EXPECT_EQ(profile.getLteRoamIPType(), IPType::UNKNOWN);
  EXPECT_FALSE(profile.hasUmtsRoamIPType());
  EXPECT_EQ(profile.getUmtsRoamIPType(), IPType::UNKNOWN);
  EXPECT_FALSE(profile.hasMaxPdnsConnPerBlock());
  EXPECT_EQ(profile.getMaxPdnsConnPerBlock(), 0);
  EXPECT_FALSE(profile.hasMaxPdnConnTimer());
  EXPECT_EQ(profile.getMaxPdnConnTimer(), 0);
  EXPECT_FALSE(profile.hasPdnReqWaitInterval());
  EXPECT_EQ(profile.getPdnReqWaitInterval(), 0);
  EXPECT_FALSE(profile.hasIsApnDisabled());
  EXPECT_FALSE(profile.getIsApnDisabled());
  EXPECT_FALSE(profile.hasIsEmergencySupported());
  EXPECT_FALSE(profile.getIsEmergencySupported());
  EXPECT_FALSE(profile.hasProfileName());
  EXPECT_EQ(profile.getProfileName(), "");
}

// Sets one attribute and expects it alone to be present, with its value.
template <auto has, auto get, auto set, typename Value>
void expectOwnPlace(Value value) {
  Modem3gppProfile profile{ProfileParams()};
  const auto present = [&profile] {
    return std::array{profile.hasApnName(),
                      profile.hasUserName(),
                      profile.hasPassword(),
                      profile.hasAuthType(),
                      profile.hasApnTypesMask(),
                      profile.hasApnClass(),
                      profile.hasIsClatEnabled(),
                      profile.hasCommonIPType(),
                      profile.hasOverrideHomeIPType(),
                      profile.hasLteRoamIPType(),
                      profile.hasUmtsRoamIPType(),
                      profile.hasMaxPdnsConnPerBlock(),
                      profile.hasMaxPdnConnTimer(),
                      profile.hasPdnReqWaitInterval(),
                      profile.hasIsApnDisabled(),
                      profile.hasIsEmergencySupported(),
                      profile.hasProfileName()};
  };
  const auto before = present();
  (profile.*set)(value);
  EXPECT_TRUE((profile.*has)());
  EXPECT_EQ((profile.*get)(), value);
  const auto after = present();
  int differences = 0;
  for (std::size_t i = 0; i < after.size(); ++i) {
    differences += before.at(i) == after.at(i) ? 0 : 1;
  }
  EXPECT_EQ(differences, 1);
}

TEST(Modem3gppProfileRecordTest, Accessors_AnyAttribute_ReachTheirOwnPlace) {
  using P = Modem3gppProfile;
  expectOwnPlace<&P::hasApnName, &P::getApnName, &P::setApnName>(std::string("a"));
  expectOwnPlace<&P::hasUserName, &P::getUserName, &P::setUserName>(std::string("u"));
  expectOwnPlace<&P::hasPassword, &P::getPassword, &P::setPassword>(std::string("p"));
  expectOwnPlace<&P::hasAuthType, &P::getAuthType, &P::setAuthType>(AuthType::CHAP);
  expectOwnPlace<&P::hasApnTypesMask, &P::getApnTypesMask, &P::setApnTypesMask>(7ULL);
  expectOwnPlace<&P::hasApnClass, &P::getApnClass, &P::setApnClass>(ApnClass::IMS);
  expectOwnPlace<&P::hasIsClatEnabled, &P::getIsClatEnabled, &P::setIsClatEnabled>(true);
  expectOwnPlace<&P::hasCommonIPType, &P::getCommonIPType, &P::setCommonIPType>(IPType::V6);
  expectOwnPlace<&P::hasOverrideHomeIPType, &P::getOverrideHomeIPType, &P::setOverrideHomeIPType>(
      IPType::V4);
  expectOwnPlace<&P::hasLteRoamIPType, &P::getLteRoamIPType, &P::setLteRoamIPType>(IPType::V6);
  expectOwnPlace<&P::hasUmtsRoamIPType, &P::getUmtsRoamIPType, &P::setUmtsRoamIPType>(IPType::V4);
  expectOwnPlace<&P::hasMaxPdnsConnPerBlock, &P::getMaxPdnsConnPerBlock,
                 &P::setMaxPdnsConnPerBlock>(11);
  expectOwnPlace<&P::hasMaxPdnConnTimer, &P::getMaxPdnConnTimer, &P::setMaxPdnConnTimer>(12);
  expectOwnPlace<&P::hasPdnReqWaitInterval, &P::getPdnReqWaitInterval, &P::setPdnReqWaitInterval>(
      13);
  expectOwnPlace<&P::hasIsApnDisabled, &P::getIsApnDisabled, &P::setIsApnDisabled>(true);
  expectOwnPlace<&P::hasIsEmergencySupported, &P::getIsEmergencySupported,
                 &P::setIsEmergencySupported>(true);
}

TEST(Modem3gppProfileRecordTest, Setters_ZeroAndEmptyValues_AreStoredAndPresent) {
  Modem3gppProfile profile{ProfileParams()};
  profile.setLteRoamIPType(IPType::UNKNOWN);
  profile.setUmtsRoamIPType(IPType::V6);
  profile.setMaxPdnsConnPerBlock(0);
  profile.setMaxPdnConnTimer(-5);
  profile.setPdnReqWaitInterval(70000);
  profile.setIsApnDisabled(false);
  profile.setIsEmergencySupported(false);
  profile.setProfileName("");
  EXPECT_EQ(profile.dump(),
            "ProfileId=-1,LteRoamIP=UNKNOWN,UmtsRoamIP=V6,MaxPdnsConnPerBlock=0,"
            "MaxPdnConnTimer=-5,PdnReqWaitInterval=70000,IsApnDisabled=0,IsEmergencySupported=0,"
            "ProfileName=,");
  EXPECT_TRUE(profile.hasProfileName());
  EXPECT_TRUE(profile.hasIsApnDisabled());
  EXPECT_EQ(profile.getPdnReqWaitInterval(), 70000);
}

}  // namespace
}  // namespace pavo::test
