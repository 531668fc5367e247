// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover events between two steps of a policy, and the policies' log lines for every
// kind of answer. The system tests cover the results on the modem's profiles.
#include <pavo/Util.h>

#include "Aliases.h"
#include "LogWrapper.h"
#include "ProcessWideManager.h"
#include "Sequence.h"
#include "StartedManagerTest.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace pavo::test {
namespace {

using Profiles = std::list<ProfileParams>;
static_assert(noexcept(std::declval<Util&>().setProfileUpdateAllowed(true)));
static_assert(noexcept(
    std::declval<Util&>().findOrCreateProfileForSetupDataCall(std::declval<ProfileParams&>())));
static_assert(noexcept(
    std::declval<Util&>().findOrCreateProfileForEmergencyDataCall(std::declval<ProfileParams&>())));
static_assert(noexcept(
    std::declval<Util&>().findOrCreateProfileForLteAttach(std::declval<ProfileParams&>())));
static_assert(
    noexcept(std::declval<Util&>().matchLteAttachProfileId(1, std::declval<ProfileParams&>())));
static_assert(
    noexcept(std::declval<Util&>().updateModemProfileByApnClass(std::declval<Profiles&>())));
static_assert(noexcept(
    std::declval<Util&>().updateModemProfileByApnClassAndTechType(std::declval<ProfileParams&>())));
static_assert(
    noexcept(std::declval<Util&>().updateAPNTypeBitmaskOnModemProfile(std::declval<Profiles&>())));

using testing::ElementsAre;

const std::string dataCall = "pavo findOrCreateProfileForSetupDataCall";
const std::string emergencyCall = "pavo findOrCreateProfileForEmergencyDataCall";
const std::string attach = "pavo findOrCreateProfileForLteAttach";
const std::string attachMatch = "pavo matchLteAttachProfileId";

ProfileParams named(const std::string& apnName) {
  ProfileParams params;
  params.setApnName(apnName);
  return params;
}

// Returns this thread's lines, without those about the end of keys and without those of the
// indications that the test raises. Neither belongs to the policies.
Sequence ownLines() {
  Sequence lines = sequenceOn(std::this_thread::get_id(), FakePlatform::instance().calls());
  std::erase_if(lines, [](const std::string& line) {
    return line == "D ~ProfileKey" || line.starts_with("V ");
  });
  return lines;
}

Sequence call(const std::string& operation, const std::string& request,
              const std::string& response) {
  const std::string trace = "H Manager::" + operation;
  return {trace + " > " + request, trace + " < " + response};
}

Sequence filterCall(const std::string& params, const std::string& keys = "") {
  return call("filter", "Filter params: " + params, "Filter Success " + keys);
}

// These tests run before Manager::init.
class UtilBeforeInitTest : public FakePlatformTest {
 protected:
  const std::shared_ptr<Manager> manager = processWideManager();
  const LogRecorder recorder;
};

TEST_F(UtilBeforeInitTest, Life_OfTwoObjects_OneDebugLineForEachBeginningAndEnd) {
  // The first Util of a process makes the Manager. A writer that was left behind has recorded the
  // Manager's line.
  platform.clearCalls();
  {
    const Util first;
    const Util second;
  }
  EXPECT_THAT(ownLines(), ElementsAre("D pavo::Util: constructor", "D pavo::Util: constructor",
                                      "D pavo::Util: destructor", "D pavo::Util: destructor"));
}

TEST_F(UtilBeforeInitTest, SetProfileUpdateAllowed_EitherWay_HighLineWithTheNumber) {
  Util util;
  platform.clearCalls();
  util.setProfileUpdateAllowed(true);
  util.setProfileUpdateAllowed(false);
  EXPECT_THAT(ownLines(), ElementsAre("H pavo::Util: profileUpdateAllowed 1",
                                      "H pavo::Util: profileUpdateAllowed 0"));
  for (const PlatformCall& line : platform.logLines()) {
    EXPECT_EQ(line.tag, "PAVO");
  }
}

TEST_F(UtilBeforeInitTest, EveryPolicy_EmptyAnswersAndAnErrorForEachCallOfTheManager) {
  const std::string no = "E Manager not initialized!";
  const std::string started =
      "D pavo processing APN name ims, V4 mask:0x1, v6 mask0x0:, "
      "v4v6 mask:0x0";
  ProfileParams wanted = named("IMS");
  wanted.setHomeIPType(IPType::V4);
  wanted.setApnTypesMask(DEFAULT);
  wanted.setApnClass(ApnClass::IMS);
  const std::string text = wanted.dump();
  const auto noneOf = [](const char* type) {
    return std::string("D pavo no match found for apn name:ims, ip type:") + type +
           ", tech type: THREE_GPP";
  };
  struct Case {
    const char* name;
    std::function<bool(Util&)> answersEmpty;
    Sequence lines;
  };
  const Case cases[] = {
      {"data call",
       [&](Util& u) { return u.findOrCreateProfileForSetupDataCall(wanted) == nullptr; },
       {"H " + dataCall + " > " + text, no, no, no, "H setupDataCall profile added",
        "H " + dataCall + " < "}},
      {"emergency call",
       [&](Util& u) { return u.findOrCreateProfileForEmergencyDataCall(wanted) == nullptr; },
       {"H " + emergencyCall + " > " + text, no, no, no, "H emergency profile created",
        "H " + emergencyCall + " < "}},
      {"attach match",
       [&](Util& u) { return !u.matchLteAttachProfileId(-7, wanted); },
       {"H " + attachMatch + " > Profile id = -7 Input Params = " + text, no,
        "H " + attachMatch + " < did not match input params"}},
      {"attach",
       [&](Util& u) { return u.findOrCreateProfileForLteAttach(wanted) == nullptr; },
       {"H " + attach + " > " + text, no, no, no, no, no,
        "H pavo PAVO IA profile created for attach", "H " + attach + " < "}},
      {"class",
       [&](Util& u) {
         u.updateModemProfileByApnClass({wanted});
         return true;
       },
       {"H pavo updateModemProfileByApnClass > ", "H   3gpp:", "H     " + text,
        "D pavo update 3gpp modem profile by APN class for " + text, no,
        "D Did not find a match for APN class and tech type, create a persistent profile", no,
        "E Could not add profile by APN class", "H pavo updateModemProfileByApnClass < OK"}},
      {"types",
       [&](Util& u) {
         u.updateAPNTypeBitmaskOnModemProfile({wanted});
         return true;
       },
       {"H pavo updateAPNTypeBitmaskOnModemProfile > ", "H     " + text,
        "H pavo update APN type bitmask on modem profile for " + text, started, no, noneOf("1"), no,
        noneOf("3"), no, noneOf("1"), no, noneOf("2"),
        "H pavo updateAPNTypeBitmaskOnModemProfile < OK"}},
  };
  Util util;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    platform.clearCalls();
    EXPECT_TRUE(c.answersEmpty(util));
    EXPECT_EQ(ownLines(), c.lines);
  }
}

