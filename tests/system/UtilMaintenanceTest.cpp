// How a list of wanted profiles reaches the modem: by APN class, and the APN types by name.
#include <sstream>
#include <unordered_set>

#include "PolicyTest.h"

namespace pavo::test {
namespace {

class UtilMaintenanceTest : public PolicyTest {};

TEST_F(UtilMaintenanceTest, ApnClass_EveryCase_LogsAsksAndChangesJustThis) {
  expectCases(
      [](Util& util, const Params& params) {
        util.updateModemProfileByApnClass(params);
        return "";
      },
      {
          {.name = "every profile of a class is changed, a class without one gets one",
           .isUpdateAllowed = false,
           .modem = R"(
{"apn": "ims", "class": 1, "user": "x"}
{"apn": "internet", "class": 3}
{"apn": "sos", "class": 1, "name": "pavo_profile"}
{"apn": "ims"}
)",
           .params = R"(
ApnName=IMS,UserName=u,HomeIPType=V4,ApnClass=IMS,
ApnName=internet,UserName=u,
ApnName=admin,HomeIPType=V6,ApnClass=ADMN,
)",
           .log = "H pavo updateModemProfileByApnClass > \n"
                  R"(
H   3gpp:
H     $1
H     $2
H     $3
D pavo update 3gpp modem profile by APN class for $1
filter None: ApnClass=IMS, -> 1 3
D Found a match for APN class and tech type, modify the profile
modify 1 $1
modify 3 $1
D pavo update 3gpp modem profile by APN class for $2
D pavo either tech type or apn class is missing
D pavo update 3gpp modem profile by APN class for $3
filter None: ApnClass=ADMN, ->
D Did not find a match for APN class and tech type, create a persistent profile
add persist=1: $3IsIAProfile=0,
H pavo updateModemProfileByApnClass < OK
)",
           .requests = R"(
modify #1 {"user": "u", "pdpType": "V4"}
modify #3 {"apn": "ims", "user": "u", "pdpType": "V4"}
create {"name": "pavo_profile", "persistent": true, "apn": "admin", "pdpType": "V6", "class": 2}
)"},
          {.name = "an empty list",
           .isUpdateAllowed = true,
           .modem = R"({"apn": "ims", "class": 1})",
           .params = "",
           .log = "H pavo updateModemProfileByApnClass > \n"
                  R"(
H   3gpp:
H pavo updateModemProfileByApnClass < OK
)"},
          {.name = "no class is a class when it is there",
           .isUpdateAllowed = false,
           .modem = R"({"apn": "ims", "class": 0})",
           .params = "UserName=u,ApnClass=0,",
           .log = "H pavo updateModemProfileByApnClass > \n"
                  R"(
H   3gpp:
H     $1
D pavo update 3gpp modem profile by APN class for $1
filter None: ApnClass=0, -> 1
D Found a match for APN class and tech type, modify the profile
modify 1 $1
H pavo updateModemProfileByApnClass < OK
)",
           .requests = R"(modify #1 {"user": "u"})"},
          {.name = "what the modem refuses to change is no error",
           .isUpdateAllowed = false,
           .modem = R"({"apn": "ims", "class": 1})",
           .params = "UserName=u,ApnClass=IMS,",
           .log = "H pavo updateModemProfileByApnClass > \n"
                  R"(
H   3gpp:
H     $1
D pavo update 3gpp modem profile by APN class for $1
filter None: ApnClass=IMS, -> 1
D Found a match for APN class and tech type, modify the profile
modify 1 $1
H pavo updateModemProfileByApnClass < OK
)",
           .requests = R"(modify #1 {"user": "u"})",
           .refused = "modify-profile"},
          {.name = "what it refuses to create is",
           .isUpdateAllowed = false,
           .modem = "",
           .params = "UserName=u,ApnClass=APP,",
           .log = "H pavo updateModemProfileByApnClass > \n"
                  R"(
H   3gpp:
H     $1
D pavo update 3gpp modem profile by APN class for $1
filter None: ApnClass=APP, ->
D Did not find a match for APN class and tech type, create a persistent profile
fail to add persist=1: UserName=u,ApnClass=APP,IsIAProfile=0,
E Could not add profile by APN class
H pavo updateModemProfileByApnClass < OK
)",
           .requests = R"(create {"name": "pavo_profile", "persistent": true, "user": "u",
