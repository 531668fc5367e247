// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"
#include "Options.h"
#include "Table.h"
#include "Verbs.h"
#include "policies/PolicyRun.h"
#include "policies/StepText.h"
#include "profiles/Values.h"

#include <CLI/CLI.hpp>

namespace pavoctl {
namespace {

ExitStatus list(const CommandLine& line, Context& context) {
  Session& session = context.session(line.session);
  Json steps;
  const Session::Listing listing = line.isExplained
                                       ? explainList(session, line.filter, line.secrets, steps)
                                       : session.list(line.filter);
  Json profiles = Json::array();
  for (const auto& profile : listing.profiles) {
    profiles.push_back(toJson(profile, line.secrets));
  }
  if (line.isJson) {
    const Json json = line.isExplained
                          ? Json{{"profiles", profiles}, {"explanation", Json{{"steps", steps}}}}
                          : profiles;
    context.output.line(dumpJson(json, /*indent=*/2));
  } else if (profiles.empty()) {
    context.output.line("no profiles");
  } else {
    context.output.write(profileTable(profiles));
  }
  if (line.isExplained && !line.isJson) {
    context.output.write("\n" + stepsText(steps, Telling::done));
  }
  if (listing.unreadable > 0) {
    throw Failure(std::to_string(listing.unreadable) +
                  " of the modem's profiles could not be read and are missing");
  }
  return exitDone;
}

void addFilters(CLI::App& app, pavo::FilterProfileParams& filter) {
  const std::string group = "Filters";
  addAttributes(app, filter);
  addValue(app, "--id", "ID", "The modem's profile index", [&filter](const auto& value) {
    filter.setFilterByProfileId(static_cast<int>(parseNumber("--id", value, 0, profileIndexMax)));
  })->group(group);
  addValue(
      app, "--pavo", "yes|no", "Created by the library (not looked at beside --ia)",
      [&filter](const auto& value) { filter.setFilterByIsPavoProfile(parseFlag("--pavo", value)); })
      ->group(group);
  addValue(
      app, "--ia", "yes|no", "The library's profile for initial attach",
      [&filter](const auto& value) { filter.setFilterByIsIAProfile(parseFlag("--ia", value)); })
      ->group(group);
}

void addCriteria(CLI::App& app, pavo::FilterProfileParams& filter) {
  struct Criterion {
    const char* name;
    const char* needs;
    pavo::FilterMatchType bit;
    const char* help;
  };
  for (const Criterion& criterion :
       {Criterion{"--apn-subset", "--apn", pavo::ApnNameSubset, "--apn is a part of the name"},
        Criterion{"--types-subset", "--types", pavo::ApnTypeBitmaskSubset,
                  "--types are among the profile's"},
        Criterion{"--home-ip-subset", "--home-ip", pavo::HomeIPSubset,
                  "--home-ip is contained in the profile's"},
        Criterion{"--home-ip-superset", "--home-ip", pavo::HomeIPSuperset,
                  "--home-ip contains the profile's"},
        Criterion{"--roam-ip-subset", "--roam-ip", pavo::RoamIPSubset,
                  "--roam-ip is contained in the profile's"},
        Criterion{"--roam-ip-superset", "--roam-ip", pavo::RoamIPSuperset,
                  "--roam-ip contains the profile's"}}) {
    app.add_flag_callback(
           criterion.name, [&filter, bit = criterion.bit] { filter.addFilterMatchCriteria(bit); },
           criterion.help)
        ->needs(app.get_option(criterion.needs))
        ->group("Criteria");
  }
}

}  // namespace

void declareList(VerbRegistry& verbs) {
  CLI::App& app = verbs.add(
      {"list", "List the profiles, or those that match",
       "An attribute has to be equal unless a criterion loosens it; a profile that lacks it does\n"
       "not match.\n\nExamples:\n  pavoctl list\n  pavoctl list --apn net --apn-subset\n"
       "  pavoctl list --types DEFAULT,SUPL --types-subset --pavo yes\n"
       "  pavoctl list --home-ip V4V6 --home-ip-superset --json\n"
       "  pavoctl filter --apn ims --explain\n",
       list});
  app.alias("filter");
  app.add_flag("--explain", verbs.line.isExplained, "Tell why the other profiles do not match");
  addFilters(app, verbs.line.filter);
  addCriteria(app, verbs.line.filter);
}

}  // namespace pavoctl
