// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the policies that select the profile for a data call and for an emergency call.
#include "PoliciesTest.h"

namespace pavo::test {
namespace {

class CallPoliciesTest : public PoliciesTest {
 protected:
  void expectDataCall(const ProfileParams& wanted, const Expected& expected) const {
    expect("pavo findOrCreateProfileForSetupDataCall", &policy::findOrCreateProfileForSetupDataCall,
           wanted, expected);
  }

  // An emergency call changes no existing profile, even when updates are allowed.
  void expectEmergency(const ProfileParams& wanted, const Expected& expected) const {
    expect("pavo findOrCreateProfileForEmergencyDataCall",
           &policy::findOrCreateProfileForEmergencyDataCall, wanted, expected);
  }
};

TEST_F(CallPoliciesTest, SetupDataCall_ExactProfile_IsTakenByNameAndHomeTypeAlone) {
  put({Stored().apn("internet").type(IPType::V4).user("other").ofClass(ApnClass::IMS)});
  expectDataCall(Wanted()
                     .apn("Internet")
                     .user("u")
                     .secret("p")
                     .auth(AuthType::PAP)
                     .home(IPType::V4)
                     .roam(IPType::V6)
                     .types(DEFAULT)
                     .ofClass(ApnClass::INET),
                 {.lines = {"filter None: ApnName=Internet,HomeIPType=V4, finds 1",
                            "H found existing setupDataCall profile"},
                  .result = "profile 1"});
}

TEST_F(CallPoliciesTest, SetupDataCall_WiderHomeType_DoesInTheSecondPass) {
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectDataCall(
      Wanted().apn("internet").user("u").home(IPType::V4),
      {.lines = {"filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                 "filter HomeIPSubset|HomeIPSuperset|: ApnName=internet,HomeIPType=V4, finds 1",
                 "H found existing setupDataCall profile"},
       .result = "profile 1"});
}

TEST_F(CallPoliciesTest, SetupDataCall_NarrowerHomeType_DoesInTheSecondPass) {
  put({Stored().apn("internet").type(IPType::V6)});
  expectDataCall(
      Wanted().apn("internet").home(IPType::V4V6),
      {.lines = {"filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                 "filter HomeIPSubset|HomeIPSuperset|: ApnName=internet,HomeIPType=V4V6, finds 1",
                 "H found existing setupDataCall profile"},
       .result = "profile 1"});
}

TEST_F(CallPoliciesTest, SetupDataCall_ExactAndWiderProfile_TheExactOneIsTaken) {
  put({Stored().apn("internet").type(IPType::V4V6), Stored().apn("internet").type(IPType::V4)});
  expectDataCall(Wanted().apn("internet").home(IPType::V4),
                 {.lines = {"filter None: ApnName=internet,HomeIPType=V4, finds 2",
                            "H found existing setupDataCall profile"},
                  .result = "profile 2"});
}

TEST_F(CallPoliciesTest, SetupDataCall_ProfileOfAnotherType_TransientOneIsMade) {
  put({Stored().apn("internet").type(IPType::V6)});
  expectDataCall(
      Wanted()
          .apn("Internet")
          .user("u")
          .secret("p")
          .auth(AuthType::PAP_CHAP)
          .home(IPType::V4)
          .roam(IPType::V4)
          .types(DEFAULT | SUPL)
          .ofClass(ApnClass::INET)
          .clat(true)
          .maxPdns(2)
          .pdnTimer(3)
          .pdnWait(4)
          .disabled(false)
          .emergency(true),
      {.lines =
           {"filter None: ApnName=Internet,HomeIPType=V4, finds nothing",
            "filter HomeIPSubset|HomeIPSuperset|: ApnName=Internet,HomeIPType=V4, finds nothing",
            "add persist=0: "
            "ApnName=Internet,UserName=u,Password=p,AuthType=PAP_CHAP,HomeIPType=V4,RoamIPType=V4,"
            "ApnTypesMask=DEFAULT|SUPL|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=2,"
            "MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=0,IsEmergencySupported=1,"
            "IsIAProfile=0, makes 2",
            "H setupDataCall profile added"},
       .changes = {"create "
                   "ApnName=internet,UserName=u,Password=p,AuthType=PAP_CHAP,CommonIPType=V4,"
                   "ApnTypesMask=17,ApnClass=INET,IsClatEnabled=1,LteRoamIP=V4,UmtsRoamIP=V4,"
                   "MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=0,"
                   "IsEmergencySupported=1,ProfileName=pavo_profile,"},
       .result = "profile 2"});
}

TEST_F(CallPoliciesTest, SetupDataCall_NameAlone_IsLookedUpTwice) {
  expectDataCall(Wanted().apn("internet"),
                 {.lines = {"filter None: ApnName=internet, finds nothing",
                            "filter HomeIPSubset|HomeIPSuperset|: ApnName=internet, finds nothing",
                            "add persist=0: ApnName=internet,IsIAProfile=0, makes 1",
                            "H setupDataCall profile added"},
                  .changes = {"create ApnName=internet,ProfileName=pavo_profile,"},
                  .result = "profile 1"});
}

TEST_F(CallPoliciesTest, SetupDataCall_HomeTypeAlone_IsLookedUpWithoutName) {
  put({Stored().apn("ims").type(IPType::V6), Stored().type(IPType::V4)});
  expectDataCall(Wanted().home(IPType::V4), {.lines = {"filter None: HomeIPType=V4, finds 2",
                                                       "H found existing setupDataCall profile"},
                                             .result = "profile 2"});
}

TEST_F(CallPoliciesTest, SetupDataCall_NeitherNameNorHomeType_FirstOfAllIsTaken) {
  put({Stored().apn("ims").type(IPType::V6), Stored().apn("internet").type(IPType::V4), Stored()});
  expectDataCall(Wanted().user("u").roam(IPType::V4),
                 {.lines = {"filter None: finds 1 2 3", "H found existing setupDataCall profile"},
                  .result = "profile 1"});
}

TEST_F(CallPoliciesTest, SetupDataCall_CreateRefused_IsLoggedAsAdded) {
  isRefusing = true;
  expectDataCall(Wanted().apn("internet"),
                 {.lines = {"filter None: ApnName=internet, finds nothing",
                            "filter HomeIPSubset|HomeIPSuperset|: ApnName=internet, finds nothing",
                            "add persist=0: ApnName=internet,IsIAProfile=0, fails",
                            "H setupDataCall profile added"},
                  .changes = {"create ApnName=internet,ProfileName=pavo_profile,"}});
}

TEST_F(CallPoliciesTest, SetupDataCall_UpdatesAllowed_FirstOfTheNameIsChanged) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V6).user("other").ofClass(ApnClass::INET),
       Stored().apn("internet").type(IPType::V4), Stored().apn("ims").type(IPType::V4)});
  expectDataCall(Wanted()
                     .apn("INTERNET")
                     .user("u")
                     .secret("p")
                     .home(IPType::V4)
                     .types(MMS)
                     .ofClass(ApnClass::INET)
                     .pdnWait(9)
                     .emergency(true),
                 {.lines = {"filter None: ApnName=INTERNET, finds 1 2",
                            "H found existing setupDataCall profile",
                            "H Modifying profile with input parameters",
                            "modify 1 "
                            "ApnName=INTERNET,UserName=u,Password=p,HomeIPType=V4,ApnTypesMask=MMS|"
                            ",ApnClass=INET,PdnReqWaitInterval=9,IsEmergencySupported=1,"},
                  .changes = {"modify 1 "
                              "UserName=u,Password=p,CommonIPType=V4,ApnTypesMask=4,"
                              "PdnReqWaitInterval=9,IsEmergencySupported=1,"},
                  .result = "profile 1"});
}

