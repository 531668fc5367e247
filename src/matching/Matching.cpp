#include "Matching.h"

#include "ApnName.h"
#include "ApnTypeBits.h"
#include "RecordAccess.h"

#include <algorithm>

namespace pavo {

namespace {

bool matchApnName(const ProfileSettings& profile, const FilterProfileParams& filter) {
  const auto& wanted = RecordAccess::apnName(filter);
  if (!wanted) {
    return true;
  }
  if (!profile.apnName) {
    return false;
  }
  const std::string& name = *profile.apnName;
  if ((filter.getFilterMatchCriteria() & ApnNameSubset) != 0) {
    return name.find(normalizeApnName(*wanted)) != std::string::npos;
  }
  // Normalises while it compares: this runs for every profile of every filter.
  const std::size_t length = std::min(wanted->size(), apnNameBytesMax);
  return name.size() == length &&
         std::equal(name.begin(), name.end(), wanted->begin(),
                    [](char own, char other) { return own == convertToLower(other); });
}

// Equal, or, with the criterion's bit set, one contained in the other. As bits: V4V6 contains both.
bool matchIPType(IPType wanted, const std::optional<IPType>& actual, bool subsetAllowed,
                 bool supersetAllowed) {
  if (!actual) {
    return false;
  }
  const auto wantedBits = static_cast<unsigned int>(wanted);
  const auto actualBits = static_cast<unsigned int>(*actual);
  return wantedBits == actualBits || (subsetAllowed && (wantedBits & actualBits) == wantedBits) ||
         (supersetAllowed && (actualBits & ~wantedBits) == 0);
}

bool matchApnTypesMask(const ProfileSettings& profile, const FilterProfileParams& filter) {
  const auto& mask = RecordAccess::apnTypesMask(filter);
  return !mask || ((filter.getFilterMatchCriteria() & ApnTypeBitmaskSubset) != 0
                       ? matchSubsetApnTypesMask(profile, *mask)
                       : matchExactApnTypesMask(profile, *mask));
}

// Visits lists of attributes that have to be equal, and notes the first that is not.
auto noteMismatch(std::optional<Criterion>& mismatch) {
  return [&mismatch](Criterion criterion, const auto& wanted, const auto& own) {
    if (!mismatch && wanted && wanted != own) {
      mismatch = criterion;
    }
  };
}

}  // namespace

bool matchSubsetApnTypesMask(const ProfileSettings& profile, unsigned int mask) {
  const std::uint64_t wanted = convertToOvixApnTypeMask(mask);
  return profile.apnTypesMask && (*profile.apnTypesMask & wanted) == wanted;
}

bool matchExactApnTypesMask(const ProfileSettings& profile, unsigned int mask) {
  return profile.apnTypesMask && *profile.apnTypesMask == convertToOvixApnTypeMask(mask);
}

std::optional<Criterion> firstCommonMismatch(const ProfileSettings& profile,
                                             const FilterProfileParams& filter) {
  if (!matchApnName(profile, filter)) {
    return Criterion::ApnName;
  }
  const unsigned int criteria = filter.getFilterMatchCriteria();
  if (const auto& wanted = RecordAccess::homeIPType(filter);
      wanted && !matchIPType(*wanted, profile.homeIPType(), (criteria & HomeIPSubset) != 0,
                             (criteria & HomeIPSuperset) != 0)) {
    return Criterion::HomeIPType;
  }
  const auto& wanted = static_cast<const ProfileParams&>(filter);
  std::optional<Criterion> mismatch;
  RecordAccess::forEachCredential(noteMismatch(mismatch), wanted, profile);
  if (!mismatch && !matchApnTypesMask(profile, filter)) {
    mismatch = Criterion::ApnTypesMask;
  }
  RecordAccess::forEachUse(noteMismatch(mismatch), wanted, profile);
  if (!mismatch && filter.hasFilterByProfileId() &&
      filter.getFilterByProfileId() != profile.profileId) {
    mismatch = Criterion::ProfileId;
  }
  return mismatch;
}

std::optional<Criterion> firstMismatch(const ProfileSettings& profile,
                                       const FilterProfileParams& filter) {
  if (const auto mismatch = firstCommonMismatch(profile, filter)) {
    return mismatch;
  }
  if (filter.hasFilterByIsIAProfile()) {
    if (filter.getIsIAProfile() != profile.isPavoIAProfile()) {
      return Criterion::IsIAProfile;
    }
  } else if (filter.hasFilterByIsPavoProfile() &&
             filter.getIsPavoProfile() != profile.isPavoProfile()) {
    return Criterion::IsPavoProfile;
  }
  const unsigned int criteria = filter.getFilterMatchCriteria();
  if (const auto& wanted = RecordAccess::roamIPType(filter);
      wanted && !matchIPType(*wanted, profile.roamIPType(), (criteria & RoamIPSubset) != 0,
                             (criteria & RoamIPSuperset) != 0)) {
    return Criterion::RoamIPType;
  }
  std::optional<Criterion> mismatch;
  RecordAccess::forEachShared3gpp(noteMismatch(mismatch), static_cast<const ProfileParams&>(filter),
                                  profile);
  return mismatch;
}

}  // namespace pavo
