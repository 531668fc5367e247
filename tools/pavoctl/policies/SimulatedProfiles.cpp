// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/SimulatedProfiles.h"

#include "matching/Matching.h"

#include <algorithm>
#include <utility>

namespace pavoctl {
namespace {

using pavo::policy::Key;

class SimulatedKey : public pavo::IProfileKey {
 public:
  explicit SimulatedKey(const CachedProfile& cached) : id(cached.profile.id), token(cached.token) {}

  int getProfileId() override { return id; }
  void registerExpirationListener(std::function<void()> /*listener*/) override {}
  std::string dump() override { return std::to_string(id) + " token=" + std::to_string(token); }

 private:
  const int id;
  const Token token;
};

}  // namespace

CachedProfile* find(Profiles& profiles, Token token) {
  const auto found =
      std::find_if(profiles.begin(), profiles.end(),
                   [&](const CachedProfile& profile) { return profile.token == token; });
  return found == profiles.end() ? nullptr : &*found;
}

std::list<Key> SimulatedProfiles::filter(const pavo::FilterProfileParams& params) {
  std::list<Key> found;
  for (const CachedProfile& profile : profiles) {
    if (pavo::firstMismatch(profile.settings, params) == pavo::Criterion::None) {
      found.push_back(std::make_shared<SimulatedKey>(profile));
    }
  }
  return found;
}

std::optional<pavo::ProfileParams> SimulatedProfiles::get(const Key& key) {
  return find(profiles, tokenOf(*key))->profile.params;
}

bool SimulatedProfiles::match(const pavo::FilterProfileParams& params, const Key& key) {
  return pavo::firstMismatch(find(profiles, tokenOf(*key))->settings, params) ==
         pavo::Criterion::None;
}

bool SimulatedProfiles::modify(const pavo::ModifyProfileParams& params, const Key& key) {
  CachedProfile& profile = *find(profiles, tokenOf(*key));
  profile = changed(profile, params).value_or(profile);
  return true;
}

Key SimulatedProfiles::add(const pavo::AddProfileParams& params) {
  CachedProfile& profile = profiles.emplace_back(created(params));
  profile.token = nextToken--;
  return std::make_shared<SimulatedKey>(profile);
}

}  // namespace pavoctl