TEST_F(CallPoliciesTest, SetupDataCall_UpdatesAllowedNothingOfTheName_IsMadeAtOnce) {
  switches = {true};
  put({Stored().apn("ims").type(IPType::V4)});
  expectDataCall(Wanted().apn("internet").home(IPType::V4),
                 {.lines = {"filter None: ApnName=internet, finds nothing",
                            "add persist=0: ApnName=internet,HomeIPType=V4,IsIAProfile=0, makes 2",
                            "H setupDataCall profile added"},
                  .changes = {"create ApnName=internet,CommonIPType=V4,ProfileName=pavo_profile,"},
                  .result = "profile 2"});
}

TEST_F(CallPoliciesTest, SetupDataCall_ChangeRefused_IsNotAskedFor) {
  switches = {true};
  isRefusing = true;
  put({Stored().apn("internet")});
  expectDataCall(
      Wanted().apn("internet").user("u"),
      {.lines = {"filter None: ApnName=internet, finds 1", "H found existing setupDataCall profile",
                 "H Modifying profile with input parameters",
                 "modify 1 ApnName=internet,UserName=u,"},
       .changes = {"modify 1 UserName=u,"},
       .result = "profile 1"});
}

TEST_F(CallPoliciesTest, EmergencyDataCall_ProfilesOfTheName_FirstThatCanIsTaken) {
  switches = {false, true};
  put({Stored().apn("other").emergency(true), Stored().apn("sos").emergency(false),
       Stored().apn("sos").emergency(true).type(IPType::V6), Stored().apn("sos").emergency(true)});
  expectEmergency(Wanted().apn("SOS").user("u").home(IPType::V4).types(DEFAULT).emergency(false),
                  {.lines = {"filter None: ApnName=SOS,IsEmergencySupported=1, finds 3 4",
                             "H found an emergency profile by name"},
                   .result = "profile 3"});
}

