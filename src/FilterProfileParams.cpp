// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/FilterProfileParams.h>

#include "DumpText.h"

namespace pavo {

FilterProfileParams::FilterProfileParams() = default;
FilterProfileParams::FilterProfileParams(const ProfileParams& params) : ProfileParams(params) {}
FilterProfileParams::FilterProfileParams(const FilterProfileParams&) = default;
FilterProfileParams& FilterProfileParams::operator=(const FilterProfileParams&) = default;
FilterProfileParams::FilterProfileParams(FilterProfileParams&&) noexcept = default;
FilterProfileParams& FilterProfileParams::operator=(FilterProfileParams&&) noexcept = default;
FilterProfileParams::~FilterProfileParams() = default;

int FilterProfileParams::getFilterByProfileId() const { return filterByProfileId.value_or(0); }
void FilterProfileParams::setFilterByProfileId(int profileId) { filterByProfileId = profileId; }
bool FilterProfileParams::hasFilterByProfileId() const { return filterByProfileId.has_value(); }

void FilterProfileParams::setFilterByIsPavoProfile(bool isPavo) { isPavoProfile = isPavo; }
bool FilterProfileParams::hasFilterByIsPavoProfile() const { return isPavoProfile.has_value(); }

void FilterProfileParams::setFilterByIsIAProfile(bool isIA) { isIAProfile = isIA; }
bool FilterProfileParams::hasFilterByIsIAProfile() const { return isIAProfile.has_value(); }

unsigned int FilterProfileParams::getFilterMatchCriteria() const { return filterMatchCriteria; }
void FilterProfileParams::addFilterMatchCriteria(unsigned int bits) { filterMatchCriteria |= bits; }
void FilterProfileParams::removeFilterMatchCriteria(unsigned int bits) {
  filterMatchCriteria &= ~bits;
}

std::string FilterProfileParams::dump() const {
  std::string text;
  appendValue(text, static_cast<FilterMatchType>(filterMatchCriteria));
  text += ": ";
  appendEntry(text, "id=", filterByProfileId);
  appendTo(text);
  return text;
}

}  // namespace pavo
