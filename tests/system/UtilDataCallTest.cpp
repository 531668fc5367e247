// The profile for a data call and for an emergency call.
#include "PolicyTest.h"

namespace pavo::test {
namespace {

class UtilDataCallTest : public PolicyTest {};

TEST_F(UtilDataCallTest, SetupDataCall_EveryCase_LogsAsksAndChangesJustThis) {
  expectCases(
      "pavo findOrCreateProfileForSetupDataCall", &Util::findOrCreateProfileForSetupDataCall,
      {
          {.name = "the exact profile is taken as it is, by name and home type alone",
           .isUpdateAllowed = false,
           .modem = R"({"apn": "internet", "pdpType": "V4", "user": "other", "class": 1})",
           .params = "ApnName=Internet,UserName=u,Password=p,AuthType=PAP,HomeIPType=V4,"
                     "RoamIPType=V6,ApnTypesMask=DEFAULT|,ApnClass=INET,",
           .log = R"(
filter None: ApnName=Internet,HomeIPType=V4, -> 1
H found existing setupDataCall profile
)",
           .result = "@1"},
          {.name = "a home type that contains the wanted one does in the second pass",
           .isUpdateAllowed = false,
           .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
           .params = "ApnName=internet,UserName=u,HomeIPType=V4,",
           .log = R"(
filter None: ApnName=internet,HomeIPType=V4, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=internet,HomeIPType=V4, -> 1
H found existing setupDataCall profile
)",
           .result = "@1"},
          {.name = "and one that is contained in it",
           .isUpdateAllowed = false,
           .modem = R"({"apn": "internet", "pdpType": "V6"})",
           .params = "ApnName=internet,HomeIPType=V4V6,",
           .log = R"(
filter None: ApnName=internet,HomeIPType=V4V6, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=internet,HomeIPType=V4V6, -> 1
H found existing setupDataCall profile
)",
           .result = "@1"},
          {.name = "the exact one is preferred to a wider one",
           .isUpdateAllowed = false,
           .modem = R"(
{"apn": "internet", "pdpType": "V4V6"}
{"apn": "internet", "pdpType": "V4"}
)",
           .params = "ApnName=internet,HomeIPType=V4,",
           .log = R"(
filter None: ApnName=internet,HomeIPType=V4, -> 2
H found existing setupDataCall profile
)",
           .result = "@2"},
          {.name = "a profile of another type is not taken but a transient one made",
           .isUpdateAllowed = false,
           .modem = R"({"apn": "internet", "pdpType": "V6"})",
           .params = "ApnName=Internet,UserName=u,Password=p,AuthType=PAP_CHAP,"
                     "HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|SUPL|,ApnClass=INET,"
                     "IsClatEnabled=1,MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,"
                     "PdnReqWaitInterval=4,IsApnDisabled=0,IsEmergencySupported=1,",
           .log = R"(
filter None: ApnName=Internet,HomeIPType=V4, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=Internet,HomeIPType=V4, ->
add persist=0: ApnName=Internet,UserName=u,Password=p,AuthType=PAP_CHAP,HomeIPType=V4,RoamIPType=V4,ApnTypesMask=DEFAULT|SUPL|,ApnClass=INET,IsClatEnabled=1,MaxPdnsConnPerBlock=2,MaxPdnConnTimer=3,PdnReqWaitInterval=4,IsApnDisabled=0,IsEmergencySupported=1,IsIAProfile=0,
H setupDataCall profile added
)",
           .requests = R"(create {"name": "pavo_profile", "persistent": false,
"apn": "internet", "user": "u", "password": "p", "auth": 3, "pdpType": "V4", "lteRoam": "V4",
"umtsRoam": "V4", "apnTypes": 17, "class": 3, "clat": true, "maxPdnPerBlock": 2, "maxPdnTimer": 3,
"pdnWaitInterval": 4, "disabled": false, "emergency": true})",
           .result = "@+"},
          {.name = "a name alone is looked up twice, too",
           .isUpdateAllowed = false,
           .modem = "",
           .params = "ApnName=internet,",
           .log = R"(
filter None: ApnName=internet, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=internet, ->
add persist=0: ApnName=internet,IsIAProfile=0,
H setupDataCall profile added
)",
           .requests = R"(create {"name": "pavo_profile", "persistent": false, "apn": "internet"})",
           .result = "@+"},
          {.name = "a home type alone is looked up without a name",
           .isUpdateAllowed = false,
           .modem = R"(
{"apn": "ims", "pdpType": "V6"}
{"pdpType": "V4"}
)",
           .params = "HomeIPType=V4,",
           .log = R"(
filter None: HomeIPType=V4, -> 2
H found existing setupDataCall profile
)",
           .result = "@2"},
          {.name = "without both the first of all is taken",
           .isUpdateAllowed = false,
           .modem = R"(
{"apn": "ims", "pdpType": "V6"}
{"apn": "internet", "pdpType": "V4"}
{}
)",
           .params = "UserName=u,RoamIPType=V4,",
           .log = R"(
filter None: -> 1 2 3
H found existing setupDataCall profile
)",
           .result = "@1"},
          {.name = "a profile that the modem refuses is logged as added all the same",
           .isUpdateAllowed = false,
           .modem = "",
           .params = "ApnName=internet,",
           .log = R"(
filter None: ApnName=internet, ->
filter HomeIPSubset|HomeIPSuperset|: ApnName=internet, ->
fail to add persist=0: ApnName=internet,IsIAProfile=0,
H setupDataCall profile added
)",
           .requests = R"(create {"name": "pavo_profile", "persistent": false, "apn": "internet"})",
           .refused = "create-profile"},
          {.name = "the first of the name is changed to all that was asked for",
           .isUpdateAllowed = true,
           .modem = R"(
{"apn": "internet", "pdpType": "V6", "user": "other", "class": 3}
{"apn": "internet", "pdpType": "V4"}
{"apn": "ims", "pdpType": "V4"}
)",
           .params = "ApnName=INTERNET,UserName=u,Password=p,HomeIPType=V4,"
                     "ApnTypesMask=MMS|,ApnClass=INET,PdnReqWaitInterval=9,"
                     "IsEmergencySupported=1,",
           .log = R"(