// This fixture has profiles of the modem, and runs actions between the lines of a policy.
class UtilTest : public StartedManagerTest {
 protected:
  UtilTest() : StartedManagerTest(processWideManager()) {}

  // Runs the action on this thread right after its nth line that begins with the text.
  void afterLine(const std::string& beginning, int nth, std::function<void()> action) {
    awaited = beginning;
    linesToCome = nth;
    atLine = std::move(action);
  }

  // Puts a profile on the modem; the library knows it after the next refresh.
  void put(std::uint8_t index, const char* apn, const char* profileName = "",
           wds_pdp_type_enum_v01 type = WDS_PDP_TYPE_IPV4_V01) {
    wds_get_profile_settings_resp_msg_v01 settings{};
    settings.apn_name_valid = 1;
    std::strcpy(settings.apn_name, apn);
    settings.profile_name_valid = 1;
    std::strcpy(settings.profile_name, profileName);
    settings.pdp_type_valid = 1;
    settings.pdp_type = type;
    settings.apn_class_valid = 1;
    settings.apn_class = 1;
    platform.setProfile(index, settings);
  }

  // Reads the modem's profiles and starts the record.
  void refresh() {
    manager.refresh(PDC_REFRESH_COMPLETED);
    platform.clearCalls();
  }

  // Returns the dump of a key of the profile.
  std::string keyText(int index) {
    FilterProfileParams byId;
    byId.setFilterByProfileId(index);
    const std::list<Key> keys = manager.filter(byId);
    EXPECT_EQ(keys.size(), 1U);
    const std::string text = keys.empty() ? "" : keys.front()->dump();
    platform.clearCalls();
    return text;
  }

