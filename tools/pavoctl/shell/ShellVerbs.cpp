// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Context.h"
#include "Hold.h"
#include "Options.h"
#include "Text.h"
#include "Verbs.h"
#include "profiles/Profile.h"
#include "profiles/Values.h"
#include "shell/KeyRing.h"
#include "shell/Shell.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

namespace pavoctl {
namespace {

const char* listenerName(KeyRing::Listener listener) {
  switch (listener) {
    case KeyRing::Listener::none:
      return "none";
    case KeyRing::Listener::waiting:
      return "waiting";
    case KeyRing::Listener::called:
      return "called";
  }
  return "";
}

ExitStatus listKeys(const CommandLine& line, Context& context) {
  const auto entries = context.keys->entries();
  if (line.isJson) {
    Json json = Json::array();
    for (const auto& entry : entries) {
      json.push_back(Json{{"key", entry.number},
                          {"profile", entry.profileId},
                          {"text", entry.text},
                          {"isKnown", entry.isKnown},
                          {"listener", listenerName(entry.listener)}});
    }
    context.output.line(dumpJson(json, /*indent=*/2));
    return exitDone;
  }
  for (const auto& entry : entries) {
    context.output.line("key " + std::to_string(entry.number) + ": profile " + entry.text +
                        (entry.isKnown ? "" : ", unknown by now") + ", listener " +
                        listenerName(entry.listener));
  }
  if (entries.empty()) {
    context.output.line("no keys");
  }
  return exitDone;
}

ExitStatus hold(const CommandLine& line, Context& context) {
  context.keepKey(context.session(line.session).keyOf(line.profileId), line.isJson);
  return exitDone;
}

void tell(const CommandLine& line, Output& output, const Json& facts, const std::string& text) {
  output.line(line.isJson ? dumpJson(facts) : text);
}

// Returns the effect that the release of the key would have.
std::string fateText(const KeyRing::Entry& entry, bool isLast) {
  const std::string name = "profile " + std::to_string(entry.profileId);
  if (!entry.isKnown) {
    return name + " would stay, the library no longer knows the key";
  }
  if (!isLast) {
    return name + " would stay, this process has other keys of it";
  }
  return "it is the last key of " + name + " in this process; the profile would " +
         (entry.isPavoProfile ? "be deleted from the modem if the library made it in this process "
                                "without --persistent, and stay otherwise"
                              : "stay, the library has not made it");
}

// Reports for each key in turn the effect of its release. Nothing is released.
ExitStatus wouldRelease(const CommandLine& line, Context& context,
                        const std::vector<int>& numbers) {
  const auto entries = context.keys->entries();
  std::map<std::string, int> left;
  for (const auto& entry : entries) {
    ++left[entry.text];
  }
  for (const int number : numbers) {
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [&](const auto& held) { return held.number == number; });
    if (entry == entries.end()) {
      throw Failure("there is no key " + std::to_string(number));
    }
    const bool isLast = --left[entry->text] == 0;
    tell(line, context.output,
         Json{{"isDryRun", true},
              {"would", "release"},
              {"key", number},
              {"profile", entry->profileId},
              {"isKnown", entry->isKnown},
              {"isLastKey", isLast},
              {"isPavoProfile", entry->isPavoProfile}},
         "key " + std::to_string(number) + " would be released: " + fateText(*entry, isLast));
  }
  return exitDone;
}

ExitStatus release(const CommandLine& line, Context& context) {
  std::vector<int> numbers{line.keyNumber};
  if (line.keyNumber == 0) {
    numbers = context.keys->numbers();
  }
  if (line.isDryRun) {
    return wouldRelease(line, context, numbers);
  }
  ExitStatus status = exitDone;
  for (const int number : numbers) {
    const int profile = context.keys->profileOf(number);
    const Session::Release result = context.keys->release(number);
    const std::string name = "profile " + std::to_string(profile);
    if (result == Session::Release::failed) {
      complain(couldNotDelete(name));
      status = exitFailed;
      continue;
    }
    const bool isDeleted = result == Session::Release::deleted;
    tell(line, context.output,
         Json{{"released", number}, {"profile", profile}, {"isDeleted", isDeleted}},
         "released key " + std::to_string(number) + ": " + name +
             (isDeleted ? " is deleted from the modem" : " stays"));
  }
  return status;
}

ExitStatus listen(const CommandLine& line, Context& context) {
  context.keys->listen(line.keyNumber);
  tell(line, context.output, Json{{"listening", line.keyNumber}},
       "listening for the end of key " + std::to_string(line.keyNumber));
  return exitDone;
}

ExitStatus quit(const CommandLine&, Context& context) {
  context.isShellOver = true;
  return exitDone;
}

ExitStatus help(const CommandLine& line, Context& context) {
  std::vector<std::string> words{"--help"};
  if (!line.helpTopic.empty()) {
    words.insert(words.begin(), line.helpTopic);
  }
  const std::string text = CommandLine::parseInShell(words, line).help;
  // The parser ignores a word that it does not know.
  if (!line.helpTopic.empty() && text == CommandLine::parseInShell({"--help"}, line).help) {
    throw UsageError("help: " + quoted(line.helpTopic) + " is not a command (try help)");
  }
  context.output.write(text);
  return exitDone;
}

void addKeyNumber(CLI::App& app, int& number, bool isAllPossible) {
  addValue(app, "KEY", "", isAllPossible ? "The key's number, or all" : "The key's number",
           [&number, isAllPossible](const std::string& value) {
             const bool isAll = isAllPossible && value == "all";
             number = isAll ? 0 : static_cast<int>(parseNumber("KEY", value, 1, INT32_MAX));
           })
      ->required();
}

}  // namespace

