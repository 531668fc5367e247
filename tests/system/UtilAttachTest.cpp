// The profile for LTE attach.
#include "PolicyTest.h"

namespace pavo::test {
namespace {

class UtilAttachTest : public PolicyTest {
 protected:
  void expectMatchCases(const std::vector<PolicyCase>& cases) {
    expectCases(
        [this](Util& util, const Params& params) {
          constexpr int unknownId = 99;
          const int id = placed.empty() ? unknownId : placed.front();
          return util.matchLteAttachProfileId(id, params.front()) ? "true" : "false";
        },
        cases);
  }

  void expectAttachCases(const std::vector<PolicyCase>& cases) {
    expectCases("pavo findOrCreateProfileForLteAttach", &Util::findOrCreateProfileForLteAttach,
                cases);
  }
};

std::vector<PolicyCase> withBothSwitches(std::vector<PolicyCase> cases) {
  for (std::size_t i = 0, count = cases.size(); i < count; ++i) {
    cases.push_back(cases[i]);
    cases.back().isUpdateAllowed = !cases[i].isUpdateAllowed;
  }
  return cases;
}

TEST_F(UtilAttachTest, MatchProfileId_WhateverTheSwitch_LogsAndAsksJustThis) {
  expectMatchCases(withBothSwitches({
      {.name = "no such profile",
       .isUpdateAllowed = false,
       .modem = "",
       .params = "ApnName=internet,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = 99 Input Params = $1
filter None: id=99, ->
H pavo matchLteAttachProfileId < did not match input params
)",
       .result = "false"},
      {.name = "the library's profile for data calls",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "name": "pavo_profile"})",
       .params = "ApnName=internet,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
E Profile id #1 is a PAVO profile which is not an IA profile, cannot be used for attach
)",
       .result = "false"},
      {.name = "the library's own for attach, as asked for",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "name": "pavo_profile_ia", "pdpType": "V4"})",
       .params = "ApnName=Internet,HomeIPType=V4,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 None: ApnName=Internet,HomeIPType=V4, -> true
H pavo matchLteAttachList < #1
)",
       .result = "true"},
      {.name = "the library's own for attach has to have exactly the types",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "name": "pavo_profile_ia", "pdpType": "V4V6"})",
       .params = "ApnName=internet,HomeIPType=V4,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 None: ApnName=internet,HomeIPType=V4, -> false
H pavo matchLteAttachProfileId < did not match input params
)",
       .result = "false"},
  }));
}

TEST_F(UtilAttachTest, MatchProfileId_OfTheModem_TypesMayDifferUnlessUpdatesAreAllowed) {
  expectMatchCases({
      {.name = "name, types and credentials are looked at and nothing else",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "name": "operator", "user": "u", "password": "p", "auth": 1,
"pdpType": "V4", "lteRoam": "V6", "umtsRoam": "V6", "apnTypes": 2, "class": 1, "clat": true})",
       .params = "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4V6,"
                 "RoamIPType=V4V6,ApnTypesMask=DEFAULT|,ApnClass=INET,IsClatEnabled=0,"
                 "MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,"
                 "IsEmergencySupported=1,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4V6,RoamIPType=V4V6, -> true
H pavo matchLteAttachList < #1
)",
       .result = "true"},
      {.name = "the modem's types contain the wanted ones",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
       .params = "HomeIPType=V4,RoamIPType=V6,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: HomeIPType=V4,RoamIPType=V6, -> true
H pavo matchLteAttachList < #1
)",
       .result = "true"},
      {.name = "the same, exactly",
       .isUpdateAllowed = true,
       .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
       .params = "HomeIPType=V4,RoamIPType=V6,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 None: HomeIPType=V4,RoamIPType=V6, -> false
H pavo matchLteAttachProfileId < did not match input params
)",
       .result = "false"},
      {.name = "types that have nothing in common",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "pdpType": "V6"})",
       .params = "HomeIPType=V4,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: HomeIPType=V4, -> false
H pavo matchLteAttachProfileId < did not match input params
)",
       .result = "false"},
      {.name = "another password",
       .isUpdateAllowed = true,
       .modem = R"({"user": "u", "password": "P"})",
       .params = "UserName=u,Password=p,",
       .log = R"(
H pavo matchLteAttachProfileId > Profile id = #1 Input Params = $1
filter None: id=#1, -> 1
get 1
match 1 None: UserName=u,Password=p, -> false
H pavo matchLteAttachProfileId < did not match input params
)",
       .result = "false"},
  });
}

