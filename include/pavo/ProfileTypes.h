// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The enumerations of a packet-data profile. Their numeric values are part of the binary interface.
// Any 32-bit value is legal in them; a value without a name prints as its decimal number.
#pragma once

#include <pavo/Export.h>

#include <cstdint>
#include <iosfwd>

namespace pavo {

/// The purposes that an APN may serve, as a bit set. A bit without a name never reaches the modem.
/// The meanings are those of Android's APN types.
enum ApnTypes : unsigned int {
  NONE = 0x0,
  DEFAULT = 0x1,      ///< Internet access.
  MMS = 0x2,          ///< Multimedia messages.
  SUPL = 0x4,         ///< Assisted positioning (OMA SUPL).
  DUN = 0x8,          ///< Tethering.
  HIPRI = 0x10,       ///< Internet access that takes precedence over Wi-Fi.
  FOTA = 0x20,        ///< Firmware over the air.
  IMS = 0x40,         ///< IP multimedia subsystem: voice over LTE (3GPP TS 23.228).
  CBS = 0x80,         ///< Carrier branded services.
  IA = 0x100,         ///< LTE initial attach (3GPP TS 23.401, 5.3.2).
  EMERGENCY = 0x200,  ///< Emergency bearer services (3GPP TS 23.401, 4.3.12).
  MCX = 0x400,        ///< Mission-critical services (3GPP TS 23.280).
  XCAP = 0x800,       ///< Supplementary service settings (3GPP TS 24.623).
  RCS = 0x8000,       ///< Rich communication services.
};

/// The match criteria of a filter, as a bit set. Each bit loosens the comparison of one attribute;
/// without the bit the attribute has to be equal.
enum FilterMatchType : unsigned int {
  HomeIPSubset = 0x1,   ///< The filter's home IP type need only be contained in the profile's.
  RoamIPSubset = 0x2,   ///< The same for the roaming IP type.
  ApnNameSubset = 0x4,  ///< The filter's APN name need only occur within the profile's.
  ApnTypeBitmaskSubset = 0x8,  ///< The filter's APN types need only be among the profile's.
  HomeIPSuperset = 0x10,       ///< The filter's home IP type need only contain the profile's.
  RoamIPSuperset = 0x20,       ///< The same for the roaming IP type.
};

/// Authentication of the user towards the packet data network (PAP: RFC 1334, CHAP: RFC 1994;
/// carried in the protocol configuration options, 3GPP TS 24.008, 10.5.6.3).
enum class AuthType : std::int32_t {
  NONE = 0,
  PAP = 1,
  CHAP = 2,
  PAP_CHAP = 3,
};

/// The PDP or PDN type of a connection (3GPP TS 24.301, 9.9.4.10). As bits: V4V6 is V4 | V6.
enum class IPType : std::int32_t {
  UNKNOWN = 0,
  V4 = 1,
  V6 = 2,
  V4V6 = 3,
};

/// The operator's class of an APN.
enum class ApnClass : std::int32_t {
  UNCLASSIFIED = 0,  ///< No class; prints as 0.
  IMS = 1,
  ADMN = 2,  ///< Administration of the device by its operator.
  INET = 3,  ///< Internet.
  APP = 4,   ///< Applications of the operator.
};

/// The names of the bits that are set, each with a trailing "|", "NONE" for 0. A set bit without a
/// name up to 0x4000 prints the whole mask in decimal; bits above 0x8000 print nothing.
PAVO_API std::ostream& operator<<(std::ostream& out, ApnTypes types);
/// The names of the bits that are set, each with a trailing "|", "None" for 0.
PAVO_API std::ostream& operator<<(std::ostream& out, FilterMatchType criteria);
/// The name of the value, or its decimal number when it has none.
PAVO_API std::ostream& operator<<(std::ostream& out, AuthType type);
PAVO_API std::ostream& operator<<(std::ostream& out, IPType type);
PAVO_API std::ostream& operator<<(std::ostream& out, ApnClass apnClass);

}  // namespace pavo
