// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the policy that selects the profile for LTE attach.
#include "PoliciesTest.h"

namespace pavo::test {
namespace {

class AttachPoliciesTest : public PoliciesTest {
 protected:
  void expectMatch(int profileId, const ProfileParams& wanted, const Expected& expected) const {
    expect(
        [&](const policy::Run& run) {
          return policy::matchLteAttachProfileId(run, profileId, wanted) ? "true" : "false";
        },
        expected);
  }

  void expectAttach(const ProfileParams& wanted, const Expected& expected) const {
    expect("pavo findOrCreateProfileForLteAttach", &policy::findOrCreateProfileForLteAttach, wanted,
           expected);
  }
};

TEST_F(AttachPoliciesTest, MatchProfileId_NoSuchProfile_False) {
  switches = {false, true};
  expectMatch(
      99, Wanted().apn("internet"),
      {.lines =
           {"H pavo matchLteAttachProfileId > Profile id = 99 Input Params = ApnName=internet,",
            "filter None: id=99, finds nothing",
            "H pavo matchLteAttachProfileId < did not match input params"},
       .result = "false"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_LibrarysForDataCalls_False) {
  switches = {false, true};
  put({Stored().apn("internet").name("pavo_profile")});
  expectMatch(
      1, Wanted().apn("internet"),
      {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = ApnName=internet,",
                 "filter None: id=1, finds 1", "get 1",
                 "E Profile id 1 is a PAVO profile which is not an IA profile, cannot be used for "
                 "attach"},
       .result = "false"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_LibrarysForAttachAsWanted_True) {
  switches = {false, true};
  put({Stored().apn("internet").name("pavo_profile_ia").type(IPType::V4)});
  expectMatch(1, Wanted().apn("Internet").home(IPType::V4),
              {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = "
                         "ApnName=Internet,HomeIPType=V4,",
                         "filter None: id=1, finds 1", "get 1",
                         "match 1 None: ApnName=Internet,HomeIPType=V4, is true",
                         "H pavo matchLteAttachList < 1"},
               .result = "true"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_LibrarysForAttachOfWiderType_False) {
  switches = {false, true};
  put({Stored().apn("internet").name("pavo_profile_ia").type(IPType::V4V6)});
  expectMatch(1, Wanted().apn("internet").home(IPType::V4),
              {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = "
                         "ApnName=internet,HomeIPType=V4,",
                         "filter None: id=1, finds 1", "get 1",
                         "match 1 None: ApnName=internet,HomeIPType=V4, is false",
                         "H pavo matchLteAttachProfileId < did not match input params"},
               .result = "false"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_OfTheModem_NameTypesAndCredentialsCount) {
  put({Stored()
           .apn("internet")
           .name("operator")
           .user("u")
           .secret("p")
           .auth(AuthType::PAP)
           .type(IPType::V4)
           .types(IMS)
           .ofClass(ApnClass::IMS)
           .clat(true)
           .roam(IPType::V6)});
  expectMatch(
      1,
      Wanted()
          .apn("Internet")
          .user("u")
          .secret("p")
          .auth(AuthType::PAP)
          .home(IPType::V4V6)
          .roam(IPType::V4V6)
          .types(DEFAULT)
          .ofClass(ApnClass::INET)
          .clat(false)
          .maxPdns(2)
          .pdnTimer(3)
          .pdnWait(4)
          .disabled(true)
          .emergency(true),
      {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = "
                 "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4V6,RoamIPType="
                 "V4V6,ApnTypesMask=DEFAULT|,ApnClass=INET,IsClatEnabled=0,MaxPdnsConnPerBlock=2,"
                 "MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,IsEmergencySupported=1,",
                 "filter None: id=1, finds 1", "get 1",
                 "match 1 HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: "
                 "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4V6,RoamIPType="
                 "V4V6, is true",
                 "H pavo matchLteAttachList < 1"},
       .result = "true"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_WiderTypes_True) {
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectMatch(1, Wanted().home(IPType::V4).roam(IPType::V6),
              {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = "
                         "HomeIPType=V4,RoamIPType=V6,",
                         "filter None: id=1, finds 1", "get 1",
                         "match 1 HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: "
                         "HomeIPType=V4,RoamIPType=V6, is true",
                         "H pavo matchLteAttachList < 1"},
               .result = "true"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_WiderTypesUpdatesAllowed_False) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V4V6)});
  expectMatch(1, Wanted().home(IPType::V4).roam(IPType::V6),
              {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = "
                         "HomeIPType=V4,RoamIPType=V6,",
                         "filter None: id=1, finds 1", "get 1",
                         "match 1 None: HomeIPType=V4,RoamIPType=V6, is false",
                         "H pavo matchLteAttachProfileId < did not match input params"},
               .result = "false"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_OtherTypes_False) {
  put({Stored().apn("internet").type(IPType::V6)});
  expectMatch(
      1, Wanted().home(IPType::V4),
      {.lines = {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = HomeIPType=V4,",
                 "filter None: id=1, finds 1", "get 1",
                 "match 1 HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: HomeIPType=V4, "
                 "is false",
                 "H pavo matchLteAttachProfileId < did not match input params"},
       .result = "false"});
}

TEST_F(AttachPoliciesTest, MatchProfileId_AnotherPassword_False) {
  switches = {true};
  put({Stored().user("u").secret("P")});
  expectMatch(
      1, Wanted().user("u").secret("p"),
      {.lines =
           {"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = UserName=u,Password=p,",
            "filter None: id=1, finds 1", "get 1", "match 1 None: UserName=u,Password=p, is false",
            "H pavo matchLteAttachProfileId < did not match input params"},
       .result = "false"});
}

TEST_F(AttachPoliciesTest, Attach_ExactMatchOfTheModem_IsGivenTheSettingsButNoTypesAndName) {
  switches = {false, true};
  put({Stored().apn("internet").type(IPType::V4).roam(IPType::V6),
       Stored().apn("internet").type(IPType::V4).name("operator").ofClass(ApnClass::IMS),
       Stored().apn("internet").type(IPType::V4)});
  expectAttach(
      Wanted()
          .apn("Internet")
          .user("u")
          .secret("p")
          .auth(AuthType::PAP)
          .home(IPType::V4)
          .roam(IPType::V4)
          .types(DEFAULT | IA)
          .ofClass(ApnClass::INET)
          .clat(true)
          .maxPdns(2)
          .pdnTimer(3)
          .pdnWait(4)
          .disabled(true)
          .emergency(true),
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, finds 2 3", "get 2",
                 "H pavo Found an exact match modem or PAVO IA profile for attach",
                 "modify 2 "
                 "UserName=u,Password=p,AuthType=PAP,ApnTypesMask=DEFAULT|IA|,MaxPdnsConnPerBlock="
                 "2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 2 "
                   "UserName=u,Password=p,AuthType=PAP,ApnTypesMask=257,MaxPdnsConnPerBlock=2,"
                   "MaxPdnConnTimer=3,PdnReqWaitInterval=4,"},
       .result = "profile 2"});
}

TEST_F(AttachPoliciesTest, Attach_ExactMatchOfTheLibrary_IsGivenTheSettings) {
  switches = {false, true};
  put({Stored().apn("internet").type(IPType::V4).name("pavo_profile_ia")});
  expectAttach(Wanted().apn("internet").user("u").home(IPType::V4),
               {.lines = {"filter None: ApnName=internet,HomeIPType=V4, finds 1", "get 1",
                          "H pavo Found an exact match modem or PAVO IA profile for attach",
                          "modify 1 UserName=u,", "H pavo Modifying profile identified for IA"},
                .changes = {"modify 1 UserName=u,"},
                .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_NoName_ExactMatchByTypesAlone) {
  switches = {false, true};
  put({Stored().apn("ims").type(IPType::V6), Stored().apn("internet").type(IPType::V4)});
  expectAttach(
      Wanted().roam(IPType::V4),
      {.lines = {"H pavo NULL apn scenario", "filter None: RoamIPType=V4, finds 2", "get 2",
                 "H pavo Found an exact match modem or PAVO IA profile for attach", "modify 2",
                 "H pavo Modifying profile identified for IA"},
       .result = "profile 2"});
}

TEST_F(AttachPoliciesTest, Attach_ChangeRefused_IsNotAskedFor) {
  switches = {false, true};
  isRefusing = true;
  put({Stored().apn("internet")});
  expectAttach(Wanted().apn("internet").secret("p"),
               {.lines = {"filter None: ApnName=internet, finds 1", "get 1",
                          "H pavo Found an exact match modem or PAVO IA profile for attach",
                          "modify 1 Password=p,", "H pavo Modifying profile identified for IA"},
                .changes = {"modify 1 Password=p,"},
                .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_FirstExactIsForDataCalls_LooseMatchOfTheModemKeepsItsTypes) {
  put({Stored().apn("internet").type(IPType::V4).name("pavo_profile"),
       Stored().apn("internet").type(IPType::V4V6).name("pavo_profile_ia"),
       Stored().apn("internet").type(IPType::V4V6), Stored().apn("internet").type(IPType::V4)});
  expectAttach(
      Wanted().apn("internet").user("u").home(IPType::V4).roam(IPType::V4).ofClass(ApnClass::INET),
      {.lines = {"filter None: ApnName=internet,HomeIPType=V4,RoamIPType=V4, finds 1 4", "get 1",
                 "filter HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: "
                 "ApnName=internet,HomeIPType=V4,RoamIPType=V4,IsPavoProfile=0, finds 3 4",
                 "H pavo Found a loose match profile for attach", "get 3",
                 "H It is PAVO_IA profile or modem profile.", "modify 3 UserName=u,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 3 UserName=u,"},
       .result = "profile 3"});
}

TEST_F(AttachPoliciesTest, Attach_NarrowerHomeType_LooseMatch) {
  put({Stored().apn("internet").type(IPType::V6)});
  expectAttach(Wanted().apn("internet").user("u").home(IPType::V4V6),
               {.lines = {"filter None: ApnName=internet,HomeIPType=V4V6, finds nothing",
                          "filter HomeIPSubset|HomeIPSuperset|: "
                          "ApnName=internet,HomeIPType=V4V6,IsPavoProfile=0, finds 1",
                          "H pavo Found a loose match profile for attach", "get 1",
                          "H It is PAVO_IA profile or modem profile.", "modify 1 UserName=u,",
                          "H pavo Modifying profile identified for IA"},
                .changes = {"modify 1 UserName=u,"},
                .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_WiderRoamTypeNoName_LooseMatch) {
  put({Stored().apn("ims").type(IPType::V4V6).overrideHome(IPType::V6).roam(IPType::V4V6)});
  expectAttach(
      Wanted().secret("p").roam(IPType::V4),
      {.lines = {"H pavo NULL apn scenario", "filter None: RoamIPType=V4, finds nothing",
                 "filter RoamIPSubset|RoamIPSuperset|: RoamIPType=V4,IsPavoProfile=0, finds 1",
                 "H pavo Found a loose match profile for attach", "get 1",
                 "H It is PAVO_IA profile or modem profile.", "modify 1 Password=p,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 1 Password=p,"},
       .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_UpdatesAllowedOfTheModem_FirstOfTheNameIsGivenTheTypes) {
  switches = {true};
  put({Stored().apn("ims").type(IPType::V4V6), Stored().apn("internet").type(IPType::V6),
       Stored().apn("internet").type(IPType::V4V6)});
  expectAttach(
      Wanted().apn("Internet").user("u").home(IPType::V4).roam(IPType::V4).clat(true),
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, finds nothing",
                 "filter None: ApnName=Internet, finds 2 3",
                 "H pavo Found a loose match profile for attach", "get 2",
                 "H It is PAVO_IA profile or modem profile.",
                 "modify 2 UserName=u,HomeIPType=V4,RoamIPType=V4,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 2 UserName=u,CommonIPType=V4,LteRoamIP=V4,UmtsRoamIP=V4,"},
       .result = "profile 2"});
}

TEST_F(AttachPoliciesTest, Attach_UpdatesAllowedOfTheLibrary_IsGivenTheTypes) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V6).name("pavo_profile_ia")});
  expectAttach(Wanted().apn("internet").home(IPType::V4),
               {.lines = {"filter None: ApnName=internet,HomeIPType=V4, finds nothing",
                          "filter None: ApnName=internet, finds 1",
                          "H pavo Found a loose match profile for attach", "get 1",
                          "H It is PAVO_IA profile or modem profile.", "modify 1 HomeIPType=V4,",
                          "H pavo Modifying profile identified for IA"},
                .changes = {"modify 1 CommonIPType=V4,"},
                .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_UpdatesAllowedFirstIsForDataCalls_OthersOfTheNameAreNotLookedAt) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V4).name("pavo_profile"),
       Stored().apn("internet").type(IPType::V4),
       Stored().apn("internet").type(IPType::V6).name("pavo_profile_ia")});
  expectAttach(Wanted().apn("internet").user("u").home(IPType::V4).roam(IPType::V4),
               {.lines = {"filter None: ApnName=internet,HomeIPType=V4,RoamIPType=V4, finds 1 2",
                          "get 1", "filter None: ApnName=internet, finds 1 2 3",
                          "H pavo Found a loose match profile for attach", "get 1",
                          "H It is not a PAVO_IA profile. so skipping it.",
                          "filter None: ApnName=internet,IsPavoProfile=1,IsIAProfile=1, finds 3",
                          "H pavo Found a PAVO IA profile that matches APN name for attach",
                          "modify 3 UserName=u,HomeIPType=V4,RoamIPType=V4,",
                          "H pavo Modifying profile identified for IA"},
                .changes = {"modify 3 UserName=u,CommonIPType=V4,LteRoamIP=V4,UmtsRoamIP=V4,"},
                .result = "profile 3"});
}

TEST_F(AttachPoliciesTest, Attach_NothingOfTheModem_InitialAttachProfileOfTheName) {
  put({Stored().apn("ims").type(IPType::V4).name("pavo_profile_ia"),
       Stored().apn("internet").type(IPType::V4V6).name("pavo_profile"),
       Stored().apn("internet").type(IPType::V4V6).name("pavo_profile_ia"),
       Stored().apn("internet").type(IPType::V4V6).name("pavo_profile_ia")});
  expectAttach(
      Wanted().apn("Internet").auth(AuthType::CHAP).home(IPType::V4).roam(IPType::V4),
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, finds nothing",
                 "filter HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: "
                 "ApnName=Internet,HomeIPType=V4,RoamIPType=V4,IsPavoProfile=0, finds nothing",
                 "filter None: ApnName=Internet,IsPavoProfile=1,IsIAProfile=1, finds 3 4",
                 "H pavo Found a PAVO IA profile that matches APN name for attach",
                 "modify 3 AuthType=CHAP,HomeIPType=V4,RoamIPType=V4,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 3 AuthType=CHAP,CommonIPType=V4,LteRoamIP=V4,UmtsRoamIP=V4,"},
       .result = "profile 3"});
}

TEST_F(AttachPoliciesTest, Attach_NothingOfTheName_AnyInitialAttachProfileTakesTheName) {
  put({Stored().apn("internet").type(IPType::V6),
       Stored().apn("ims").type(IPType::V4).name("pavo_profile_ia"),
       Stored().apn("mms").type(IPType::V4).name("pavo_profile_ia")});
  expectAttach(
      Wanted().apn("Internet").user("u").home(IPType::V4).types(IA),
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V4, finds nothing",
                 "filter HomeIPSubset|HomeIPSuperset|: "
                 "ApnName=Internet,HomeIPType=V4,IsPavoProfile=0, finds nothing",
                 "filter None: ApnName=Internet,IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "filter None: IsPavoProfile=1,IsIAProfile=1, finds 2 3",
                 "H pavo Found any PAVO IA profile for attach",
                 "modify 2 ApnName=Internet,UserName=u,HomeIPType=V4,ApnTypesMask=IA|,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 2 ApnName=internet,UserName=u,ApnTypesMask=256,"},
       .result = "profile 2"});
}

