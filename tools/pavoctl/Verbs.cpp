#include "Verbs.h"

#include "Import.h"
#include "StopSignal.h"
#include "Table.h"
#include "Text.h"
#include "Watch.h"

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

ExitStatus list(const CommandLine& line, Output& output) {
  Session session(line.session);
  const Session::Listing listing = session.list(line.filter);
  Json profiles = Json::array();
  for (const auto& profile : listing.profiles) {
    profiles.push_back(toJson(profile, line.secrets));
  }
  if (line.isJson) {
    output.line(dumpJson(profiles, /*indent=*/2));
  } else if (profiles.empty()) {
    output.line("no profiles");
  } else {
    output.write(profileTable(profiles));
  }
  if (listing.unreadable > 0) {
    throw Failure(std::to_string(listing.unreadable) +
                  " of the modem's profiles could not be read and are missing");
  }
  return exitDone;
}

ExitStatus get(const CommandLine& line, Output& output) {
  Session session(line.session);
  printProfile(line, output, session.get(line.profileId), /*heading=*/"");
  return exitDone;
}

ExitStatus add(const CommandLine& line, Output& output) {
  std::optional<StopSignal> stop;
  if (line.isHeld) {
    stop.emplace();
  }
  Session session(line.session);
  Session::Added added =
      session.add(pavo::AddProfileParams(line.attributes, line.isPersistent, line.isInitialAttach));
  const std::string name = "profile " + std::to_string(added.profile.id);
  printProfile(line, output, added.profile, (line.isHeld ? "holding " : "added ") + name);
  if (stop) {
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

ExitStatus modify(const CommandLine& line, Output& output) {
  Session session(line.session);
  const Session::Modified modified =
      session.modify(line.profileId, pavo::ModifyProfileParams(line.attributes));
  const std::string name = "profile " + std::to_string(line.profileId);
  printProfile(line, output, modified.profile,
               modified.isChanged ? "changed " + name : name + " is like that already");
  return exitDone;
}

ExitStatus remove(const CommandLine& line, Output& output) {
  Session session(line.session);
  session.remove(line.profileId);
  output.line(line.isJson ? dumpJson(Json{{"deleted", line.profileId}}, /*indent=*/2)
                          : "deleted profile " + std::to_string(line.profileId));
  return exitDone;
}

ExitStatus refresh(const CommandLine& line, Output& output) {
  Session session(line.session);
  session.refresh();
  const auto listing = session.list(pavo::FilterProfileParams());
  output.line(line.isJson ? dumpJson(Json{{"profiles", listing.profiles.size()},
                                          {"unreadable", listing.unreadable}},
                                     /*indent=*/2)
                          : "read " + std::to_string(listing.profiles.size()) + " profiles");
  if (listing.unreadable > 0) {
    throw Failure(std::to_string(listing.unreadable) +
                  " of the modem's profiles could not be read");
  }
  return exitDone;
}

void printDump(const CommandLine& line, Output& output) {
  const auto shown = [&](const std::string& text) {
    return line.secrets == Secrets::shown ? text : maskPassword(text);
  };
  if (!line.isJson) {
    for (const auto& text : pavo::Manager::getInstance().dump()) {
      output.line(printable(shown(text)));
    }
    return;
  }
  const Dump dump = Session::dump();
  const auto section = [&](const std::vector<std::string>& lines) {
    Json json = Json::array();
    for (const auto& text : lines) {
      json.push_back(std::string(trimmed(shown(text))));
    }
    return json;
  };
  output.line(dumpJson(Json{{"cache", section(dump.cache)},
                            {"pending", section(dump.pending)},
                            {"log", section(dump.log)}},
                       /*indent=*/2));
}

ExitStatus dump(const CommandLine& line, Output& output) {
  try {
    Session session(line.session);
  } catch (const Failure&) {
    // Why there is no session is what the log is wanted for.
    printDump(line, output);
    throw;
  }
  printDump(line, output);
  return exitDone;
}

ExitStatus watch(const CommandLine& line, Output& output) {
  StopSignal stop;
  Session session(line.session);
  Watch(session, output, line.isJson, line.secrets).run(stop);
  return exitDone;
}

}  // namespace

ExitStatus runVerb(const CommandLine& line, Output& output) {
  switch (line.verb) {
    case Verb::list:
      return list(line, output);
    case Verb::get:
      return get(line, output);
    case Verb::add:
      return add(line, output);
    case Verb::modify:
      return modify(line, output);
    case Verb::remove:
      return remove(line, output);
    case Verb::refresh:
      return refresh(line, output);
    case Verb::dump:
      return dump(line, output);
    case Verb::watch:
      return watch(line, output);
    case Verb::import:
      return importFile(line, output);
  }
  return exitFailed;
}

}  // namespace pavoctl
