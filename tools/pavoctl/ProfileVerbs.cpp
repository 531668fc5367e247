// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"
#include "DryRun.h"
#include "Hold.h"
#include "Options.h"
#include "Table.h"
#include "Verbs.h"

#include <CLI/CLI.hpp>

#include <functional>

namespace pavoctl {
namespace {

void printProfile(const CommandLine& line, Output& output, const Profile& profile,
                  const std::string& heading) {
  const Json json = toJson(profile, line.secrets);
  if (line.isJson) {
    output.line(dumpJson(json, /*indent=*/2));
    return;
  }
  if (!heading.empty()) {
    output.line(heading);
  }
  output.write(profileText(json));
}

// Prints a change that the modem has made. A failure to print it does not undo it.
void tellDone(const std::string& what, const std::function<void()>& tell) {
  try {
    tell();
  } catch (const OutputFailure& failure) {
    throw Failure(std::string(failure.what()) + "; " + what);
  }
}

ExitStatus get(const CommandLine& line, Context& context) {
  printProfile(line, context.output, context.session(line.session).get(line.profileId),
               /*heading=*/"");
  return exitDone;
}

ExitStatus add(const CommandLine& line, Context& context) {
  if (line.isDryRun) {
    return wouldAdd(line, context);
  }
  Hold hold(line, context);
  if (!line.isHeld) {
    context.obeySignals();
  }
  Session::Added added =
      context.session(line.session)
          .add(pavo::AddProfileParams(line.attributes, line.isPersistent, line.isInitialAttach));
  hold.keep(std::move(added.key));
  const std::string done =
      (line.isHeld ? "holding profile " : "added profile ") + std::to_string(added.profile.id);
  tellDone(done, [&] { printProfile(line, context.output, added.profile, done); });
  return hold.finish() ? exitDone : exitFailed;
}

ExitStatus modify(const CommandLine& line, Context& context) {
  if (line.isDryRun) {
    return wouldModify(line, context);
  }
  context.obeySignals();
  const Session::Modified modified =
      context.session(line.session)
          .modify(line.profileId, pavo::ModifyProfileParams(line.attributes));
  const std::string name = "profile " + std::to_string(line.profileId);
  const std::string done = modified.isChanged ? "changed " + name : name + " is like that already";
  tellDone(done, [&] { printProfile(line, context.output, modified.profile, done); });
  return exitDone;
}

ExitStatus remove(const CommandLine& line, Context& context) {
  if (line.isDryRun) {
    return wouldDelete(line, context);
  }
  context.obeySignals();
  context.session(line.session).remove(line.profileId);
  const std::string done = "deleted profile " + std::to_string(line.profileId);
  tellDone(done, [&] {
    context.output.line(line.isJson ? dumpJson(Json{{"deleted", line.profileId}}, /*indent=*/2)
                                    : done);
  });
  return exitDone;
}

void declareAdd(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  CLI::App& app = verbs.add(
      {"add", "Create a profile",
       "A profile that is not persistent lives as long as the process that made it, so one of\n"
       "--persistent and --hold is needed. Held, it goes on SIGINT, SIGTERM, SIGHUP or the end\n"
       "of standard input when that is a pipe.\n\nExamples:\n"
       "  pavoctl add --apn internet --home-ip V4V6 --types DEFAULT,SUPL --persistent\n"
       "  pavoctl add --apn ims --types IMS --class IMS --hold\n",
       add},
      [&line] {
        if (!line.isPersistent && !line.isHeld && !line.isDryRun) {
          throw UsageError(
              "add: a profile that is not persistent is deleted as soon as pavoctl ends: "
              "give --persistent, or --hold to stay until stopped");
        }
      });
  addAttributes(app, line.attributes);
  CLI::Option* persistent =
      app.add_flag("--persistent", line.isPersistent, "Keep it over a power cycle of the modem");
  app.add_flag("--hold", line.isHeld, "Stay until stopped; the profile is deleted then")
      ->excludes(persistent);
  app.add_flag("--ia", line.isInitialAttach, "It is the profile for initial attach");
  addDryRun(app, line.isDryRun);
}

void declareModify(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  CLI::App& app =
      verbs.add({"modify", "Change attributes of a profile",
                 "What is not named stays as it is; the modem is only asked for what differs.\n\n"
                 "Examples:\n  pavoctl modify 3 --roam-ip V4 --disabled no\n"
                 "  pavoctl modify 3 --user me --password secret --auth CHAP\n",
                 modify},
                [&line] {
                  if (line.attributes.dump().empty()) {
                    throw UsageError("modify: nothing to change, name at least one attribute");
                  }
                });
  addProfileId(app, line.profileId);
  addAttributes(app, line.attributes);
  addDryRun(app, line.isDryRun);
}

void declareDelete(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  CLI::App& app = verbs.add({"delete", "Delete a profile from the modem",
                             "Whoever uses the profile loses it.\n\nExamples:\n"
                             "  pavoctl delete 3\n",
                             remove});
  addProfileId(app, line.profileId);
  addDryRun(app, line.isDryRun);
}

}  // namespace

void declareProfileVerbs(VerbRegistry& verbs) {
  addProfileId(
      verbs.add({"get", "Show one profile",
                 "Examples:\n  pavoctl get 3\n  pavoctl get 3 --json --show-secrets\n", get}),
      verbs.line.profileId);
  declareAdd(verbs);
  declareModify(verbs);
  declareDelete(verbs);
}

}  // namespace pavoctl
