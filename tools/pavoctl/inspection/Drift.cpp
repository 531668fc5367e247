// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "inspection/Drift.h"

#include "Text.h"
#include "policies/StepText.h"
#include "profiles/Names.h"

#include <map>

namespace pavoctl {
namespace {

Json typeJson(const std::optional<pavo::IPType>& type) {
  if (!type) {
    return nullptr;
  }
  const auto name = nameOf(*type);
  return name ? Json(*name) : Json(static_cast<int>(*type));
}

// Returns everything that can differ. This includes settings that the library uses and does not
// hand out.
Json contentsOf(const CachedProfile& cached, Secrets secrets) {
  Json json = toJson(cached.profile, secrets);
  json["commonIPType"] = typeJson(cached.settings.commonIPType);
  json["overrideHomeIPType"] = typeJson(cached.settings.overrideHomeIPType);
  json["lteRoamIPType"] = typeJson(cached.settings.lteRoamIPType);
  json["umtsRoamIPType"] = typeJson(cached.settings.umtsRoamIPType);
  json["hasUnknownTypes"] = cached.hasUnknownTypes();
  json["profileName"] =
      cached.settings.profileName ? Json(*cached.settings.profileName) : Json(nullptr);
  return json;
}

Json differences(const CachedProfile& cached, const CachedProfile& real, Secrets secrets) {
  const Json was = contentsOf(cached, Secrets::shown);
  const Json is = contentsOf(real, Secrets::shown);
  const Json shownWas = contentsOf(cached, secrets);
  const Json shownIs = contentsOf(real, secrets);
  Json all = was;
  all.update(is);
  Json result = Json::object();
  for (const auto& [key, value] : all.items()) {
    if (was.value(key, Json()) != is.value(key, Json())) {
      result[key] =
          Json{{"cache", shownWas.value(key, Json())}, {"modem", shownIs.value(key, Json())}};
    }
  }
  return result;
}

Json entry(const CachedProfile& profile, const char* kind) {
  Json json{{"id", profile.profile.id}};
  if (profile.profile.params.hasApnName()) {
    json["apnName"] = profile.profile.params.getApnName();
  }
  json["kind"] = kind;
  return json;
}

std::string sideText(const Json& value) { return value.is_null() ? "(absent)" : valueText(value); }

std::string lineOf(const Json& profile) {
  const std::string kind = profile["kind"];
  if (kind == "missing") {
    return nameText(profile) + ": in the cache, but not on the modem";
  }
  if (kind == "unknown") {
    return nameText(profile) + ": on the modem, but not in the cache";
  }
  if (kind == "twice") {
    return nameText(profile) + ": twice in the cache";
  }
  std::vector<std::string> parts;
  for (const auto& [key, sides] : profile["changes"].items()) {
    parts.push_back(key + " is " + sideText(sides["cache"]) + " in the cache and " +
                    sideText(sides["modem"]) + " on the modem");
  }
  return nameText(profile) + ": " + join(parts, ", ");
}

}  // namespace

Drift compare(const Snapshot& cache, const Snapshot& modem, Secrets secrets) {
  std::map<int, const CachedProfile*> onModem;
  for (const auto& profile : modem.profiles) {
    onModem[profile.profile.id] = &profile;
  }
  Drift drift;
  std::map<int, Json> byId;
  std::map<int, int> count;
  for (const auto& profile : cache.profiles) {
    const int id = profile.profile.id;
    const auto real = onModem.find(id);
    if (++count[id] > 1) {
      byId[id] = entry(profile, "twice");
    } else if (real == onModem.end()) {
      // The profile may be one of those that could not be read.
      if (modem.unreadable == 0) {
        byId[id] = entry(profile, "missing");
      }
    } else if (Json changes = differences(profile, *real->second, secrets); !changes.empty()) {
      byId[id] = entry(profile, "differs");
      byId[id]["changes"] = std::move(changes);
    }
  }
  for (const auto& [id, profile] : onModem) {
    if (!count.contains(id)) {
      byId[id] = entry(*profile, "unknown");
    }
  }
  for (auto& [id, json] : byId) {
    drift.profiles.push_back(std::move(json));
  }
  drift.pending = cache.pending;
  drift.unreadable = cache.unreadable;
  return drift;
}

std::string driftText(const Drift& drift) {
  std::string text;
  for (const auto& profile : drift.profiles) {
    text += lineOf(profile) + "\n";
  }
  for (const auto& pending : drift.pending) {
    text += "expected, but never told by the modem: profile " + printable(trimmed(pending)) + "\n";
  }
  if (drift.unreadable > 0) {
    text += "entries of the cache that hold nothing: " + std::to_string(drift.unreadable) + "\n";
  }
  return text;
}

}  // namespace pavoctl
