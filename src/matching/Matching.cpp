// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Matching.h"

#include "ApnName.h"
#include "ApnTypeBits.h"
#include "RecordAccess.h"

#include <algorithm>

namespace pavo {

namespace {

bool containsApnName(const std::string& name, const std::string& wanted) {
  return name.find(normalizeApnName(wanted)) != std::string::npos;
}

// This function runs for every profile of every filter, and most profiles have another name.
// Therefore it normalises while it compares.
bool matchApnName(const ProfileSettings& profile, const FilterProfileParams& filter) {
  const auto& wanted = RecordAccess::apnName(filter);
  if (!wanted || !profile.apnName) {
    return !wanted;
  }
  const std::string& name = *profile.apnName;
  if ((filter.getFilterMatchCriteria() & ApnNameSubset) != 0) {
    return containsApnName(name, *wanted);
  }
  const std::size_t length = std::min(wanted->size(), apnNameBytesMax);
  return name.size() == length &&
         std::equal(name.begin(), name.end(), wanted->begin(),
                    [](char own, char other) { return own == convertToLower(other); });
}

// Returns whether the types are equal, or one contains the other in a direction that the filter
// allows. The types are compared as bits: V4V6 contains V4 and V6.
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

// Returns a visitor for attributes that have to be equal. The visitor records the first that
// differs.
auto noteMismatch(Criterion& mismatch) {
  return [&mismatch](Criterion criterion, const auto& wanted, const auto& own) {
    if (mismatch == Criterion::None && wanted && wanted != own) {
      mismatch = criterion;
    }
  };
}

Criterion firstCommonMismatchButName(const ProfileSettings& profile,
                                     const FilterProfileParams& filter) {
  const unsigned int criteria = filter.getFilterMatchCriteria();
  if (const auto& wanted = RecordAccess::homeIPType(filter);
      wanted && !matchIPType(*wanted, profile.homeIPType(), (criteria & HomeIPSubset) != 0,
                             (criteria & HomeIPSuperset) != 0)) {
    return Criterion::HomeIPType;
  }
  const auto& wanted = static_cast<const ProfileParams&>(filter);
  auto mismatch = Criterion::None;
  RecordAccess::forEachCredential(noteMismatch(mismatch), wanted, profile);
  if (mismatch == Criterion::None && !matchApnTypesMask(profile, filter)) {
    mismatch = Criterion::ApnTypesMask;
  }
  RecordAccess::forEachUse(noteMismatch(mismatch), wanted, profile);
  if (mismatch == Criterion::None && filter.hasFilterByProfileId() &&
      filter.getFilterByProfileId() != profile.profileId) {
    mismatch = Criterion::ProfileId;
  }
  return mismatch;
}

Criterion firstMismatchButName(const ProfileSettings& profile, const FilterProfileParams& filter) {
  if (const auto mismatch = firstCommonMismatchButName(profile, filter);
      mismatch != Criterion::None) {
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
  auto mismatch = Criterion::None;
  RecordAccess::forEachShared3gpp(noteMismatch(mismatch), static_cast<const ProfileParams&>(filter),
                                  profile);
  return mismatch;
}

}  // namespace

bool matchSubsetApnTypesMask(const ProfileSettings& profile, unsigned int mask) {
  const std::uint64_t wanted = convertToOvixApnTypeMask(mask);
  return profile.apnTypesMask && (*profile.apnTypesMask & wanted) == wanted;
}

bool matchExactApnTypesMask(const ProfileSettings& profile, unsigned int mask) {
  return profile.apnTypesMask && *profile.apnTypesMask == convertToOvixApnTypeMask(mask);
}

Criterion firstCommonMismatch(const ProfileSettings& profile, const FilterProfileParams& filter) {
  return matchApnName(profile, filter) ? firstCommonMismatchButName(profile, filter)
                                       : Criterion::ApnName;
}

Criterion firstMismatch(const ProfileSettings& profile, const FilterProfileParams& filter) {
  return matchApnName(profile, filter) ? firstMismatchButName(profile, filter) : Criterion::ApnName;
}

}  // namespace pavo
