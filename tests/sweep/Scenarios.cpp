// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Scenarios.h"

#include "Deadline.h"
#include "SystemTest.h"

namespace pavo::test {

namespace {

using nlohmann::json;

ProfileParams wanted(const std::string& apn, IPType home = IPType::V4V6) {
  ProfileParams params;
  params.setApnName(apn);
  params.setHomeIPType(home);
  params.setApnTypesMask(DEFAULT | IA);
  return params;
}

json profile(const char* apn, const char* pdpType, const json& more = json::object()) {
  json settings = {{"apn", apn}, {"pdpType", pdpType}, {"apnTypes", 1}, {"persistent", true}};
  settings.update(more);
  return settings;
}

}  // namespace

void Stage::edit(const std::string& verb, const json& args) const {
  try {
    modem.control(verb, args);
  } catch (const std::runtime_error&) {
    // The edit may fail because of the fault.
  }
}

void Stage::awaitModem() const {
  waitUntil([this] {
    return modem.control("show")["registered"] == 1 ||
           (isFaulted && modem.control("faults")["faults"].empty());
  });
}

std::ostream& operator<<(std::ostream& out, const Scenario& scenario) {
  return out << scenario.name;
}

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all = {
      {"FirstStartWithoutAModem",
       {profile("internet", "V4V6")},
       [](const Stage& stage) {
         stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
         stage.modem.control("power-on");
         stage.awaitModem();
         stage.manager.refresh(PDC_REFRESH_COMPLETED);
         stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
       },
       {"internet"},
       /*startsWithoutModem=*/true},
      {"DataCall",
       {profile("ims", "V6")},
       [](const Stage& stage) {
         const Key key = stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
         stage.manager.getProfile(key);
       },
       {"ims"}},
      {"EmergencyCall",
       {profile("internet", "V4V6")},
       [](const Stage& stage) {
         const Key key = stage.util.findOrCreateProfileForEmergencyDataCall(wanted("sos"));
         stage.manager.getProfile(key);
         stage.util.findOrCreateProfileForEmergencyDataCall(wanted("other"));
       },
       {"internet", "sos"}},
      {"AttachWithAStoredProfile",
       {profile("attach", "V4V6"), profile("internet", "V4")},
       [](const Stage& stage) {
         ProfileParams params = wanted("attach");
         params.setUserName("user");
         stage.util.findOrCreateProfileForLteAttach(params);
         stage.util.matchLteAttachProfileId(1, wanted("attach"));
       },
       {"attach", "internet"}},
      {"TableFull", std::vector<json>(16, profile("taken", "V4")),
       [](const Stage& stage) {
         stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
         stage.util.findOrCreateProfileForLteAttach(wanted("attach"));
       },
       std::multiset<std::string>{"taken", "taken", "taken", "taken", "taken", "taken", "taken",
                                  "taken", "taken", "taken", "taken", "taken", "taken", "taken",
                                  "taken", "taken"}},
      {"AttachApnDiffersFromDataApn",
       {},
       [](const Stage& stage) {
         const Key data = stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
         const Key attach = stage.util.findOrCreateProfileForLteAttach(wanted("attach"));
         const Key again = stage.util.findOrCreateProfileForLteAttach(wanted("internet"));
       },
       {"internet"}},
      {"TwoProfilesOfOneName",
       {profile("internet", "V4"), profile("Internet", "V6")},
       [](const Stage& stage) {
         stage.util.updateAPNTypeBitmaskOnModemProfile(
             {wanted("internet", IPType::V4), wanted("INTERNET", IPType::V6)});
         stage.util.findOrCreateProfileForSetupDataCall(wanted("internet", IPType::V6));
       },
       {"internet", "Internet"}},
      {"EditByAnotherClient",
       {profile("internet", "V4V6")},
       [](const Stage& stage) {
         const Key key = stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
         stage.edit("modify", {{"index", 1}, {"user", "another"}});
         ModifyProfileParams change;
         change.setPassword("own");
         stage.manager.modifyProfile(change, key);
         stage.edit("create", profile("third", "V4"));
         stage.manager.filter(byApn("third"));
       },
       {"internet", "third"}},
      {"RestartInTheMiddleOfAPolicy",
       {profile("internet", "V4")},
       [](const Stage& stage) {
         const Key key = stage.util.findOrCreateProfileForSetupDataCall(wanted("other"));
         stage.edit("power-cycle", {{"offMs", 5}});
         stage.util.findOrCreateProfileForLteAttach(wanted("internet"));
         stage.util.updateModemProfileByApnClass({wanted("internet")});
       },
       {"internet"},
       /*startsWithoutModem=*/false,
       /*racesWithTheModem=*/true},
      {"EmptyApnName",
       {profile("", "V4V6")},
       [](const Stage& stage) {
         stage.util.setProfileUpdateAllowed(true);
         stage.util.findOrCreateProfileForSetupDataCall(wanted(""));
         ProfileParams noName;
         noName.setHomeIPType(IPType::V4V6);
         stage.util.findOrCreateProfileForLteAttach(noName);
       },
       {""}},
      {"BothTypesReadBackAsIPv4",
       {},
       [](const Stage& stage) {
         AddProfileParams params(wanted("internet"), /*isPersistent=*/true, /*isIAProfile=*/false);
         const Key key = stage.manager.addProfile(params);
         // The modem stores the type that the network has granted.
         stage.edit("modify", {{"index", 1}, {"pdpType", "V4"}});
         stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
         ModifyProfileParams change(wanted("internet"));
         stage.manager.modifyProfile(change, key);
       },
       {"internet"}},
      {"RefreshDuringCalls",
       {profile("internet", "V4V6"), profile("ims", "V6")},
       [](const Stage& stage) {
         const Key key = stage.util.findOrCreateProfileForSetupDataCall(wanted("own"));
         stage.manager.refresh(PDC_REFRESH_STARTED);
         stage.util.findOrCreateProfileForSetupDataCall(wanted("refused"));
         stage.manager.refresh(PDC_REFRESH_COMPLETED);
         stage.util.findOrCreateProfileForSetupDataCall(wanted("internet"));
       },
       {"internet", "ims", "own"}},
  };
  return all;
}

}  // namespace pavo::test
