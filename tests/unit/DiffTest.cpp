// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests check which modify request a change leads to: for the record alone, and through the
// manager as the bytes of the request.
#include "Modem3gppProfile.h"
#include "RunningManagerTest.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int editedIndex = 7;

MessageBytes request() { return MessageBytes(modifyRequestSize).u8(4, editedIndex); }

struct EditRow {
  const char* what;
  MessageBytes settings;
  std::function<void(ProfileParams&)> want;
  // The dump of the difference; empty when there is none.
  std::string difference;
  MessageBytes sent = request();
};

// Returns settings with the three fields of the IP types.
MessageBytes types(std::optional<std::uint32_t> pdp, std::optional<std::uint32_t> roaming = {},
                   std::optional<std::uint32_t> homeOverride = {}) {
  MessageBytes settings = emptySettings();
  if (pdp) {
    settings.u8(60, 1).u32(64, *pdp);
  }
  if (roaming) {
    settings.u8(1050, 1).u32(1052, *roaming).u8(1056, 1).u32(1060, *roaming);
  }
  if (homeOverride) {
    settings.u8(1112, 1).u32(1116, *homeOverride);
  }
  return settings;
}

std::vector<EditRow> baseRows() {
  using P = ProfileParams;
  const auto user = emptySettings().u8(404, 1).text(405, "u");
  const auto password = emptySettings().u8(533, 1).text(534, "p");
  const auto auth = emptySettings().u8(662, 1).u8(663, 1);
  const auto name = emptySettings().u8(84, 1).text(85, "IMS");
  const auto apnClass = emptySettings().u8(992, 1).u8(993, 1);
  const auto clat = emptySettings().u8(3256, 1).u8(3257, 1);
  const auto mask = emptySettings().u8(3240, 1).u64(3248, 0x3);
  const auto none = emptySettings();
  return {
      {"nothing wanted", user, [](P&) {}, ""},
      {"name in other case", name, [](P& p) { p.setApnName("iMs"); }, ""},
      {"other name", name, [](P& p) { p.setApnName("NET"); }, "ProfileId=-1,ApnName=net,",
       request().u8(84, 1).text(85, "net")},
      {"empty name", name, [](P& p) { p.setApnName(""); }, "ProfileId=-1,ApnName=,",
       request().u8(84, 1)},
      {"name to none", none, [](P& p) { p.setApnName(""); }, "ProfileId=-1,ApnName=,",
       request().u8(84, 1)},
      {"same user", user, [](P& p) { p.setUserName("u"); }, ""},
      {"user in other case", user, [](P& p) { p.setUserName("U"); }, "ProfileId=-1,UserName=U,",
       request().u8(404, 1).text(405, "U")},
      {"only a password", user,
       [](P& p) {
         p.setUserName("u");
         p.setPassword("x");
       },
       "ProfileId=-1,Password=x,", request().u8(533, 1).text(534, "x")},
      {"same password", password, [](P& p) { p.setPassword("p"); }, ""},
      {"same auth", auth, [](P& p) { p.setAuthType(AuthType::PAP); }, ""},
      {"other auth", auth, [](P& p) { p.setAuthType(AuthType::NONE); },
       "ProfileId=-1,AuthType=NONE,", request().u8(662, 1)},
      {"same mask", mask, [](P& p) { p.setApnTypesMask(0x41); }, ""},
      {"other mask", mask, [](P& p) { p.setApnTypesMask(0x8001); },
       "ProfileId=-1,ApnTypesMask=4097,", request().u8(3236, 1).u64(3240, 0x1001)},
      {"mask 0", mask, [](P& p) { p.setApnTypesMask(0); }, "ProfileId=-1,ApnTypesMask=0,",
       request().u8(3236, 1)},
      {"mask 0 to none", none, [](P& p) { p.setApnTypesMask(0); }, "ProfileId=-1,ApnTypesMask=0,",
       request().u8(3236, 1)},
      // The modem has no such bit, so setting it counts as a change each time.
      {"unnamed client bit", mask, [](P& p) { p.setApnTypesMask(0x1041); },
       "ProfileId=-1,ApnTypesMask=3,", request().u8(3236, 1).u64(3240, 3)},
      {"unnamed modem bit", emptySettings().u8(3240, 1).u64(3248, 0x2003),
       [](P& p) { p.setApnTypesMask(0x41); }, ""},
      {"same class", apnClass, [](P& p) { p.setApnClass(ApnClass::IMS); }, ""},
      {"class by its full number", apnClass, [](P& p) { p.setApnClass(ApnClass{257}); },
       "ProfileId=-1,ApnClass=257,", request().u8(992, 1).u8(993, 1)},
      {"same CLAT", clat, [](P& p) { p.setIsClatEnabled(true); }, ""},
      {"CLAT off", clat, [](P& p) { p.setIsClatEnabled(false); }, "ProfileId=-1,IsClatEnabled=0,",
       request().u8(3248, 1)},
      {"CLAT off to none", none, [](P& p) { p.setIsClatEnabled(false); },
       "ProfileId=-1,IsClatEnabled=0,", request().u8(3248, 1)},
  };
}