filter None: ApnName=INTERNET, -> 1 2
H found existing setupDataCall profile
H Modifying profile with input parameters
modify 1 $1
)",
           .requests = R"(modify #1 {"user": "u", "password": "p", "pdpType": "V4",
"apnTypes": 4, "pdnWaitInterval": 9, "emergency": true})",
           .result = "@1"},
          {.name = "nothing of the name is made at once",
           .isUpdateAllowed = true,
           .modem = R"({"apn": "ims", "pdpType": "V4"})",
           .params = "ApnName=internet,HomeIPType=V4,",
           .log = R"(
filter None: ApnName=internet, ->
add persist=0: ApnName=internet,HomeIPType=V4,IsIAProfile=0,
H setupDataCall profile added
)",
           .requests = R"(create {"name": "pavo_profile", "persistent": false,
"apn": "internet", "pdpType": "V4"})",
           .result = "@+"},
          {.name = "whether the modem takes the change is not asked",
           .isUpdateAllowed = true,
           .modem = R"({"apn": "internet"})",
           .params = "ApnName=internet,UserName=u,",
           .log = R"(
filter None: ApnName=internet, -> 1
H found existing setupDataCall profile
H Modifying profile with input parameters
modify 1 $1
)",
           .requests = R"(modify #1 {"user": "u"})",
           .result = "@1",
           .refused = "modify-profile"},
      });
}

TEST_F(UtilDataCallTest, EmergencyDataCall_EveryCase_LogsAsksAndChangesJustThis) {
  std::vector<PolicyCase> cases = {
      {.name = "by name, whatever else was asked for",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "other", "emergency": true}
{"apn": "sos", "emergency": false}
{"apn": "sos", "emergency": true, "pdpType": "V6"}
{"apn": "sos", "emergency": true}
)",
       .params = "ApnName=SOS,UserName=u,HomeIPType=V4,ApnTypesMask=DEFAULT|,"
                 "IsEmergencySupported=0,",
       .log = R"(
filter None: ApnName=SOS,IsEmergencySupported=1, -> 3 4
H found an emergency profile by name
)",
       .result = "@3"},
      {.name = "any that can, when none of the name can",
       .isUpdateAllowed = false,
       .modem = R"(
{"apn": "sos"}
{"apn": "other", "emergency": true, "pdpType": "V6"}
{"emergency": true}
)",
       .params = "ApnName=sos,HomeIPType=V4,",
       .log = R"(
filter None: ApnName=sos,IsEmergencySupported=1, ->
filter None: IsEmergencySupported=1, -> 2 3
H found a profile that supports emergency calls
)",
       .result = "@2"},
      {.name = "without a name it is not asked by name",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "other", "emergency": true})",
       .params = "HomeIPType=V4,",
       .log = R"(
filter None: IsEmergencySupported=1, -> 1
H found a profile that supports emergency calls
)",
       .result = "@1"},
      {.name = "a new one lasts and is for emergency calls alone",
       .isUpdateAllowed = false,
       .modem = R"({"apn": "sos", "emergency": false})",
       .params = "ApnName=Sos,UserName=u,HomeIPType=V4,ApnTypesMask=DEFAULT|IMS|,"
                 "IsEmergencySupported=0,",
       .log = R"(
filter None: ApnName=Sos,IsEmergencySupported=1, ->
filter None: IsEmergencySupported=1, ->
add persist=1: ApnName=Sos,UserName=u,HomeIPType=V4,ApnTypesMask=EMERGENCY|,IsEmergencySupported=1,IsIAProfile=0,
H emergency profile created
)",
       .requests = R"(create {"name": "pavo_profile", "persistent": true, "apn": "sos",
"user": "u", "pdpType": "V4", "apnTypes": 512, "emergency": true})",
       .result = "@+"},
      {.name = "one that the modem refuses is logged as created all the same",
       .isUpdateAllowed = false,
       .modem = "",
       .params = "HomeIPType=V4,",
       .log = R"(
filter None: IsEmergencySupported=1, ->
fail to add persist=1: HomeIPType=V4,ApnTypesMask=EMERGENCY|,IsEmergencySupported=1,IsIAProfile=0,
H emergency profile created
)",
       .requests = R"(create {"name": "pavo_profile", "persistent": true, "pdpType": "V4",
"apnTypes": 512, "emergency": true})",
       .refused = "create-profile"},
  };
  // An emergency call changes nothing that is there, also when it might.
  for (std::size_t i = 0, count = cases.size(); i < count; ++i) {
    cases.push_back(cases[i]);
    cases.back().isUpdateAllowed = true;
  }
  expectCases("pavo findOrCreateProfileForEmergencyDataCall",
              &Util::findOrCreateProfileForEmergencyDataCall, cases);
}

TEST_F(UtilDataCallTest, CreatedProfiles_AfterTheirKey_OnlyTheEmergencyOneLasts) {
  Util util;
  AddProfileParams wanted(/*isPersistent=*/false, /*isIAProfile=*/false);
  wanted.setApnName("internet");
  util.findOrCreateProfileForSetupDataCall(wanted).reset();
  EXPECT_THAT(table(), testing::IsEmpty());
  util.findOrCreateProfileForEmergencyDataCall(wanted).reset();
  EXPECT_THAT(table(), testing::SizeIs(1));
}

}  // namespace
}  // namespace pavo::test
