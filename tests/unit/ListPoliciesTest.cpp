// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the policies that write a list of wanted profiles to the modem: by APN class,
// and the APN types by name.
#include "PoliciesTest.h"

#include <unordered_set>

namespace pavo::test {
namespace {

class ListPoliciesTest : public PoliciesTest {
 protected:
  void expectByClass(const std::list<ProfileParams>& wanted, const Expected& expected) const {
    expect(
        [&](const policy::Run& run) {
          policy::updateModemProfileByApnClass(run, wanted);
          return "";
        },
        expected);
  }

  void expectTypes(const std::list<ProfileParams>& wanted, const Expected& expected) const {
    expect(
        [&](const policy::Run& run) {
          policy::updateAPNTypeBitmaskOnModemProfile(run, wanted);
          return "";
        },
        expected);
  }

  void expectUpdateByIpType(const Expected& expected) const {
    expect(
        [](const policy::Run& run) {
          return policy::updateByIpType(run, IPType::V6, /*mask=*/0, "Internet") ? "true" : "false";
        },
        expected);
  }
};

TEST_F(ListPoliciesTest, ApnClass_SeveralClasses_EachOfOneIsChangedAndAMissingOneIsMade) {
  put({Stored().apn("ims").ofClass(ApnClass::IMS).user("x"),
       Stored().apn("internet").ofClass(ApnClass::INET),
       Stored().apn("sos").ofClass(ApnClass::IMS).name("pavo_profile"), Stored().apn("ims")});
  expectByClass(
      {Wanted().apn("IMS").user("u").home(IPType::V4).ofClass(ApnClass::IMS),
       Wanted().apn("internet").user("u"),
       Wanted().apn("admin").home(IPType::V6).ofClass(ApnClass::ADMN)},
      {.lines = {"H pavo updateModemProfileByApnClass > ",
                 "H   3gpp:", "H     ApnName=IMS,UserName=u,HomeIPType=V4,ApnClass=IMS,",
                 "H     ApnName=internet,UserName=u,",
                 "H     ApnName=admin,HomeIPType=V6,ApnClass=ADMN,",
                 "D pavo update 3gpp modem profile by APN class for "
                 "ApnName=IMS,UserName=u,HomeIPType=V4,ApnClass=IMS,",
                 "filter None: ApnClass=IMS, finds 1 3",
                 "D Found a match for APN class and tech type, modify the profile",
                 "modify 1 ApnName=IMS,UserName=u,HomeIPType=V4,ApnClass=IMS,",
                 "modify 3 ApnName=IMS,UserName=u,HomeIPType=V4,ApnClass=IMS,",
                 "D pavo update 3gpp modem profile by APN class for ApnName=internet,UserName=u,",
                 "D pavo either tech type or apn class is missing",
                 "D pavo update 3gpp modem profile by APN class for "
                 "ApnName=admin,HomeIPType=V6,ApnClass=ADMN,",
                 "filter None: ApnClass=ADMN, finds nothing",
                 "D Did not find a match for APN class and tech type, create a persistent profile",
                 "add persist=1: ApnName=admin,HomeIPType=V6,ApnClass=ADMN,IsIAProfile=0, makes 5",
                 "H pavo updateModemProfileByApnClass < OK"},
       .changes = {
           "modify 1 UserName=u,CommonIPType=V4,",
           "modify 3 ApnName=ims,UserName=u,CommonIPType=V4,",
           "create ApnName=admin,CommonIPType=V6,ApnClass=ADMN,ProfileName=pavo_profile,"}});
}

TEST_F(ListPoliciesTest, ApnClass_EmptyList_FirstAndLastLine) {
  switches = {true};
  put({Stored().apn("ims").ofClass(ApnClass::IMS)});
  expectByClass({}, {.lines = {"H pavo updateModemProfileByApnClass > ",
                               "H   3gpp:", "H pavo updateModemProfileByApnClass < OK"}});
}

TEST_F(ListPoliciesTest, ApnClass_Unclassified_IsAClass) {
  put({Stored().apn("ims").ofClass(ApnClass::UNCLASSIFIED)});
  expectByClass(
      {Wanted().user("u").ofClass(ApnClass::UNCLASSIFIED)},
      {.lines = {"H pavo updateModemProfileByApnClass > ",
                 "H   3gpp:", "H     UserName=u,ApnClass=0,",
                 "D pavo update 3gpp modem profile by APN class for UserName=u,ApnClass=0,",
                 "filter None: ApnClass=0, finds 1",
                 "D Found a match for APN class and tech type, modify the profile",
                 "modify 1 UserName=u,ApnClass=0,", "H pavo updateModemProfileByApnClass < OK"},
       .changes = {"modify 1 UserName=u,"}});
}

TEST_F(ListPoliciesTest, ApnClass_ChangeRefused_IsNoError) {
  isRefusing = true;
  put({Stored().apn("ims").ofClass(ApnClass::IMS)});
  expectByClass(
      {Wanted().user("u").ofClass(ApnClass::IMS)},
      {.lines = {"H pavo updateModemProfileByApnClass > ",
                 "H   3gpp:", "H     UserName=u,ApnClass=IMS,",
                 "D pavo update 3gpp modem profile by APN class for UserName=u,ApnClass=IMS,",
                 "filter None: ApnClass=IMS, finds 1",
                 "D Found a match for APN class and tech type, modify the profile",
                 "modify 1 UserName=u,ApnClass=IMS,", "H pavo updateModemProfileByApnClass < OK"},
       .changes = {"modify 1 UserName=u,"}});
}

TEST_F(ListPoliciesTest, ApnClass_CreateRefused_IsAnError) {
  isRefusing = true;
  expectByClass(
      {Wanted().user("u").ofClass(ApnClass::APP)},
      {.lines = {"H pavo updateModemProfileByApnClass > ",
                 "H   3gpp:", "H     UserName=u,ApnClass=APP,",
                 "D pavo update 3gpp modem profile by APN class for UserName=u,ApnClass=APP,",
                 "filter None: ApnClass=APP, finds nothing",
                 "D Did not find a match for APN class and tech type, create a persistent profile",
                 "add persist=1: UserName=u,ApnClass=APP,IsIAProfile=0, fails",
                 "E Could not add profile by APN class",
                 "H pavo updateModemProfileByApnClass < OK"},
       .changes = {"create UserName=u,ApnClass=APP,ProfileName=pavo_profile,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_EmptyList_FirstAndLastLine) {
  put({Stored()});
  expectTypes({}, {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                             "H pavo updateAPNTypeBitmaskOnModemProfile < OK"}});
}

TEST_F(ListPoliciesTest, ApnTypes_EachTypesProfiles_GetTheirMask) {
  put({Stored().apn("internet").type(IPType::V4),
       Stored().apn("internet").type(IPType::V6).types(DEFAULT),
       Stored().apn("internet").type(IPType::V4), Stored().apn("internet").type(IPType::V4V6),
       Stored().apn("intern").type(IPType::V4)});
  expectTypes(
      {Wanted().apn("Internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("INTERNET").user("u").home(IPType::V6).types(IMS),
       Wanted().apn("internet").home(IPType::V6).types(IA),
       Wanted().apn("internet").home(IPType::V4).types(MMS)},
      {.lines =
           {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
            "H     ApnName=Internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
            "H     ApnName=INTERNET,UserName=u,HomeIPType=V6,ApnTypesMask=IMS|,",
            "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=IA|,",
            "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=MMS|,",
            "H pavo update APN type bitmask on modem profile for "
            "ApnName=Internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
            "H pavo update APN type bitmask on modem profile for "
            "ApnName=INTERNET,UserName=u,HomeIPType=V6,ApnTypesMask=IMS|,",
            "H pavo update APN type bitmask on modem profile for "
            "ApnName=internet,HomeIPType=V6,ApnTypesMask=IA|,",
            "H pavo update APN type bitmask on modem profile for "
            "ApnName=internet,HomeIPType=V4,ApnTypesMask=MMS|,",
            "D pavo processing APN name internet, V4 mask:0x3, v6 mask0x140:, v4v6 mask:0x0",
            "filter None: ApnName=internet,HomeIPType=V4, finds 1 3",
            "D pavo updating profile id:1, with mask0x3:", "modify 1 ApnTypesMask=DEFAULT|MMS|,",
            "D pavo updating profile id:3, with mask0x3:", "modify 3 ApnTypesMask=DEFAULT|MMS|,",
            "filter None: ApnName=internet,HomeIPType=V6, finds 2",
            "D pavo updating profile id:2, with mask0x140:", "modify 2 ApnTypesMask=IMS|IA|,",
            "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=5,", "modify 3 ApnTypesMask=5,",
                   "modify 2 ApnTypesMask=258,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_V4MaskAlone_GoesToTheV4Profile) {
  put({Stored().apn("internet").type(IPType::V4)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x1:", "modify 1 ApnTypesMask=DEFAULT|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=1,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_NoV4Profile_MaskGoesToTheV4V6One) {
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V4V6).types(MMS)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=MMS|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x2",
                 "filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds 1",
                 "D pavo updating profile id:1, with mask0x3:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=5,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_NoV6Profile_MaskGoesToTheV4V6One) {
  put({Stored().apn("internet").type(IPType::V4), Stored().apn("internet").type(IPType::V4V6)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x1:", "modify 1 ApnTypesMask=DEFAULT|,",
                 "filter None: ApnName=internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds 2",
                 "D pavo updating profile id:2, with mask0x2:", "modify 2 ApnTypesMask=MMS|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=1,", "modify 2 ApnTypesMask=4,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_V4V6ProfileAlone_GetsAllThree) {
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS),
       Wanted().apn("internet").home(IPType::V4V6).types(SUPL)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4",
                 "filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds 1",
                 "D pavo updating profile id:1, with mask0x7:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|SUPL|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=21,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_NoV4V6Profile_MaskGoesToBothOthersOnTopOfTheirs) {
  put({Stored().apn("internet").type(IPType::V4), Stored().apn("internet").type(IPType::V6)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS),
       Wanted().apn("internet").home(IPType::V4V6).types(SUPL)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x1:",
                 "modify 1 ApnTypesMask=DEFAULT|,",
                 "filter None: ApnName=internet,HomeIPType=V6, finds 2",
                 "D pavo updating profile id:2, with mask0x2:",
                 "modify 2 ApnTypesMask=MMS|,",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x5:",
                 "modify 1 ApnTypesMask=DEFAULT|SUPL|,",
                 "filter None: ApnName=internet,HomeIPType=V6, finds 2",
                 "D pavo updating profile id:2, with mask0x6:",
                 "modify 2 ApnTypesMask=MMS|SUPL|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=1,", "modify 2 ApnTypesMask=4,",
                   "modify 1 ApnTypesMask=17,", "modify 2 ApnTypesMask=20,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_V4V6MaskAloneNoV4V6Profile_GoesToBothOthers) {
  put({Stored().apn("internet").type(IPType::V4), Stored().apn("internet").type(IPType::V6)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4V6).types(SUPL)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x4",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x4:", "modify 1 ApnTypesMask=SUPL|,",
                 "filter None: ApnName=internet,HomeIPType=V6, finds 2",
                 "D pavo updating profile id:2, with mask0x4:", "modify 2 ApnTypesMask=SUPL|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=16,", "modify 2 ApnTypesMask=16,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_V4ProfileAlone_GetsTheV6MaskToo) {
  put({Stored().apn("internet").type(IPType::V4)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x1:", "modify 1 ApnTypesMask=DEFAULT|,",
                 "filter None: ApnName=internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4, finds 1",
                 "D pavo updating profile id:1, with mask0x3:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|,",
                 "filter None: ApnName=internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=1,", "modify 1 ApnTypesMask=5,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_V6ProfileAlone_GetsTheV4MaskToo) {
  put({Stored().apn("internet").type(IPType::V6)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0",
                 "filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V6, finds 1",
                 "D pavo updating profile id:1, with mask0x2:", "modify 1 ApnTypesMask=MMS|,",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V6, finds 1",
                 "D pavo updating profile id:1, with mask0x3:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=4,", "modify 1 ApnTypesMask=5,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_NoProfileOfTheName_EveryTypeIsLookedUp) {
  put({Stored().apn("ims").type(IPType::V4)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS),
       Wanted().apn("internet").home(IPType::V4V6).types(SUPL)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4",
                 "filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP",
                 "filter None: ApnName=internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"}});
}

TEST_F(ListPoliciesTest, ApnTypes_AbsentMask_NothingIsLookedUp) {
  put({Stored().apn("internet").type(IPType::V4).types(DEFAULT)});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4), Wanted().apn("internet"),
       Wanted().apn("internet").home(IPType::V6).types(NONE)},
      {.lines = {
           "H pavo updateAPNTypeBitmaskOnModemProfile > ", "H     ApnName=internet,HomeIPType=V4,",
           "H     ApnName=internet,", "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=NONE,",
           "H pavo update APN type bitmask on modem profile for ApnName=internet,HomeIPType=V4,",
           "E pavo APN type mask not present, setting to 0",
           "H pavo update APN type bitmask on modem profile for ApnName=internet,",
           "E pavo APN type mask not present, setting to 0",
           "E pavo Home IP type not present, setting to v4v6",
           "H pavo update APN type bitmask on modem profile for "
           "ApnName=internet,HomeIPType=V6,ApnTypesMask=NONE,",
           "D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x0",
           "H pavo updateAPNTypeBitmaskOnModemProfile < OK"}});
}

TEST_F(ListPoliciesTest, ApnTypes_AbsentAndUnknownHomeType_CountAsV4V6) {
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectTypes(
      {Wanted().apn("internet").types(DEFAULT),
       Wanted().apn("internet").home(IPType::UNKNOWN).types(MMS),
       Wanted().apn("internet").home(IPType::V4V6).types(SUPL)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=UNKNOWN,ApnTypesMask=MMS|,",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,ApnTypesMask=DEFAULT|,",
                 "E pavo Home IP type not present, setting to v4v6",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=UNKNOWN,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x7",
                 "filter None: ApnName=internet,HomeIPType=V4V6, finds 1",
                 "D pavo updating profile id:1, with mask0x7:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|SUPL|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=21,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_NoName_NothingIsLookedUp) {
  put({Stored().type(IPType::V4)});
  expectTypes({Wanted().home(IPType::V4).types(DEFAULT), Wanted().user("u")},
              {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                         "H     HomeIPType=V4,ApnTypesMask=DEFAULT|,", "H     UserName=u,",
                         "H pavo update APN type bitmask on modem profile for "
                         "HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                         "H pavo update APN type bitmask on modem profile for UserName=u,",
                         "E pavo APN type mask not present, setting to 0",
                         "E pavo Home IP type not present, setting to v4v6",
                         "H pavo updateAPNTypeBitmaskOnModemProfile < OK"}});
}

TEST_F(ListPoliciesTest, ApnTypes_EmptyName_IsAName) {
  put({Stored().type(IPType::V4), Stored().apn("").type(IPType::V4)});
  expectTypes(
      {Wanted().apn("").home(IPType::V4).types(DEFAULT), Wanted().home(IPType::V4).types(MMS)},
      {.lines =
           {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
            "H     ApnName=,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
            "H     HomeIPType=V4,ApnTypesMask=MMS|,",
            "H pavo update APN type bitmask on modem profile for "
            "ApnName=,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
            "H pavo update APN type bitmask on modem profile for HomeIPType=V4,ApnTypesMask=MMS|,",
            "D pavo processing APN name , V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0",
            "filter None: ApnName=,HomeIPType=V4, finds 2",
            "D pavo updating profile id:2, with mask0x1:", "modify 2 ApnTypesMask=DEFAULT|,",
            "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 2 ApnTypesMask=1,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_UpdatesAllowed_AllProfilesOfTheNameGetAll) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V4).types(CBS), Stored().apn("ims").type(IPType::V4),
       Stored().apn("internet").type(IPType::V6).name("pavo_profile"), Stored().apn("internet")});
  expectTypes(
      {Wanted().apn("Internet").home(IPType::V4).types(DEFAULT),
       Wanted().apn("internet").home(IPType::V6).types(MMS),
       Wanted().apn("internet").home(IPType::V4V6).types(SUPL)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=Internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H     ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=Internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4",
                 "filter None: ApnName=internet, finds 1 3 4",
                 "D pavo updating profile id:1, with combined mask0x7:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|SUPL|,",
                 "D pavo updating profile id:3, with combined mask0x7:",
                 "modify 3 ApnTypesMask=DEFAULT|MMS|SUPL|,",
                 "D pavo updating profile id:4, with combined mask0x7:",
                 "modify 4 ApnTypesMask=DEFAULT|MMS|SUPL|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=21,", "modify 3 ApnTypesMask=21,",
                   "modify 4 ApnTypesMask=21,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_UpdatesAllowedMaskOf0_IsWritten) {
  switches = {true};
  put({Stored().apn("internet").types(DEFAULT)});
  expectTypes(
      {Wanted().apn("internet")},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ", "H     ApnName=internet,",
                 "H pavo update APN type bitmask on modem profile for ApnName=internet,",
                 "E pavo APN type mask not present, setting to 0",
                 "E pavo Home IP type not present, setting to v4v6",
                 "D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x0",
                 "filter None: ApnName=internet, finds 1",
                 "D pavo updating profile id:1, with combined mask0x0:",
                 "modify 1 ApnTypesMask=NONE,", "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=0,"}});
}

TEST_F(ListPoliciesTest, ApnTypes_UpdatesAllowedNoProfileOfTheName_OneLookUp) {
  switches = {true};
  put({Stored().apn("ims")});
  expectTypes(
      {Wanted().apn("internet").home(IPType::V4).types(DEFAULT)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0",
                 "filter None: ApnName=internet, finds nothing",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"}});
}

TEST_F(ListPoliciesTest, ApnTypes_NamesThatDifferInCase_OnlyAsciiLettersCount) {
  switches = {true};
  put({Stored().apn("az@[`{")});
  expectTypes(
      {Wanted().apn("AZ@[`{").home(IPType::V4).types(DEFAULT),
       Wanted().apn("az@[`{").home(IPType::V6).types(MMS)},
      {.lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > ",
                 "H     ApnName=AZ@[`{,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H     ApnName=az@[`{,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=AZ@[`{,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
                 "H pavo update APN type bitmask on modem profile for "
                 "ApnName=az@[`{,HomeIPType=V6,ApnTypesMask=MMS|,",
                 "D pavo processing APN name az@[`{, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0",
                 "filter None: ApnName=az@[`{, finds 1",
                 "D pavo updating profile id:1, with combined mask0x3:",
                 "modify 1 ApnTypesMask=DEFAULT|MMS|,",
                 "H pavo updateAPNTypeBitmaskOnModemProfile < OK"},
       .changes = {"modify 1 ApnTypesMask=5,"}});
}

TEST_F(ListPoliciesTest, UpdateByIpType_MaskOf0_IsWritten) {
  put({Stored().apn("internet").type(IPType::V6).types(DEFAULT)});
  expectUpdateByIpType(
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V6, finds 1",
                 "D pavo updating profile id:1, with mask0x0:", "modify 1 ApnTypesMask=NONE,"},
       .changes = {"modify 1 ApnTypesMask=0,"},
       .result = "true"});
}

TEST_F(ListPoliciesTest, UpdateByIpType_ChangeRefused_IsNotAskedFor) {
  isRefusing = true;
  put({Stored().apn("internet").type(IPType::V6).types(DEFAULT)});
  expectUpdateByIpType(
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V6, finds 1",
                 "D pavo updating profile id:1, with mask0x0:", "modify 1 ApnTypesMask=NONE,"},
       .changes = {"modify 1 ApnTypesMask=0,"},
       .result = "true"});
}

TEST_F(ListPoliciesTest, UpdateByIpType_WiderType_IsAnotherType) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectUpdateByIpType(
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V6, finds nothing",
                 "D pavo no match found for apn name:Internet, ip type:2, tech type: THREE_GPP"},
       .result = "false"});
}

TEST_F(ListPoliciesTest, ApnTypes_SeveralNames_AreTakenUpOnceEachInTheOrderOfTheirSet) {
  switches = {true};
  std::list<ProfileParams> wanted;
  std::unordered_set<std::string> names;
  Lines lines = {"H pavo updateAPNTypeBitmaskOnModemProfile > "};
  for (const char* const name : {"ims", "internet", "mms", "sos", ""}) {
    wanted.push_back(Wanted().apn(name).home(IPType::V4).types(DEFAULT));
    names.insert(name);
    lines.push_back("H     " + wanted.back().dump());
  }
  for (const ProfileParams& one : wanted) {
    lines.push_back("H pavo update APN type bitmask on modem profile for " + one.dump());
  }
  for (const std::string& name : names) {
    lines.push_back("D pavo processing APN name " + name +
                    ", V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0");
    lines.push_back("filter None: ApnName=" + name + ", finds nothing");
  }
  lines.push_back("H pavo updateAPNTypeBitmaskOnModemProfile < OK");
  expectTypes(wanted, {.lines = lines});
}

TEST_F(ListPoliciesTest, ApnTypes_NullCharacterInTheName_EndsItInTheLog) {
  const std::string name("a\0b", 3);
  const ProfileParams wanted = Wanted().apn(name).home(IPType::V4).types(DEFAULT);
  FakeProfiles profiles;
  policy::updateAPNTypeBitmaskOnModemProfile({profiles, profiles, /*updateAllowed=*/false},
                                             {wanted});
  EXPECT_THAT(
      profiles.lines,
      testing::Contains("D pavo processing APN name a, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0"));
  EXPECT_THAT(
      profiles.lines,
      testing::Contains("D pavo no match found for apn name:a, ip type:1, tech type: THREE_GPP"));
}

}  // namespace
}  // namespace pavo::test