TEST_F(CallPoliciesTest, EmergencyDataCall_NoneOfTheNameCan_AnyThatCanIsTaken) {
  switches = {false, true};
  put({Stored().apn("sos"), Stored().apn("other").emergency(true).type(IPType::V6),
       Stored().emergency(true)});
  expectEmergency(Wanted().apn("sos").home(IPType::V4),
                  {.lines = {"filter None: ApnName=sos,IsEmergencySupported=1, finds nothing",
                             "filter None: IsEmergencySupported=1, finds 2 3",
                             "H found a profile that supports emergency calls"},
                   .result = "profile 2"});
}

TEST_F(CallPoliciesTest, EmergencyDataCall_NoName_IsNotLookedUpByName) {
  switches = {false, true};
  put({Stored().apn("other").emergency(true)});
  expectEmergency(Wanted().home(IPType::V4),
                  {.lines = {"filter None: IsEmergencySupported=1, finds 1",
                             "H found a profile that supports emergency calls"},
                   .result = "profile 1"});
}

TEST_F(CallPoliciesTest, EmergencyDataCall_NoneCan_NewOneLastsAndIsForEmergencyAlone) {
  switches = {false, true};
  put({Stored().apn("sos").emergency(false)});
  expectEmergency(
      Wanted().apn("Sos").user("u").home(IPType::V4).types(DEFAULT | IMS).emergency(false),
      {.lines = {"filter None: ApnName=Sos,IsEmergencySupported=1, finds nothing",
                 "filter None: IsEmergencySupported=1, finds nothing",
                 "add persist=1: "
                 "ApnName=Sos,UserName=u,HomeIPType=V4,ApnTypesMask=EMERGENCY|,"
                 "IsEmergencySupported=1,IsIAProfile=0, makes 2",
                 "H emergency profile created"},
       .changes = {"create "
                   "ApnName=sos,UserName=u,CommonIPType=V4,ApnTypesMask=512,IsEmergencySupported=1,"
                   "ProfileName=pavo_profile,"},
       .result = "profile 2"});
}

TEST_F(CallPoliciesTest, EmergencyDataCall_CreateRefused_IsLoggedAsCreated) {
  switches = {false, true};
  isRefusing = true;
  expectEmergency(
      Wanted().home(IPType::V4),
      {.lines =
           {"filter None: IsEmergencySupported=1, finds nothing",
            "add persist=1: "
            "HomeIPType=V4,ApnTypesMask=EMERGENCY|,IsEmergencySupported=1,IsIAProfile=0, fails",
            "H emergency profile created"},
       .changes = {
           "create "
           "CommonIPType=V4,ApnTypesMask=512,IsEmergencySupported=1,ProfileName=pavo_profile,"}});
}

}  // namespace
}  // namespace pavo::test
