// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The attributes that the client's records and the modem's share, listed once. The lists serve
// construction, reading back, matching, difference and application.
#pragma once

#include <pavo/ProfileParams.h>

#include "Criterion.h"

#include <optional>
#include <string>

namespace pavo {

struct RecordAccess {
  // These functions call visit once for each criterion, in the order of the criteria, with the
  // criterion and its attribute in every record.

  template <typename Visit, typename... Records>
  static void forEachCredential(const Visit& visit, Records&... records) {
    visit(Criterion::UserName, records.userName...);
    visit(Criterion::Password, records.password...);
    visit(Criterion::AuthType, records.authType...);
  }

  // Visits what every kind of profile has besides credentials.
  template <typename Visit, typename... Records>
  static void forEachUse(const Visit& visit, Records&... records) {
    visit(Criterion::ApnClass, records.apnClass...);
    visit(Criterion::IsClatEnabled, records.isClatEnabled...);
  }

  template <typename Visit, typename... Records>
  static void forEachShared(const Visit& visit, Records&... records) {
    forEachCredential(visit, records...);
    forEachUse(visit, records...);
  }

  template <typename Visit, typename... Records>
  static void forEachShared3gpp(const Visit& visit, Records&... records) {
    visit(Criterion::MaxPdnsConnPerBlock, records.maxPdnsConnPerBlock...);
    visit(Criterion::MaxPdnConnTimer, records.maxPdnConnTimer...);
    visit(Criterion::PdnReqWaitInterval, records.pdnReqWaitInterval...);
    visit(Criterion::IsApnDisabled, records.isApnDisabled...);
    visit(Criterion::IsEmergencySupported, records.isEmergencySupported...);
  }

  // The modem represents the remaining attributes differently.
  static const std::optional<std::string>& apnName(const ProfileParams& p) { return p.apnName; }
  static const std::optional<unsigned int>& apnTypesMask(const ProfileParams& p) {
    return p.apnTypesMask;
  }
  static const std::optional<IPType>& homeIPType(const ProfileParams& p) { return p.homeIPType; }
  static const std::optional<IPType>& roamIPType(const ProfileParams& p) { return p.roamIPType; }
};

template <typename Value>
void copyIfPresent(const std::optional<Value>& from, std::optional<Value>& to) {
  if (from) {
    to = from;
  }
}

// The visitor that copies one record's attributes to another.
inline constexpr auto copyEach = [](Criterion /*criterion*/, const auto& from, auto& to) {
  copyIfPresent(from, to);
};

}  // namespace pavo
