#include <CLI/CLI.hpp>

#include "Context.h"
#include "Options.h"
#include "Table.h"
#include "Verbs.h"

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

ExitStatus get(const CommandLine& line, Context& context) {
  printProfile(line, context.output, context.session(line.session).get(line.profileId),
               /*heading=*/"");
  return exitDone;
}

ExitStatus add(const CommandLine& line, Context& context) {
  StopSignal* stop = line.isHeld ? &context.stopSignal() : nullptr;
  Session::Added added =
      context.session(line.session)
          .add(pavo::AddProfileParams(line.attributes, line.isPersistent, line.isInitialAttach));
  const std::string name = "profile " + std::to_string(added.profile.id);
  printProfile(line, context.output, added.profile, (line.isHeld ? "holding " : "added ") + name);
  if (stop != nullptr) {
    stop->wait();
    // Not a failure: what became of the profile meanwhile was somebody else's decision.
    if (!Session::release(std::move(added.key))) {
      complain(name +
               " was not this process's to delete any more: the modem or another client "
               "has changed or deleted it");
    }
  }
  return exitDone;
}

ExitStatus modify(const CommandLine& line, Context& context) {
  const Session::Modified modified =
      context.session(line.session)
          .modify(line.profileId, pavo::ModifyProfileParams(line.attributes));
  const std::string name = "profile " + std::to_string(line.profileId);
  printProfile(line, context.output, modified.profile,
               modified.isChanged ? "changed " + name : name + " is like that already");
  return exitDone;
}

ExitStatus remove(const CommandLine& line, Context& context) {
  context.session(line.session).remove(line.profileId);
  context.output.line(line.isJson ? dumpJson(Json{{"deleted", line.profileId}}, /*indent=*/2)
                                  : "deleted profile " + std::to_string(line.profileId));
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
        if (!line.isPersistent && !line.isHeld) {
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
}

}  // namespace

void declareProfileVerbs(VerbRegistry& verbs) {
  addProfileId(
      verbs.add({"get", "Show one profile",
                 "Examples:\n  pavoctl get 3\n  pavoctl get 3 --json --show-secrets\n", get}),
      verbs.line.profileId);
  declareAdd(verbs);
  declareModify(verbs);
  addProfileId(
      verbs.add({"delete", "Delete a profile from the modem",
                 "Whoever uses the profile loses it.\n\nExamples:\n  pavoctl delete 3\n", remove}),
      verbs.line.profileId);
}

}  // namespace pavoctl
