#include "policies/PolicyRecorder.h"

#include <utility>

#include "Text.h"
#include "policies/SimulatedProfiles.h"
#include "profiles/Names.h"

namespace pavoctl {
namespace {

using pavo::policy::Key;
using pavo::policy::Stage;

std::string typesText(unsigned mask) { return valueText(namesOfApnTypes(mask)); }

// What the operations of a stage are for.
std::string reasonFor(Stage stage) {
  switch (stage) {
    case Stage::SearchByName:
      return "a profile of the wanted name, whatever its IP type";
    case Stage::SearchByNameAndHomeIPType:
      return "a profile of the wanted name and home IP type";
    case Stage::SearchByNameAndLikeHomeIPType:
      return "a profile of the wanted name whose home IP type contains the wanted one or is "
             "contained in it";
    case Stage::CreateForDataCall:
      return "Nothing was found: create one";
    case Stage::ChangeForDataCall:
    case Stage::ChangeByClass:
      return "Change it to what is wanted";
    case Stage::SearchEmergencyByName:
      return "a profile of the wanted name that supports emergency calls";
    case Stage::SearchEmergency:
      return "any profile that supports emergency calls";
    case Stage::CreateForEmergency:
      return "Nothing was found: create one for emergency calls";
    case Stage::SearchById:
      return "the profile of that number";
    case Stage::MatchExactly:
      return "is it as wanted?";
    case Stage::MatchLikeIPTypes:
      return "is it as wanted? IP types may contain the wanted ones or be contained in them";
    case Stage::SearchExactly:
      return "a profile of the wanted name and IP types";
    case Stage::SearchByNameForAttach:
      return "a profile of the wanted name, whatever its IP types";
    case Stage::SearchModemsOwn:
      return "a profile of the modem's own, of the wanted name, whose IP types contain the wanted "
             "ones or are contained in them";
    case Stage::SearchInitialAttachByName:
      return "the library's profile for initial attach, of the wanted name";
    case Stage::SearchInitialAttach:
      return "any profile of the library's for initial attach";
    case Stage::ChangeForAttach:
      return "Give it the wanted settings";
    case Stage::CreateForAttach:
      return "Nothing may be used: create one for initial attach";
    case Stage::SearchByClass:
      return "all profiles of the class";
    case Stage::CreateForClass:
      return "The class has no profile: create one";
    case Stage::SearchForAllTypes:
      return "all profiles of the name";
    case Stage::SearchForTypes:
      return "profiles of the name";
    case Stage::ChangeTypes:
      return "Set its types";
    case Stage::ShareTypes:
      break;
  }
  return "There is no V4V6 profile: its types go to the V4 and the V6 profiles.";
}

std::string reasonForSearch(Stage stage, unsigned types, const pavo::FilterProfileParams& filter) {
  return stage == Stage::SearchForTypes ? "the " + nameOf(filter.getHomeIPType()).value_or("") +
                                              " " + reasonFor(stage) + ", for " + typesText(types)
                                        : reasonFor(stage);
}

// Whether a search takes the first profile that it finds, and not all.
bool isForOne(Stage stage) {
  return stage != Stage::SearchByClass && stage != Stage::SearchForAllTypes &&
         stage != Stage::SearchForTypes;
}

}  // namespace

PolicyRecorder::PolicyRecorder(pavo::policy::ProfileOperations& recorded, Profiles cached,
                               CacheReader reader, Secrets secrets)
    : operations(recorded),
      readCache(std::move(reader)),
      profiles(std::move(cached)),
      steps(secrets) {}

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
  // The policies read a profile only in order to know this.
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

std::optional<std::string> PolicyRecorder::cacheText(Token token) const {
  return readCache ? readCache(token) : std::nullopt;
}

// Another client may have changed the profile since the policy began.
void PolicyRecorder::readAgain(CachedProfile& profile, const Key& key) {
  const auto text = cacheText(profile.token);
  if (!text || *text == profile.dump) {
    return;
  }
  if (auto params = operations.get(key)) {
    CachedProfile current{profile.token, {key->getProfileId(), std::move(*params)}, {}, {}};
    if (readDump(*text, current)) {
      profile = std::move(current);
    }
  }
}

bool PolicyRecorder::modify(const pavo::ModifyProfileParams& params, const Key& key) {
  CachedProfile& profile = known(key);
  readAgain(profile, key);
  const CachedProfile before = profile;
  const auto after = changed(before, params);
  const bool isKnown = operations.modify(params, key);
  const auto text = cacheText(before.token);
  const bool isTaken = isKnown && (!readCache || (text && *text != before.dump));
  const ChangeOutcome result = isKnown && !after ? ChangeOutcome::unchanged
                               : isTaken         ? ChangeOutcome::changed
                                                 : ChangeOutcome::refused;
  if (result == ChangeOutcome::changed) {
    profile = *after;
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
  profile.dump = cacheText(profile.token).value_or("");
  outcome.isCreated = true;
  steps.create(reasonFor(stage), params, &profile);
  return key;
}

void PolicyRecorder::log(pavo::policy::LineLevel /*level*/, const std::string& /*line*/) {}

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