  // Makes another client delete the profile, so its keys become unknown.
  void vanish(std::uint8_t index) { indicate(index, WDS_PROFILE_EVENT_DELETE_V01); }

  // Makes another client change the profile while the modem refuses to let it be read, so its keys
  // have no profile.
  void becomeUnreadable(std::uint8_t index) {
    platform.failNext(OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01);
    indicate(index, WDS_PROFILE_EVENT_MODIFY_V01);
  }

  Util util;

 private:
  void indicate(std::uint8_t index, std::int32_t event) {
    const std::string done = "OvixWdsProxy: handleIndication indQueue.size[0]";
    const std::vector<std::string> messages = platform.logMessages();
    const auto before = std::count(messages.begin(), messages.end(), done);
    ASSERT_TRUE(platform.indicateProfileChanged(index, event));
    ASSERT_TRUE(platform.waitForLog(done, static_cast<std::size_t>(before) + 1));
  }

  void onLine(const std::string& message) {
    if (std::this_thread::get_id() == ownThread && atLine && message.starts_with(awaited) &&
        --linesToCome == 0) {
      std::exchange(atLine, {})();
    }
  }

  const std::thread::id ownThread = std::this_thread::get_id();
  std::string awaited;
  int linesToCome = 0;
  std::function<void()> atLine;
  const LogRecorder recorder{[this](const std::string& message) { onLine(message); }};
};

constexpr const char* filterAnswer = "Manager::filter <";

TEST_F(UtilTest, UpdateAllowed_OfOneObject_IsNotThatOfAnother) {
  put(5, "ims");
  refresh();
  Util other;
  other.setProfileUpdateAllowed(true);
  ProfileParams wanted = named("ims");
  wanted.setHomeIPType(IPType::V4);
  const std::string key = keyText(5) + ",";
  util.findOrCreateProfileForSetupDataCall(wanted);
  EXPECT_THAT(ownLines(),
              testing::IsSupersetOf(filterCall("None: ApnName=ims,HomeIPType=V4,", key)));
  other.findOrCreateProfileForSetupDataCall(wanted);
  EXPECT_THAT(ownLines(), testing::IsSupersetOf(filterCall("None: ApnName=ims,", key)));
}

TEST_F(UtilTest, SetProfileUpdateAllowed_TakesEffectAfterItsLine) {
  put(5, "ims");
  refresh();
  ProfileParams wanted = named("ims");
  wanted.setHomeIPType(IPType::V4);
  const std::string key = keyText(5) + ",";
  afterLine("pavo::Util: profileUpdateAllowed 1", 1,
            [&] { util.findOrCreateProfileForSetupDataCall(wanted); });
  util.setProfileUpdateAllowed(true);
  EXPECT_THAT(ownLines(),
              testing::IsSupersetOf(filterCall("None: ApnName=ims,HomeIPType=V4,", key)));
  platform.clearCalls();
  util.findOrCreateProfileForSetupDataCall(wanted);
  EXPECT_THAT(ownLines(), testing::IsSupersetOf(filterCall("None: ApnName=ims,", key)));
}

TEST_F(UtilTest, DataCall_RefreshBegunBeforeTheModify_TheProfileAllTheSame) {
  put(5, "ims");
  refresh();
  util.setProfileUpdateAllowed(true);
  const std::string key = keyText(5);
  afterLine(filterAnswer, 1, [&] { manager.refresh(PDC_REFRESH_STARTED); });
  const Key found = util.findOrCreateProfileForSetupDataCall(named("ims"));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->dump(), key);
  const Sequence lines = ownLines();
  const Sequence end = call("modifyProfile", "Modify " + key + " ApnName=ims,", "Modify Failure") +
                       Sequence{"H " + dataCall + " < " + key};
  ASSERT_GE(lines.size(), end.size());
  EXPECT_EQ(Sequence(lines.end() - static_cast<std::ptrdiff_t>(end.size()), lines.end()), end);
}

TEST_F(UtilTest, AttachMatch_ProfileGoneOrUnreadable_NoMatchIsAsked) {
  const std::function<void()> happenings[] = {[this] { vanish(5); },
                                              [this] { becomeUnreadable(5); }};
  for (const auto& happens : happenings) {
    put(5, "ims");
    refresh();
    const std::string key = keyText(5);
    afterLine(filterAnswer, 1, happens);
    EXPECT_FALSE(util.matchLteAttachProfileId(5, named("ims")));
    EXPECT_EQ(
        ownLines(),
        (Sequence{"H " + attachMatch + " > Profile id = 5 Input Params = ApnName=ims,"} +
         filterCall("None: id=5,", key + ",") + call("getProfile", "Get " + key, "Get Failure ") +
         Sequence{"H " + attachMatch + " < did not match input params"}));
  }
}

