#include "Import.h"

#include <map>
#include <optional>
#include <vector>

#include "ApnFile.h"
#include "ApnMapping.h"
#include "Context.h"
#include "Text.h"

namespace pavoctl {
namespace {

class Import {
 public:
  Import(const CommandLine& commandLine, Context& surroundings)
      : line(commandLine), context(surroundings), output(surroundings.output) {}

  ExitStatus run() {
    const ApnFile file = readApnFile(line.file);
    const auto entries = entriesOfPlmn(file);
    StopSignal* stop = nullptr;
    if (!line.isDryRun) {
      if (line.isHeld) {
        stop = &context.stopSignal();
      }
      session = &context.session(line.session);
    }
    for (const auto& remark : file.remarks) {
      note(remark.line, remark.text);
    }
    for (const ApnEntry* entry : entries) {
      importEntry(*entry);
    }
    finish();
    if (stop != nullptr) {
      stop->wait();
      releaseAll();
    }
    return refused.empty() ? exitDone : exitFailed;
  }

 private:
  std::vector<const ApnEntry*> entriesOfPlmn(const ApnFile& file) {
    std::vector<const ApnEntry*> found;
    std::vector<std::string> strays;
    for (const auto& entry : file.entries) {
      const std::string plmn = plmnOf(entry);
      if (plmn == line.plmn) {
        found.push_back(&entry);
      } else if (plmn.empty()) {
        strays.push_back(std::to_string(entry.line));
      }
    }
    if (found.empty()) {
      throw Failure(printable(line.file) + ": none of its " + std::to_string(file.entries.size()) +
                    " entries is for network " + line.plmn);
    }
    if (!strays.empty()) {
      strayNote =
          "entries without a proper mcc and mnc belong to no network; lines " + join(strays, ", ");
    }
    return found;
  }

  void importEntry(const ApnEntry& entry) {
    MappedApn mapped = mapApn(entry);
    for (const auto& text : mapped.notes) {
      note(entry.line, text);
    }
    if (!mapped.refusal.empty()) {
      refuse(entry, mapped.refusal);
      return;
    }
    if (const auto place = placeOf(mapped.params, entry)) {
      note(entry.line, "not added again: the same profile is " + *place);
      return;
    }
    if (session == nullptr) {
      report(entry, toJson(mapped.params, line.secrets), "would be added");
      return;
    }
    try {
      auto added = session->add(
          pavo::AddProfileParams(mapped.params, line.isPersistent, /*isIAProfile=*/false));
      report(entry, toJson(added.profile, line.secrets),
             "profile " + std::to_string(added.profile.id));
      if (line.isHeld) {
        keys.push_back(std::move(added.key));
      }
    } catch (const Failure& failure) {
      refuse(entry, failure.what());
    }
  }

  // Where the same profile is already: in an earlier line, or on the modem.
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
      // The filter does not ask for the absence of attributes, and credentials make a difference.
      if (profile.params.getUserName() == params.getUserName() &&
          profile.params.getPassword() == params.getPassword()) {
        return "on the modem as profile " + std::to_string(profile.id);
      }
    }
    return std::nullopt;
  }

  void note(unsigned long fileLine, const std::string& text) {
    notes.push_back(Json{{"line", fileLine}, {"note", text}});
    if (!line.isJson) {
      output.line("line " + std::to_string(fileLine) + ": note: " + text);
    }
  }

  void refuse(const ApnEntry& entry, const std::string& reason) {
    refused.push_back(
        Json{{"line", entry.line}, {"carrier", entry.valueOf("carrier")}, {"reason", reason}});
    complain(printable(line.file) + ":" + std::to_string(entry.line) + ": refused: " + reason);
  }

  void report(const ApnEntry& entry, Json profile, const std::string& result) {
    if (!line.isJson) {
      output.line("line " + std::to_string(entry.line) + ": " +
                  printable(entry.valueOf("carrier")) + ": " + valueText(profile["apnName"]) +
                  " (" + valueText(profile["apnTypesMask"]) + "): " + result);
    }
    imported.push_back(Json{{"line", entry.line},
                            {"carrier", entry.valueOf("carrier")},
                            {"profile", std::move(profile)}});
  }

  void finish() {
    if (!strayNote.empty()) {
      notes.push_back(Json{{"note", strayNote}});
      if (!line.isJson) {
        output.line("note: " + strayNote);
      }
    }
    if (line.isJson) {
      output.line(dumpJson(Json{{"isDryRun", line.isDryRun},
                                {"imported", imported},
                                {"refused", refused},
                                {"notes", notes}},
                           /*indent=*/2));
      return;
    }
    output.line(
        std::to_string(imported.size()) + (line.isDryRun ? " would be imported, " : " imported, ") +
        std::to_string(refused.size()) + " refused, " + std::to_string(notes.size()) + " notes");
  }

  void releaseAll() {
    for (auto& key : keys) {
      const int id = key->getProfileId();
      if (!Session::release(std::move(key))) {
        complain("profile " + std::to_string(id) +
                 " was not this process's to delete any more: the modem or another client has "
                 "changed or deleted it");
      }
    }
  }

  const CommandLine& line;
  Context& context;
  Output& output;
  Session* session = nullptr;  // None in a dry run.
  std::vector<Key> keys;
  std::map<std::string, unsigned long> lineOfProfile;
  std::string strayNote;
  Json imported = Json::array();
  Json refused = Json::array();
  Json notes = Json::array();
};

}  // namespace

ExitStatus importFile(const CommandLine& line, Context& context) {
  return Import(line, context).run();
}

}  // namespace pavoctl
