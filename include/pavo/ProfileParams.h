// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The client's description of a packet-data profile.
#pragma once

#include <pavo/Export.h>
#include <pavo/ProfileTypes.h>

#include <cstddef>
#include <optional>
#include <string>

namespace pavo {

/// The most bytes of a text that reach the modem. Longer texts are cut.
inline constexpr std::size_t apnNameBytesMax = 150;
inline constexpr std::size_t userNameBytesMax = 127;
inline constexpr std::size_t passwordBytesMax = 127;

/// A profile's attributes, each present or absent.
///
/// Objects are plain values without a lock. Several threads may read one object while no thread
/// changes it. A setter makes its attribute present, also with an empty or zero value; no function
/// makes it absent again. A getter does not check presence: an absent text reads as empty, an
/// absent number or enumeration as 0 and an absent flag as false.
///
/// The members are part of the binary interface: another attribute makes another ABI.
class PAVO_API ProfileParams {
 public:
  ProfileParams();
  ProfileParams(const ProfileParams&);
  ProfileParams& operator=(const ProfileParams&);
  ProfileParams(ProfileParams&&) noexcept;
  ProfileParams& operator=(ProfileParams&&) noexcept;
  virtual ~ProfileParams();

  /// Access point name (3GPP TS 23.003, 9). The library keeps the first apnNameBytesMax bytes,
  /// ASCII letters in lower case.
  std::string getApnName() const;
  void setApnName(std::string name);
  bool hasApnName() const;

  /// User name for authentication. The modem keeps the first userNameBytesMax bytes.
  std::string getUserName() const;
  void setUserName(std::string name);
  bool hasUserName() const;

  /// Password for authentication. The modem keeps the first passwordBytesMax bytes. Dumps and the
  /// log show it in clear.
  std::string getPassword() const;
  void setPassword(std::string password);
  bool hasPassword() const;

  /// Authentication protocol preference. The modem keeps its two low bits.
  AuthType getAuthType() const;
  void setAuthType(AuthType type);
  bool hasAuthType() const;

  /// PDP/PDN type in the home network.
  IPType getHomeIPType() const;
  void setHomeIPType(IPType type);
  bool hasHomeIPType() const;

  /// PDP/PDN type when roaming.
  IPType getRoamIPType() const;
  void setRoamIPType(IPType type);
  bool hasRoamIPType() const;

  /// What the APN may be used for: ApnTypes bits.
  unsigned int getApnTypesMask() const;
  void setApnTypesMask(unsigned int mask);
  bool hasApnTypesMask() const;

  /// The operator's class of the APN. The modem keeps its low 8 bits.
  ApnClass getApnClass() const;
  void setApnClass(ApnClass apnClass);
  bool hasApnClass() const;

  /// Whether IPv4 reaches applications over an IPv6-only connection by 464XLAT (RFC 6877).
  bool getIsClatEnabled() const;
  void setIsClatEnabled(bool enabled);
  bool hasIsClatEnabled() const;

  /// How many PDN connections to this APN are allowed in one time block. The modem keeps 16 bits.
  int getMaxPdnsConnPerBlock() const;
  void setMaxPdnsConnPerBlock(int count);
  bool hasMaxPdnsConnPerBlock() const;

  /// The time block in which connections are counted, in the modem's unit. The modem keeps 16 bits.
  int getMaxPdnConnTimer() const;
  void setMaxPdnConnTimer(int timer);
  bool hasMaxPdnConnTimer() const;

  /// Wait between two PDN connection requests, in the modem's unit. The modem keeps 16 bits.
  int getPdnReqWaitInterval() const;
  void setPdnReqWaitInterval(int interval);
  bool hasPdnReqWaitInterval() const;

  /// Whether connections to this APN are forbidden.
  bool getIsApnDisabled() const;
  void setIsApnDisabled(bool disabled);
  bool hasIsApnDisabled() const;

  /// Whether the APN may carry emergency calls.
  bool getIsEmergencySupported() const;
  void setIsEmergencySupported(bool supported);
  bool hasIsEmergencySupported() const;

  /// Whether this library created the profile: present and true. The library sets it in the records
  /// that it returns.
  bool getIsPavoProfile() const;
  /// Whether it is this library's profile for initial attach: present and true.
  bool getIsIAProfile() const;

  /// One line: every attribute that is present as key=value and a comma, in a fixed order. The
  /// password is in clear.
  virtual std::string dump() const;

 protected:
  /// Appends what dump() of this class returns.
  void appendTo(std::string& text) const;

  std::optional<bool> isPavoProfile;
  std::optional<bool> isIAProfile;

 private:
  // The library reads and writes the members through this, without copies.
  friend struct RecordAccess;

  std::optional<std::string> apnName;
  std::optional<std::string> userName;
  std::optional<std::string> password;
  std::optional<AuthType> authType;
  std::optional<IPType> homeIPType;
  std::optional<IPType> roamIPType;
  std::optional<unsigned int> apnTypesMask;
  std::optional<ApnClass> apnClass;
  std::optional<bool> isClatEnabled;
  std::optional<bool> isEmergencySupported;
  std::optional<bool> isApnDisabled;
  std::optional<int> maxPdnsConnPerBlock;
  std::optional<int> maxPdnConnTimer;
  std::optional<int> pdnReqWaitInterval;
};

}  // namespace pavo
