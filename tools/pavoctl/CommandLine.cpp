#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <sstream>

#include "Errors.h"
#include "Options.h"
#include "Text.h"
#include "Values.h"
#include "Verbs.h"

namespace pavoctl {
namespace {

void addGlobals(CLI::App& app, CommandLine& line) {
  // At most one. That there is one is checked last, so that a misspelt one is named.
  app.require_subcommand(0, 1);
  app.set_help_all_flag("--help-all", "The help of every command");
  addValue(app, "--subscription", "N", "Subscription to serve (1)", [&line](const auto& value) {
    line.session.subscription = static_cast<int>(
        parseNumber("--subscription", value, std::numeric_limits<std::int32_t>::min(),
                    std::numeric_limits<std::int32_t>::max()));
  });
  addValue(app, "--timeout", "SECONDS", "How long to wait for the modem (5)",
           [&line](const auto& value) {
             line.session.timeout = std::chrono::milliseconds(parseSeconds("--timeout", value));
           });
  app.add_flag("--json", line.isJson, "Print JSON");
  app.add_flag_callback(
      "--show-secrets", [&line] { line.secrets = Secrets::shown; }, "Print passwords in clear");
  app.add_flag("--log", line.session.useAndroidLog,
               "Send the library's log to the Android log, not to the diagnostic channel");
  app.footer(
      "\nEnvironment:\n"
      "  OVIX_MODEM  the modem's socket. Without it a modem inside this process serves: its\n"
      "              table is empty each time and gone at the end.\n"
      "\nExit status: 0 done, 1 refused by the library or the modem or failed, 2 bad usage.\n"
      "\nA command's own help: pavoctl COMMAND --help");
}

}  // namespace

CommandLine CommandLine::parse(int argc, const char* const* argv) {
  CommandLine line;
  CLI::App app("Looks at and changes the modem's packet-data profiles.", "pavoctl");
  addGlobals(app, line);
  VerbRegistry verbs(app, line);
  declareList(verbs);
  declareProfileVerbs(verbs);
  declareLibraryVerbs(verbs);
  declareImport(verbs);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    std::ostringstream text;
    app.exit(help, text, text);
    line.help = text.str();
    return line;
  } catch (const CLI::Error& error) {
    throw UsageError(printable(trimmed(error.what())) + " (try pavoctl --help)");
  }
  if (line.action == nullptr) {
    throw UsageError("no command given (try pavoctl --help)");
  }
  return line;
}

}  // namespace pavoctl
