#include "policies/PolicyRun.h"

#include <pavo/Util.h>

#include <algorithm>
#include <chrono>

#include "Errors.h"
#include "policies/Foresight.h"
#include "policies/Hindsight.h"
#include "policies/LogRecorder.h"
#include "policies/LoggedOperations.h"

namespace pavoctl {
namespace {

struct Answer {
  Key key;
  bool isMatching = false;
};

// What the library answers; to a list, nothing.
Answer ask(const PolicyCall& call) {
  pavo::Util util;
  util.setProfileUpdateAllowed(call.isUpdateAllowed);
  // Only a list may be empty.
  const pavo::ProfileParams params =
      call.wanted.empty() ? pavo::ProfileParams() : call.wanted.front();
  switch (call.policy) {
    case Policy::setupDataCall:
      return {util.findOrCreateProfileForSetupDataCall(params)};
    case Policy::emergency:
      return {util.findOrCreateProfileForEmergencyDataCall(params)};
    case Policy::lteAttach:
      return {util.findOrCreateProfileForLteAttach(params)};
    case Policy::matchAttach:
      return {nullptr, util.matchLteAttachProfileId(call.profileId, params)};
    case Policy::apnClass:
      util.updateModemProfileByApnClass(call.wanted);
      break;
    case Policy::apnTypes:
      util.updateAPNTypeBitmaskOnModemProfile(call.wanted);
      break;
  }
  return {};
}

// False when the messages are not of these stages: profiles that came meanwhile can do that.
bool readLog(const PolicyCall& call, const Snapshot& before,
             const std::vector<std::string>& messages, Secrets secrets, PolicyOutcome& outcome) {
  try {
    LoggedOperations answers(messages);
    outcome = follow(call, before.profiles, answers, secrets);
    outcome.source = Source::log;
    return answers.isAtEnd();
  } catch (const OtherStages&) {
    return false;
  }
}

PolicyOutcome readProfiles(const PolicyCall& call, const Snapshot& before, Session& session,
                           Secrets secrets) {
  try {
    Hindsight answers(call, before, session.snapshot());
    PolicyOutcome outcome = follow(call, before.profiles, answers, secrets);
    outcome.source = Source::profiles;
    return outcome;
  } catch (const Failure& failure) {
    throw Failure(std::string(nameOf(call.policy)) +
                  " has run, but what it did cannot be told: " + failure.what());
  }
}

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

PolicyOutcome foresee(const PolicyCall& call, const Snapshot& snapshot, Secrets secrets) {
  Foresight answers;
  return follow(call, snapshot.profiles, answers, secrets);
}

PolicyResult perform(const PolicyCall& call, Session& session, Secrets secrets) {
  const Snapshot before = session.snapshot();
  LogRecorder recorder;
  const auto start = std::chrono::steady_clock::now();
  Answer answer = ask(call);
  const auto time = std::chrono::steady_clock::now() - start;
  const auto messages = recorder.finish();
  PolicyResult result;
  if (!messages || !readLog(call, before, *messages, secrets, result.outcome)) {
    result.outcome = readProfiles(call, before, session, secrets);
  }
  result.outcome.isMatching = answer.isMatching;
  result.outcome.isUnsure =
      !result.outcome.refused.empty() && Session::silenceAfter(time) != Session::Silence::none;
  if (answer.key) {
    result.outcome.result = tokenOf(*answer.key);
  }
  result.key = std::move(answer.key);
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
    // Otherwise somebody has changed a profile meanwhile, which does not go on forever.
    if (std::equal(before.profiles.begin(), before.profiles.end(), after.profiles.begin(),
                   after.profiles.end(), isLike)) {
      Story story(secrets);
      story.search("profiles that match", filter, found, before.profiles, /*isForOne=*/false);
      steps = story.steps();
      return listOf(before, found);
    }
  }
}

}  // namespace pavoctl
