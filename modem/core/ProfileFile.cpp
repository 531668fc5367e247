// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/ProfileFile.h"

#include "modem/core/ProfileJson.h"
#include "modem/core/Refusal.h"

#include <nlohmann/json.hpp>

#include <utility>
#include <vector>

namespace modem {

using nlohmann::json;

namespace {

struct Entry {
  std::string place;
  std::optional<uint8_t> index;
  Profile profile;
};

Entry readEntry(const json& object, const std::string& place, size_t capacity) {
  if (!object.is_object()) {
    throw Error(place + " has to be an object");
  }
  Entry entry{.place = place, .index = std::nullopt, .profile = {}};
  for (const auto& [name, value] : object.items()) {
    if (name == "index") {
      const uint64_t index = numberFromJson(value, capacity, place + ".index");
      if (index == 0) {
        throw Error(place + ".index is 0, indices start at 1");
      }
      entry.index = static_cast<uint8_t>(index);
    } else if (!isSettingName(name)) {
      throw Error(place + " has the unknown member \"" + name + "\"");
    }
  }
  try {
    entry.profile = profileFromJson(object);
    checkSettings(entry.profile);
  } catch (const std::runtime_error& error) {
    throw Error(place + "." + error.what());
  }
  return entry;
}

std::vector<Entry> readEntries(const json& document, size_t capacity) {
  if (!document.is_object() || !document.contains("profiles") || !document["profiles"].is_array()) {
    throw Error("the file has to be an object with the list \"profiles\"");
  }
  if (document.size() != 1) {
    throw Error("the file has members other than \"profiles\"");
  }
  std::vector<Entry> entries;
  for (const json& object : document["profiles"]) {
    const std::string place = "profiles[" + std::to_string(entries.size()) + "]";
    entries.push_back(readEntry(object, place, capacity));
  }
  return entries;
}

ProfilesByIndex numbered(std::vector<Entry> entries, size_t capacity) {
  ProfileTable table(capacity);
  for (Entry& entry : entries) {
    if (entry.index) {
      if (!table.isFree(*entry.index)) {
        throw Error(entry.place + ".index " + std::to_string(*entry.index) +
                    " is that of another profile");
      }
      table.put(*entry.index, entry.profile);
    }
  }
  for (Entry& entry : entries) {
    if (!entry.index) {
      const auto index = table.lowestFreeIndex();
      if (!index) {
        throw Error(entry.place + " does not fit, the capacity is " + std::to_string(capacity));
      }
      table.put(*index, entry.profile);
    }
  }
  return table.all();
}

}  // namespace

std::optional<ProfilesByIndex> readProfileFile(const std::string& path, size_t capacity) {
  const auto text = readFileIfAny(path);
  if (!text) {
    return std::nullopt;
  }
  return readJson(path, *text, [capacity](const json& document) {
    return numbered(readEntries(document, capacity), capacity);
  });
}

std::string profileFileText(const ProfilesByIndex& profiles) {
  // Each profile has a line of its own, so that two states of a store can be compared by eye.
  std::string text = "{\"profiles\": [";
  const char* separator = "\n";
  for (const auto& [index, profile] : profiles) {
    json object = toJson(profile);
    object["index"] = index;
    text += separator + dumpLine(object);
    separator = ",\n";
  }
  return text + "\n]}\n";
}

}  // namespace modem
