// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Aliases.h"
#include "CapturingLogWriter.h"
#include "Conversions.h"
#include "ExpirationListener.h"
#include "StartedManagerTest.h"
#include "TextKey.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace pavo::test {
namespace {

using Settings = wds_get_profile_settings_resp_msg_v01;
using CreateRequest = wds_create_profile_req_msg_v01;

struct ApnTypeCase {
  unsigned int client;
  std::uint64_t modem;
};

constexpr ApnTypeCase apnTypeCases[] = {
    {0x1, 0x1},     {0x2, 0x4},     {0x4, 0x10},      {0x8, 0x8},     {0x10, 0x20},
    {0x20, 0x40},   {0x40, 0x2},    {0x80, 0x80},     {0x100, 0x100}, {0x200, 0x200},
    {0x400, 0x800}, {0x800, 0x400}, {0x8000, 0x1000},
};

// A modem or client of another version may send these values.
constexpr std::int32_t strangers[] = {4, 254, -1, std::numeric_limits<std::int32_t>::min(),
                                      std::numeric_limits<std::int32_t>::max()};

class ConversionsTest : public testing::Test {
 protected:
  // Returns the lines logged since the last call. Each line must be of the library's own kind.
  Lines takeLines() {
    Lines messages;
    for (const CapturedLine& line : log.lines()) {
      EXPECT_EQ(line.level, LogLevel::Debug) << line.message;
      EXPECT_EQ(line.tag, "PAVO") << line.message;
      messages.push_back(line.message);
    }
    log.clear();
    return messages;
  }

  // Returns one line with the number.
  static Lines lineAbout(const std::string& what, int number) {
    return {"Unknown " + what + " " + std::to_string(number)};
  }

  CapturingLogWriter log;
};

TEST_F(ConversionsTest, ConvertPdpType_Known_ItsTypeAndNoLine) {
  EXPECT_EQ(convertPdpType(static_cast<wds_pdp_type_enum_v01>(0)), IPType::V4);
  EXPECT_EQ(convertPdpType(static_cast<wds_pdp_type_enum_v01>(2)), IPType::V6);
  EXPECT_EQ(convertPdpType(static_cast<wds_pdp_type_enum_v01>(3)), IPType::V4V6);
  EXPECT_EQ(takeLines(), Lines{});
}

TEST_F(ConversionsTest, ConvertPdpType_PppOrUnknown_UnknownAndOneLine) {
  EXPECT_EQ(convertPdpType(static_cast<wds_pdp_type_enum_v01>(1)), IPType::UNKNOWN);
  EXPECT_EQ(takeLines(), lineAbout("pdp_type_enum", 1));
  for (const std::int32_t value : strangers) {
    EXPECT_EQ(convertPdpType(static_cast<wds_pdp_type_enum_v01>(value)), IPType::UNKNOWN);
    EXPECT_EQ(takeLines(), lineAbout("pdp_type_enum", value));
  }
}

TEST_F(ConversionsTest, ConvertCommonPdpType_Known_ItsTypeAndNoLine) {
  EXPECT_EQ(convertPdpType(static_cast<wds_common_pdp_type_enum_v01>(0)), IPType::V4);
  EXPECT_EQ(convertPdpType(static_cast<wds_common_pdp_type_enum_v01>(1)), IPType::V6);
  EXPECT_EQ(convertPdpType(static_cast<wds_common_pdp_type_enum_v01>(2)), IPType::V4V6);
  EXPECT_EQ(takeLines(), Lines{});
}

TEST_F(ConversionsTest, ConvertCommonPdpType_UnspecifiedOrUnknown_UnknownAndOneLine) {
  for (const std::int32_t value : {3, 255}) {
    EXPECT_EQ(convertPdpType(static_cast<wds_common_pdp_type_enum_v01>(value)), IPType::UNKNOWN);
    EXPECT_EQ(takeLines(), lineAbout("pdp_type_enum", value));
  }
  for (const std::int32_t value : strangers) {
    EXPECT_EQ(convertPdpType(static_cast<wds_common_pdp_type_enum_v01>(value)), IPType::UNKNOWN);
    EXPECT_EQ(takeLines(), lineAbout("pdp_type_enum", value));
  }
}

TEST_F(ConversionsTest, ConvertPdnType_KnownOrUnspecified_NoLine) {
  EXPECT_EQ(convertPdnType(static_cast<wds_profile_pdn_type_enum_v01>(0)), IPType::V4);
  EXPECT_EQ(convertPdnType(static_cast<wds_profile_pdn_type_enum_v01>(1)), IPType::V6);
  EXPECT_EQ(convertPdnType(static_cast<wds_profile_pdn_type_enum_v01>(2)), IPType::V4V6);
  EXPECT_EQ(convertPdnType(static_cast<wds_profile_pdn_type_enum_v01>(3)), IPType::UNKNOWN);
  EXPECT_EQ(takeLines(), Lines{});
}

TEST_F(ConversionsTest, ConvertPdnType_Unknown_UnknownAndOneLine) {
  for (const std::int32_t value : strangers) {
    EXPECT_EQ(convertPdnType(static_cast<wds_profile_pdn_type_enum_v01>(value)), IPType::UNKNOWN);
    EXPECT_EQ(takeLines(), lineAbout("profile_pdn_type_enum", value));
  }
}

// The first and third conversion turn an unknown type into IPv4v6. The second takes an override
// back.
TEST_F(ConversionsTest, ConvertToOvixTypes_AnyIPType_ItsNumbers) {
  struct Case {
    int type;
    int pdp;
    int commonPdp;
    int pdn;
  };
  const Case cases[] = {{0, 3, 255, 2}, {1, 0, 0, 0}, {2, 2, 1, 1},
                        {3, 3, 2, 2},   {4, 3, 2, 2}, {-1, 3, 2, 2}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.type);
    const auto type = static_cast<IPType>(c.type);
    EXPECT_EQ(static_cast<int>(convertToOvixPdpType(type)), c.pdp);
    EXPECT_EQ(static_cast<int>(convertToOvixCommonPdpType(type)), c.commonPdp);
    EXPECT_EQ(static_cast<int>(convertToOvixProfilePdnType(type)), c.pdn);
  }
  EXPECT_EQ(takeLines(), Lines{});
}

