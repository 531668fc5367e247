#include <CLI/CLI.hpp>

#include "Import.h"
#include "Options.h"
#include "Values.h"
#include "Verbs.h"

namespace pavoctl {

void declareImport(VerbRegistry& verbs) {
  CommandLine& line = verbs.line;
  CLI::App& app = verbs.add(
      {"import", "Create the profiles of one operator from an APN list",
       "The file is in Android's format, <apns><apn mcc= mnc= apn= .../></apns>. Whatever a\n"
       "profile cannot hold is reported by line. Entries that are there already are not added\n"
       "again.\n\nExamples:\n"
       "  pavoctl import /usr/share/mobile-broadband-provider-info/apns-conf.xml --plmn 23402\n"
       "  pavoctl import apns.xml --plmn 26201 --dry-run\n",
       importFile},
      [&line] {
        line.isPersistent = !line.isTemporary;
        if (line.isTemporary && !line.isHeld && !line.isDryRun) {
          throw UsageError(
              "import: profiles that are not persistent are deleted as soon as pavoctl ends: "
              "give --hold too, to stay until stopped");
        }
      });
  addValue(app, "FILE", "", "The APN list", [&line](const auto& value) {
    line.file = value;
  })->required();
  addValue(app, "--plmn", "MCCMNC", "The operator: MCC and MNC together",
           [&line](const auto& value) { line.plmn = parsePlmn("--plmn", value); })
      ->required();
  CLI::Option* hold =
      app.add_flag("--hold", line.isHeld, "Stay until stopped; the profiles are deleted then");
  CLI::Option* temporary = app.add_flag("--non-persistent", line.isTemporary,
                                        "The modem forgets them at a power cycle; needs --hold");
  app.add_flag_callback(
         "--persistent", [] {}, "Keep them over a power cycle of the modem (the default)")
      ->excludes(temporary);
  hold->needs(temporary);
  app.add_flag("--dry-run", line.isDryRun, "Say what would be done; no modem is asked");
}

}  // namespace pavoctl