// An exact match that cannot be read is treated as if there were none.
TEST_F(UtilTest, Attach_ExactMatchUnreadable_IsDropped) {
  put(5, "ims");
  refresh();
  const std::string key = keyText(5);
  afterLine(filterAnswer, 1, [&] { becomeUnreadable(5); });
  platform.setNextProfileIndex(9);
  const Key created = util.findOrCreateProfileForLteAttach(named("ims"));
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(created->getProfileId(), 9);
  EXPECT_EQ(ownLines(), (Sequence{"H " + attach + " > ApnName=ims,"} +
                         filterCall("None: ApnName=ims,", key + ",") +
                         call("getProfile", "Get " + key, "Get Failure ") +
                         filterCall("None: ApnName=ims,IsPavoProfile=0,") +
                         filterCall("None: ApnName=ims,IsPavoProfile=1,IsIAProfile=1,") +
                         filterCall("None: IsPavoProfile=1,IsIAProfile=1,") +
                         call("addProfile", "Add  persist=1: ApnName=ims,IsIAProfile=1,",
                              "Add Success " + created->dump()) +
                         Sequence{"H pavo PAVO IA profile created for attach",
                                  "H " + attach + " < " + created->dump()}));
}

// The loose match cannot be read. It is kept in case no other match is found.
class UtilLooseMatchTest : public UtilTest {
 protected:
  UtilLooseMatchTest() {
    put(5, "ims", "", WDS_PDP_TYPE_IPV4V6_V01);
    wanted.setHomeIPType(IPType::V4);
    wanted.setPassword("p");
  }

  // Expects that the search continues with these lines, given the key of the loose match, and takes
  // the profile.
  void expectSearch(bool isUpdateAllowed, const std::function<void()>& happens,
                    const std::function<Sequence(const std::string& key)>& goesOn, int taken) {
    SCOPED_TRACE(isUpdateAllowed);
    put(5, "ims", "", WDS_PDP_TYPE_IPV4V6_V01);
    refresh();
    util.setProfileUpdateAllowed(isUpdateAllowed);
    const std::string key = keyText(5);
    const Sequence later = goesOn(key);
    platform.clearCalls();
    afterLine(filterAnswer, 2, happens);
    const Key found = util.findOrCreateProfileForLteAttach(wanted);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->getProfileId(), taken);
    const char* const loose = isUpdateAllowed ? "None: ApnName=ims,"
                                              : "HomeIPSubset|HomeIPSuperset|: "
                                                "ApnName=ims,HomeIPType=V4,IsPavoProfile=0,";
    EXPECT_EQ(ownLines(),
              (Sequence{"H " + attach + " > " + wanted.dump()} +
               filterCall("None: ApnName=ims,HomeIPType=V4,") + filterCall(loose, key + ",") +
               Sequence{"H pavo Found a loose match profile for attach"} +
               call("getProfile", "Get " + key, "Get Failure ") + later +
               Sequence{"H pavo Modifying profile identified for IA",
                        "H " + attach + " < " + found->dump()}));
  }

  ProfileParams wanted = named("ims");
  const std::string byName = "None: ApnName=ims,IsPavoProfile=1,IsIAProfile=1,";
  const std::string any = "None: IsPavoProfile=1,IsIAProfile=1,";
};

TEST_F(UtilLooseMatchTest, InitialAttachProfileOfTheName_TakesItsPlace) {
  put(6, "ims", "pavo_profile_ia", WDS_PDP_TYPE_IPV6_V01);
  const auto goesOn = [this](const std::string& /*looseKey*/) {
    const std::string key = keyText(6);
    return filterCall(byName, key + ",") +
           Sequence{"H pavo Found a PAVO IA profile that matches APN name for attach"} +
           call("modifyProfile", "Modify " + key + " Password=p,HomeIPType=V4,", "Modify Success");
  };
  expectSearch(/*isUpdateAllowed=*/false, [this] { becomeUnreadable(5); }, goesOn,
               /*taken=*/6);
}