void declareShell(VerbRegistry& verbs) {
  verbs.add(
      {"shell", "Run commands one after the other, on one library",
       "Keys live on between the commands: what add, import and the others hold with --hold,\n"
       "and what hold takes. Lines come from a terminal, with editing, history and\n"
       "completion, or from anything else; help tells the commands. Errors do not end it.\n\n"
       "Examples:\n  pavoctl shell\n"
       "  printf 'add --apn x --hold\\nlisten 1\\nrefresh\\nkeys\\n' | pavoctl shell\n",
       runShell});
}

void declareShellVerbs(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  verbs.add(
      {"keys", "List the keys that the shell keeps",
       "With each its profile and token, whether the library still knows it, and whether its\n"
       "listener has been called.\n\nExamples:\n  keys\n",
       listKeys});
  addProfileId(verbs.add({"hold", "Keep another key of a profile",
                          "Each key counts: a profile that the library made and that is not\n"
                          "persistent goes with its last one.\n\nExamples:\n  hold 3\n",
                          hold}),
               line.profileId);
  CLI::App& releasing =
      verbs.add({"release", "Let go of a key",
                 "Says whether the modem's profile went with it: the last key of a profile that\n"
                 "the library made and that is not persistent deletes it.\n\nExamples:\n"
                 "  release 1\n  release all --dry-run\n",
                 release});
  addKeyNumber(releasing, line.keyNumber, /*isAllPossible=*/true);
  addDryRun(releasing, line.isDryRun);
  addKeyNumber(verbs.add({"listen", "Say when the profile of a key goes or changes",
                          "A line is printed then, between commands. Each key has one listener.\n\n"
                          "Examples:\n  listen 1\n",
                          listen}),
               line.keyNumber, /*isAllPossible=*/false);
  addValue(verbs.add({"help", "Tell of the commands, or of one of them",
                      "Examples:\n  help\n  help import\n", help}),
           "COMMAND", "", "The command",
           [&line](const std::string& value) { line.helpTopic = value; });
  verbs.add({"quit", "End the shell", "The keys are released.\n\nExamples:\n  quit\n", quit});
}

}  // namespace pavoctl
