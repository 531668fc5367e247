#include "policies/LoggedOperations.h"

#include <algorithm>
#include <charconv>

#include "Text.h"
#include "policies/Comparison.h"
#include "session/Dump.h"

namespace pavoctl {
namespace {

constexpr std::string_view operationStart = "Manager::";
constexpr std::size_t markSize = 3;
// The library cuts its lines there.
constexpr std::size_t messageCharsMax = 511;

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

std::string keyText(const CachedProfile& profile) {
  return std::to_string(profile.profile.id) + " token=" + std::to_string(profile.token);
}

// An operation's line at its entry, "Manager::name > text", or at its exit, with <.
struct Bound {
  std::string_view name;
  bool isEntry = false;
  std::string_view text;
};

std::optional<Bound> readBound(std::string_view message) {
  if (!startsWith(message, operationStart)) {
    return std::nullopt;
  }
  message.remove_prefix(operationStart.size());
  const auto nameEnd = message.find(' ');
  const std::string_view mark = message.substr(std::min(nameEnd, message.size()), markSize);
  if (mark != " > " && mark != " < ") {
    return std::nullopt;
  }
  return Bound{message.substr(0, nameEnd), mark == " > ", message.substr(nameEnd + markSize)};
}

// How much of a text fits behind the mark of an operation's line.
std::size_t roomFor(std::string_view name) {
  return messageCharsMax - operationStart.size() - name.size() - markSize;
}

// "3 token=7"; nothing when it is something else, or not all of it.
std::optional<Answers::Entry> readKey(std::string_view text) {
  Answers::Entry entry;
  const char* const end = text.data() + text.size();
  const auto id = std::from_chars(text.data(), end, entry.id);
  constexpr std::string_view middle = " token=";
  const std::string_view behind(id.ptr, static_cast<std::size_t>(end - id.ptr));
  if (id.ec != std::errc() || !startsWith(behind, middle)) {
    return std::nullopt;
  }
  const auto token = std::from_chars(id.ptr + middle.size(), end, entry.token);
  return token.ec == std::errc() && token.ptr == end ? std::optional(entry) : std::nullopt;
}

}  // namespace

bool LoggedOperation::isEntry(const std::string& text) const {
  return entry == text.substr(0, roomFor(name));
}

bool LoggedOperation::isExitCut() const { return exit.size() >= roomFor(name); }

bool LoggedOperation::has(std::string_view message) const {
  return std::find(between.begin(), between.end(), message) != between.end();
}

std::deque<LoggedOperation> readOperations(const std::vector<std::string>& messages) {
  std::deque<LoggedOperation> operations;
  bool isInside = false;
  for (const auto& message : messages) {
    const auto bound = readBound(message);
    if (bound && bound->isEntry) {
      LoggedOperation& operation = operations.emplace_back();
      operation.name = bound->name;
      operation.entry = bound->text;
    } else if (bound && isInside) {
      operations.back().exit = bound->text;
    } else if (isInside) {
      operations.back().between.push_back(message);
    }
    isInside = bound ? bound->isEntry : isInside;
  }
  return operations;
}

LoggedOperations::LoggedOperations(const std::vector<std::string>& messages)
    : rest(readOperations(messages)) {}

LoggedOperation LoggedOperations::next(const std::string& name, const std::string& entry) {
  if (rest.empty() || rest.front().name != name || !rest.front().isEntry(entry)) {
    throw OtherStages("the library did not ask for " + name + " when it was due");
  }
  LoggedOperation operation = std::move(rest.front());
  rest.pop_front();
  return operation;
}

std::vector<Answers::Entry> LoggedOperations::filter(const pavo::FilterProfileParams& filter,
                                                     const Profiles& profiles) {
  const LoggedOperation operation = next("filter", "Filter params: " + filter.dump());
  constexpr std::string_view start = "Filter Success ";
  std::vector<Entry> found;
  if (!startsWith(operation.exit, start)) {
    return found;
  }
  auto keys = split(std::string_view(operation.exit).substr(start.size()), ",");
  // Behind the last comma is nothing, or a key that has been cut.
  keys.pop_back();
  for (const auto key : keys) {
    if (const auto entry = readKey(key)) {
      found.push_back(*entry);
    }
  }
  if (operation.isExitCut()) {
    addUnlisted(found, filter, profiles);
  }
  return found;
}

// What the line had no room for: whatever else matches.
void LoggedOperations::addUnlisted(std::vector<Entry>& found,
                                   const pavo::FilterProfileParams& filter,
                                   const Profiles& profiles) {
  for (const auto& profile : profiles) {
    const bool isListed = std::any_of(found.begin(), found.end(), [&](const Entry& entry) {
      return entry.token == profile.token;
    });
    if (!isListed && !firstMismatch(profile, filter)) {
      found.push_back({profile.token, profile.profile.id});
    }
  }
}

bool LoggedOperations::get(const CachedProfile& profile) {
  return startsWith(next("getProfile", "Get " + keyText(profile)).exit, "Get Success");
}

bool LoggedOperations::match(const pavo::FilterProfileParams& filter,
                             const CachedProfile& profile) {
  return next("match", "Match " + keyText(profile) + " " + filter.dump()).exit ==
         "Match Success true";
}

ChangeOutcome LoggedOperations::modify(const pavo::ModifyProfileParams& params,
                                       const CachedProfile& profile) {
  const LoggedOperation operation =
      next("modifyProfile", "Modify " + keyText(profile) + " " + params.dump());
  // The library answers with success also when the modem refused.
  if (operation.exit != "Modify Success" || operation.has(message::modifyFailed)) {
    return ChangeOutcome::refused;
  }
  return operation.has(message::unchanged) ? ChangeOutcome::unchanged : ChangeOutcome::changed;
}

std::optional<Answers::Entry> LoggedOperations::add(const pavo::AddProfileParams& params) {
  constexpr std::string_view start = "Add Success ";
  const LoggedOperation operation = next("addProfile", "Add " + params.dump());
  return startsWith(operation.exit, start)
             ? readKey(std::string_view(operation.exit).substr(start.size()))
             : std::nullopt;
}

}  // namespace pavoctl
