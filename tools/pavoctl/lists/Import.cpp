// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "lists/Import.h"

#include "Context.h"
#include "Hold.h"
#include "Text.h"
#include "lists/ApnFile.h"
#include "lists/ApnMapping.h"
#include "lists/Progress.h"

#include <map>
#include <optional>
#include <vector>

namespace pavoctl {
namespace {

// So many refusals in a row show that the modem has no room for another profile.
constexpr int refusalsInARowMax = 3;
// The number of profiles that the largest modem has room for.
constexpr std::size_t profilesMax = 255;

class Import {
 public:
  Import(const CommandLine& commandLine, Context& surroundings)
      : line(commandLine),
        context(surroundings),
        output(surroundings.output),
        file(readApnFile(line.file)),
        entries(chosenEntries()),
        progress("importing", entries.size()) {}

  ExitStatus run() {
    Hold hold(line, context);
    if (!line.isDryRun) {
      // Persistent profiles stay when the import is interrupted, so it has to report how far it
      // came.
      stop = &context.stopSignal();
      session = &context.session(line.session);
    }
    try {
      importAll(hold);
      finish();
    } catch (const OutputFailure& failure) {
      throw Failure(failure.what() + account());
    }
    return hold.finish() && refused.empty() && stopReason.empty() ? exitDone : exitFailed;
  }

 private:
  std::vector<const ApnEntry*> chosenEntries() const {
    std::vector<const ApnEntry*> chosen;
    for (const auto& entry : file.entries) {
      if (line.isEveryOperator || entry.isOf(line.plmn)) {
        chosen.push_back(&entry);
      }
    }
    if (file.entries.empty()) {
      throw Failure(printable(line.file) + ": there is no access point in it");
    }
    if (chosen.empty()) {
      throw Failure(printable(line.file) + ": none of its " + std::to_string(file.entries.size()) +
                    " entries is for network " + line.plmn);
    }
    return chosen;
  }

  void importAll(Hold& hold) {
    noteFile();
    for (const ApnEntry* entry : entries) {
      progress.show(done);
      if (stop != nullptr && stop->hasCome()) {
        stopReason = "a signal came";
      } else {
        importEntry(*entry, hold);
      }
      if (!stopReason.empty()) {
        break;
      }
    }
    progress.clear();
  }

  // Prints the remarks on the file and the operator.
  void noteFile() {
    for (const auto& remark : file.remarks) {
      if (line.isEveryOperator || remark.isOf(line.plmn)) {
        note(remark.line, remark.text);
      }
    }
    if (line.isEveryOperator) {
      return;
    }
    std::vector<std::string> strays;
    std::vector<std::string> providers;
    for (const auto& entry : file.entries) {
      if (entry.networks.empty()) {
        strays.push_back(std::to_string(entry.line));
      } else if (entry.isOf(line.plmn) && !entry.provider.empty() &&
                 (providers.empty() || providers.back() != quoted(entry.provider))) {
        providers.push_back(quoted(entry.provider));
      }
    }
    if (!strays.empty()) {
      note("entries without a proper mcc and mnc belong to no network; lines " +
           join(strays, ", "));
    }
    if (providers.size() > 1) {
      note("network " + line.plmn + " has " + std::to_string(providers.size()) +
           " operators, all are taken: " + join(providers, ", "));
    }
  }

  void importEntry(const ApnEntry& entry, Hold& hold) {
    MappedApn mapped = mapApn(entry);
    for (const auto& text : mapped.notes) {
      note(entry.line, text);
    }
    if (!mapped.refusal.empty()) {
      refuse(entry, mapped.refusal);
      return;
    }
    try {
      if (const auto place = placeOf(mapped.params, entry)) {
        ++done;
        note(entry.line, "not added again: the same profile is " + *place);
      } else if (session == nullptr) {
        report(entry, toJson(mapped.params, line.secrets), "would be added");
      } else {
        add(entry, mapped.params, hold);
      }
    } catch (const NoAnswer& failure) {
      stopReason = failure.what();
    }
  }

  void add(const ApnEntry& entry, const pavo::ProfileParams& params, Hold& hold) {
    try {
      auto added =
          session->add(pavo::AddProfileParams(params, line.isPersistent, /*isIAProfile=*/false));
      refusalsInARow = 0;
      hold.keep(std::move(added.key));
      report(entry, toJson(added.profile, line.secrets),
             "profile " + std::to_string(added.profile.id));
    } catch (const OutputFailure&) {
      throw;
    } catch (const NoAnswer&) {
      throw;
    } catch (const Failure& failure) {
      refuse(entry, failure.what());
      if (++refusalsInARow == refusalsInARowMax) {
        stopReason = "the modem takes no more profiles";
      }
    }
  }

