// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The policies for LTE attach.
#include "Policies.h"
#include "PolicyParts.h"

#include <optional>
#include <string>

namespace pavo::policy {

namespace {

// Returns the changes that every profile chosen for attach gets.
ModifyProfileParams attachSettings(const ProfileParams& params) {
  ModifyProfileParams settings;
  copyCredentials(params, settings);
  if (params.hasApnTypesMask()) {
    settings.setApnTypesMask(params.getApnTypesMask());
  }
  if (params.hasMaxPdnsConnPerBlock()) {
    settings.setMaxPdnsConnPerBlock(params.getMaxPdnsConnPerBlock());
  }
  if (params.hasMaxPdnConnTimer()) {
    settings.setMaxPdnConnTimer(params.getMaxPdnConnTimer());
  }
  if (params.hasPdnReqWaitInterval()) {
    settings.setPdnReqWaitInterval(params.getPdnReqWaitInterval());
  }
  return settings;
}

// The search for a profile to attach with. Its stages have a fixed order, and the first acceptable
// profile ends the search. The stages also collect the profile's changes in settings.
struct AttachSearch {
  const Run& run;
  const ProfileParams& params;
  ModifyProfileParams settings;

  Key find() {
    if (Key exact = findExact()) {
      return exact;
    }
    bool accepted = false;
    Key loose = findLoose(accepted);
    if (accepted) {
      return loose;
    }
    copyIPTypes(params, settings);
    if (Key named = findInitialAttach(/*byName=*/true)) {
      run.log(High, "pavo Found a PAVO IA profile that matches APN name for attach");
      return named;
    }
    if (Key any = findInitialAttach(/*byName=*/false)) {
      // The profile's APN name changes to the wanted one.
      copyApnName(params, settings);
      run.log(High, "pavo Found any PAVO IA profile for attach");
      return any;
    }
    // A loose match whose parameters could not be read is better than a new profile.
    return loose;
  }

 private:
  Key findExact() const {
    FilterProfileParams filter;
    if (!params.hasApnName()) {
      run.log(High, "pavo NULL apn scenario");
    }
    copyApnName(params, filter);
    copyIPTypes(params, filter);
    run.enter(Stage::SearchExactly);
    Key key = firstOf(run.profiles.filter(filter));
    const std::optional<ProfileParams> profile =
        key != nullptr ? run.profiles.get(key) : std::nullopt;
    if (!profile || !isUsableForAttach(*profile)) {
      return nullptr;
    }
    run.log(High, "pavo Found an exact match modem or PAVO IA profile for attach");
    return key;
  }

  // Returns a loose match that is usable for attach, and sets accepted. Also returns a loose match
  // whose parameters cannot be read, but without setting accepted.
  Key findLoose(bool& accepted) {
    FilterProfileParams filter;
    copyApnName(params, filter);
    if (run.updateAllowed) {
      copyIPTypes(params, settings);
    } else {
      filter.setFilterByIsPavoProfile(false);
      copyIPTypes(params, filter);
      filter.addFilterMatchCriteria((params.hasHomeIPType() ? anyHomeIP : 0) |
                                    (params.hasRoamIPType() ? anyRoamIP : 0));
    }
    run.enter(run.updateAllowed ? Stage::SearchByNameForAttach : Stage::SearchModemsOwn);
    Key key = firstOf(run.profiles.filter(filter));
    if (key == nullptr) {
      return nullptr;
    }
    run.log(High, "pavo Found a loose match profile for attach");
    const std::optional<ProfileParams> profile = run.profiles.get(key);
    if (!profile) {
      return key;
    }
    accepted = isUsableForAttach(*profile);
    if (!accepted) {
      run.log(High, "It is not a PAVO_IA profile. so skipping it.");
      return nullptr;
    }
    run.log(High, "It is PAVO_IA profile or modem profile.");
    return key;
  }

  Key findInitialAttach(bool byName) const {
    FilterProfileParams filter;
    filter.setFilterByIsPavoProfile(true);
    filter.setFilterByIsIAProfile(true);
    if (byName) {
      copyApnName(params, filter);
    }
    run.enter(byName ? Stage::SearchInitialAttachByName : Stage::SearchInitialAttach);
    return firstOf(run.profiles.filter(filter));
  }
};

}  // namespace

bool isUsableForAttach(const ProfileParams& profile) {
  return !profile.getIsPavoProfile() || profile.getIsIAProfile();
}

bool matchLteAttachProfileId(const Run& run, int profileId, const ProfileParams& params) {
  run.log(High, "pavo matchLteAttachProfileId > Profile id = %d Input Params = %s", profileId,
          params.dump().c_str());
  FilterProfileParams byId;
  byId.setFilterByProfileId(profileId);
  run.enter(Stage::SearchById);
  const Key key = firstOf(run.profiles.filter(byId));
  const std::optional<ProfileParams> profile =
      key != nullptr ? run.profiles.get(key) : std::nullopt;
  if (profile && !isUsableForAttach(*profile)) {
    run.log(Error,
            "Profile id %d is a PAVO profile which is not an IA profile, cannot be used for attach",
            profileId);
    return false;
  }
  if (profile) {
    FilterProfileParams wanted;
    copyApnName(params, wanted);
    copyIPTypes(params, wanted);
    copyCredentials(params, wanted);
    const bool exact = run.updateAllowed || profile->getIsPavoProfile();
    if (!exact) {
      wanted.addFilterMatchCriteria(anyHomeIP | anyRoamIP);
    }
    run.enter(exact ? Stage::MatchExactly : Stage::MatchLikeIPTypes);
    if (run.profiles.match(wanted, key)) {
      // Log filters search for this other name.
      run.log(High, "pavo matchLteAttachList < %d", profileId);
      return true;
    }
  }
  run.log(High, "pavo matchLteAttachProfileId < did not match input params");
  return false;
}

Key findOrCreateProfileForLteAttach(const Run& run, const ProfileParams& params) {
  run.log(High, "pavo findOrCreateProfileForLteAttach > %s", params.dump().c_str());
  AttachSearch search{run, params, attachSettings(params)};
  Key result = search.find();
  if (result != nullptr) {
    run.enter(Stage::ChangeForAttach);
    run.profiles.modify(search.settings, result);
    run.log(High, "pavo Modifying profile identified for IA");
  } else {
    run.enter(Stage::CreateForAttach);
    result =
        run.profiles.add(AddProfileParams(params, /*isPersistent=*/true, /*isIAProfile=*/true));
    run.log(High, "pavo PAVO IA profile created for attach");
  }
  run.log(High, "pavo findOrCreateProfileForLteAttach < %s", textOf(result).c_str());
  return result;
}

}  // namespace pavo::policy
