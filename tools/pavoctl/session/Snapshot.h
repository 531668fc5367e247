// What the library's cache holds at one moment.
#pragma once

#include <pavo/Manager.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "profiles/Profile.h"

namespace pavoctl {

// A profile, and of it also what only the dump of the cache tells: matching and changing depend on
// it.
struct CachedProfile {
  // The cache's own mark of the entry; two entries may be of one profile of the modem.
  std::uint64_t token = 0;
  Profile profile;
  // What the modem serves, and what pins a network to one type.
  std::optional<pavo::IPType> commonIPType;
  std::optional<pavo::IPType> overrideHomeIPType;
  std::optional<pavo::IPType> lteRoamIPType;
  std::optional<pavo::IPType> umtsRoamIPType;
  // The modem has marked the profile for uses that the library has no name for.
  bool hasUnknownTypes = false;
  std::optional<std::string> name;  // Tells who made the profile.
  std::string dump;                 // The cache's text, without the token.

  // What a filter's types are compared with.
  std::optional<pavo::IPType> homeIPType() const;
  std::optional<pavo::IPType> roamIPType() const;
};

struct Snapshot {
  // In the order in which the library finds them.
  std::vector<CachedProfile> profiles;
  std::size_t unreadable = 0;        // Entries that the library could not read from the modem.
  std::vector<std::string> pending;  // The indications that the library expects.

  // Nothing when the profiles changed meanwhile. Asks the worker, not the modem.
  static std::optional<Snapshot> take(pavo::Manager& manager);
  // Again and again. Throws Failure when they do not keep still.
  static Snapshot takeOf(pavo::Manager& manager);
};

// The token of a key.
std::uint64_t tokenOf(pavo::IProfileKey& key);

// Reads the cache's text of a profile, beside what the library says of the same; false when the two
// are not of the same contents.
bool readDump(std::string_view text, CachedProfile& profile);

}  // namespace pavoctl