TEST_F(UtilAttachTest, Attach_ExactMatch_IsGivenTheSettingsButNoTypesAndName) {
  expectAttachCases(withBothSwitches({
      {.name = "the modem's, with all that can be asked for",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "internet", "pdpType": "V4", "lteRoam": "V6", "umtsRoam": "V6"}
{"apn": "internet", "pdpType": "V4", "name": "operator", "class": 1}
{"apn": "internet", "pdpType": "V4"}
)",
       .params = "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4,RoamIPType=V4,"
                 "ApnTypesMask=DEFAULT|IA|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=2,"
                 "MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,IsEmergencySupported=1,",
       .log = R"(
filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, -> 2 3
get 2
H pavo Found an exact match modem or PAVO IA profile for attach
modify 2 UserName=u,Password=p,AuthType=PAP,ApnTypesMask=DEFAULT|IA|,MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #2 {"user": "u", "password": "p", "auth": 1, "apnTypes": 257,
"maxPdnPerBlock": 2, "maxPdnTimer": 3, "pdnWaitInterval": 4})",
       .result = "@2"},
      {.name = "the library's own for attach",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "pdpType": "V4", "name": "pavo_profile_ia"})",
       .params = "ApnName=internet,UserName=u,HomeIPType=V4,",
       .log = R"(
filter None: ApnName=internet,HomeIPType=V4, -> 1
get 1
H pavo Found an exact match modem or PAVO IA profile for attach
modify 1 UserName=u,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"user": "u"})",
       .result = "@1"},
      {.name = "without a name by the types alone",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "ims", "pdpType": "V6"}
{"apn": "internet", "pdpType": "V4"}
)",
       .params = "RoamIPType=V4,",
       .log = R"(
H pavo NULL apn scenario
filter None: RoamIPType=V4, -> 2
get 2
H pavo Found an exact match modem or PAVO IA profile for attach
modify 2
H pavo Modifying profile identified for IA
)",
       .result = "@2"},
      {.name = "whether the modem takes the change is not asked",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet"})",
       .params = "ApnName=internet,Password=p,",
       .log = R"(
filter None: ApnName=internet, -> 1
get 1
H pavo Found an exact match modem or PAVO IA profile for attach
modify 1 Password=p,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"password": "p"})",
       .result = "@1",
       .refused = "modify-profile"},
  }));
}

TEST_F(UtilAttachTest, Attach_LooseMatchUpdatesNotAllowed_IsAProfileOfTheModemAndKeepsItsTypes) {
  expectAttachCases({
      {.name = "types that contain the wanted ones; the exact first one is for data calls",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "internet", "pdpType": "V4", "name": "pavo_profile"}
{"apn": "internet", "pdpType": "V4V6", "name": "pavo_profile_ia"}
{"apn": "internet", "pdpType": "V4V6"}
{"apn": "internet", "pdpType": "V4"}
)",
       .params = "ApnName=internet,UserName=u,HomeIPType=V4,RoamIPType=V4,ApnClass=INET,",
       .log = R"(
filter None: ApnName=internet,HomeIPType=V4,RoamIPType=V4, -> 1 4
get 1
filter HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: ApnName=internet,HomeIPType=V4,RoamIPType=V4,IsPavoProfile=0, -> 3 4
H pavo Found a loose match profile for attach
get 3
H It is PAVO_IA profile or modem profile.
modify 3 UserName=u,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #3 {"user": "u"})",
       .result = "@3"},
      {.name = "a home type that is contained in the wanted one",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "pdpType": "V6"})",
       .params = "ApnName=internet,UserName=u,HomeIPType=V4V6,",
       .log = R"(
filter None: ApnName=internet,HomeIPType=V4V6, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=internet,HomeIPType=V4V6,IsPavoProfile=0, -> 1
H pavo Found a loose match profile for attach
get 1
H It is PAVO_IA profile or modem profile.
modify 1 UserName=u,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"user": "u"})",
       .result = "@1"},
      {.name = "a roaming type that contains the wanted one, without a name",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "ims", "pdpType": "V4V6", "overrideHome": "V6", "lteRoam": "V4V6",
"umtsRoam": "V4V6"})",
       .params = "Password=p,RoamIPType=V4,",
       .log = R"(
H pavo NULL apn scenario
filter None: RoamIPType=V4, ->
filter RoamIPSubset|RoamIPSuperset|: RoamIPType=V4,IsPavoProfile=0, -> 1
H pavo Found a loose match profile for attach
get 1
H It is PAVO_IA profile or modem profile.
modify 1 Password=p,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"password": "p"})",
       .result = "@1"},
  });
}

