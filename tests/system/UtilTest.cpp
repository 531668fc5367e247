// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests follow each policy from a client's call to the log, the modem's requests and its
// table. The unit tests go through every case of a policy.
#include "UtilSystemTest.h"

namespace pavo::test {
namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;

Lines operator+(Lines lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

// Returns the log lines of an operation of the Manager.
Lines call(const std::string& operation, const std::string& request, const std::string& answer) {
  return {"H Manager::" + operation + " > " + request, "H Manager::" + operation + " < " + answer};
}

Lines filterCall(const std::string& params, const std::string& keys = "") {
  return call("filter", "Filter params: " + params, "Filter Success " + keys);
}

class UtilTest : public UtilSystemTest {
 protected:
  // Starts the record: earlier lines and requests are not part of it.
  void record() {
    control("clear-transcript");
    position = log.end();
  }

  // Returns this thread's log lines since record(), without those about the end of keys.
  Lines lines() {
    Lines own;
    for (const AndroidLogLine& line : log.linesSince(position)) {
      if (line.thread == std::this_thread::get_id() && line.message != "~ProfileKey") {
        EXPECT_EQ(line.tag, "PAVO") << line.message;
        own.push_back(std::string(1, "??VDH?E"[line.priority]) + " " + line.message);
      }
    }
    return own;
  }

  void expectLines(const Lines& expected) { EXPECT_EQ(lines(), expected); }

  // Returns the requests that have reached the modem: message, index, settings.
  Lines requests() {
    Lines found;
    for (const json& entry : transcript()) {
      if (entry["direction"] == "in" && entry["kind"] == "request") {
        json settings = entry["fields"];
        const std::string index =
            settings.contains("profile") ? " " + settings["profile"]["index"].dump() : "";
        settings.erase("profile");
        settings.erase("type");
        found.push_back(entry["message"].get<std::string>() + index + " " + settings.dump());
      }
    }
    return found;
  }

  std::string keyOf(int index) {
    const auto keys = manager->filter(byId(index));
    EXPECT_EQ(keys.size(), 1U);
    return keys.empty() ? "" : keys.front()->dump();
  }

  // Expects the state that must hold after every policy.
  void expectInStep() {
    expectCacheEqualsTable();
    expectNothingPending();
  }

  ProfileParams wanted;
  Util util;

 private:
  std::size_t position = 0;
};

TEST_F(UtilTest, SetupDataCall_ProfileOfAWiderType_IsTakenAsItIs) {
  put({{{"apn", "ims"}}, {{"apn", "internet"}, {"pdpType", "V4V6"}}});
  const std::string key = keyOf(2);
  const ModemTable before = table();
  wanted.setApnName("Internet");
  wanted.setHomeIPType(IPType::V4);
  record();
  const Key found = util.findOrCreateProfileForSetupDataCall(wanted);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->dump(), key);
  expectLines(
      Lines{"H pavo findOrCreateProfileForSetupDataCall > ApnName=Internet,HomeIPType=V4,"} +
      filterCall("None: ApnName=Internet,HomeIPType=V4,") +
      filterCall("HomeIPSubset|HomeIPSuperset|: ApnName=Internet,HomeIPType=V4,", key + ",") +
      Lines{"H found existing setupDataCall profile",
            "H pavo findOrCreateProfileForSetupDataCall < " + key});
  EXPECT_EQ(requests(), Lines());
  EXPECT_EQ(table(), before);
  expectInStep();
}

TEST_F(UtilTest, SetupDataCall_UpdatesAllowed_ChangesWhatItFinds) {
  put({{{"apn", "internet"}, {"pdpType", "V6"}, {"user", "other"}}});
  wanted.setApnName("internet");
  wanted.setUserName("u");
  wanted.setHomeIPType(IPType::V4);
  wanted.setApnTypesMask(MMS);
  util.setProfileUpdateAllowed(true);
  record();
  ASSERT_NE(util.findOrCreateProfileForSetupDataCall(wanted), nullptr);
  EXPECT_EQ(requests(), Lines{R"(modify-profile 1 {"apnTypes":4,"pdpType":"V4","user":"u"})"});
  EXPECT_EQ(table().at(1),
            (json{{"apn", "internet"}, {"pdpType", "V4"}, {"user", "u"}, {"apnTypes", 4}}));
  expectInStep();
}

TEST_F(UtilTest, SetupDataCall_ChangeRefused_TheProfileAllTheSame) {
  put({{{"apn", "internet"}}});
  const ModemTable before = table();
  wanted.setApnName("internet");
  wanted.setUserName("u");
  util.setProfileUpdateAllowed(true);
  control("fail", {{"message", "modify-profile"}, {"error", 3}});
  EXPECT_NE(util.findOrCreateProfileForSetupDataCall(wanted), nullptr);
  EXPECT_EQ(table(), before);
  expectInStep();
}

TEST_F(UtilTest, EveryPolicyThatCreates_Refused_EmptyAndOneRequest) {
  put({});
  wanted.setApnName("internet");
  wanted.setApnClass(ApnClass::APP);
  control("fail", {{"message", "create-profile"}, {"error", 3}, {"count", 8}});
  record();
  EXPECT_EQ(util.findOrCreateProfileForSetupDataCall(wanted), nullptr);
  EXPECT_EQ(util.findOrCreateProfileForEmergencyDataCall(wanted), nullptr);
  EXPECT_EQ(util.findOrCreateProfileForLteAttach(wanted), nullptr);
  util.updateModemProfileByApnClass({wanted});
  EXPECT_EQ(requests().size(), 4U);
  EXPECT_THAT(lines(), testing::Contains("E Could not add profile by APN class"));
  control("clear");
  EXPECT_THAT(table(), testing::IsEmpty());
  expectInStep();
}

TEST_F(UtilTest, CreatedProfiles_AfterTheirKeys_OnlyTheDataCallsGoes) {
  put({});
  wanted.setApnName("internet");
  record();
  util.findOrCreateProfileForSetupDataCall(wanted).reset();
  EXPECT_THAT(table(), testing::IsEmpty());
  util.findOrCreateProfileForEmergencyDataCall(wanted).reset();
  util.findOrCreateProfileForLteAttach(wanted).reset();
  ProfileParams ims;
  ims.setApnClass(ApnClass::IMS);
  util.updateModemProfileByApnClassAndTechType(ims);
  EXPECT_EQ(
      requests(),
      (Lines{R"(create-profile {"apn":"internet","name":"pavo_profile","persistent":false})",
             "delete-profile 1 {}",
             R"(create-profile {"apn":"internet","apnTypes":512,"emergency":true,)"
             R"("name":"pavo_profile","persistent":true})",
             R"(create-profile {"apn":"internet","name":"pavo_profile_ia","persistent":true})",
             R"(create-profile {"class":1,"name":"pavo_profile","persistent":true})"}));
  EXPECT_THAT(table(), testing::SizeIs(3));
  expectInStep();
}

TEST_F(UtilTest, Attach_ProfileOfTheModem_IsGivenTheSettingsAndMatchesThen) {
  put({{{"apn", "internet"}, {"pdpType", "V4V6"}, {"class", 1}}});
  const std::string key = keyOf(1);
  wanted.setApnName("internet");
  wanted.setUserName("u");
  wanted.setHomeIPType(IPType::V4);
  EXPECT_FALSE(util.matchLteAttachProfileId(1, wanted));
  record();
  const Key found = util.findOrCreateProfileForLteAttach(wanted);
  ASSERT_NE(found, nullptr);
  expectLines(Lines{"H pavo findOrCreateProfileForLteAttach > " + wanted.dump()} +
              filterCall("None: ApnName=internet,HomeIPType=V4,") +
              filterCall("HomeIPSubset|HomeIPSuperset|: ApnName=internet,HomeIPType=V4,"
                         "IsPavoProfile=0,",
                         key + ",") +
              Lines{"H pavo Found a loose match profile for attach"} +
              call("getProfile", "Get " + key,
                   "Get Success "
                   "ApnName=internet,HomeIPType=V4V6,ApnClass=IMS,IsPavoProfile=0,IsIAProfile=0,") +
              Lines{"H It is PAVO_IA profile or modem profile."} +
              call("modifyProfile", "Modify " + key + " UserName=u,", "Modify Success") +
              Lines{"H pavo Modifying profile identified for IA",
                    "H pavo findOrCreateProfileForLteAttach < " + key});
  EXPECT_EQ(requests(), Lines{R"(modify-profile 1 {"user":"u"})"});
  expectInStep();
  record();
  EXPECT_TRUE(util.matchLteAttachProfileId(1, wanted));
  expectLines(
      Lines{"H pavo matchLteAttachProfileId > Profile id = 1 Input Params = " + wanted.dump()} +
      filterCall("None: id=1,", key + ",") +
      call("getProfile", "Get " + key,
           "Get Success ApnName=internet,UserName=u,HomeIPType=V4V6,"
           "ApnClass=IMS,IsPavoProfile=0,IsIAProfile=0,") +
      call("match",
           "Match " + key +
               " HomeIPSubset|RoamIPSubset|HomeIPSuperset|RoamIPSuperset|: "
               "ApnName=internet,UserName=u,HomeIPType=V4,",
           "Match Success true") +
      Lines{"H pavo matchLteAttachList < 1"});
}

TEST_F(UtilTest, ApnClass_ProfilesOfAClass_AreChangedAndAMissingOneMade) {
  put({{{"apn", "internet"}, {"class", 3}}, {{"apn", "ims"}, {"class", 1}}});
  wanted.setUserName("u");
  wanted.setApnClass(ApnClass::IMS);
  ProfileParams missing;
  missing.setApnName("admin");
  missing.setApnClass(ApnClass::ADMN);
  record();
  util.updateModemProfileByApnClass({wanted, missing});
  EXPECT_EQ(
      requests(),
      (Lines{
          R"(modify-profile 2 {"user":"u"})",
          R"(create-profile {"apn":"admin","class":2,"name":"pavo_profile","persistent":true})"}));
  expectInStep();
}

TEST_F(UtilTest, ApnTypes_NoV4V6Profile_TypesGoToTheOthersAndOnlyDebugLinesAreNotKept) {
  put({{{"apn", "internet"}, {"pdpType", "V4"}}, {{"apn", "internet"}, {"pdpType", "V6"}}});
  wanted.setApnName("Internet");
  wanted.setHomeIPType(IPType::V4);
  wanted.setApnTypesMask(DEFAULT);
  ProfileParams both;
  both.setApnName("internet");
  both.setApnTypesMask(SUPL);
  const std::string v4 = keyOf(1);
  const std::string v6 = keyOf(2);
  record();
  util.updateAPNTypeBitmaskOnModemProfile({wanted, both});
  const Lines kept = keptLogFrom("pavo updateAPNTypeBitmaskOnModemProfile > ");
  const auto write = [](const std::string& key, const char* mask, const char* types) {
    return Lines{"D pavo updating profile id:" + key.substr(0, 1) + ", with mask" + mask + ":"} +
           call("modifyProfile", "Modify " + key + " ApnTypesMask=" + types, "Modify Success");
  };
  const Lines own = lines();
  EXPECT_EQ(own,
            (Lines{"H pavo updateAPNTypeBitmaskOnModemProfile > ", "H     " + wanted.dump(),
                   "H     " + both.dump(),
                   "H pavo update APN type bitmask on modem profile for " + wanted.dump(),
                   "H pavo update APN type bitmask on modem profile for " + both.dump(),
                   "E pavo Home IP type not present, setting to v4v6",
                   "D pavo processing APN name internet, V4 mask:0x1, v6 mask0x0:, v4v6 mask:0x4"} +
             filterCall("None: ApnName=internet,HomeIPType=V4,", v4 + ",") +
             write(v4, "0x1", "DEFAULT|,") + filterCall("None: ApnName=internet,HomeIPType=V4V6,") +
             Lines{"D pavo no match found for apn name:internet, ip type:3, tech type: THREE_GPP"} +
             filterCall("None: ApnName=internet,HomeIPType=V4,", v4 + ",") +
             write(v4, "0x5", "DEFAULT|SUPL|,") +
             filterCall("None: ApnName=internet,HomeIPType=V6,", v6 + ",") +
             write(v6, "0x4", "SUPL|,") + Lines{"H pavo updateAPNTypeBitmaskOnModemProfile < OK"}));
  EXPECT_EQ(requests(),
            (Lines{R"(modify-profile 1 {"apnTypes":1})", R"(modify-profile 1 {"apnTypes":17})",
                   R"(modify-profile 2 {"apnTypes":16})"}));
  // The library's log for dumps distinguishes High from Info; the Android log does not.
  for (const std::string& line : own) {
    const bool isKept = std::find(kept.begin(), kept.end(), line.substr(2)) != kept.end();
    EXPECT_EQ(isKept, line.front() != 'D') << line;
  }
  expectInStep();
}

}  // namespace
}  // namespace pavo::test