TEST_F(UtilLooseMatchTest, AnyInitialAttachProfile_TakesItsPlace) {
  const auto goesOn = [this](const std::string& /*looseKey*/) {
    const std::string key = keyText(6);
    return filterCall(byName) + filterCall(any, key + ",") +
           Sequence{"H pavo Found any PAVO IA profile for attach"} +
           call("modifyProfile", "Modify " + key + " ApnName=ims,Password=p,HomeIPType=V4,",
                "Modify Success");
  };
  for (const bool isUpdateAllowed : {false, true}) {
    put(6, "net", "pavo_profile_ia", WDS_PDP_TYPE_IPV6_V01);
    expectSearch(
        isUpdateAllowed, [this] { vanish(5); }, goesOn, /*taken=*/6);
  }
}

TEST_F(UtilLooseMatchTest, NothingElse_IsModifiedBlindly) {
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[this] { becomeUnreadable(5); }, "Modify Success"},
      {[this] { vanish(5); }, "Modify Failure"}};
  for (const auto& [happens, answer] : cases) {
    const auto goesOn = [&, response = answer](const std::string& key) {
      return filterCall(byName) + filterCall(any) +
             call("modifyProfile", "Modify " + key + " Password=p,HomeIPType=V4,", response);
    };
    expectSearch(/*isUpdateAllowed=*/false, happens, goesOn, /*taken=*/5);
    expectSearch(/*isUpdateAllowed=*/true, happens, goesOn, /*taken=*/5);
  }
}

TEST_F(UtilTest, ApnClass_AKeyIsGone_ErrorAndTheNextProfile) {
  put(5, "ims");
  put(6, "net");
  refresh();
  const std::list<Key> keys = manager.filter(FilterProfileParams());
  ASSERT_EQ(keys.size(), 2U);
  const std::string first = keys.front()->dump();
  const std::string second = keys.back()->dump();
  ProfileParams wanted;
  wanted.setApnClass(ApnClass::IMS);
  wanted.setPassword("p");
  platform.clearCalls();
  afterLine(filterAnswer, 1,
            [&] { vanish(static_cast<std::uint8_t>(keys.front()->getProfileId())); });
  util.updateModemProfileByApnClassAndTechType(wanted);
  const std::string change = " Password=p,ApnClass=IMS,";
  EXPECT_EQ(ownLines(),
            (filterCall("None: ApnClass=IMS,", first + "," + second + ",") +
             Sequence{"D Found a match for APN class and tech type, modify the profile"} +
             call("modifyProfile", "Modify " + first + change, "Modify Failure") +
             Sequence{"E Error while modifying profile by APN class"} +
             call("modifyProfile", "Modify " + second + change, "Modify Success")));
}

TEST_F(UtilTest, ApnClass_RefreshBegunMeanwhile_ErrorForEachProfile) {
  put(5, "ims");
  put(6, "net");
  refresh();
  ProfileParams wanted;
  wanted.setApnClass(ApnClass::IMS);
  afterLine(filterAnswer, 1, [&] { manager.refresh(PDC_REFRESH_STARTED); });
  util.updateModemProfileByApnClassAndTechType(wanted);
  const Sequence lines = ownLines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "E Error while modifying profile by APN class"),
            2);
}

TEST_F(UtilTest, ApnTypes_RefreshBegunMeanwhile_NobodyAsksWhatTheChangeCameTo) {
  put(5, "ims");
  for (const bool isUpdateAllowed : {false, true}) {
    manager.refresh(PDC_REFRESH_COMPLETED);
    util.setProfileUpdateAllowed(isUpdateAllowed);
    ProfileParams wanted = named("ims");
    wanted.setHomeIPType(IPType::V4);
    wanted.setApnTypesMask(DEFAULT);
    platform.clearCalls();
    afterLine(filterAnswer, 1, [&] { manager.refresh(PDC_REFRESH_STARTED); });
    util.updateAPNTypeBitmaskOnModemProfile({wanted});
    const Sequence lines = ownLines();
    EXPECT_THAT(lines, testing::Contains("H Manager::modifyProfile < Modify Failure"));
    EXPECT_THAT(lines, testing::Each(testing::Not(testing::StartsWith("E "))));
    EXPECT_EQ(lines.back(), "H pavo updateAPNTypeBitmaskOnModemProfile < OK");
  }
}

}  // namespace
}  // namespace pavo::test
