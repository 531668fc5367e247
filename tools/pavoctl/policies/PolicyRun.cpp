// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/PolicyRun.h"

#include "policies/PolicyRecorder.h"
#include "policies/SimulatedProfiles.h"
#include "policy/ManagerOperations.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace pavoctl {
namespace {

Session::Listing listOf(const Snapshot& snapshot, const std::vector<Token>& found) {
  Session::Listing listing;
  listing.unreadable = snapshot.unreadable;
  for (const auto& cached : snapshot.profiles) {
    if (std::find(found.begin(), found.end(), cached.token) != found.end()) {
      listing.profiles.push_back(cached.profile);
    }
  }
  std::sort(listing.profiles.begin(), listing.profiles.end(),
            [](const Profile& a, const Profile& b) { return a.id < b.id; });
  return listing;
}

}  // namespace

PolicyOutcome simulate(const PolicyCall& call, const Snapshot& snapshot, Secrets secrets) {
  SimulatedProfiles profiles(snapshot.profiles);
  PolicyRecorder recorder(profiles, snapshot.profiles, /*manager=*/nullptr, secrets);
  const PolicyAnswer answer = pavoctl::call(call, recorder, recorder);
  return recorder.finish(answer.key, answer.isMatching);
}

PolicyResult perform(const PolicyCall& call, Session& session, Secrets secrets) {
  pavo::Manager& manager = pavo::Manager::getInstance();
  pavo::policy::ManagerOperations profiles(manager);
  PolicyRecorder recorder(profiles, session.snapshot().profiles, &manager, secrets);
  const auto start = std::chrono::steady_clock::now();
  PolicyAnswer answer = pavoctl::call(call, recorder, recorder);
  const auto time = std::chrono::steady_clock::now() - start;
  PolicyResult result{recorder.finish(answer.key, answer.isMatching), std::move(answer.key)};
  result.outcome.isUnsure =
      !result.outcome.refused.empty() && Session::silenceAfter(time) != Session::Silence::none;
  return result;
}

Session::Listing explainList(Session& session, const pavo::FilterProfileParams& filter,
                             Secrets secrets, Json& steps) {
  const auto isLike = [](const CachedProfile& a, const CachedProfile& b) {
    return a.token == b.token && a.dump == b.dump;
  };
  const Patience patience = session.waiting();
  while (true) {
    const Snapshot before = session.snapshot();
    std::vector<Token> found;
    for (const auto& key : pavo::Manager::getInstance().filter(filter)) {
      found.push_back(tokenOf(*key));
    }
    const Snapshot after = session.snapshot();
    // Otherwise another client has changed a profile meanwhile. Such changes do not go on forever.
    if (std::equal(before.profiles.begin(), before.profiles.end(), after.profiles.begin(),
                   after.profiles.end(), isLike)) {
      PolicySteps listed(secrets);
      listed.search("profiles that match", filter, found, before.profiles, /*isForOne=*/false);
      steps = listed.json();
      return listOf(before, found);
    }
  }
}

}  // namespace pavoctl
