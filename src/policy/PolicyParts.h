// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Helpers that several policies share.
#pragma once

#include <pavo/ProfileParams.h>

#include "ProfileOperations.h"

#include <list>
#include <string>

namespace pavo::policy {

inline Key firstOf(const std::list<Key>& keys) { return !keys.empty() ? keys.front() : nullptr; }

inline constexpr unsigned int anyHomeIP = HomeIPSubset | HomeIPSuperset;
inline constexpr unsigned int anyRoamIP = RoamIPSubset | RoamIPSuperset;

inline std::string textOf(const Key& key) { return key != nullptr ? key->dump() : std::string(); }

// These functions copy attributes, when they are present, from the caller's parameters into a
// filter or a change.

inline void copyApnName(const ProfileParams& from, ProfileParams& to) {
  if (from.hasApnName()) {
    to.setApnName(from.getApnName());
  }
}

inline void copyHomeIPType(const ProfileParams& from, ProfileParams& to) {
  if (from.hasHomeIPType()) {
    to.setHomeIPType(from.getHomeIPType());
  }
}

inline void copyIPTypes(const ProfileParams& from, ProfileParams& to) {
  copyHomeIPType(from, to);
  if (from.hasRoamIPType()) {
    to.setRoamIPType(from.getRoamIPType());
  }
}

inline void copyCredentials(const ProfileParams& from, ProfileParams& to) {
  if (from.hasUserName()) {
    to.setUserName(from.getUserName());
  }
  if (from.hasPassword()) {
    to.setPassword(from.getPassword());
  }
  if (from.hasAuthType()) {
    to.setAuthType(from.getAuthType());
  }
}

}  // namespace pavo::policy
