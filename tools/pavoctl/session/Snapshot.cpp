// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "session/Snapshot.h"

#include "Errors.h"
#include "matching/ApnTypeBits.h"
#include "matching/Changes.h"
#include "profiles/Names.h"

#include <charconv>

namespace pavoctl {
namespace {

using pavo::IPType;

// A reading is repeated when a change comes between two of its steps. So many in a row are no
// accident.
constexpr int readingsMax = 20;
constexpr std::string_view tokenKey = "token=";

template <typename Number>
std::optional<Number> numberAt(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

// Removes "key=value," from the beginning of the text. Returns false when the text begins
// otherwise.
bool takeKnown(std::string_view& text, const std::string& key, const std::string& value) {
  const std::string start = key + "=" + value + ",";
  if (text.substr(0, start.size()) != start) {
    return false;
  }
  text.remove_prefix(start.size());
  return true;
}

std::optional<IPType> ipTypeOf(std::string_view text) {
  if (const auto type = ipTypeNamed(text)) {
    return type;
  }
  const auto number = numberAt<int>(text);
  return number ? std::optional(static_cast<IPType>(*number)) : std::nullopt;
}

void take(std::string_view key, std::string_view value, pavo::ProfileSettings& settings) {
  if (key == "CommonIPType") {
    settings.commonIPType = ipTypeOf(value);
  } else if (key == "OverrideHomeIPType") {
    settings.overrideHomeIPType = ipTypeOf(value);
  } else if (key == "LteRoamIP") {
    settings.lteRoamIPType = ipTypeOf(value);
  } else if (key == "UmtsRoamIP") {
    settings.umtsRoamIPType = ipTypeOf(value);
  } else if (key == "ApnTypesMask") {
    settings.apnTypesMask = numberAt<unsigned long long>(value);
  }
}

// Returns the profile's settings as the library hands them out, without the IP types: the library
// derives them from the modem's types.
pavo::ProfileSettings settingsWithoutTypes(const Profile& profile) {
  pavo::ProfileSettings settings;
  pavo::copySettings(profile.params, settings);
  settings.profileId = profile.id;
  settings.commonIPType.reset();
  settings.overrideHomeIPType.reset();
  settings.lteRoamIPType.reset();
  settings.umtsRoamIPType.reset();
  return settings;
}

}  // namespace

bool CachedProfile::hasUnknownTypes() const {
  const auto mask = settings.apnTypesMask.value_or(0);
  return pavo::convertToOvixApnTypeMask(pavo::convertToCommonApnTypeMask(mask)) != mask;
}

std::optional<std::string> entryOf(const Dump& dump, std::uint64_t token) {
  const std::string start = "  " + std::to_string(token) + ": ";
  for (const auto& line : dump.cache) {
    if (line.compare(0, start.size(), start) == 0) {
      return line.substr(start.size());
    }
  }
  return std::nullopt;
}

std::uint64_t tokenOf(pavo::IProfileKey& key) {
  const std::string text = key.dump();
  const auto position = text.find(tokenKey);
  return position == std::string::npos
             ? 0
             : numberAt<std::uint64_t>(std::string_view(text).substr(position + tokenKey.size()))
                   .value_or(0);
}

bool readDump(std::string_view text, CachedProfile& cached) {
  cached.dump = text;
  cached.settings = settingsWithoutTypes(cached.profile);
  const pavo::ProfileParams& params = cached.profile.params;
  // Texts may hold commas and text that looks like another attribute. So their known values are
  // skipped, not parsed.
  if (!takeKnown(text, "ProfileId", std::to_string(cached.profile.id)) ||
      (params.hasApnName() && !takeKnown(text, "ApnName", params.getApnName())) ||
      (params.hasUserName() && !takeKnown(text, "UserName", params.getUserName())) ||
      (params.hasPassword() && !takeKnown(text, "Password", params.getPassword()))) {
    return false;
  }
  while (!text.empty()) {
    const auto equals = text.find('=');
    const auto comma = text.find(',', equals);
    const std::string_view key = text.substr(0, equals);
    if (comma == std::string_view::npos) {
      return false;
    }
    if (key == "ProfileName") {
      // The profile name is a text too, and always the last.
      cached.settings.profileName = text.substr(equals + 1, text.size() - equals - 2);
      return true;
    }
    take(key, text.substr(equals + 1, comma - equals - 1), cached.settings);
    text.remove_prefix(comma + 1);
  }
  return true;
}

Snapshot Snapshot::takeOf(pavo::Manager& manager) {
  for (int attempt = 0; attempt < readingsMax; ++attempt) {
    if (auto snapshot = take(manager)) {
      return std::move(*snapshot);
    }
  }
  throw Failure("the modem's profiles keep changing, no picture of them could be made");
}

std::optional<Snapshot> Snapshot::take(pavo::Manager& manager) {
  const auto keys = manager.filter(pavo::FilterProfileParams());
  Snapshot snapshot;
  for (const auto& key : keys) {
    auto params = manager.getProfile(key);
    if (!params) {
      return std::nullopt;
    }
    CachedProfile& cached = snapshot.profiles.emplace_back();
    cached.token = tokenOf(*key);
    cached.profile = {key->getProfileId(), std::move(*params)};
  }
  const Dump dump = Dump::parse(manager.dump());
  for (auto& cached : snapshot.profiles) {
    const auto entry = entryOf(dump, cached.token);
    if (!entry || !readDump(*entry, cached)) {
      return std::nullopt;
    }
  }
  if (dump.cache.size() < keys.size()) {
    return std::nullopt;
  }
  snapshot.unreadable = dump.cache.size() - keys.size();
  snapshot.pending = dump.pending;
  return snapshot;
}

std::optional<CachedProfile> Snapshot::takeOne(pavo::Manager& manager, const Key& key) {
  auto params = manager.getProfile(key);
  const auto text = entryOf(Dump::parse(manager.dump()), tokenOf(*key));
  CachedProfile cached;
  cached.token = tokenOf(*key);
  if (params) {
    cached.profile = {key->getProfileId(), std::move(*params)};
  }
  return params && text && readDump(*text, cached) ? std::optional(cached) : std::nullopt;
}

std::optional<CachedProfile> changed(const CachedProfile& cached,
                                     const pavo::ModifyProfileParams& params) {
  pavo::ProfileSettings changes;
  if (!pavo::planChanges(cached.settings, params, changes)) {
    return std::nullopt;
  }
  CachedProfile after = cached;
  pavo::applyChanges(changes, after.settings);
  after.profile.params = pavo::clientView(after.settings);
  return after;
}

CachedProfile created(const pavo::AddProfileParams& params) {
  CachedProfile profile;
  pavo::copySettings(params, profile.settings);
  profile.settings.profileName =
      params.getIsIAProfile() ? pavo::ProfileSettings::pavoIAName : pavo::ProfileSettings::pavoName;
  profile.profile = {unknownId, pavo::clientView(profile.settings)};
  return profile;
}

ChangeOutcome outcomeOf(const pavo::ModifyProfileParams& params, const CachedProfile& before,
                        const std::optional<std::string>& textAfter) {
  const bool isTaken = textAfter && *textAfter != before.dump;
  return !changed(before, params) ? ChangeOutcome::unchanged
         : isTaken                ? ChangeOutcome::changed
                                  : ChangeOutcome::refused;
}

}  // namespace pavoctl