std::vector<EditRow> own3gppRows() {
  using P = ProfileParams;
  const auto held = emptySettings()
                        .u8(1024, 1)
                        .u16(1026, 5)
                        .u8(1028, 1)
                        .u16(1030, 6)
                        .u8(1032, 1)
                        .u16(1034, 7)
                        .u8(984, 1)
                        .u8(985, 1)
                        .u8(1008, 1)
                        .u8(1009, 1);
  const auto none = emptySettings();
  return {
      {"all five the same", held,
       [](P& p) {
         p.setMaxPdnsConnPerBlock(5);
         p.setMaxPdnConnTimer(6);
         p.setPdnReqWaitInterval(7);
         p.setIsApnDisabled(true);
         p.setIsEmergencySupported(true);
       },
       ""},
      {"all five others", held,
       [](P& p) {
         p.setMaxPdnsConnPerBlock(65541);
         p.setMaxPdnConnTimer(-1);
         p.setPdnReqWaitInterval(8);
         p.setIsApnDisabled(false);
         p.setIsEmergencySupported(false);
       },
       "ProfileId=-1,MaxPdnsConnPerBlock=65541,MaxPdnConnTimer=-1,PdnReqWaitInterval=8,"
       "IsApnDisabled=0,IsEmergencySupported=0,",
       request()
           .u8(1024, 1)
           .u16(1026, 5)
           .u8(1028, 1)
           .u16(1030, 65535)
           .u8(1032, 1)
           .u16(1034, 8)
           .u8(984, 1)
           .u8(1008, 1)},
      {"one of them", held,
       [](P& p) {
         p.setMaxPdnConnTimer(6);
         p.setPdnReqWaitInterval(9);
       },
       "ProfileId=-1,PdnReqWaitInterval=9,", request().u8(1032, 1).u16(1034, 9)},
      {"per block 0 to none", none, [](P& p) { p.setMaxPdnsConnPerBlock(0); },
       "ProfileId=-1,MaxPdnsConnPerBlock=0,", request().u8(1024, 1)},
      {"timer 0 to none", none, [](P& p) { p.setMaxPdnConnTimer(0); },
       "ProfileId=-1,MaxPdnConnTimer=0,", request().u8(1028, 1)},
      {"wait 0 to none", none, [](P& p) { p.setPdnReqWaitInterval(0); },
       "ProfileId=-1,PdnReqWaitInterval=0,", request().u8(1032, 1)},
      {"enabled to none", none, [](P& p) { p.setIsApnDisabled(false); },
       "ProfileId=-1,IsApnDisabled=0,", request().u8(984, 1)},
      {"no emergency to none", none, [](P& p) { p.setIsEmergencySupported(false); },
       "ProfileId=-1,IsEmergencySupported=0,", request().u8(1008, 1)},
  };
}

std::function<void(ProfileParams&)> home(IPType type) {
  return [type](ProfileParams& p) { p.setHomeIPType(type); };
}
std::function<void(ProfileParams&)> roam(IPType type) {
  return [type](ProfileParams& p) { p.setRoamIPType(type); };
}
std::function<void(ProfileParams&)> homeAndRoam(IPType homeType, IPType roamType) {
  return [=](ProfileParams& p) {
    p.setHomeIPType(homeType);
    p.setRoamIPType(roamType);
  };
}

