// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the library's cache holds at one moment.
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

// A profile, and of it also what only the dump of the cache tells: matching and changing depend on
// it.
struct CachedProfile {
  // The cache's own mark of the entry; two entries may be of one profile of the modem.
  std::uint64_t token = 0;
  Profile profile;
  pavo::ProfileSettings settings;
  std::string dump;  // The cache's text, without the token.

  // The modem has marked the profile for uses that the library has no name for.
  bool hasUnknownTypes() const;
};

using Key = std::shared_ptr<pavo::IProfileKey>;

struct Snapshot {
  // In the order in which the library finds them.
  std::vector<CachedProfile> profiles;
  std::size_t unreadable = 0;        // Entries that the library could not read from the modem.
  std::vector<std::string> pending;  // The indications that the library expects.

  // Nothing when the profiles changed meanwhile. Asks the worker, not the modem.
  static std::optional<Snapshot> take(pavo::Manager& manager);
  // The profile of one key; nothing when it is not known or has just changed.
  static std::optional<CachedProfile> takeOne(pavo::Manager& manager, const Key& key);
  // Again and again. Throws Failure when they do not keep still.
  static Snapshot takeOf(pavo::Manager& manager);
};

// The profile as the library would have it after the change; nothing when it is like that already
// and the modem would not be asked.
std::optional<CachedProfile> changed(const CachedProfile& cached,
                                     const pavo::ModifyProfileParams& params);

// The profile that the library would create. Its id and token are not known.
CachedProfile created(const pavo::AddProfileParams& params);

// The library does not say whether the modem has taken a change. It has when the cache's text of
// the profile is another one afterwards.
enum class ChangeOutcome { changed, unchanged, refused };
ChangeOutcome outcomeOf(const pavo::ModifyProfileParams& params, const CachedProfile& before,
                        const std::optional<std::string>& textAfter);

// The id of a profile that has yet to be created, or was refused. The modem chooses ids.
inline constexpr int unknownId = -1;

// The token of a key.
std::uint64_t tokenOf(pavo::IProfileKey& key);

// The cache's text of the entry with that token; nothing when there is none.
std::optional<std::string> entryOf(const Dump& dump, std::uint64_t token);

// Reads the cache's text of a profile, beside what the library says of the same; false when the two
// are not of the same contents.
bool readDump(std::string_view text, CachedProfile& profile);

}  // namespace pavoctl