TEST_F(ConversionsTest, ConvertToOvixAuth_AnyAuthType_PreferenceBitsAndProtocol) {
  struct Case {
    int type;
    int preference;
    int protocol;
  };
  const Case cases[] = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2},  {3, 3, 3},
                        {4, 0, 0}, {5, 1, 0}, {-1, 3, 0}, {256, 0, 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.type);
    const auto type = static_cast<AuthType>(c.type);
    EXPECT_EQ(convertToOvixAuthPref(type), c.preference);
    EXPECT_EQ(static_cast<int>(convertToOvixAuthProtocol(type)), c.protocol);
    EXPECT_EQ(static_cast<int>(convertToOvixPdnLevelAuthProtocol(type)), c.protocol);
  }
}

TEST_F(ConversionsTest, ConvertToAuthType_AnyPreference_TwoLowBits) {
  for (int preference = 0; preference < 256; ++preference) {
    EXPECT_EQ(convertToAuthType(static_cast<unsigned char>(preference)),
              static_cast<AuthType>(preference % 4));
  }
}

TEST_F(ConversionsTest, ConvertToAuthType_AnyProtocol_KnownUnchangedOthersNone) {
  for (const int protocol : {0, 1, 2, 3}) {
    EXPECT_EQ(convertToAuthType(static_cast<wds_profile_auth_protocol_enum_v01>(protocol)),
              static_cast<AuthType>(protocol));
  }
  for (const std::int32_t protocol : strangers) {
    EXPECT_EQ(convertToAuthType(static_cast<wds_profile_auth_protocol_enum_v01>(protocol)),
              AuthType::NONE);
  }
}

TEST_F(ConversionsTest, ConvertSingleApnType_OneNamedBit_ItsCounterpart) {
  for (const ApnTypeCase& c : apnTypeCases) {
    SCOPED_TRACE(c.client);
    EXPECT_EQ(convertToSingleOvixApnType(static_cast<ApnTypes>(c.client)), c.modem);
    EXPECT_EQ(static_cast<unsigned int>(convertToSingleCommonApnType(c.modem)), c.client);
  }
}