"class": 4})",
           .refused = "create-profile"},
      });
}

TEST_F(UtilMaintenanceTest, CreatedProfile_OfAClass_Lasts) {
  Util util;
  ProfileParams wanted;
  wanted.setApnClass(ApnClass::IMS);
  util.updateModemProfileByApnClassAndTechType(wanted);
  EXPECT_EQ(table(),
            (ModemTable{{1, {{"name", "pavo_profile"}, {"persistent", true}, {"class", 1}}}}));
}

// A case of the masks, from the line on with which a name is taken up.
struct MaskCase {
  const char* name;
  const char* modem;
  const char* params;
  const char* log;
  const char* requests;
};

class UtilMaskTest : public PolicyTest {
 protected:
  void expectMaskCases(bool isUpdateAllowed, const std::vector<MaskCase>& cases) {
    for (const MaskCase& c : cases) {
      std::string dumps;
      std::string entries;
      std::istringstream records(c.params);
      int number = 0;
      for (std::string record; std::getline(records, record);) {
        const std::string dump = "$" + std::to_string(++number) + "\n";
        dumps += "H     " + dump;
        entries += "H pavo update APN type bitmask on modem profile for " + dump;
        if (record.find("ApnTypesMask=") == std::string::npos) {
          entries += "E pavo APN type mask not present, setting to 0\n";
        }
        if (record.find("HomeIPType=") == std::string::npos) {
          entries += "E pavo Home IP type not present, setting to v4v6\n";
        }
      }
      const std::string whole = "H pavo updateAPNTypeBitmaskOnModemProfile > \n" + dumps + entries +
                                c.log + "\nH pavo updateAPNTypeBitmaskOnModemProfile < OK";
      expectCases(
          [](Util& util, const Params& params) {
            util.updateAPNTypeBitmaskOnModemProfile(params);
            return "";
          },
          {{.name = c.name,
            .isUpdateAllowed = isUpdateAllowed,
            .modem = c.modem,
            .params = c.params,
            .log = whole.c_str(),
            .requests = c.requests}});
    }
  }
};

