// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Table.h"

#include "Text.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace pavoctl {
namespace {

struct Column {
  std::string_view title;
  const char* key;
};

constexpr std::array columns{
    Column{"ID", "id"},           Column{"APN", "apnName"},       Column{"TYPES", "apnTypesMask"},
    Column{"HOME", "homeIPType"}, Column{"ROAM", "roamIPType"},   Column{"AUTH", "authType"},
    Column{"USER", "userName"},   Column{"PASSWORD", "password"}, Column{"CLASS", "apnClass"},
};

constexpr std::array flags{
    Column{"disabled", "isApnDisabled"},
    Column{"clat", "isClatEnabled"},
    Column{"emergency", "isEmergencySupported"},
    Column{"pavo", "isPavoProfile"},
    Column{"ia", "isIAProfile"},
};

constexpr std::string_view absent = "-";

std::string cell(const Json& profile, const char* key) {
  const auto value = profile.find(key);
  return value == profile.end() ? std::string(absent) : valueText(*value);
}

std::string flagCell(const Json& profile) {
  std::vector<std::string> set;
  for (const auto& flag : flags) {
    if (profile.value(flag.key, false)) {
      set.emplace_back(flag.title);
    }
  }
  return set.empty() ? std::string(absent) : join(set, ",");
}

// Counts code points. For names of access points they are close enough to columns.
std::size_t widthOf(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string sideText(const Json& change, const char* side) {
  const auto value = change.find(side);
  return value == change.end() ? "(absent)" : valueText(*value);
}

}  // namespace

std::string aligned(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], widthOf(row[i]));
    }
  }
  std::string text;
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += row[i];
      if (i + 1 < row.size()) {
        text.append(widths[i] - widthOf(row[i]) + 2, ' ');
      }
    }
    text += '\n';
  }
  return text;
}

std::string profileTable(const Json& profiles) {
  std::vector<std::vector<std::string>> rows(1);
  for (const auto& column : columns) {
    rows[0].emplace_back(column.title);
  }
  rows[0].emplace_back("FLAGS");
  for (const auto& profile : profiles) {
    auto& row = rows.emplace_back();
    for (const auto& column : columns) {
      row.push_back(cell(profile, column.key));
    }
    row.push_back(flagCell(profile));
  }
  return aligned(rows);
}

std::string profileText(const Json& profile) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& [key, value] : profile.items()) {
    rows.push_back({key + ":", valueText(value)});
  }
  return rows.empty() ? std::string() : aligned(rows);
}

std::string changesText(const Json& changes) {
  std::vector<std::string> parts;
  for (const auto& [key, change] : changes.items()) {
    parts.push_back(key + ": " + sideText(change, "before") + " -> " + sideText(change, "after"));
  }
  return join(parts, ", ");
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace pavoctl