TEST_F(UtilAttachTest, Attach_LooseMatchUpdatesAllowed_IsTheFirstOfTheNameAndGivenTheTypes) {
  expectAttachCases({
      {.name = "a profile of the modem",
       .isUpdateAllowed = true,
       .modem = R"(
{"apn": "ims", "pdpType": "V4V6"}
{"apn": "internet", "pdpType": "V6"}
{"apn": "internet", "pdpType": "V4V6"}
)",
       .params = "ApnName=Internet,UserName=u,HomeIPType=V4,RoamIPType=V4,IsClatEnabled=1,",
       .log = R"(
filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, ->
filter None: ApnName=Internet, -> 2 3
H pavo Found a loose match profile for attach
get 2
H It is PAVO_IA profile or modem profile.
modify 2 UserName=u,HomeIPType=V4,RoamIPType=V4,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #2 {"user": "u", "pdpType": "V4", "lteRoam": "V4", "umtsRoam": "V4"})",
       .result = "@2"},
      {.name = "the library's own for attach",
       .isUpdateAllowed = true,
       .modem = R"({"apn": "internet", "pdpType": "V6", "name": "pavo_profile_ia"})",
       .params = "ApnName=internet,HomeIPType=V4,",
       .log = R"(
filter None: ApnName=internet,HomeIPType=V4, ->
filter None: ApnName=internet, -> 1
H pavo Found a loose match profile for attach
get 1
H It is PAVO_IA profile or modem profile.
modify 1 HomeIPType=V4,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"pdpType": "V4"})",
       .result = "@1"},
      {.name = "the library's for data calls is passed over, and what comes after it not looked at",
       .isUpdateAllowed = true,
       .modem = R"(
{"apn": "internet", "pdpType": "V4", "name": "pavo_profile"}
{"apn": "internet", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V6", "name": "pavo_profile_ia"}
)",
       .params = "ApnName=internet,UserName=u,HomeIPType=V4,RoamIPType=V4,",
       .log = R"(
filter None: ApnName=internet,HomeIPType=V4,RoamIPType=V4, -> 1 2
get 1
filter None: ApnName=internet, -> 1 2 3
H pavo Found a loose match profile for attach
get 1
H It is not a PAVO_IA profile. so skipping it.
filter None: ApnName=internet,IsPavoProfile=1,IsIAProfile=1, -> 3
H pavo Found a PAVO IA profile that matches APN name for attach
modify 3 UserName=u,HomeIPType=V4,RoamIPType=V4,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #3 {"user": "u", "pdpType": "V4", "lteRoam": "V4", "umtsRoam": "V4"})",
       .result = "@3"},
  });
}

TEST_F(UtilAttachTest, Attach_NothingOfTheModem_IsAnInitialAttachProfileGivenTheTypes) {
  expectAttachCases({
      {.name = "one of the name",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "ims", "pdpType": "V4", "name": "pavo_profile_ia"}
{"apn": "internet", "pdpType": "V4V6", "name": "pavo_profile"}
{"apn": "internet", "pdpType": "V4V6", "name": "pavo_profile_ia"}
{"apn": "internet", "pdpType": "V4V6", "name": "pavo_profile_ia"}
)",
       .params = "ApnName=Internet,AuthType=CHAP,HomeIPType=V4,RoamIPType=V4,",
       .log = R"(
filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, ->
filter HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: ApnName=Internet,HomeIPType=V4,RoamIPType=V4,IsPavoProfile=0, ->
filter None: ApnName=Internet,IsPavoProfile=1,IsIAProfile=1, -> 3 4
H pavo Found a PAVO IA profile that matches APN name for attach
modify 3 AuthType=CHAP,HomeIPType=V4,RoamIPType=V4,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #3 {"auth": 2, "pdpType": "V4", "lteRoam": "V4", "umtsRoam": "V4"})",
       .result = "@3"},
      {.name = "any, which takes the name",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "internet", "pdpType": "V6"}
{"apn": "ims", "pdpType": "V4", "name": "pavo_profile_ia"}
{"apn": "mms", "pdpType": "V4", "name": "pavo_profile_ia"}
)",
       .params = "ApnName=Internet,UserName=u,HomeIPType=V4,ApnTypesMask=IA|,",
       .log = R"(
filter None: ApnName=Internet,HomeIPType=V4, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=Internet,HomeIPType=V4,IsPavoProfile=0, ->
filter None: ApnName=Internet,IsPavoProfile=1,IsIAProfile=1, ->
filter None: IsPavoProfile=1,IsIAProfile=1, -> 2 3
H pavo Found any PAVO IA profile for attach
modify 2 ApnName=Internet,UserName=u,HomeIPType=V4,ApnTypesMask=IA|,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #2 {"apn": "internet", "user": "u", "apnTypes": 256})",
       .result = "@2"},
      {.name = "any, with updates allowed",
       .isUpdateAllowed = true,
       .modem = R"({"apn": "ims", "pdpType": "V6", "name": "pavo_profile_ia"})",
       .params = "ApnName=internet,RoamIPType=V6,",
       .log = R"(
filter None: ApnName=internet,RoamIPType=V6, ->
filter None: ApnName=internet, ->
filter None: ApnName=internet,IsPavoProfile=1,IsIAProfile=1, ->
filter None: IsPavoProfile=1,IsIAProfile=1, -> 1
H pavo Found any PAVO IA profile for attach
modify 1 ApnName=internet,RoamIPType=V6,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"apn": "internet", "lteRoam": "V6", "umtsRoam": "V6"})",
       .result = "@1"},
      {.name = "without a name every one of them is of the name",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "ims", "pdpType": "V6", "name": "pavo_profile_ia"})",
       .params = "UserName=u,HomeIPType=V4,",
       .log = R"(
