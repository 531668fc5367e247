#include "policies/Hindsight.h"

#include <algorithm>

#include "policies/Effects.h"
#include "policies/PolicyStages.h"

namespace pavoctl {
namespace {

auto find(const Profiles& profiles, Token token) {
  return std::find_if(profiles.begin(), profiles.end(),
                      [&](const CachedProfile& profile) { return profile.token == token; });
}

Json contentsOf(const CachedProfile& profile) {
  return toJson(profile.profile.params, Secrets::shown);
}

}  // namespace

Hindsight::Hindsight(const PolicyCall& call, const Snapshot& before, const Snapshot& after) {
  Foresight foresight;
  const PolicyOutcome foreseen = follow(call, before.profiles, foresight, Secrets::shown);
  for (const CachedProfile& profile : after.profiles) {
    const auto expected = find(foreseen.profiles, profile.token);
    if (find(before.profiles, profile.token) == before.profiles.end()) {
      newProfiles.push_back(profile);
    } else if (contentsOf(*expected) != contentsOf(profile)) {
      unlikeForeseen.push_back(profile.token);
    }
  }
}

ChangeOutcome Hindsight::modify(const pavo::ModifyProfileParams& params,
                                const CachedProfile& profile) {
  const bool isUnlike = std::find(unlikeForeseen.begin(), unlikeForeseen.end(), profile.token) !=
                        unlikeForeseen.end();
  const ChangeOutcome foreseen = Foresight::modify(params, profile);
  return foreseen == ChangeOutcome::changed && isUnlike ? ChangeOutcome::refused : foreseen;
}

std::optional<Answers::Entry> Hindsight::add(const pavo::AddProfileParams& params) {
  const auto profile = std::find_if(
      newProfiles.begin(), newProfiles.end(),
      [&](const CachedProfile& added) { return contentsOf(added) == contentsOf(created(params)); });
  if (profile == newProfiles.end()) {
    return std::nullopt;
  }
  const Entry entry{profile->token, profile->profile.id};
  newProfiles.erase(profile);
  return entry;
}

}  // namespace pavoctl
