// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "inspection/Usage.h"

#include "Table.h"
#include "Text.h"

#include <set>
#include <vector>

namespace pavoctl {
namespace {

const char* ownerOf(const pavo::ProfileParams& params) {
  return params.getIsIAProfile()     ? "library for initial attach"
         : params.getIsPavoProfile() ? "library"
                                     : "modem";
}

std::string numbersText(const Json& numbers) {
  std::vector<std::string> texts;
  for (const auto& number : numbers) {
    texts.push_back(valueText(number));
  }
  return texts.empty() ? "none" : join(texts, ", ");
}

}  // namespace

Json usageOf(const Snapshot& snapshot, const std::map<int, int>& keys,
             std::optional<int> capacity) {
  std::map<int, Json> slots;
  Json owners{{"modem", 0}, {"library", 0}, {"library for initial attach", 0}};
  for (const auto& cached : snapshot.profiles) {
    const auto& params = cached.profile.params;
    const int id = cached.profile.id;
    const auto held = keys.find(id);
    Json slot{{"id", id}};
    slot["apnName"] = params.hasApnName() ? Json(params.getApnName()) : Json(nullptr);
    slot["owner"] = ownerOf(params);
    slot["keys"] = held == keys.end() ? 0 : held->second;
    slots[id] = slot;
  }
  Json usage{{"used", slots.size() + snapshot.unreadable}, {"unreadable", snapshot.unreadable}};
  Json all = Json::array();
  Json unheld = Json::array();
  for (const auto& [id, slot] : slots) {
    const std::string owner = slot["owner"];
    owners[owner] = owners[owner].get<int>() + 1;
    if (owner != "modem" && slot["keys"] == 0) {
      unheld.push_back(id);
    }
    all.push_back(slot);
  }
  usage["owners"] = owners;
  usage["slots"] = all;
  usage["unheld"] = unheld;
  if (capacity) {
    Json free = Json::array();
    for (int id = 1; id <= *capacity; ++id) {
      if (!slots.contains(id)) {
        free.push_back(id);
      }
    }
    usage["capacity"] = *capacity;
    usage["free"] = free;
  }
  return usage;
}

std::string usageText(const Json& usage) {
  std::vector<std::vector<std::string>> rows{{"SLOT", "APN", "OWNER", "KEYS"}};
  for (const auto& slot : usage["slots"]) {
    rows.push_back({valueText(slot["id"]),
                    slot["apnName"].is_null() ? "-" : valueText(slot["apnName"]),
                    valueText(slot["owner"]), valueText(slot["keys"])});
  }
  std::vector<std::string> owners;
  for (const auto& [owner, count] : usage["owners"].items()) {
    owners.push_back(valueText(count) + " of the " + owner);
  }
  std::string text = aligned(rows) + counted(usage["used"], "slot") + " used";
  text += usage.contains("capacity") ? " of " + valueText(usage["capacity"]) : "";
  text += ": " + join(owners, ", ") + "\n";
  if (usage["unreadable"] != 0) {
    text += "of them not readable: " + valueText(usage["unreadable"]) + "\n";
  }
  text +=
      "made by the library and held by no key of this process: " + numbersText(usage["unheld"]) +
      "\n";
  if (usage.contains("free")) {
    text += "free: " + numbersText(usage["free"]) + "\n";
  }
  return text;
}

}  // namespace pavoctl
