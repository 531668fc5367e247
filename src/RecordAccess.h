// The attributes that the client's records and the modem's hold alike, listed once. They serve
// construction, reading back, matching, difference and application.
#pragma once

#include <pavo/ProfileParams.h>

#include <optional>
#include <string>

namespace pavo {

struct RecordAccess {
  // Calls visit with one attribute of every record at a time.
  template <typename Visit, typename... Records>
  static void forEachShared(const Visit& visit, Records&... records) {
    visit(records.userName...);
    visit(records.password...);
    visit(records.authType...);
    visit(records.apnClass...);
    visit(records.isClatEnabled...);
  }

  template <typename Visit, typename... Records>
  static void forEachShared3gpp(const Visit& visit, Records&... records) {
    visit(records.maxPdnsConnPerBlock...);
    visit(records.maxPdnConnTimer...);
    visit(records.pdnReqWaitInterval...);
    visit(records.isApnDisabled...);
    visit(records.isEmergencySupported...);
  }

  // The rest is different on the modem's side.
  static const std::optional<std::string>& apnName(const ProfileParams& p) { return p.apnName; }
  static const std::optional<unsigned int>& apnTypesMask(const ProfileParams& p) {
    return p.apnTypesMask;
  }
  static const std::optional<IPType>& homeIPType(const ProfileParams& p) { return p.homeIPType; }
  static const std::optional<IPType>& roamIPType(const ProfileParams& p) { return p.roamIPType; }
};

// What the lists are visited with.
inline constexpr auto copyIfPresent = [](const auto& from, auto& to) {
  if (from) {
    to = from;
  }
};

}  // namespace pavo
