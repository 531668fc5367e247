// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The contents of the library's cache at one moment.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/Manager.h>
#include <pavo/ModifyProfileParams.h>

#include "matching/ProfileSettings.h"
#include "profiles/Profile.h"
#include "session/Dump.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pavoctl {

// A profile together with the settings that only the dump of the cache shows. Matching and changing
// depend on them.
struct CachedProfile {
  // The token of the cache's entry. Two entries may stand for the same profile of the modem.
  std::uint64_t token = 0;
  Profile profile;
  pavo::ProfileSettings settings;
  std::string dump;  // the cache's text, without the token

  // Returns whether the modem has marked the profile for uses that the library has no name for.
  bool hasUnknownTypes() const;
};

using Key = std::shared_ptr<pavo::IProfileKey>;

struct Snapshot {
  // The profiles stand in the order in which the library finds them.
  std::vector<CachedProfile> profiles;
  std::size_t unreadable = 0;        // entries that the library could not read from the modem
  std::vector<std::string> pending;  // the indications that the library expects

  // Returns nothing when the profiles changed meanwhile. It uses the worker, not the modem.
  static std::optional<Snapshot> take(pavo::Manager& manager);
  // Returns the profile of one key, or nothing when the key is unknown or the profile has just
  // changed.
  static std::optional<CachedProfile> takeOne(pavo::Manager& manager, const Key& key);
  // Repeats take() until it succeeds. Throws Failure when the profiles keep changing.
  static Snapshot takeOf(pavo::Manager& manager);
};

// Returns the profile as the library would hold it after the change. Returns std::nullopt when the
// change makes no difference, because the library would then not ask the modem.
std::optional<CachedProfile> changed(const CachedProfile& cached,
                                     const pavo::ModifyProfileParams& params);

// Returns the profile that the library would create. Its id and token are not known.
CachedProfile created(const pavo::AddProfileParams& params);

// The library does not report whether the modem has taken a change. The modem has taken it when the
// cache's text of the profile differs afterwards.
enum class ChangeOutcome { changed, unchanged, refused };
ChangeOutcome outcomeOf(const pavo::ModifyProfileParams& params, const CachedProfile& before,
                        const std::optional<std::string>& textAfter);

// The id of a profile that has yet to be created, or that the modem refused. The modem chooses ids.
inline constexpr int unknownId = -1;

// Returns the token of a key.
std::uint64_t tokenOf(pavo::IProfileKey& key);

// Returns the cache's text of the entry with that token, or nothing when there is none.
std::optional<std::string> entryOf(const Dump& dump, std::uint64_t token);

// Reads the settings from the cache's text of a profile. profile already holds the attributes that
// the library hands out. Returns false when the text and the attributes do not agree.
bool readDump(std::string_view text, CachedProfile& profile);

}  // namespace pavoctl
