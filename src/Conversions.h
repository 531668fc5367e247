// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Conversions between the client's enumerations and the modem's. The functions hold no state and
// are thread-safe. An unknown value of the modem becomes UNKNOWN or 0. An unknown PDP or PDN type
// is also logged.
#pragma once

#include <pavo/ProfileParams.h>
#include <pavo/ProfileTypes.h>

#include "matching/ApnName.h"
#include "matching/ApnTypeBits.h"
#include "wds_v01.h"

#include <cstdint>
#include <string>

namespace pavo {

IPType convertPdpType(wds_pdp_type_enum_v01 type);
IPType convertPdpType(wds_common_pdp_type_enum_v01 type);
IPType convertPdnType(wds_profile_pdn_type_enum_v01 type);

// This function converts UNKNOWN to IPv4v6.
wds_pdp_type_enum_v01 convertToOvixPdpType(IPType type);
// This function converts UNKNOWN to "unspecified", the value that takes an override back.
wds_common_pdp_type_enum_v01 convertToOvixCommonPdpType(IPType type);
wds_profile_pdn_type_enum_v01 convertToOvixProfilePdnType(IPType type);

std::uint8_t convertToOvixAuthPref(AuthType type);
wds_profile_auth_protocol_enum_v01 convertToOvixAuthProtocol(AuthType type);
wds_profile_auth_protocol_enum_v01 convertToOvixPdnLevelAuthProtocol(AuthType type);
AuthType convertToAuthType(unsigned char preference);
AuthType convertToAuthType(wds_profile_auth_protocol_enum_v01 protocol);

// Each function converts a single APN type, and anything else to 0.
std::uint64_t convertToSingleOvixApnType(ApnTypes type);
ApnTypes convertToSingleCommonApnType(unsigned long long type);

wds_profile_identifier_type_v01 convertToProfileIdentifier(int profileId);

}  // namespace pavo
