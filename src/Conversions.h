// Between the client's enumerations and the modem's. Pure functions, any thread; an unknown modem
// value becomes UNKNOWN or 0, with a line in the log for a PDP or PDN type.
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

// An unknown client type is sent as IPv4v6 here ...
wds_pdp_type_enum_v01 convertToOvixPdpType(IPType type);
// ... but as unspecified here: that is how an override is taken back.
wds_common_pdp_type_enum_v01 convertToOvixCommonPdpType(IPType type);
wds_profile_pdn_type_enum_v01 convertToOvixProfilePdnType(IPType type);

std::uint8_t convertToOvixAuthPref(AuthType type);
wds_profile_auth_protocol_enum_v01 convertToOvixAuthProtocol(AuthType type);
wds_profile_auth_protocol_enum_v01 convertToOvixPdnLevelAuthProtocol(AuthType type);
AuthType convertToAuthType(unsigned char preference);
AuthType convertToAuthType(wds_profile_auth_protocol_enum_v01 protocol);

// One named bit; 0 for anything else.
std::uint64_t convertToSingleOvixApnType(ApnTypes type);
ApnTypes convertToSingleCommonApnType(unsigned long long type);

wds_profile_identifier_type_v01 convertToProfileIdentifier(int profileId);

}  // namespace pavo
