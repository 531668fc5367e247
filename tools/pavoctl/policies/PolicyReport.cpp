// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "policies/PolicyReport.h"

#include "Table.h"
#include "Text.h"

#include <algorithm>
#include <iterator>

namespace pavoctl {
namespace {

Json profileJson(const CachedProfile& cached, Secrets secrets) {
  Json json = toJson(cached.profile, secrets);
  if (cached.profile.id == unknownId) {
    json["id"] = nullptr;
  }
  return json;
}

}  // namespace

PolicyReport::PolicyReport(const CommandLine& commandLine, const PolicyCall& policyCall,
                           const PolicyOutcome& told)
    : line(commandLine),
      call(policyCall),
      outcome(told),
      telling(line.isDryRun ? Telling::foreseen : Telling::done) {
  for (const auto& cached : outcome.profiles) {
    if (outcome.result && cached.token == *outcome.result) {
      profile = profileJson(cached, line.secrets);
    }
  }
  std::copy_if(
      outcome.steps.begin(), outcome.steps.end(), std::back_inserter(edits),
      [](const Json& step) { return step["step"] == "change" || step["step"] == "create"; });
}

Json PolicyReport::json() const {
  Json report{{"policy", nameOf(call.policy)},
              {"isDryRun", line.isDryRun},
              {"isUpdateAllowed", call.isUpdateAllowed}};
  if (call.policy == Policy::matchAttach) {
    report["isMatching"] = outcome.isMatching;
  } else if (!isForList(call.policy)) {
    report["isCreated"] = outcome.isCreated;
    report["profile"] = profile;
  }
  report["edits"] = edits;
  if (line.isExplained) {
    Json wanted = Json::array();
    for (const auto& params : call.wanted) {
      wanted.push_back(toJson(params, line.secrets));
    }
    report["explanation"] = Json{{"source", line.isDryRun ? "foresight" : "library"},
                                 {"wanted", wanted},
                                 {"steps", outcome.steps}};
  }
  return report;
}

std::string PolicyReport::text() const {
  return (line.isExplained ? headingText() + stepsText(outcome.steps, telling) + "\n" : "") +
         resultText();
}

std::string PolicyReport::headingText() const {
  std::string text = std::string("Policy ") + nameOf(call.policy) +
                     (call.isUpdateAllowed ? ", with leave to change what it finds.\n"
                                           : ", without leave to change what it finds.\n");
  for (const auto& params : call.wanted) {
    text += "Wanted: " + filterText(toJson(params, line.secrets)) + "\n";
  }
  return text;
}

std::string PolicyReport::resultText() const {
  if (call.policy == Policy::matchAttach) {
    return answerText();
  }
  if (isForList(call.policy)) {
    return edits.empty() ? "no profile is concerned\n" : editsText();
  }
  if (profile.is_null()) {
    return editsText();
  }
  std::string text;
  if (!outcome.isCreated) {
    text = (telling == Telling::foreseen ? "would find " : "found ") + nameText(profile) + "\n";
  }
  return text + editsText() + fateText() + profileText(profile);
}

// Returns a line on a created profile that the process deletes again with its last key. Returns ""
// when there is none.
std::string PolicyReport::fateText() const {
  if (call.policy != Policy::setupDataCall || !outcome.isCreated || line.isHeld) {
    return "";
  }
  return telling == Telling::foreseen
             ? "it would be deleted again at once: give --hold to keep it\n"
             : "it is deleted again now: give --hold to keep it\n";
}

std::string PolicyReport::answerText() const {
  const std::string name = "profile " + std::to_string(call.profileId);
  return outcome.isMatching
             ? name + " may be used for attach\n"
             : name + " may not be used for attach: " + refusalText(outcome.steps.back()) + "\n";
}

std::string PolicyReport::editsText() const {
  std::string text;
  for (const auto& edit : edits) {
    text += editText(edit, telling) + "\n";
  }
  return text;
}

std::string PolicyReport::refusals() const {
  if (outcome.refused.empty()) {
    return "";
  }
  std::vector<std::string> names;
  for (const int id : outcome.refused) {
    names.push_back(id == unknownId ? "the new profile" : "profile " + std::to_string(id));
  }
  return "the modem refused " + std::to_string(outcome.refused.size()) + " of " +
         std::to_string(edits.size()) + " edits or did not answer: " + join(names, ", ") +
         (outcome.isUnsure ? "; what it did not answer may be done all the same" : "");
}

}  // namespace pavoctl
