// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Conversions.h"

#include "LogWrapper.h"
#include "base/Ascii.h"

#include <algorithm>

namespace pavo {

namespace {

constexpr unsigned int authBits = WDS_AUTH_PREFERENCE_PAP_V01 | WDS_AUTH_PREFERENCE_CHAP_V01;

static_assert(apnNameBytesMax == OVIX_WDS_APN_NAME_MAX_V01);
static_assert(userNameBytesMax == OVIX_WDS_USER_NAME_MAX_V01);
static_assert(passwordBytesMax == OVIX_WDS_PASSWORD_MAX_V01);

// The modem's bits in the order of apnTypeBits.
constexpr std::uint64_t ovixApnTypes[] = {
    WDS_APN_TYPE_DEFAULT_V01,   WDS_APN_TYPE_MMS_V01,   WDS_APN_TYPE_SUPL_V01,
    WDS_APN_TYPE_DUN_V01,       WDS_APN_TYPE_HIPRI_V01, WDS_APN_TYPE_FOTA_V01,
    WDS_APN_TYPE_IMS_V01,       WDS_APN_TYPE_CBS_V01,   WDS_APN_TYPE_IA_V01,
    WDS_APN_TYPE_EMERGENCY_V01, WDS_APN_TYPE_MCX_V01,   WDS_APN_TYPE_XCAP_V01,
    WDS_APN_TYPE_RCS_V01};
static_assert(std::equal(std::begin(apnTypeBits), std::end(apnTypeBits), std::begin(ovixApnTypes),
                         std::end(ovixApnTypes),
                         [](const ApnTypeBit& type, auto bit) { return type.modem == bit; }));

}  // namespace

IPType convertPdpType(wds_pdp_type_enum_v01 type) {
  switch (type) {
    case WDS_PDP_TYPE_IPV4_V01:
      return IPType::V4;
    case WDS_PDP_TYPE_IPV6_V01:
      return IPType::V6;
    case WDS_PDP_TYPE_IPV4V6_V01:
      return IPType::V4V6;
    case WDS_PDP_TYPE_PPP_V01:
    default:
      LogWrapper::log(LogLevel::Debug, logTag, "Unknown pdp_type_enum %d", static_cast<int>(type));
      return IPType::UNKNOWN;
  }
}

IPType convertPdpType(wds_common_pdp_type_enum_v01 type) {
  switch (type) {
    case WDS_COMMON_PDP_TYPE_IPV4_V01:
      return IPType::V4;
    case WDS_COMMON_PDP_TYPE_IPV6_V01:
      return IPType::V6;
    case WDS_COMMON_PDP_TYPE_IPV4V6_V01:
      return IPType::V4V6;
    case WDS_COMMON_PDP_TYPE_UNSPECIFIED_V01:
    default:
      LogWrapper::log(LogLevel::Debug, logTag, "Unknown pdp_type_enum %d", static_cast<int>(type));
      return IPType::UNKNOWN;
  }
}

IPType convertPdnType(wds_profile_pdn_type_enum_v01 type) {
  switch (type) {
    case WDS_PROFILE_PDN_TYPE_IPV4_V01:
      return IPType::V4;
    case WDS_PROFILE_PDN_TYPE_IPV6_V01:
      return IPType::V6;
    case WDS_PROFILE_PDN_TYPE_IPV4_OR_IPV6_V01:
      return IPType::V4V6;
    case WDS_PROFILE_PDN_TYPE_UNSPECIFIED_V01:
      return IPType::UNKNOWN;
    default:
      LogWrapper::log(LogLevel::Debug, logTag, "Unknown profile_pdn_type_enum %d",
                      static_cast<int>(type));
      return IPType::UNKNOWN;
  }
}

wds_pdp_type_enum_v01 convertToOvixPdpType(IPType type) {
  switch (type) {
    case IPType::V4:
      return WDS_PDP_TYPE_IPV4_V01;
    case IPType::V6:
      return WDS_PDP_TYPE_IPV6_V01;
    case IPType::V4V6:
    case IPType::UNKNOWN:
    default:
      return WDS_PDP_TYPE_IPV4V6_V01;
  }
}

wds_common_pdp_type_enum_v01 convertToOvixCommonPdpType(IPType type) {
  switch (type) {
    case IPType::UNKNOWN:
      return WDS_COMMON_PDP_TYPE_UNSPECIFIED_V01;
    case IPType::V4:
      return WDS_COMMON_PDP_TYPE_IPV4_V01;
    case IPType::V6:
      return WDS_COMMON_PDP_TYPE_IPV6_V01;
    case IPType::V4V6:
    default:
      return WDS_COMMON_PDP_TYPE_IPV4V6_V01;
  }
}

wds_profile_pdn_type_enum_v01 convertToOvixProfilePdnType(IPType type) {
  switch (type) {
    case IPType::V4:
      return WDS_PROFILE_PDN_TYPE_IPV4_V01;
    case IPType::V6:
      return WDS_PROFILE_PDN_TYPE_IPV6_V01;
    case IPType::V4V6:
    case IPType::UNKNOWN:
    default:
      return WDS_PROFILE_PDN_TYPE_IPV4_OR_IPV6_V01;
  }
}

std::uint8_t convertToOvixAuthPref(AuthType type) {
  return static_cast<std::uint8_t>(static_cast<unsigned int>(type) & authBits);
}

wds_profile_auth_protocol_enum_v01 convertToOvixAuthProtocol(AuthType type) {
  switch (type) {
    case AuthType::PAP:
      return WDS_PROFILE_AUTH_PAP_V01;
    case AuthType::CHAP:
      return WDS_PROFILE_AUTH_CHAP_V01;
    case AuthType::PAP_CHAP:
      return WDS_PROFILE_AUTH_PAP_OR_CHAP_V01;
    case AuthType::NONE:
    default:
      return WDS_PROFILE_AUTH_NONE_V01;
  }
}

wds_profile_auth_protocol_enum_v01 convertToOvixPdnLevelAuthProtocol(AuthType type) {
  return convertToOvixAuthProtocol(type);
}

AuthType convertToAuthType(unsigned char preference) {
  return static_cast<AuthType>(preference & authBits);
}

AuthType convertToAuthType(wds_profile_auth_protocol_enum_v01 protocol) {
  switch (protocol) {
    case WDS_PROFILE_AUTH_PAP_V01:
      return AuthType::PAP;
    case WDS_PROFILE_AUTH_CHAP_V01:
      return AuthType::CHAP;
    case WDS_PROFILE_AUTH_PAP_OR_CHAP_V01:
      return AuthType::PAP_CHAP;
    case WDS_PROFILE_AUTH_NONE_V01:
    default:
      return AuthType::NONE;
  }
}

std::uint64_t convertToSingleOvixApnType(ApnTypes type) {
  const auto* const found = std::find_if(std::begin(apnTypeBits), std::end(apnTypeBits),
                                         [type](const ApnTypeBit& b) { return b.client == type; });
  return found != std::end(apnTypeBits) ? found->modem : 0;
}

ApnTypes convertToSingleCommonApnType(unsigned long long type) {
  const auto* const found = std::find_if(std::begin(apnTypeBits), std::end(apnTypeBits),
                                         [type](const ApnTypeBit& b) { return b.modem == type; });
  return found != std::end(apnTypeBits) ? found->client : ApnTypes::NONE;
}

wds_profile_identifier_type_v01 convertToProfileIdentifier(int profileId) {
  wds_profile_identifier_type_v01 identifier{};
  identifier.profile_type = WDS_PROFILE_TYPE_3GPP_V01;
  identifier.profile_index = static_cast<std::uint8_t>(profileId);
  return identifier;
}

}  // namespace pavo
