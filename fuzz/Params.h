// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header makes profiles as clients may describe them: each attribute is present or not, with
// any value.
#pragma once

#include <pavo/FilterProfileParams.h>

#include "Input.h"

namespace pavo::fuzz {

// Returns mostly values that have a name, so that policies get beyond the first comparison.
inline int numberFrom(Input& input) {
  const int small = input.byte();
  return small == 0xFF ? input.number32() : small % 8;
}

inline void fill(ProfileParams& params, Input& input) {
  const unsigned int present = input.number16();
  const auto has = [present](int bit) { return (present >> bit & 1U) != 0; };
  if (has(0)) {
    // The name is one of a few that come again, or any text.
    static constexpr const char* names[] = {"ims", "IMS", "internet", "", "sos", "Inter"};
    const unsigned int name = input.byte();
    params.setApnName(name < 0xF0 ? names[name % 6] : input.text());
  }
  if (has(1)) {
    params.setUserName(input.text());
  }
  if (has(2)) {
    params.setPassword(input.text());
  }
  if (has(3)) {
    params.setAuthType(static_cast<AuthType>(numberFrom(input)));
  }
  if (has(4)) {
    params.setHomeIPType(static_cast<IPType>(numberFrom(input)));
  }
  if (has(5)) {
    params.setRoamIPType(static_cast<IPType>(numberFrom(input)));
  }
  if (has(6)) {
    params.setApnTypesMask(static_cast<unsigned int>(input.number32()));
  }
  if (has(7)) {
    params.setApnClass(static_cast<ApnClass>(numberFrom(input)));
  }
  if (has(8)) {
    params.setIsClatEnabled(input.flag());
  }
  if (has(9)) {
    params.setMaxPdnsConnPerBlock(input.number32());
  }
  if (has(10)) {
    params.setMaxPdnConnTimer(input.number32());
  }
  if (has(11)) {
    params.setPdnReqWaitInterval(input.number32());
  }
  if (has(12)) {
    params.setIsApnDisabled(input.flag());
  }
  if (has(13)) {
    params.setIsEmergencySupported(input.flag());
  }
}

inline void fill(FilterProfileParams& filter, Input& input) {
  fill(static_cast<ProfileParams&>(filter), input);
  const unsigned int present = input.byte();
  if ((present & 1U) != 0) {
    filter.setFilterByProfileId(input.byte());
  }
  if ((present & 2U) != 0) {
    filter.setFilterByIsPavoProfile(input.flag());
  }
  if ((present & 4U) != 0) {
    filter.setFilterByIsIAProfile(input.flag());
  }
  if ((present & 8U) != 0) {
    filter.addFilterMatchCriteria(input.byte());
  }
}

template <typename Params>
Params paramsFrom(Input& input) {
  Params params;
  fill(params, input);
  return params;
}

}  // namespace pavo::fuzz