TEST_F(UtilMaskTest, UpdatesNotAllowed_EveryCase_MasksGoToTheirTypesOrTheNextBest) {
  expectMaskCases(
      /*isUpdateAllowed=*/false,
      {
          {.name = "an empty list", .modem = "{}", .params = "", .log = "", .requests = ""},
          {.name = "each type's mask to the profiles of the type; names differ in case only",
           .modem = R"(
{"apn": "internet", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V6", "apnTypes": 1}
{"apn": "internet", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V4V6"}
{"apn": "intern", "pdpType": "V4"}
)",
           .params = "ApnName=Internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=INTERNET,UserName=u,HomeIPType=V6,ApnTypesMask=IMS|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=IA|,\n"
                     "ApnName=internet,HomeIPType=V4,ApnTypesMask=MMS|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x3, v6 mask0x140:, v4v6 mask:0x0
filter None: ApnName=internet,HomeIPType=V4, -> 1 3
D pavo updating profile id:#1, with mask0x3:
modify 1 ApnTypesMask=DEFAULT|MMS|,
D pavo updating profile id:#3, with mask0x3:
modify 3 ApnTypesMask=DEFAULT|MMS|,
filter None: ApnName=internet,HomeIPType=V6, -> 2
D pavo updating profile id:#2, with mask0x140:
modify 2 ApnTypesMask=IMS|IA|,
)",
           .requests = R"(
modify #1 {"apnTypes": 5}
modify #3 {"apnTypes": 5}
modify #2 {"apnTypes": 258}
)"},
          {.name = "the V4 mask alone",
           .modem = R"({"apn": "internet", "pdpType": "V4"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x1:
modify 1 ApnTypesMask=DEFAULT|,
)",
           .requests = R"(modify #1 {"apnTypes": 1})"},
          {.name = "what has no V4 profile goes to the V4V6 one",
           .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=MMS|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x2
filter None: ApnName=internet,HomeIPType=V4, ->
D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4V6, -> 1
D pavo updating profile id:#1, with mask0x3:
modify 1 ApnTypesMask=DEFAULT|MMS|,
)",
           .requests = R"(modify #1 {"apnTypes": 5})"},
          {.name = "what has no V6 profile goes to the V4V6 one",
           .modem = R"(
{"apn": "internet", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V4V6"}
)",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x1:
modify 1 ApnTypesMask=DEFAULT|,
filter None: ApnName=internet,HomeIPType=V6, ->
D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4V6, -> 2
D pavo updating profile id:#2, with mask0x2:
modify 2 ApnTypesMask=MMS|,
)",
           .requests = R"(
modify #1 {"apnTypes": 1}
modify #2 {"apnTypes": 4}
)"},
          {.name = "all three to the V4V6 profile",
           .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,\n"
                     "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4
filter None: ApnName=internet,HomeIPType=V4, ->
D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V6, ->
D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4V6, -> 1
D pavo updating profile id:#1, with mask0x7:
modify 1 ApnTypesMask=DEFAULT|MMS|SUPL|,
)",
           .requests = R"(modify #1 {"apnTypes": 21})"},
          {.name = "without a V4V6 profile its mask goes to both others on top of theirs",
           .modem = R"(
{"apn": "internet", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V6"}
)",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,\n"
                     "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x1:
modify 1 ApnTypesMask=DEFAULT|,
filter None: ApnName=internet,HomeIPType=V6, -> 2
D pavo updating profile id:#2, with mask0x2:
modify 2 ApnTypesMask=MMS|,
filter None: ApnName=internet,HomeIPType=V4V6, ->
D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x5:
modify 1 ApnTypesMask=DEFAULT|SUPL|,
filter None: ApnName=internet,HomeIPType=V6, -> 2
D pavo updating profile id:#2, with mask0x6:
modify 2 ApnTypesMask=MMS|SUPL|,
)",
           .requests = R"(
modify #1 {"apnTypes": 1}
modify #2 {"apnTypes": 4}
modify #1 {"apnTypes": 17}
modify #2 {"apnTypes": 20}
)"},
          {.name = "the V4V6 mask alone, without a V4V6 profile",
           .modem = R"(
{"apn": "internet", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V6"}
)",
           .params = "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x4
filter None: ApnName=internet,HomeIPType=V4V6, ->
D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x4:
modify 1 ApnTypesMask=SUPL|,
filter None: ApnName=internet,HomeIPType=V6, -> 2
D pavo updating profile id:#2, with mask0x4:
modify 2 ApnTypesMask=SUPL|,
)",
           .requests = R"(
modify #1 {"apnTypes": 16}
modify #2 {"apnTypes": 16}
)"},
          {.name = "a V4 profile alone gets the V6 mask, too",
           .modem = R"({"apn": "internet", "pdpType": "V4"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x1:
modify 1 ApnTypesMask=DEFAULT|,
filter None: ApnName=internet,HomeIPType=V6, ->
D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4V6, ->
D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4, -> 1
D pavo updating profile id:#1, with mask0x3:
modify 1 ApnTypesMask=DEFAULT|MMS|,
filter None: ApnName=internet,HomeIPType=V6, ->
D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP
)",
           .requests = R"(
modify #1 {"apnTypes": 1}
modify #1 {"apnTypes": 5}
)"},
          {.name = "a V6 profile alone gets the V4 mask, too",
           .modem = R"({"apn": "internet", "pdpType": "V6"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0
filter None: ApnName=internet,HomeIPType=V4, ->
D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V6, -> 1
D pavo updating profile id:#1, with mask0x2:
modify 1 ApnTypesMask=MMS|,
filter None: ApnName=internet,HomeIPType=V4V6, ->
D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4, ->
D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V6, -> 1
D pavo updating profile id:#1, with mask0x3:
modify 1 ApnTypesMask=DEFAULT|MMS|,
)",
           .requests = R"(
