#include "policies/PolicyWalk.h"

#include <algorithm>
#include <utility>

#include "policies/Effects.h"

namespace pavoctl {

CachedProfile* PolicyWalk::find(Token token) {
  const auto found =
      std::find_if(profiles.begin(), profiles.end(),
                   [&](const CachedProfile& profile) { return profile.token == token; });
  return found == profiles.end() ? nullptr : &*found;
}

std::vector<Token> PolicyWalk::ask(const std::string& why, const pavo::FilterProfileParams& filter,
                                   bool isForOne) {
  std::vector<Token> found;
  for (const auto& entry : answers.filter(filter, profiles)) {
    found.push_back(entry.token);
    if (find(entry.token) == nullptr) {
      // It came after the profiles were looked at; no more is known of it.
      CachedProfile& latecomer = profiles.emplace_back();
      latecomer.token = entry.token;
      latecomer.profile.id = entry.id;
    }
  }
  story.search(why, filter, found, profiles, isForOne);
  return found;
}

std::vector<Token> PolicyWalk::searchAll(const std::string& why,
                                         const pavo::FilterProfileParams& filter) {
  return ask(why, filter, /*isForOne=*/false);
}

std::optional<Token> PolicyWalk::search(const std::string& why,
                                        const pavo::FilterProfileParams& filter) {
  const auto found = ask(why, filter, /*isForOne=*/true);
  return found.empty() ? std::nullopt : std::optional(found.front());
}

const CachedProfile* PolicyWalk::read(Token token) {
  const CachedProfile* const profile = find(token);
  return answers.get(*profile) ? profile : nullptr;
}

bool PolicyWalk::compare(const std::string& why, const pavo::FilterProfileParams& filter,
                         Token token) {
  const CachedProfile& profile = *find(token);
  const bool isMatching = answers.match(filter, profile);
  story.compare(profile, why, filter, isMatching);
  return isMatching;
}

void PolicyWalk::change(const std::string& why, const pavo::ModifyProfileParams& wanted,
                        Token token) {
  CachedProfile& profile = *find(token);
  const ChangeOutcome result = answers.modify(wanted, profile);
  const CachedProfile before = profile;
  if (result == ChangeOutcome::changed) {
    profile = changed(profile, wanted).value_or(profile);
  } else if (result == ChangeOutcome::refused) {
    outcome.refused.push_back(profile.profile.id);
  }
  story.change(why, wanted, before, profile, result);
}

void PolicyWalk::create(const std::string& why, const pavo::AddProfileParams& wanted) {
  const auto key = answers.add(wanted);
  if (!key) {
    outcome.refused.push_back(unknownId);
    story.create(why, wanted, nullptr);
    return;
  }
  CachedProfile& profile = profiles.emplace_back(created(wanted));
  profile.token = key->token;
  profile.profile.id = key->id;
  outcome.result = key->token;
  outcome.isCreated = true;
  story.create(why, wanted, &profile);
}

PolicyOutcome PolicyWalk::finish() {
  outcome.steps = story.steps();
  outcome.profiles = std::move(profiles);
  return std::move(outcome);
}

}  // namespace pavoctl
