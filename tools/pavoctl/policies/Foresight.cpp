#include "policies/Foresight.h"

#include "policies/Comparison.h"
#include "policies/Effects.h"

namespace pavoctl {

std::vector<Answers::Entry> Foresight::filter(const pavo::FilterProfileParams& filter,
                                              const Profiles& profiles) {
  std::vector<Entry> found;
  for (const auto& profile : profiles) {
    if (!firstMismatch(profile, filter)) {
      found.push_back({profile.token, profile.profile.id});
    }
  }
  return found;
}

bool Foresight::get(const CachedProfile& /*profile*/) { return true; }

bool Foresight::match(const pavo::FilterProfileParams& filter, const CachedProfile& profile) {
  return !firstMismatch(profile, filter);
}

ChangeOutcome Foresight::modify(const pavo::ModifyProfileParams& params,
                                const CachedProfile& profile) {
  return changed(profile, params) ? ChangeOutcome::changed : ChangeOutcome::unchanged;
}

std::optional<Answers::Entry> Foresight::add(const pavo::AddProfileParams& /*params*/) {
  return Entry{nextToken--, unknownId};
}

}  // namespace pavoctl