  // Returns where the same profile already is: in an earlier line, or on the modem.
  std::optional<std::string> placeOf(const pavo::ProfileParams& params, const ApnEntry& entry) {
    const auto [earlier, isNew] = lineOfProfile.emplace(
        toJson(params, Secrets::shown)
            .dump(-1, ' ', /*ensure_ascii=*/false, Json::error_handler_t::ignore),
        entry.line);
    if (!isNew) {
      return "that of line " + std::to_string(earlier->second);
    }
    if (session == nullptr) {
      return std::nullopt;
    }
    pavo::FilterProfileParams filter(params);
    filter.setFilterByIsPavoProfile(true);
    for (const auto& profile : session->list(filter).profiles) {
      // The filter does not compare attributes that params lacks, but a profile with other
      // credentials is not the same.
      if (profile.params.getUserName() == params.getUserName() &&
          profile.params.getPassword() == params.getPassword()) {
        return "on the modem as profile " + std::to_string(profile.id);
      }
    }
    return std::nullopt;
  }

  void note(unsigned long fileLine, const std::string& text) {
    notes.push_back(Json{{"line", fileLine}, {"note", text}});
    print("line " + std::to_string(fileLine) + ": note: " + text);
  }

  void note(const std::string& text) {
    notes.push_back(Json{{"note", text}});
    print("note: " + text);
  }

  void refuse(const ApnEntry& entry, const std::string& reason) {
    ++done;
    refused.push_back(
        Json{{"line", entry.line}, {"carrier", entry.valueOf("carrier")}, {"reason", reason}});
    progress.clear();
    complain(printable(line.file) + ":" + std::to_string(entry.line) + ": refused: " + reason);
  }

  void report(const ApnEntry& entry, Json profile, const std::string& result) {
    ++done;
    imported.push_back(
        Json{{"line", entry.line}, {"carrier", entry.valueOf("carrier")}, {"profile", profile}});
    print("line " + std::to_string(entry.line) + ": " + printable(entry.valueOf("carrier")) + ": " +
          valueText(profile["apnName"]) + " (" + valueText(profile["apnTypesMask"]) +
          "): " + result);
  }

  void print(const std::string& text) {
    if (!line.isJson) {
      progress.clear();
      output.line(text);
    }
  }

  // Returns "; 12 imported, 1290 from line 345 on not done" for the message of an early end.
  std::string account() const {
    std::string text = "; " + std::to_string(imported.size()) +
                       (line.isDryRun ? " would be imported" : " imported");
    if (done < entries.size()) {
      text += ", " + std::to_string(entries.size() - done) + " from line " +
              std::to_string(entries[done]->line) + " on not done";
    }
    return text;
  }

  void finish() {
    if (line.isDryRun && imported.size() > profilesMax) {
      note("no modem has room for more than " + std::to_string(profilesMax) + " profiles");
    }
    if (line.isJson) {
      printJson();
    } else {
      output.line(std::to_string(imported.size()) +
                  (line.isDryRun ? " would be imported, " : " imported, ") +
                  std::to_string(refused.size()) + " refused, " + std::to_string(notes.size()) +
                  " notes");
    }
    if (!stopReason.empty()) {
      complain(printable(line.file) + ": stopped: " + stopReason + account());
    }
  }

  void printJson() {
    Json report{{"isDryRun", line.isDryRun},
                {"imported", imported},
                {"refused", refused},
                {"notes", notes}};
    if (!stopReason.empty()) {
      report["stopped"] = Json{{"reason", stopReason}, {"notDone", entries.size() - done}};
      if (done < entries.size()) {
        report["stopped"]["fromLine"] = entries[done]->line;
      }
    }
    output.line(dumpJson(report, /*indent=*/2));
  }

  const CommandLine& line;
  Context& context;
  Output& output;
  const ApnFile file;
  const std::vector<const ApnEntry*> entries;
  Progress progress;
  StopSignal* stop = nullptr;
  Session* session = nullptr;  // null in a dry run
  std::size_t done = 0;        // entries that were imported, refused or skipped
  int refusalsInARow = 0;
  std::string stopReason;  // Once this is not empty, no further entry is tried.
  std::map<std::string, unsigned long> lineOfProfile;
  Json imported = Json::array();
  Json refused = Json::array();
  Json notes = Json::array();
};

}  // namespace

ExitStatus importFile(const CommandLine& line, Context& context) {
  return Import(line, context).run();
}

}  // namespace pavoctl
