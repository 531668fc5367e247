// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"

#include "Errors.h"
#include "Options.h"
#include "Text.h"
#include "Verbs.h"
#include "manual/Description.h"
#include "profiles/Values.h"

#include <CLI/CLI.hpp>

#include <limits>
#include <sstream>

namespace pavoctl {
namespace {

void addGlobals(CLI::App& app, CommandLine& line) {
  // The parser itself accepts a line without a verb. A missing verb is checked last, so that a
  // misspelt one is named.
  app.require_subcommand(0, 1);
  app.set_help_all_flag("--help-all", "The help of every command");
  app.set_version_flag("--version", "pavoctl " PAVO_VERSION, "Print the version");
  addValue(app, "--subscription", "N", "Subscription to serve (1)", [&line](const auto& value) {
    line.session.subscription = static_cast<int>(
        parseNumber("--subscription", value, std::numeric_limits<std::int32_t>::min(),
                    std::numeric_limits<std::int32_t>::max()));
  });
  addValue(app, "--timeout", "SECONDS", "How long one step may wait for the modem (5)",
           [&line](const auto& value) {
             line.session.timeout = std::chrono::milliseconds(parseSeconds("--timeout", value));
           });
  app.add_flag("--json", line.isJson, "Print JSON");
  app.add_flag_callback(
      "--show-secrets", [&line] { line.secrets = Secrets::shown; }, "Print passwords in clear");
  app.add_flag("--log", line.session.useAndroidLog,
               "Send the library's log to the Android log, not to the diagnostic channel");
  addValue(app, "--describe", "json|man|bash",
           "Print all commands and options: for programs, for the manual page, for completion",
           [&line](const auto& value) { line.description = value; });
  app.footer(
      "\nEnvironment:\n"
      "  OVIX_MODEM  the modem's socket. Without it a modem inside this process serves: its\n"
      "              table is empty each time and gone at the end.\n"
      "\nExit status: 0 done, 1 refused by the library or the modem or failed, 2 bad usage.\n"
      "Also 1: match-attach when the answer is no, verify when there is drift, import --check "
      "when\n"
      "there are findings.\n"
      "\nA command's own help: pavoctl COMMAND --help");
}

enum class Place { program, shell };

class Parser {
 public:
  Parser(Place where, CommandLine& result)
      : place(where),
        line(result),
        app("Looks at and changes the modem's packet-data profiles.", "pavoctl") {
    addGlobals(app, line);
    VerbRegistry verbs(app, line);
    declareList(verbs);
    declareProfileVerbs(verbs);
    declarePolicies(verbs);
    declareLibraryVerbs(verbs);
    declareInspection(verbs);
    declareImport(verbs);
    if (place == Place::program) {
      declareShell(verbs);
    } else {
      declareShellVerbs(verbs);
    }
    refuseFlagValues(app);
  }

  void run(int argc, const char* const* argv) {
    try {
      app.parse(argc, argv);
    } catch (const CLI::Success& help) {
      std::ostringstream text;
      app.exit(help, text, text);
      line.help = text.str();
      return;
    } catch (const CLI::Error& error) {
      refuseStranger();
      throw UsageError(printable(trimmed(error.what())) + hint);
    } catch (const UsageError&) {
      refuseStranger();
      throw;
    }
    if (!line.description.empty()) {
      line.help = textOf(line.description);
    } else if (line.action == nullptr) {
      throw UsageError("no command given" + hint);
    }
  }

  const CLI::App& parser() const { return app; }

 private:
  // The parser's complaint about a flag's value would repeat the value.
  static void refuseFlagValues(CLI::App& parser) {
    for (CLI::Option* option : parser.get_options()) {
      if (option->get_items_expected_max() == 0) {
        option->disable_flag_override();
      }
    }
    for (CLI::App* verb : parser.get_subcommands(/*filter=*/nullptr)) {
      refuseFlagValues(*verb);
    }
  }

  // Throws for the first word that the parser could not assign. This comes before any other
  // complaint, because another may be about the value of a misspelt option that was taken for an
  // argument. Only a name is repeated: the text behind a misspelt option may be a password.
  void refuseStranger() const {
    auto strangers = app.remaining();
    std::erase(strangers, "--");
    if (strangers.empty()) {
      return;
    }
    const std::string name = nameIn(strangers.front());
    if (name.starts_with('-')) {
      throw UsageError(name + " is not an option" + hint);
    }
    throw UsageError((app.get_subcommands().empty() ? quoted(name) + " is not a command"
                                                    : "an argument too many") +
                     hint);
  }

  // Returns the option without its value: --name of --name=value, -n of -nvalue.
  static std::string nameIn(const std::string& word) {
    const bool isShort = word.size() > 1 && word[0] == '-' && word[1] != '-';
    return printable(isShort ? word.substr(0, 2) : word.substr(0, word.find('=')));
  }

  static std::string textOf(const std::string& form) {
    const Descriptions all = CommandLine::describe();
    if (form == "json") {
      return describeInJson(all);
    }
    if (form == "man") {
      return describeInRoff(all);
    }
    if (form == "bash") {
      return describeInBash(all.program);
    }
    throw UsageError("--describe: " + quoted(form) + " is not json, man or bash");
  }

  const Place place;
  const std::string hint = place == Place::program ? " (try pavoctl --help)" : " (try help)";
  CommandLine& line;
  CLI::App app;
};

}  // namespace

CommandLine CommandLine::parse(int argc, const char* const* argv) {
  CommandLine line;
  Parser(Place::program, line).run(argc, argv);
  return line;
}

CommandLine CommandLine::parseInShell(const std::vector<std::string>& words,
                                      const CommandLine& start) {
  CommandLine line;
  line.session = start.session;
  line.isJson = start.isJson;
  line.secrets = start.secrets;
  std::vector<const char*> argv{"pavoctl"};
  for (const auto& word : words) {
    argv.push_back(word.c_str());
  }
  Parser(Place::shell, line).run(static_cast<int>(argv.size()), argv.data());
  return line;
}

Descriptions CommandLine::describe() {
  CommandLine none;
  return {pavoctl::describe(Parser(Place::program, none).parser()),
          pavoctl::describe(Parser(Place::shell, none).parser())};
}

}  // namespace pavoctl
