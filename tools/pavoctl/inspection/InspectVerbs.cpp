// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"
#include "Options.h"
#include "Table.h"
#include "Verbs.h"
#include "inspection/Drift.h"
#include "inspection/FreshLibrary.h"
#include "inspection/Usage.h"
#include "profiles/Values.h"
#include "shell/KeyRing.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <map>
#include <thread>

namespace pavoctl {
namespace {

constexpr std::chrono::milliseconds lookInterval{50};

Json driftJson(const Drift& drift, std::size_t profiles) {
  return Json{{"profiles", profiles},
              {"isDrift", !drift.isNone()},
              {"drift", drift.profiles},
              {"pending", drift.pending},
              {"unreadable", drift.unreadable}};
}

ExitStatus verify(const CommandLine& line, Context& context) {
  StopSignal* const stop = line.watchTime.count() > 0 ? &context.stopSignal() : nullptr;
  const Session& session = context.session(line.session);
  if (stop != nullptr) {
    stop->waitFor(/*wakeFd=*/-1, static_cast<int>(line.watchTime.count()));
  }
  FreshLibrary fresh(line.session);
  const auto deadline = std::chrono::steady_clock::now() + line.settleTime;
  Snapshot modem = fresh.read();
  const auto look = [&] {
    const Patience patience = session.waiting();
    return compare(Snapshot::takeOf(pavo::Manager::getInstance()), modem, line.secrets);
  };
  Drift drift = look();
  // The modem's indications reach the cache with a delay.
  while ((!drift.isNone() || modem.unreadable > 0) && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(lookInterval);
    modem = fresh.read();
    drift = look();
  }
  if (line.isJson) {
    context.output.line(dumpJson(driftJson(drift, modem.profiles.size()), /*indent=*/2));
  } else {
    context.output.write(driftText(drift));
    if (drift.isNone() && modem.unreadable == 0) {
      context.output.line("the cache and the modem agree on " +
                          counted(modem.profiles.size(), "profile"));
    }
  }
  if (modem.unreadable > 0) {
    throw Failure(std::to_string(modem.unreadable) + " of the modem's profiles could not be read");
  }
  return drift.isNone() ? exitDone : exitFailed;
}

// Returns the number of known keys of each profile. Only a shell has keys.
std::map<int, int> keysOf(const Context& context) {
  std::map<int, int> count;
  if (context.keys != nullptr) {
    for (const auto& entry : context.keys->entries()) {
      count[entry.profileId] += entry.isKnown ? 1 : 0;
    }
  }
  return count;
}

ExitStatus usage(const CommandLine& line, Context& context) {
  const Snapshot snapshot = context.session(line.session).snapshot();
  const Json json = usageOf(snapshot, keysOf(context), line.capacity);
  if (line.isJson) {
    context.output.line(dumpJson(json, /*indent=*/2));
  } else {
    context.output.write(usageText(json));
  }
  return exitDone;
}

}  // namespace

void declareInspection(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  const auto addTime = [](CLI::App& app, const std::string& name, const std::string& help,
                          std::chrono::milliseconds& time) {
    addValue(app, name, "SECONDS", help, [name, &time](const auto& value) {
      time = std::chrono::milliseconds(parseSeconds(name, value));
    });
  };
  CLI::App& verifying = verbs.add(
      {"verify", "Compare the library's cache with a fresh reading of the modem",
       "The cache is one that lives through --for. Status 1 when something is not as it should\n"
       "be: profiles that differ, are missing or unknown, indications that never came.\n\n"
       "Examples:\n  pavoctl verify\n  pavoctl verify --for 60 --json\n",
       verify});
  addTime(verifying, "--for", "Let the cache follow the modem that long first (0)", line.watchTime);
  addTime(verifying, "--settle", "A difference counts when it lasts that long (1)",
          line.settleTime);
  CLI::App& using_ = verbs.add(
      {"usage", "Show the slots of the modem's table, their owners and keys",
       "The table's size is not known through the library. Keys are those of this process.\n\n"
       "Examples:\n  pavoctl usage\n  pavoctl usage --capacity 16 --json\n",
       usage});
  addValue(using_, "--capacity", "N", "Size of the table; lists the free slots too",
           [&line](const auto& value) {
             line.capacity = static_cast<int>(parseNumber("--capacity", value, 1, profileIndexMax));
           });
}

}  // namespace pavoctl