// The settings' PDP types are 0 V4, 2 V6, 3 V4V6; roaming and override 0 V4, 1 V6, 2 V4V6.
std::vector<EditRow> ipTypesEdits() {
  const auto lteV4UmtsV6 = types(0).u8(1050, 1).u32(1052, 0).u8(1056, 1).u32(1060, 1);
  return {
      {"V4 is V4", types(0), home(IPType::V4), ""},
      {"V4 becomes V6", types(0), home(IPType::V6), "ProfileId=-1,CommonIPType=V6,",
       request().u8(60, 1).u32(64, 2)},
      {"home to none", types({}), home(IPType::V4), "ProfileId=-1,CommonIPType=V4,",
       request().u8(60, 1)},
      {"home V4, roam V6 on common V4", types(0), homeAndRoam(IPType::V4, IPType::V6),
       "ProfileId=-1,CommonIPType=V4V6,OverrideHomeIPType=V4,LteRoamIP=V6,UmtsRoamIP=V6,",
       request()
           .u8(60, 1)
           .u32(64, 3)
           .u8(1112, 1)
           .u32(1116, 0)
           .u8(1050, 1)
           .u32(1052, 1)
           .u8(1056, 1)
           .u32(1060, 1)},
      {"the same again", types(3, 1, 0), homeAndRoam(IPType::V4, IPType::V6), ""},
      {"home equals roam takes the override back", types(3, 1, 0),
       homeAndRoam(IPType::V6, IPType::V6),
       "ProfileId=-1,CommonIPType=V6,OverrideHomeIPType=UNKNOWN,",
       request().u8(60, 1).u32(64, 2).u8(1112, 1).u32(1116, 255)},
      {"only home, now equal to roam", types(3, 1, 0), home(IPType::V6),
       "ProfileId=-1,CommonIPType=V6,OverrideHomeIPType=UNKNOWN,",
       request().u8(60, 1).u32(64, 2).u8(1112, 1).u32(1116, 255)},
      {"only home, the override changes", types(3, 1, 0), home(IPType::V4V6),
       "ProfileId=-1,OverrideHomeIPType=V4V6,", request().u8(1112, 1).u32(1116, 2)},
      {"only home, roam kept, override made", types(2, 1), home(IPType::V4),
       "ProfileId=-1,CommonIPType=V4V6,OverrideHomeIPType=V4,",
       request().u8(60, 1).u32(64, 3).u8(1112, 1).u32(1116, 0)},
      {"equal types without an override", types(2, 1), homeAndRoam(IPType::V6, IPType::V6), ""},
      {"an override of unknown stays", types(2, 1, 255), homeAndRoam(IPType::V6, IPType::V6), ""},
      {"roam alone, equal to common", types(2), roam(IPType::V6),
       "ProfileId=-1,LteRoamIP=V6,UmtsRoamIP=V6,",
       request().u8(1050, 1).u32(1052, 1).u8(1056, 1).u32(1060, 1)},
      {"roam alone, unlike common", types(2), roam(IPType::V4),
       "ProfileId=-1,CommonIPType=V4V6,OverrideHomeIPType=V6,LteRoamIP=V4,UmtsRoamIP=V4,",
       request().u8(60, 1).u32(64, 3).u8(1112, 1).u32(1116, 1).u8(1050, 1).u8(1056, 1)},
      {"roam alone, no common", types({}), roam(IPType::V4),
       "ProfileId=-1,LteRoamIP=V4,UmtsRoamIP=V4,", request().u8(1050, 1).u8(1056, 1)},
      {"only the UMTS type differs", lteV4UmtsV6, roam(IPType::V4), "ProfileId=-1,UmtsRoamIP=V4,",
       request().u8(1056, 1)},
      {"only the LTE type differs", lteV4UmtsV6, roam(IPType::V6),
       "ProfileId=-1,CommonIPType=V4V6,OverrideHomeIPType=V4,LteRoamIP=V6,",
       request().u8(60, 1).u32(64, 3).u8(1112, 1).u32(1116, 0).u8(1050, 1).u32(1052, 1)},
      {"roaming types that differ count for nothing", lteV4UmtsV6, home(IPType::V6),
       "ProfileId=-1,CommonIPType=V6,", request().u8(60, 1).u32(64, 2)},
      {"LTE alone counts for nothing", types(0).u8(1050, 1).u32(1052, 0), home(IPType::V6),
       "ProfileId=-1,CommonIPType=V6,", request().u8(60, 1).u32(64, 2)},
      {"unknown home", types(0), home(IPType::UNKNOWN), "ProfileId=-1,CommonIPType=UNKNOWN,",
       request().u8(60, 1).u32(64, 3)},
      // The modem may have made such a profile itself: any change makes its types consistent.
      {"an override without roaming types", types(3, {}, 0), [](ProfileParams&) {},
       "ProfileId=-1,CommonIPType=V4,", request().u8(60, 1).u32(64, 0)},
      {"common unlike roaming without an override", types(3, 1), [](ProfileParams&) {},
       "ProfileId=-1,OverrideHomeIPType=V4V6,", request().u8(1112, 1).u32(1116, 2)},
  };
}