TEST_F(AttachPoliciesTest,
       Attach_NothingOfTheNameUpdatesAllowed_AnyInitialAttachProfileTakesTheName) {
  switches = {true};
  put({Stored().apn("ims").type(IPType::V6).name("pavo_profile_ia")});
  expectAttach(
      Wanted().apn("internet").roam(IPType::V6),
      {.lines = {"filter None: ApnName=internet,RoamIPType=V6, finds nothing",
                 "filter None: ApnName=internet, finds nothing",
                 "filter None: ApnName=internet,IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "filter None: IsPavoProfile=1,IsIAProfile=1, finds 1",
                 "H pavo Found any PAVO IA profile for attach",
                 "modify 1 ApnName=internet,RoamIPType=V6,",
                 "H pavo Modifying profile identified for IA"},
       .changes = {"modify 1 ApnName=internet,LteRoamIP=V6,UmtsRoamIP=V6,"},
       .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_NothingOfTheTypeNoName_FirstInitialAttachProfile) {
  put({Stored().apn("ims").type(IPType::V6).name("pavo_profile_ia")});
  expectAttach(
      Wanted().user("u").home(IPType::V4),
      {.lines =
           {"H pavo NULL apn scenario", "filter None: HomeIPType=V4, finds nothing",
            "filter HomeIPSubset|HomeIPSuperset|: HomeIPType=V4,IsPavoProfile=0, finds nothing",
            "filter None: IsPavoProfile=1,IsIAProfile=1, finds 1",
            "H pavo Found a PAVO IA profile that matches APN name for attach",
            "modify 1 UserName=u,HomeIPType=V4,", "H pavo Modifying profile identified for IA"},
       .changes = {"modify 1 UserName=u,CommonIPType=V4,"},
       .result = "profile 1"});
}

TEST_F(AttachPoliciesTest, Attach_NothingAtAll_NewOneHasAllThatIsWanted) {
  put({Stored().apn("internet").type(IPType::V6)});
  expectAttach(
      Wanted()
          .apn("Internet")
          .user("u")
          .secret("p")
          .auth(AuthType::PAP)
          .home(IPType::V4)
          .roam(IPType::V4)
          .types(DEFAULT | IA)
          .ofClass(ApnClass::INET)
          .clat(true)
          .maxPdns(2)
          .pdnTimer(3)
          .pdnWait(4)
          .disabled(true)
          .emergency(false),
      {.lines = {"filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, finds nothing",
                 "filter HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: "
                 "ApnName=Internet,HomeIPType=V4,RoamIPType=V4,IsPavoProfile=0, finds nothing",
                 "filter None: ApnName=Internet,IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "filter None: IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "add persist=1: "
                 "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4,RoamIPType=V4,"
                 "ApnTypesMask=DEFAULT|IA|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=2,"
                 "MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,IsEmergencySupported=0,"
                 "IsIAProfile=1, makes 2",
                 "H pavo PAVO IA profile created for attach"},
       .changes = {"create "
                   "ApnName=internet,UserName=u,Password=p,AuthType=PAP,CommonIPType=V4,"
                   "ApnTypesMask=257,ApnClass=INET,IsClatEnabled=1,LteRoamIP=V4,UmtsRoamIP=V4,"
                   "MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,"
                   "IsEmergencySupported=0,ProfileName=pavo_profile_ia,"},
       .result = "profile 2"});
}

TEST_F(AttachPoliciesTest, Attach_NothingAtAllNoName_InitialAttachProfilesAreLookedUpTwice) {
  switches = {true};
  put({Stored().apn("internet").type(IPType::V4).name("pavo_profile")});
  expectAttach(
      Wanted().home(IPType::V4),
      {.lines = {"H pavo NULL apn scenario", "filter None: HomeIPType=V4, finds 1", "get 1",
                 "filter None: finds 1", "H pavo Found a loose match profile for attach", "get 1",
                 "H It is not a PAVO_IA profile. so skipping it.",
                 "filter None: IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "filter None: IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "add persist=1: HomeIPType=V4,IsIAProfile=1, makes 2",
                 "H pavo PAVO IA profile created for attach"},
       .changes = {"create CommonIPType=V4,ProfileName=pavo_profile_ia,"},
       .result = "profile 2"});
}

TEST_F(AttachPoliciesTest, Attach_CreateRefused_IsLoggedAsCreated) {
  isRefusing = true;
  expectAttach(
      Wanted().apn("internet"),
      {.lines = {"filter None: ApnName=internet, finds nothing",
                 "filter None: ApnName=internet,IsPavoProfile=0, finds nothing",
                 "filter None: ApnName=internet,IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "filter None: IsPavoProfile=1,IsIAProfile=1, finds nothing",
                 "add persist=1: ApnName=internet,IsIAProfile=1, fails",
                 "H pavo PAVO IA profile created for attach"},
       .changes = {"create ApnName=internet,ProfileName=pavo_profile_ia,"}});
}

}  // namespace
}  // namespace pavo::test