TEST_F(ConversionsTest, ConvertSingleApnType_AnythingElse_Zero) {
  for (const unsigned int client : {0U, 0x41U, 0x1000U, 0x2000U, 0x4000U, 0x10000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(convertToSingleOvixApnType(static_cast<ApnTypes>(client)), 0U) << client;
  }
  for (const unsigned long long modem :
       {0x0ULL, 0x3ULL, 0x2000ULL, 0x8000ULL, 0x100000001ULL, 0xFFFFFFFFFFFFFFFFULL}) {
    EXPECT_EQ(convertToSingleCommonApnType(modem), ApnTypes::NONE) << modem;
  }
}

TEST_F(ConversionsTest, ConvertApnTypeMask_NamedBits_EachItsCounterpart) {
  unsigned int allClient = 0;
  std::uint64_t allModem = 0;
  for (const ApnTypeCase& c : apnTypeCases) {
    SCOPED_TRACE(c.client);
    EXPECT_EQ(convertToOvixApnTypeMask(c.client), c.modem);
    EXPECT_EQ(convertToCommonApnTypeMask(c.modem), c.client);
    allClient |= c.client;
    allModem |= c.modem;
  }
  EXPECT_EQ(convertToOvixApnTypeMask(allClient), allModem);
  EXPECT_EQ(convertToCommonApnTypeMask(allModem), allClient);
  EXPECT_EQ(convertToOvixApnTypeMask(0x41), 0x3U);
  EXPECT_EQ(convertToCommonApnTypeMask(0x3), 0x41U);
  EXPECT_EQ(convertToOvixApnTypeMask(0), 0U);
  EXPECT_EQ(convertToCommonApnTypeMask(0), 0U);
}

TEST_F(ConversionsTest, ConvertApnTypeMask_OtherBits_Dropped) {
  EXPECT_EQ(convertToOvixApnTypeMask(0x1000), 0U);
  EXPECT_EQ(convertToOvixApnTypeMask(0xFFFF7000), 0U);
  EXPECT_EQ(convertToOvixApnTypeMask(0xFFFFFFFF), 0x1FFFU);
  EXPECT_EQ(convertToCommonApnTypeMask(0x2000), 0U);
  EXPECT_EQ(convertToCommonApnTypeMask(0xFFFFFFFFFFFFE000), 0U);
  EXPECT_EQ(convertToCommonApnTypeMask(0xFFFFFFFFFFFFFFFF), 0x8FFFU);
}

TEST_F(ConversionsTest, ConvertToProfileIdentifier_AnyId_LowEightBits) {
  const std::pair<int, int> cases[] = {{0, 0}, {7, 7}, {255, 255}, {256, 0}, {258, 2}, {-1, 255}};
  for (const auto& [id, index] : cases) {
    const wds_profile_identifier_type_v01 identifier = convertToProfileIdentifier(id);
    EXPECT_EQ(static_cast<int>(identifier.profile_type), 0) << id;
    EXPECT_EQ(identifier.profile_index, index) << id;
  }
}

TEST_F(ConversionsTest, ConvertToLower_EveryByte_OnlyCapitalLettersChange) {
  for (int byte = 0; byte < 256; ++byte) {
    const char given = static_cast<char>(byte);
    const bool isCapital = byte >= 'A' && byte <= 'Z';
    const char expected = static_cast<char>(isCapital ? byte + 32 : byte);
    EXPECT_EQ(convertToLower(std::string(1, given)), std::string(1, expected)) << byte;
  }
}

// The lengths lie around the sizes at which a vectorised loop hands over to its scalar rest.
TEST_F(ConversionsTest, ConvertToLower_AnyLength_EveryByteTreatedAlike) {
  for (std::size_t length = 0; length <= 70; ++length) {
    std::string given;
    std::string expected;
    for (std::size_t i = 0; i < length; ++i) {
      given += "AZ@[a\xC4_9"[i % 8];
      expected += "az@[a\xC4_9"[i % 8];
    }
    EXPECT_EQ(convertToLower(given), expected) << length;
  }
}

TEST_F(ConversionsTest, Expired_LiveDeadAndEmptyKey_OnlyLiveIsNot) {
  auto key = std::make_shared<TextKey>("key");
  const ExpirationListener ofLive{[] {}, key};
  const ExpirationListener ofNone{[] {}, {}};
  const ExpirationListener withoutFunction{nullptr, key};
  EXPECT_FALSE(expired(ofLive));
  EXPECT_FALSE(expired(withoutFunction));
  EXPECT_TRUE(expired(ofNone));
  key.reset();
  EXPECT_TRUE(expired(ofLive));
  EXPECT_TRUE(expired(withoutFunction));
}

// These tests check the same conversions on the way to the modem and back.
class ConvertedProfileTest : public StartedManagerTest {
 protected:
  CreateRequest sentFor(const ProfileParams& params) {
    const auto key = manager.addProfile(AddProfileParams(params, /*isPersistent=*/true,
                                                         /*isIAProfile=*/false));
    const auto sent = platform.sent(OVIX_WDS_CREATE_PROFILE_REQ_V01);
    return sent.empty() ? CreateRequest{} : sent.back().as<CreateRequest>();
  }

  std::uint64_t sentMask(unsigned int mask) {
    ProfileParams params;
    params.setApnTypesMask(mask);
    const CreateRequest request = sentFor(params);
    EXPECT_EQ(request.apn_type_mask_valid, 1);
    return request.apn_type_mask;
  }

  unsigned int readMask(std::uint64_t mask) {
    Settings settings{};
    settings.apn_type_mask_valid = 1;
    settings.apn_type_mask = mask;
    const auto params = readFromModem(index, settings);
    EXPECT_TRUE(params && params->hasApnTypesMask());
    return params ? params->getApnTypesMask() : 0;
  }

  static constexpr std::uint8_t index = 9;
};

TEST_F(ConvertedProfileTest, ApnTypes_Sent_NamedBitsConvertedOthersDropped) {
  for (const ApnTypeCase& c : apnTypeCases) {
    EXPECT_EQ(sentMask(c.client), c.modem) << c.client;
  }
  EXPECT_EQ(sentMask(0x41), 0x3U);
  EXPECT_EQ(sentMask(0x1000), 0U);
  EXPECT_EQ(sentMask(0xFFFF0001), 0x1U);
}

TEST_F(ConvertedProfileTest, ApnTypes_Read_NamedBitsConvertedOthersDropped) {
  for (const ApnTypeCase& c : apnTypeCases) {
    EXPECT_EQ(readMask(c.modem), c.client) << c.modem;
  }
  EXPECT_EQ(readMask(0x3), 0x41U);
  EXPECT_EQ(readMask(0xFFFFFFFFFFFFE002), 0x40U);
}

TEST_F(ConvertedProfileTest, UnknownIPType_Sent_BothVersionsAtHomeAndUnspecifiedRoaming) {
  ProfileParams params;
  params.setHomeIPType(IPType::UNKNOWN);
  params.setRoamIPType(IPType::UNKNOWN);
  const CreateRequest request = sentFor(params);
  EXPECT_EQ(request.pdp_type_valid, 1);
  EXPECT_EQ(static_cast<int>(request.pdp_type), 3);
  EXPECT_EQ(request.lte_roaming_pdp_type_valid, 1);
  EXPECT_EQ(static_cast<int>(request.lte_roaming_pdp_type), 255);
  EXPECT_EQ(request.umts_roaming_pdp_type_valid, 1);
  EXPECT_EQ(static_cast<int>(request.umts_roaming_pdp_type), 255);
}

TEST_F(ConvertedProfileTest, UnknownModemTypes_Read_UnknownAndALineEach) {
  Settings settings{};
  settings.pdp_type_valid = 1;
  settings.pdp_type = static_cast<wds_pdp_type_enum_v01>(1);
  settings.lte_roaming_pdp_type_valid = 1;
  settings.lte_roaming_pdp_type = static_cast<wds_common_pdp_type_enum_v01>(77);
  settings.umts_roaming_pdp_type_valid = 1;
  settings.umts_roaming_pdp_type = static_cast<wds_common_pdp_type_enum_v01>(77);
  const auto params = readFromModem(index, settings);
  ASSERT_TRUE(params);
  EXPECT_EQ(params->getHomeIPType(), IPType::UNKNOWN);
  EXPECT_TRUE(params->hasHomeIPType());
  EXPECT_EQ(params->getRoamIPType(), IPType::UNKNOWN);
  EXPECT_TRUE(params->hasRoamIPType());
  Lines lines;
  for (const std::string& line : platform.logMessages(LogDebug)) {
    if (line.starts_with("Unknown")) {
      lines.push_back(line);
    }
  }
  EXPECT_EQ(lines, (Lines{"Unknown pdp_type_enum 1", "Unknown pdp_type_enum 77",
                          "Unknown pdp_type_enum 77"}));
}

TEST_F(ConvertedProfileTest, AuthType_SentAndRead_TwoLowBits) {
  for (const int type : {0, 1, 2, 3, 6}) {
    ProfileParams params;
    params.setAuthType(static_cast<AuthType>(type));
    const CreateRequest request = sentFor(params);
    EXPECT_EQ(request.authentication_preference_valid, 1);
    EXPECT_EQ(request.authentication_preference, type % 4);

    Settings settings{};
    settings.authentication_preference_valid = 1;
    settings.authentication_preference = static_cast<std::uint8_t>(type | 0xFC);
    const auto read = readFromModem(index, settings);
    ASSERT_TRUE(read);
    EXPECT_EQ(static_cast<int>(read->getAuthType()), type % 4);
  }
}

TEST_F(ConvertedProfileTest, ApnName_Sent_CapitalLettersLowered) {
  for (const std::size_t length : {1U, 15U, 16U, 17U, 31U, 32U, 33U, 150U}) {
    std::string given;
    std::string expected;
    for (std::size_t i = 0; i < length; ++i) {
      given += "QZ_7\xC3z"[i % 6];
      expected += "qz_7\xC3z"[i % 6];
    }
    ProfileParams params;
    params.setApnName(given);
    EXPECT_STREQ(sentFor(params).apn_name, expected.c_str()) << length;
  }
}

}  // namespace
}  // namespace pavo::test