modify #1 {"apnTypes": 4}
modify #1 {"apnTypes": 5}
)"},
          {.name = "no profile of the name",
           .modem = R"({"apn": "ims", "pdpType": "V4"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,\n"
                     "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4
filter None: ApnName=internet,HomeIPType=V4, ->
D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V6, ->
D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4V6, ->
D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V4, ->
D pavo no match found for apn name:internet, ip type:1, tech type: THREE_GPP
filter None: ApnName=internet,HomeIPType=V6, ->
D pavo no match found for apn name:internet, ip type:2, tech type: THREE_GPP
)",
           .requests = ""},
          {.name = "an absent mask is 0: nothing is asked for",
           .modem = R"({"apn": "internet", "pdpType": "V4", "apnTypes": 1})",
           .params = "ApnName=internet,HomeIPType=V4,\n"
                     "ApnName=internet,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=NONE,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x0
)",
           .requests = ""},
          {.name = "absent and unknown types count as V4V6",
           .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
           .params = "ApnName=internet,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=UNKNOWN,ApnTypesMask=MMS|,\n"
                     "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x7
filter None: ApnName=internet,HomeIPType=V4V6, -> 1
D pavo updating profile id:#1, with mask0x7:
modify 1 ApnTypesMask=DEFAULT|MMS|SUPL|,
)",
           .requests = R"(modify #1 {"apnTypes": 21})"},
          {.name = "records without a name are looked at and left",
           .modem = R"({"pdpType": "V4"})",
           .params = "HomeIPType=V4,ApnTypesMask=DEFAULT|,\nUserName=u,",
           .log = "",
           .requests = ""},
          {.name = "an empty name is a name, which they do not have",
           .modem = R"(
{"pdpType": "V4"}
{"apn": "", "pdpType": "V4"}
)",
           .params = "ApnName=,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "HomeIPType=V4,ApnTypesMask=MMS|,",
           .log = R"(
D pavo processing APN name , V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0
filter None: ApnName=,HomeIPType=V4, -> 2
D pavo updating profile id:#2, with mask0x1:
modify 2 ApnTypesMask=DEFAULT|,
)",
           .requests = R"(modify #2 {"apnTypes": 1})"},
      });
}

TEST_F(UtilMaskTest, UpdatesAllowed_EveryCase_AllProfilesOfTheNameGetAll) {
  expectMaskCases(
      /*isUpdateAllowed=*/true,
      {
          {.name = "whatever their types",
           .modem = R"(
{"apn": "internet", "pdpType": "V4", "apnTypes": 128}
{"apn": "ims", "pdpType": "V4"}
{"apn": "internet", "pdpType": "V6", "name": "pavo_profile"}
{"apn": "internet"}
)",
           .params = "ApnName=Internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                     "ApnName=internet,HomeIPType=V6,ApnTypesMask=MMS|,\n"
                     "ApnName=internet,HomeIPType=V4V6,ApnTypesMask=SUPL|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x4
filter None: ApnName=internet, -> 1 3 4
D pavo updating profile id:#1, with combined mask0x7:
modify 1 ApnTypesMask=DEFAULT|MMS|SUPL|,
D pavo updating profile id:#3, with combined mask0x7:
modify 3 ApnTypesMask=DEFAULT|MMS|SUPL|,
D pavo updating profile id:#4, with combined mask0x7:
modify 4 ApnTypesMask=DEFAULT|MMS|SUPL|,
)",
           .requests = R"(
modify #1 {"apnTypes": 21}
modify #3 {"apnTypes": 21}
modify #4 {"apnTypes": 21}
)"},
          {.name = "a mask of 0 is written",
           .modem = R"({"apn": "internet", "apnTypes": 1})",
           .params = "ApnName=internet,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x0, v6 mask0x0:, v4v6 mask:0x0
filter None: ApnName=internet, -> 1
D pavo updating profile id:#1, with combined mask0x0:
modify 1 ApnTypesMask=NONE,
)",
           .requests = R"(modify #1 {"apnTypes": 0})"},
          {.name = "no profile of the name",
           .modem = R"({"apn": "ims"})",
           .params = "ApnName=internet,HomeIPType=V4,ApnTypesMask=DEFAULT|,",
           .log = R"(
D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0
filter None: ApnName=internet, ->
)",
           .requests = ""},
      });
}

