// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "session/Dump.h"

#include <algorithm>
#include <iterator>

namespace pavoctl {
namespace {

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// Lets a loop run from the latest line to the oldest.
struct Backwards {
  const std::vector<std::string>& lines;

  auto begin() const { return lines.rbegin(); }
  auto end() const { return lines.rend(); }
};

}  // namespace

std::string_view messageOf(std::string_view logLine) {
  constexpr std::string_view tag = " [PAVO]";
  const auto position = logLine.find(tag);
  return position == std::string_view::npos ? logLine : logLine.substr(position + tag.size());
}

bool contains(const std::vector<std::string_view>& messages, std::string_view message) {
  return std::find(messages.begin(), messages.end(), message) != messages.end();
}

Dump Dump::parse(const std::vector<std::string>& lines) {
  Dump dump;
  // Before init there is no cache, and the text begins with the empty line.
  std::vector<std::string>* section = nullptr;
  for (const auto& line : lines) {
    // Headings stand at the margin. The lines under them are indented.
    if (line == "Cache:") {
      section = &dump.cache;
    } else if (line == "Pending:") {
      section = &dump.pending;
    } else if (line == "Logs:") {
      section = &dump.log;
    } else if (section != nullptr && !line.empty()) {
      section->push_back(line);
    }
  }
  return dump;
}

std::optional<std::vector<std::string_view>> Dump::messagesSince(std::string_view start) const {
  const auto last = std::find_if(log.rbegin(), log.rend(), [&](const std::string& line) {
    return startsWith(messageOf(line), start);
  });
  if (last == log.rend()) {
    return std::nullopt;
  }
  std::vector<std::string_view> messages;
  std::transform(last.base(), log.end(), std::back_inserter(messages), messageOf);
  return messages;
}

std::string_view Dump::lastLine(std::string_view start) const {
  for (const auto& line : Backwards{log}) {
    if (startsWith(messageOf(line), start)) {
      return line;
    }
  }
  return {};
}

std::size_t Dump::unreadable() const {
  constexpr std::string_view nothing = ": null";
  return static_cast<std::size_t>(
      std::count_if(cache.begin(), cache.end(), [&](std::string_view line) {
        return line.size() > nothing.size() &&
               line.substr(line.size() - nothing.size()) == nothing &&
               line.find(nothing) == line.find(':');
      }));
}

bool Dump::hasLostList() const {
  for (const auto& line : Backwards{log}) {
    if (messageOf(line) == message::listRead) {
      return false;
    }
    if (messageOf(line) == message::listFailed) {
      return true;
    }
  }
  return false;
}

std::optional<bool> Dump::hasModemsProfiles() const {
  bool isRefreshed = false;
  for (const auto& line : Backwards{log}) {
    const std::string_view text = messageOf(line);
    if (text == message::waitingForService || text == message::listFailed ||
        (isRefreshed && text == message::refreshed)) {
      return false;
    }
    if (isRefreshed && text == message::listRead) {
      return true;
    }
    isRefreshed = isRefreshed || text == message::refreshed;
  }
  return std::nullopt;
}

}  // namespace pavoctl