std::vector<EditRow> editRows() {
  std::vector<EditRow> all;
  for (const auto& rows : {baseRows(), own3gppRows(), ipTypesEdits()}) {
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

ModifyProfileParams wanted(const EditRow& row) {
  ModifyProfileParams params;
  row.want(params);
  return params;
}

TEST(DiffTest, Diff_OfARecord_OnlyWhatDiffers) {
  for (const EditRow& row : editRows()) {
    Modem3gppProfile profile(editedIndex, row.settings.as<wds_get_profile_settings_resp_msg_v01>());
    profile.setProfileName("pavo_profile");
    SCOPED_TRACE(testing::Message()
                 << row.what << ": " << profile.dump() << " to " << wanted(row).dump());
    const std::string before = profile.dump();
    const auto difference = profile.diff(wanted(row));
    EXPECT_EQ(difference != nullptr ? difference->dump() : "", row.difference);
    EXPECT_EQ(profile.dump(), before);
  }
}

class DiffThroughManagerTest : public RunningManagerTest {
 protected:
  Key cachedWith(const MessageBytes& settings) {
    setModemProfile(editedIndex, settings);
    manager.refresh(PDC_REFRESH_COMPLETED);
    Key key = keyOf(editedIndex);
    platform.clearCalls();
    log->clear();
    return key;
  }
};

TEST_F(DiffThroughManagerTest, ModifyProfile_Changes_OnlyTheirBytesAreSent) {
  for (const EditRow& row : editRows()) {
    SCOPED_TRACE(row.what);
    const Key key = cachedWith(row.settings);
    ASSERT_NE(key, nullptr);
    EXPECT_TRUE(manager.modifyProfile(wanted(row), key));
    const auto sent = platform.sent();
    if (row.difference.empty()) {
      EXPECT_THAT(sent, IsEmpty());
      EXPECT_EQ(lineCount("ProfileCache: profile is unchanged"), 1U);
    } else {
      ASSERT_EQ(sent.size(), 1U);
      EXPECT_EQ(sent[0].msgId, 0x28U);
      EXPECT_THAT(row.sent.differences(MessageBytes::of(sent[0].bytes)), IsEmpty());
      std::string line = "Diff: ";
      line += row.difference;
      EXPECT_EQ(lineCount(line), 1U);
    }
  }
}

// After a change the profile has the requested value, so the same change again sends nothing. A bit
// that the modem does not have is the exception.
TEST_F(DiffThroughManagerTest, ModifyProfile_Again_NothingIsSent) {
  for (const EditRow& row : editRows()) {
    SCOPED_TRACE(row.what);
    const Key key = cachedWith(row.settings);
    EXPECT_TRUE(manager.modifyProfile(wanted(row), key));
    platform.clearCalls();
    EXPECT_TRUE(manager.modifyProfile(wanted(row), key));
    const bool repeats = std::string(row.what) == "unnamed client bit";
    EXPECT_EQ(platform.sent().size(), repeats ? 1U : 0U);
  }
}

TEST_F(DiffThroughManagerTest, ModifyProfile_OverrideTakenBack_HomeIsTheCommonType) {
  const Key key = cachedWith(types(3, 1, 0));
  ASSERT_EQ(manager.getProfile(key)->getHomeIPType(), IPType::V4);
  ModifyProfileParams params;
  params.setHomeIPType(IPType::V6);
  ASSERT_TRUE(manager.modifyProfile(params, key));
  const auto read = manager.getProfile(key);
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->getHomeIPType(), IPType::V6);
  EXPECT_EQ(read->getRoamIPType(), IPType::V6);
  EXPECT_THAT(cached(),
              ElementsAre(entryLine(key,
                                    "ProfileId=7,CommonIPType=V6,OverrideHomeIPType=UNKNOWN,"
                                    "LteRoamIP=V6,UmtsRoamIP=V6,")));
}

// These rows give the IP types that getNewIPTypes computes from the client's. An output that the
// rules do not mention keeps the caller's value.
struct NewTypesRow {
  const char* what;
  MessageBytes settings;
  std::function<void(ProfileParams&)> want;
  std::optional<IPType> common;
  std::optional<IPType> roam;
  std::optional<IPType> homeOverride;
};

TEST(DiffTest, GetNewIPTypes_OutputsSetBefore_UnmentionedOnesStay) {
  const IPType before{42};
  const auto mixed = types(0).u8(1050, 1).u32(1052, 0).u8(1056, 1).u32(1060, 1);
  const NewTypesRow rows[] = {
      {"nothing", types({}), [](ProfileParams&) {}, {}, {}, before},
      {"home only", types({}), home(IPType::V4), IPType::V4, {}, before},
      {"roam only", types({}), roam(IPType::V4), {}, IPType::V4, before},
      {"both equal", types({}), homeAndRoam(IPType::V4, IPType::V4), IPType::V4, IPType::V4,
       before},
      {"both equal, override", types(3, 1, 0), homeAndRoam(IPType::V4, IPType::V4), IPType::V4,
       IPType::V4, IPType::UNKNOWN},
      {"both equal, unknown override", types(0, 0, 255), homeAndRoam(IPType::V4, IPType::V4),
       IPType::V4, IPType::V4, IPType::UNKNOWN},
      {"both differ", types({}), homeAndRoam(IPType::V4, IPType::V6), IPType::V4V6, IPType::V6,
       IPType::V4},
      {"stored override", types(3, 1, 0), [](ProfileParams&) {}, IPType::V4V6, IPType::V6,
       IPType::V4},
      {"stored unknown override", types(2, 1, 255), [](ProfileParams&) {}, IPType::V6, IPType::V6,
       IPType::UNKNOWN},
      {"stored roaming types differ", mixed, home(IPType::V6), IPType::V4V6, before, IPType::V6},
      {"stored LTE only", types(0).u8(1050, 1), [](ProfileParams&) {}, IPType::V4V6, before,
       IPType::V4},
      {"stored UMTS only", types({}).u8(1056, 1), [](ProfileParams&) {}, {}, before, before},
  };
  for (const NewTypesRow& row : rows) {
    SCOPED_TRACE(row.what);
    const Modem3gppProfile profile(editedIndex,
                                   row.settings.as<wds_get_profile_settings_resp_msg_v01>());
    ProfileParams params;
    row.want(params);
    std::optional<IPType> newCommon = before;
    std::optional<IPType> newRoam = before;
    std::optional<IPType> newOverride = before;
    profile.getNewIPTypes(params, newCommon, newRoam, newOverride);
    EXPECT_EQ(newCommon, row.common);
    EXPECT_EQ(newRoam, row.roam);
    EXPECT_EQ(newOverride, row.homeOverride);
  }
}

TEST(DiffTest, UpdateDiffParameters_NothingDiffers_ChangedStaysAsItWas) {
  ProfileParams own;
  own.setApnName("ims");
  own.setUserName("u");
  const Modem3gppProfile profile(own);
  for (const bool before : {false, true}) {
    ProfileParams changes;
    bool changed = before;
    profile.updateDiffParameters(ModifyProfileParams(own), changes, changed);
    EXPECT_EQ(changed, before);
    EXPECT_EQ(changes.dump(), "");
  }
}

TEST(DiffTest, UpdateDiffParameters_AllDiffer_NameNormalisedAndMaskInClientBits) {
  ModifyProfileParams params;
  params.setApnName("IMS");
  params.setUserName("U");
  params.setPassword("P");
  params.setAuthType(AuthType{9});
  params.setApnTypesMask(0x9041);
  params.setApnClass(ApnClass::APP);
  params.setIsClatEnabled(false);
  params.setMaxPdnConnTimer(1);
  ProfileParams changes;
  bool changed = false;
  Modem3gppProfile{ProfileParams()}.updateDiffParameters(params, changes, changed);
  EXPECT_TRUE(changed);
  EXPECT_EQ(changes.dump(),
            "ApnName=ims,UserName=U,Password=P,AuthType=9,ApnTypesMask=DEFAULT|IMS|36929RCS|,"
            "ApnClass=APP,IsClatEnabled=0,");
}

}  // namespace
}  // namespace pavo::test
