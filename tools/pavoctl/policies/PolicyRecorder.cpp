// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/PolicyRecorder.h"

#include "Text.h"
#include "policies/SimulatedProfiles.h"
#include "profiles/Names.h"

#include <algorithm>
#include <array>
#include <utility>

namespace pavoctl {
namespace {

using pavo::policy::Key;
using pavo::policy::Stage;

std::string typesText(unsigned mask) { return valueText(namesOfApnTypes(mask)); }

struct Reason {
  Stage stage;
  const char* text;
};

// The purpose of each stage's operations.
constexpr std::array reasons{
    Reason{Stage::SearchByName, "a profile of the wanted name, whatever its IP type"},
    Reason{Stage::SearchByNameAndHomeIPType, "a profile of the wanted name and home IP type"},
    Reason{
        Stage::SearchByNameAndLikeHomeIPType,
        "a profile of the wanted name whose home IP type contains the wanted one or is contained "
        "in it"},
    Reason{Stage::CreateForDataCall, "Nothing was found: create one"},
    Reason{Stage::ChangeForDataCall, "Change it to what is wanted"},
    Reason{Stage::SearchEmergencyByName,
           "a profile of the wanted name that supports emergency calls"},
    Reason{Stage::SearchEmergency, "any profile that supports emergency calls"},
    Reason{Stage::CreateForEmergency, "Nothing was found: create one for emergency calls"},
    Reason{Stage::SearchById, "the profile of that number"},
    Reason{Stage::MatchExactly, "is it as wanted?"},
    Reason{Stage::MatchLikeIPTypes,
           "is it as wanted? IP types may contain the wanted ones or be contained in them"},
    Reason{Stage::SearchExactly, "a profile of the wanted name and IP types"},
    Reason{Stage::SearchByNameForAttach, "a profile of the wanted name, whatever its IP types"},
    Reason{Stage::SearchModemsOwn,
           "a profile of the modem's own, of the wanted name, whose IP types contain the wanted "
           "ones or are contained in them"},
    Reason{Stage::SearchInitialAttachByName,
           "the library's profile for initial attach, of the wanted name"},
    Reason{Stage::SearchInitialAttach, "any profile of the library's for initial attach"},
    Reason{Stage::ChangeForAttach, "Give it the wanted settings"},
    Reason{Stage::CreateForAttach, "Nothing may be used: create one for initial attach"},
    Reason{Stage::SearchByClass, "all profiles of the class"},
    Reason{Stage::ChangeByClass, "Change it to what is wanted"},
    Reason{Stage::CreateForClass, "The class has no profile: create one"},
    Reason{Stage::SearchForAllTypes, "all profiles of the name"},
    Reason{Stage::SearchForTypes, "profiles of the name"},
    Reason{Stage::ChangeTypes, "Set its types"},
    Reason{Stage::ShareTypes,
           "There is no V4V6 profile: its types go to the V4 and the V6 profiles."},
};

std::string reasonFor(Stage stage) {
  const auto* const found = std::find_if(reasons.begin(), reasons.end(),
                                         [stage](const Reason& one) { return one.stage == stage; });
  return found != reasons.end() ? found->text : "";
}

std::string reasonForSearch(Stage stage, unsigned types, const pavo::FilterProfileParams& filter) {
  return stage == Stage::SearchForTypes ? "the " + nameOf(filter.getHomeIPType()).value_or("") +
                                              " " + reasonFor(stage) + ", for " + typesText(types)
                                        : reasonFor(stage);
}

// Returns whether a search of the stage takes the first profile that it finds, instead of all.
bool isForOne(Stage stage) {
  return stage != Stage::SearchByClass && stage != Stage::SearchForAllTypes &&
         stage != Stage::SearchForTypes;
}

}  // namespace

PolicyRecorder::PolicyRecorder(pavo::policy::ProfileOperations& recorded, Profiles cached,
                               pavo::Manager* manager, Secrets secrets)
    : operations(recorded), cache(manager), profiles(std::move(cached)), steps(secrets) {}

CachedProfile& PolicyRecorder::known(const Key& key) {
  const Token token = tokenOf(*key);
  if (CachedProfile* const profile = find(profiles, token)) {
    return *profile;
  }
  CachedProfile& latecomer = profiles.emplace_back();
  latecomer.token = token;
  latecomer.profile.id = key->getProfileId();
  latecomer.settings.profileId = key->getProfileId();
  return latecomer;
}

std::list<Key> PolicyRecorder::filter(const pavo::FilterProfileParams& params) {
  std::list<Key> keys = operations.filter(params);
  std::vector<Token> found;
  for (const Key& key : keys) {
    found.push_back(known(key).token);
  }
  steps.search(reasonForSearch(stage, types, params), params, found, profiles, isForOne(stage));
  return keys;
}

std::optional<pavo::ProfileParams> PolicyRecorder::get(const Key& key) {
  auto params = operations.get(key);
  // The policies read a profile only to answer this question.
  if (params) {
    steps.check(known(key), "may it be used for attach?", pavo::policy::isUsableForAttach(*params),
                params->getIsIAProfile()     ? "it is the library's profile for initial attach"
                : params->getIsPavoProfile() ? "the library has made it for something else"
                                             : "it is one of the modem's own");
  }
  return params;
}

bool PolicyRecorder::match(const pavo::FilterProfileParams& params, const Key& key) {
  const bool isMatching = operations.match(params, key);
  steps.compare(known(key), reasonFor(stage), params, isMatching);
  return isMatching;
}

std::optional<std::string> PolicyRecorder::textOf(const CachedProfile& profile) const {
  // Without a cache every change counts as taken, so the text after it has to differ.
  return cache != nullptr ? entryOf(Dump::parse(cache->dump()), profile.token)
                          : profile.dump + "changed,";
}

bool PolicyRecorder::modify(const pavo::ModifyProfileParams& params, const Key& key) {
  CachedProfile& profile = known(key);
  if (cache != nullptr && textOf(profile) != profile.dump) {
    // Another client has changed the profile since the policy began.
    profile = Snapshot::takeOne(*cache, key).value_or(profile);
  }
  const CachedProfile before = profile;
  const bool isKnown = operations.modify(params, key);
  const auto text = textOf(before);
  const ChangeOutcome result = isKnown ? outcomeOf(params, before, text) : ChangeOutcome::refused;
  if (result == ChangeOutcome::changed) {
    profile = changed(before, params).value_or(before);
    profile.dump = text.value_or("");
  } else if (result == ChangeOutcome::refused) {
    outcome.refused.push_back(profile.profile.id);
  }
  const std::string what = stage == Stage::ChangeTypes ? " to " + typesText(types) : "";
  steps.change(reasonFor(stage) + what, params, before, profile, result);
  return isKnown;
}

Key PolicyRecorder::add(const pavo::AddProfileParams& params) {
  Key key = operations.add(params);
  if (!key) {
    outcome.refused.push_back(unknownId);
    steps.create(reasonFor(stage), params, nullptr);
    return key;
  }
  CachedProfile& profile = profiles.emplace_back(created(params));
  profile.token = tokenOf(*key);
  profile.profile.id = key->getProfileId();
  profile.settings.profileId = key->getProfileId();
  profile.dump = textOf(profile).value_or("");
  outcome.isCreated = true;
  steps.create(reasonFor(stage), params, &profile);
  return key;
}

void PolicyRecorder::log(pavo::policy::LineLevel /*level*/, const char* /*line*/) {}

void PolicyRecorder::enter(Stage next, unsigned apnTypes) {
  stage = next;
  types = apnTypes;
  if (stage == Stage::ShareTypes) {
    steps.note(reasonFor(stage));
  }
}

void PolicyRecorder::collect(const std::string& apnName,
                             const pavo::policy::TypesByIPType& wanted) {
  steps.note(pavoctl::quoted(apnName) + " is wanted for " + typesText(wanted.v4) + " over V4, " +
             typesText(wanted.v6) + " over V6, " + typesText(wanted.v4v6) + " over V4V6.");
}

PolicyOutcome PolicyRecorder::finish(const Key& result, bool isMatching) {
  outcome.steps = steps.json();
  outcome.profiles = std::move(profiles);
  outcome.isMatching = isMatching;
  if (result) {
    outcome.result = tokenOf(*result);
  }
  return std::move(outcome);
}

}  // namespace pavoctl
