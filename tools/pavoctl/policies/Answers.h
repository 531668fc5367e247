// Who says what the library finds and does at each step of a policy.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/ModifyProfileParams.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "session/Snapshot.h"

namespace pavoctl {

using Token = std::uint64_t;
using Profiles = std::vector<CachedProfile>;

// The id of a profile that has yet to be created, or was refused. The modem chooses ids.
inline constexpr int unknownId = -1;

enum class ChangeOutcome { changed, unchanged, refused };

// Each operation is one of pavo::Manager's. The profiles are those of the cache at that step.
class Answers {
 public:
  // What a key tells.
  struct Entry {
    Token token = 0;
    int id = 0;
  };

  virtual ~Answers() = default;
  virtual std::vector<Entry> filter(const pavo::FilterProfileParams& filter,
                                    const Profiles& profiles) = 0;
  // Whether the library knew the profile.
  virtual bool get(const CachedProfile& profile) = 0;
  virtual bool match(const pavo::FilterProfileParams& filter, const CachedProfile& profile) = 0;
  virtual ChangeOutcome modify(const pavo::ModifyProfileParams& params,
                               const CachedProfile& profile) = 0;
  // Nothing when it was refused.
  virtual std::optional<Entry> add(const pavo::AddProfileParams& params) = 0;
};

}  // namespace pavoctl