H pavo NULL apn scenario
filter None: HomeIPType=V4, ->
filter HomeIPSubset|HomeIPSuperset|: HomeIPType=V4,IsPavoProfile=0, ->
filter None: IsPavoProfile=1,IsIAProfile=1, -> 1
H pavo Found a PAVO IA profile that matches APN name for attach
modify 1 UserName=u,HomeIPType=V4,
H pavo Modifying profile identified for IA
)",
       .requests = R"(modify #1 {"user": "u", "pdpType": "V4"})",
       .result = "@1"},
  });
}

TEST_F(UtilAttachTest, Attach_NothingAtAll_IsANewLastingInitialAttachProfile) {
  expectAttachCases({
      {.name = "with all that was asked for",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "internet", "pdpType": "V6"})",
       .params = "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4,RoamIPType=V4,"
                 "ApnTypesMask=DEFAULT|IA|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=2,"
                 "MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,IsEmergencySupported=0,",
       .log = R"(
filter None: ApnName=Internet,HomeIPType=V4,RoamIPType=V4, ->
filter HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: ApnName=Internet,HomeIPType=V4,RoamIPType=V4,IsPavoProfile=0, ->
filter None: ApnName=Internet,IsPavoProfile=1,IsIAProfile=1, ->
filter None: IsPavoProfile=1,IsIAProfile=1, ->
add persist=1: ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|IA|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=1,IsEmergencySupported=0,IsIAProfile=1,
H pavo PAVO IA profile created for attach
)",
       .requests = R"(create {"name": "pavo_profile_ia", "persistent": true, "apn": "internet",
"user": "u", "password": "p", "auth": 1, "pdpType": "V4", "lteRoam": "V4", "umtsRoam": "V4",
"apnTypes": 257, "class": 3, "clat": true, "maxPdnPerBlock": 2, "maxPdnTimer": 3,
"pdnWaitInterval": 4, "disabled": true, "emergency": false})",
       .result = "@+"},
      {.name = "without a name the initial-attach profiles are asked for twice",
       .isUpdateAllowed = true,
       .modem = R"({"apn": "internet", "pdpType": "V4", "name": "pavo_profile"})",
       .params = "HomeIPType=V4,",
       .log = R"(
H pavo NULL apn scenario
filter None: HomeIPType=V4, -> 1
get 1
filter None: -> 1
H pavo Found a loose match profile for attach
get 1
H It is not a PAVO_IA profile. so skipping it.
filter None: IsPavoProfile=1,IsIAProfile=1, ->
filter None: IsPavoProfile=1,IsIAProfile=1, ->
add persist=1: HomeIPType=V4,IsIAProfile=1,
H pavo PAVO IA profile created for attach
)",
       .requests = R"(create {"name": "pavo_profile_ia", "persistent": true, "pdpType": "V4"})",
       .result = "@+"},
      {.name = "one that the modem refuses is logged as created all the same",
       .isUpdateAllowed = false,
       .modem = "",
       .params = "ApnName=internet,",
       .log = R"(
filter None: ApnName=internet, ->
filter None: ApnName=internet,IsPavoProfile=0, ->
filter None: ApnName=internet,IsPavoProfile=1,IsIAProfile=1, ->
filter None: IsPavoProfile=1,IsIAProfile=1, ->
fail to add persist=1: ApnName=internet,IsIAProfile=1,
H pavo PAVO IA profile created for attach
)",
       .requests = R"(create {"name": "pavo_profile_ia", "persistent": true, "apn": "internet"})",
       .refused = "create-profile"},
  });
}

TEST_F(UtilAttachTest, CreatedProfile_AfterItsKey_Lasts) {
  Util util;
  AddProfileParams wanted(/*isPersistent=*/false, /*isIAProfile=*/false);
  wanted.setApnName("internet");
  util.findOrCreateProfileForLteAttach(wanted).reset();
  EXPECT_THAT(table(), testing::SizeIs(1));
}

}  // namespace
}  // namespace pavo::test
