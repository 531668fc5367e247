// The library's own account of what it was asked for and what came of it, taken from its log.
#pragma once

#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include "policies/Answers.h"

namespace pavoctl {

// One operation of pavo::Manager: its line at the entry and at the exit, behind "Manager::name > "
// and "Manager::name < ", and what was logged in between.
struct LoggedOperation {
  std::string name;
  std::string entry;
  std::string exit;
  std::vector<std::string> between;

  // Whether the text is what the entry says; the library cuts its lines.
  bool isEntry(const std::string& text) const;
  bool isExitCut() const;
  bool has(std::string_view message) const;
};

std::deque<LoggedOperation> readOperations(const std::vector<std::string>& messages);

// The library was asked for something else than the policy's stages ask for.
class OtherStages : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The answers that the library has given, in the order in which it was asked. Throws OtherStages.
class LoggedOperations : public Answers {
 public:
  explicit LoggedOperations(const std::vector<std::string>& messages);

  std::vector<Entry> filter(const pavo::FilterProfileParams& filter,
                            const Profiles& profiles) override;
  bool get(const CachedProfile& profile) override;
  bool match(const pavo::FilterProfileParams& filter, const CachedProfile& profile) override;
  ChangeOutcome modify(const pavo::ModifyProfileParams& params,
                       const CachedProfile& profile) override;
  std::optional<Entry> add(const pavo::AddProfileParams& params) override;

  bool isAtEnd() const { return rest.empty(); }

 private:
  // The next operation, which is to be this one.
  LoggedOperation next(const std::string& name, const std::string& entry);
  static void addUnlisted(std::vector<Entry>& found, const pavo::FilterProfileParams& filter,
                          const Profiles& profiles);

  std::deque<LoggedOperation> rest;
};

}  // namespace pavoctl
