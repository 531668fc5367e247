// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Options.h"
#include "Verbs.h"
#include "lists/Check.h"
#include "lists/Import.h"
#include "profiles/Values.h"

#include <CLI/CLI.hpp>

namespace pavoctl {

namespace {

void checkLine(CommandLine& line) {
  line.isPersistent = !line.isTemporary;
  if (line.plmn.empty() && !line.isEveryOperator && !line.isCheck) {
    throw UsageError("import: --plmn is required: the operator's MCC and MNC together, or all");
  }
  if (line.isTemporary && !line.isHeld && !line.isDryRun) {
    throw UsageError(
        "import: profiles that are not persistent are deleted as soon as pavoctl ends: "
        "give --hold too, to stay until stopped");
  }
}

ExitStatus run(const CommandLine& line, Context& context) {
  return line.isCheck ? checkFile(line, context) : importFile(line, context);
}

}  // namespace

void declareImport(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  CLI::App& app = verbs.add(
      {"import", "Create profiles from an APN list, or check one",
       "The file is in Android's format, <apns><apn mcc= mnc= apn= .../></apns>, or GNOME's,\n"
       "<serviceproviders>. Whatever a profile cannot hold is reported by line. Entries that are\n"
       "there already are not added again. When the modem takes no more, a line says where it\n"
       "stopped. With --check nothing is imported: the file's mistakes are listed, and the exit\n"
       "status is 1 when there are any.\n\nExamples:\n"
       "  pavoctl import /usr/share/mobile-broadband-provider-info/apns-conf.xml --plmn 23402\n"
       "  pavoctl import serviceproviders.xml --plmn all --dry-run\n"
       "  pavoctl import apns.xml --check\n",
       run},
      [&line] { checkLine(line); });
  addValue(app, "FILE", "", "The APN list", [&line](const auto& value) {
    line.file = value;
  })->required();
  CLI::Option* plmn =
      addValue(app, "--plmn", "MCCMNC|all", "The operator: MCC and MNC together; or all of them",
               [&line](const auto& value) {
                 line.isEveryOperator = value == "all";
                 line.plmn = line.isEveryOperator ? "" : parsePlmn("--plmn", value);
               });
  CLI::Option* hold =
      app.add_flag("--hold", line.isHeld, "Stay until stopped; the profiles are deleted then");
  CLI::Option* temporary = app.add_flag("--non-persistent", line.isTemporary,
                                        "The modem forgets them at a power cycle; needs --hold");
  CLI::Option* persistent = app.add_flag_callback(
      "--persistent", [] {}, "Keep them over a power cycle of the modem (the default)");
  persistent->excludes(temporary);
  hold->needs(temporary);
  CLI::Option* dryRun =
      app.add_flag("--dry-run", line.isDryRun, "Say what would be done; no modem is asked");
  CLI::Option* check =
      app.add_flag("--check", line.isCheck, "List the file's mistakes; no modem is asked");
  for (CLI::Option* other : {plmn, hold, temporary, persistent, dryRun}) {
    check->excludes(other);
  }
}

}  // namespace pavoctl