TEST_F(UtilMaskTest, NamesThatDifferInCase_OnlyAsciiLettersCount) {
  expectMaskCases(
      /*isUpdateAllowed=*/true, {{.name = "the letters at both ends, and what stands beside them",
                                  .modem = R"({"apn": "az@[`{"})",
                                  .params = "ApnName=AZ@[`{,HomeIPType=V4,ApnTypesMask=DEFAULT|,\n"
                                            "ApnName=az@[`{,HomeIPType=V6,ApnTypesMask=MMS|,",
                                  .log = R"(
D pavo processing APN name az@[`{, V4 mask:0x1, v6 mask0x2:, v4v6 mask:0x0
filter None: ApnName=az@[`{, -> 1
D pavo updating profile id:#1, with combined mask0x3:
modify 1 ApnTypesMask=DEFAULT|MMS|,
)",
                                  .requests = R"(modify #1 {"apnTypes": 5})"}});
}

TEST_F(UtilMaskTest, SeveralNames_AreTakenUpOnceEachInTheOrderOfTheirSet) {
  const std::vector<std::string> names = {"ims", "internet", "mms", "sos", ""};
  std::string params;
  std::string blocks;
  std::unordered_set<std::string> set;
  for (const std::string& name : names) {
    params += "ApnName=" + name + ",HomeIPType=V4,ApnTypesMask=DEFAULT|,\n";
    set.insert(name);
  }
  for (const std::string& name : set) {
    blocks += "D pavo processing APN name " + name +
              ", V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x0\nfilter None: ApnName=" + name + ", ->\n";
  }
  expectMaskCases(/*isUpdateAllowed=*/true, {{.name = "several names",
                                              .modem = "",
                                              .params = params.c_str(),
                                              .log = blocks.c_str(),
                                              .requests = ""}});
}

TEST_F(UtilMaskTest, UpdateByIpType_CalledAlone_TellsWhetherThereIsOne) {
  const Policy policy = [](Util& util, const Params& /*params*/) {
    return util.updateByIpType(IPType::V6, /*mask=*/0, "Internet") ? "true" : "false";
  };
  expectCases(policy, {{.name = "a mask of 0 is written",
                        .isUpdateAllowed = false,
                        .modem = R"({"apn": "internet", "pdpType": "V6", "apnTypes": 1})",
                        .params = "",
                        .log = R"(
filter None: ApnName=Internet,HomeIPType=V6, -> 1
D pavo updating profile id:#1, with mask0x0:
modify 1 ApnTypesMask=NONE,
)",
                        .requests = R"(modify #1 {"apnTypes": 0})",
                        .result = "true"},
                       {.name = "whether the modem takes the change is not asked",
                        .isUpdateAllowed = false,
                        .modem = R"({"apn": "internet", "pdpType": "V6", "apnTypes": 1})",
                        .params = "",
                        .log = R"(
filter None: ApnName=Internet,HomeIPType=V6, -> 1
D pavo updating profile id:#1, with mask0x0:
modify 1 ApnTypesMask=NONE,
)",
                        .requests = R"(modify #1 {"apnTypes": 0})",
                        .result = "true",
                        .refused = "modify-profile"},
                       {.name = "a wider type is another type",
                        .isUpdateAllowed = true,
                        .modem = R"({"apn": "internet", "pdpType": "V4V6"})",
                        .params = "",
                        .log = R"(
filter None: ApnName=Internet,HomeIPType=V6, ->
D pavo no match found for apn name:Internet, ip type:2, tech type: THREE_GPP
)",
                        .result = "false"}});
}

}  // namespace
}  // namespace pavo::test
