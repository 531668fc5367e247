// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"
#include "Table.h"
#include "Text.h"
#include "Verbs.h"
#include "inspection/Watch.h"
#include "session/Patience.h"

#include <CLI/CLI.hpp>

namespace pavoctl {
namespace {

ExitStatus refresh(const CommandLine& line, Context& context) {
  Session& session = context.session(line.session);
  session.refresh();
  const auto listing = session.list(pavo::FilterProfileParams());
  context.output.line(line.isJson ? dumpJson(Json{{"profiles", listing.profiles.size()},
                                                  {"unreadable", listing.unreadable}},
                                             /*indent=*/2)
                                  : "read " + counted(listing.profiles.size(), "profile"));
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

ExitStatus dump(const CommandLine& line, Context& context) {
  try {
    // The dump is printed without a session too, because the log says why there is none.
    const Patience patience(line.session.timeout, [&]() -> std::string {
      try {
        printDump(line, context.output);
      } catch (const Failure& failure) {
        return failure.what();
      }
      return Session::noAnswerText(line.session.timeout);
    });
    context.session(line.session);
  } catch (const Failure&) {
    printDump(line, context.output);
    throw;
  }
  printDump(line, context.output);
  return exitDone;
}

ExitStatus watch(const CommandLine& line, Context& context) {
  StopSignal& stop = context.stopSignal();
  // The modem may hang just when the user wants to stop.
  const Patience patience(stop, line.session.timeout);
  Watch(context.session(line.session), context.output, line.isJson, line.secrets).run(stop);
  return exitDone;
}

}  // namespace

void declareLibraryVerbs(VerbRegistry& verbs) {
  verbs.add({"refresh", "Read all profiles from the modem again", "Examples:\n  pavoctl refresh\n",
             refresh});
  verbs.add({"dump", "Print the library's cache, the indications it expects and its recent log",
             "Passwords in the text are masked.\n\nExamples:\n  pavoctl dump\n"
             "  pavoctl dump --json | jq -r '.log[]'\n",
             dump});
  verbs.add({"watch", "Print every change until SIGINT or SIGTERM",
             "One line for each change, whoever makes it: the modem, another client, a restart of\n"
             "the modem.\n\nExamples:\n  pavoctl watch\n"
             "  pavoctl watch --json | jq -c 'select(.event == \"changed\")'\n",
             watch});
}

}  // namespace pavoctl
