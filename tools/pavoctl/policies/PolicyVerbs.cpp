// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"
#include "Hold.h"
#include "Options.h"
#include "Verbs.h"
#include "policies/PolicyReport.h"
#include "policies/PolicyRun.h"
#include "policies/ProfileList.h"
#include "profiles/Attributes.h"
#include "session/Patience.h"

#include <CLI/CLI.hpp>

#include <array>

namespace pavoctl {
namespace {

// Returns the call for the line. In a list, the elements of the file come before those of the line.
PolicyCall callOf(const CommandLine& line) {
  PolicyCall call = line.call;
  if (!isForList(call.policy)) {
    call.wanted = {line.attributes};
    return call;
  }
  if (!line.elementsFile.empty()) {
    call.wanted.splice(call.wanted.begin(), readProfileList(line.elementsFile));
  }
  if (!line.attributes.dump().empty()) {
    call.wanted.push_back(line.attributes);
  }
  int number = 0;
  for (const auto& element : call.wanted) {
    ++number;
    const bool isUseful =
        call.policy == Policy::apnClass ? element.hasApnClass() : element.hasApnName();
    if (!isUseful) {
      throw UsageError(std::string(nameOf(call.policy)) + ": element " + std::to_string(number) +
                       " has no " + (call.policy == Policy::apnClass ? "apnClass" : "apnName") +
                       ", so nothing would come of it");
    }
  }
  return call;
}

ExitStatus report(const CommandLine& line, Context& context, const PolicyCall& call,
                  const PolicyOutcome& outcome) {
  const PolicyReport report(line, call, outcome);
  if (line.isJson) {
    context.output.line(dumpJson(report.json(), /*indent=*/2));
  } else {
    context.output.write(report.text());
  }
  if (const std::string refusals = report.refusals(); !refusals.empty()) {
    throw Failure(refusals);
  }
  return call.policy == Policy::matchAttach && !outcome.isMatching ? exitFailed : exitDone;
}

PolicyResult performInTime(const CommandLine& line, Session& session, const PolicyCall& call) {
  const std::string name = nameOf(call.policy);
  const std::string state =
      "; what was done until now stays, and the last edit may be done all the same: see pavoctl "
      "list";
  const Patience patience(line.session.timeout,
                          name + " takes too long: the modem does not answer" + state,
                          name + ": " + Session::signalText + state);
  return perform(call, session, line.secrets);
}

// Returns whether the profile is deleted with its last key. The data-call policy creates such
// profiles.
bool isTemporary(const PolicyCall& call, const PolicyResult& result) {
  return call.policy == Policy::setupDataCall && result.outcome.isCreated && result.key;
}

ExitStatus runPolicy(const CommandLine& line, Context& context) {
  const PolicyCall call = callOf(line);
  if (line.isDryRun) {
    return report(line, context, call,
                  simulate(call, context.session(line.session).snapshot(), line.secrets));
  }
  Hold hold(line, context);
  if (!line.isHeld) {
    context.obeySignals();
  }
  PolicyResult result = performInTime(line, context.session(line.session), call);
  const ExitStatus status = report(line, context, call, result.outcome);
  bool isClean = true;
  if (line.isHeld && result.key) {
    hold.keep(std::move(result.key));
  } else if (isTemporary(call, result)) {
    isClean = hold.letGo(std::move(result.key));
  }
  return hold.finish() && isClean ? status : exitFailed;
}

struct PolicyVerb {
  Policy policy;
  const char* help;
  const char* footer;
  const char* allowUpdateHelp = "Profiles that are found may be changed to what is wanted";
};

constexpr std::array policyVerbs{
    PolicyVerb{
        Policy::setupDataCall, "Find or create the profile for a data call",
        "Found by name and home IP type; with --allow-update by name alone, and changed. One that\n"
        "is created is not persistent: without --hold it is deleted again when pavoctl ends.\n\n"
        "Examples:\n  pavoctl setup-data-call apnName=internet,homeIPType=V4 --explain\n"
        "  pavoctl setup-data-call --apn internet --types DEFAULT --allow-update --dry-run\n"
        "  pavoctl setup-data-call --apn tethering --types DUN --hold\n"},
    PolicyVerb{Policy::emergency, "Find or create the profile for an emergency call",
               "Any profile that supports emergency calls will do; one that is created is\n"
               "persistent. Profiles are never changed.\n\n"
               "Examples:\n  pavoctl emergency --apn sos --explain\n",
               "Makes no difference: what is found is not changed"},
    PolicyVerb{Policy::lteAttach, "Find, change or create the profile for LTE attach",
               "Found in four stages, and given the wanted settings; one that is created is\n"
               "persistent and for initial attach.\n\n"
               "Examples:\n  pavoctl lte-attach apn=internet,home-ip=V4V6,user=me --explain\n"
               "  pavoctl lte-attach --apn internet --dry-run\n"},
    PolicyVerb{Policy::matchAttach, "Tell whether a profile may be used for LTE attach",
               "Status 1 when it may not. Nothing is changed.\n\n"
               "Examples:\n  pavoctl match-attach 3 apn=internet,home-ip=V4 --explain\n",
               "IP types have to be equal: they could be changed"},
    PolicyVerb{
        Policy::apnClass, "Bring the profiles of APN classes in line with a list",
        "Every profile of an element's class gets its attributes; a class without a profile\n"
        "gets one.\n\n"
        "Examples:\n  pavoctl apn-class class=IMS,apn=ims class=INET,apn=internet\n"
        "  pavoctl apn-class --file classes.json --dry-run\n",
        "Makes no difference: the class's profiles are changed in any case"},
    PolicyVerb{Policy::apnTypes, "Bring the APN types of profiles in line with a list",
               "The types that the list asks for, by name and home IP type, are written to the\n"
               "profiles of that name; with --allow-update all of them to all.\n\n"
               "Examples:\n  pavoctl apn-types apn=internet,home-ip=V4,types=DEFAULT|SUPL\n"
               "  pavoctl list --json --show-secrets | pavoctl apn-types --file - --dry-run\n",
               "Write all of the types to all profiles of the name"},
};

// Each word holds attributes of the one wanted profile, or an element of the list.
void addWanted(CLI::App& app, CommandLine& line, Policy policy) {
  addAttributes(app, line.attributes);
  app.add_option(
         "WANTED",
         [&line, policy](const CLI::results_t& words) {
           for (const auto& word : words) {
             setFromText(isForList(policy) ? line.call.wanted.emplace_back() : line.attributes,
                         word);
           }
           return true;
         },
         policy == Policy::apnClass   ? "An element: apnClass=IMS,apnName=ims"
         : policy == Policy::apnTypes ? "An element: apnName=internet,apnTypesMask=DEFAULT|SUPL"
                                      : "Attributes: apnName=internet,homeIPType=V4")
      ->type_name("")
      ->expected(0, CLI::detail::expected_max_vector_size)
      ->allow_extra_args();
}

void declarePolicy(VerbRegistry& verbs, const PolicyVerb& verb) {
  CommandLine& line = verbs.line;
  const Policy policy = verb.policy;
  CLI::App& app = verbs.add({nameOf(policy), verb.help, verb.footer, runPolicy}, [&line, policy] {
    line.call.policy = policy;
    if (isForList(policy) && line.elementsFile.empty() && line.call.wanted.empty() &&
        line.attributes.dump().empty()) {
      throw UsageError(std::string(nameOf(policy)) +
                       ": nothing is wanted, name attributes or give --file");
    }
  });
  if (policy == Policy::matchAttach) {
    addProfileId(app, line.call.profileId);
  }
  addWanted(app, line, policy);
  if (isForList(policy)) {
    addValue(app, "--file", "FILE", "A JSON list of what is wanted; - is standard input",
             [&line](const auto& value) { line.elementsFile = value; });
  }
  if (policy == Policy::setupDataCall) {
    app.add_flag("--hold", line.isHeld, "Stay until stopped; a new profile is deleted then");
  }
  app.add_flag("--allow-update", line.call.isUpdateAllowed, verb.allowUpdateHelp);
  app.add_flag("--explain", line.isExplained, "Tell every step and why profiles did not match");
  addDryRun(app, line.isDryRun);
}

}  // namespace

void declarePolicies(VerbRegistry& verbs) {
  for (const PolicyVerb& verb : policyVerbs) {
    declarePolicy(verbs, verb);
  }
}

}  // namespace pavoctl
