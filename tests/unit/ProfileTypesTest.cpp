// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/ProfileTypes.h>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <type_traits>

namespace pavo::test {
namespace {

template <typename T>
std::string textOf(T value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

template <typename T>
struct TextCase {
  T value;
  const char* text;
};

template <typename Enum, typename Value, std::size_t count>
void expectTexts(const TextCase<Value> (&cases)[count]) {
  for (const TextCase<Value>& c : cases) {
    EXPECT_EQ(textOf(static_cast<Enum>(c.value)), c.text) << "value " << c.value;
  }
}

// The numbers are part of the binary interface, and any 32-bit value is legal.
static_assert(std::is_same_v<std::underlying_type_t<ApnTypes>, unsigned int>);
static_assert(std::is_same_v<std::underlying_type_t<FilterMatchType>, unsigned int>);
static_assert(sizeof(AuthType) == 4 && sizeof(IPType) == 4 && sizeof(ApnClass) == 4);

static_assert(static_cast<int>(AuthType::NONE) == 0 && static_cast<int>(AuthType::PAP) == 1 &&
              static_cast<int>(AuthType::CHAP) == 2 && static_cast<int>(AuthType::PAP_CHAP) == 3);
static_assert(static_cast<int>(IPType::UNKNOWN) == 0 && static_cast<int>(IPType::V4) == 1 &&
              static_cast<int>(IPType::V6) == 2 && static_cast<int>(IPType::V4V6) == 3);
static_assert(static_cast<int>(ApnClass::IMS) == 1 && static_cast<int>(ApnClass::ADMN) == 2 &&
              static_cast<int>(ApnClass::INET) == 3 && static_cast<int>(ApnClass::APP) == 4);
static_assert(ApnTypes::NONE == 0U && ApnTypes::DEFAULT == 0x1U && ApnTypes::MMS == 0x2U &&
              ApnTypes::SUPL == 0x4U && ApnTypes::DUN == 0x8U && ApnTypes::HIPRI == 0x10U &&
              ApnTypes::FOTA == 0x20U && ApnTypes::IMS == 0x40U && ApnTypes::CBS == 0x80U &&
              ApnTypes::IA == 0x100U && ApnTypes::EMERGENCY == 0x200U && ApnTypes::MCX == 0x400U &&
              ApnTypes::XCAP == 0x800U && ApnTypes::RCS == 0x8000U);
static_assert(FilterMatchType::HomeIPSubset == 0x1U && FilterMatchType::RoamIPSubset == 0x2U &&
              FilterMatchType::ApnNameSubset == 0x4U &&
              FilterMatchType::ApnTypeBitmaskSubset == 0x8U &&
              FilterMatchType::HomeIPSuperset == 0x10U && FilterMatchType::RoamIPSuperset == 0x20U);

constexpr int intMin = std::numeric_limits<std::int32_t>::min();
constexpr int intMax = std::numeric_limits<std::int32_t>::max();

TEST(ProfileTypesTest, StreamAuthType_AnyValue_NameOrDecimalNumber) {
  expectTexts<AuthType, int>({{0, "NONE"},
                              {1, "PAP"},
                              {2, "CHAP"},
                              {3, "PAP_CHAP"},
                              {4, "4"},
                              {5, "5"},
                              {-1, "-1"},
                              {intMin, "-2147483648"},
                              {intMax, "2147483647"}});
}

TEST(ProfileTypesTest, StreamIPType_AnyValue_NameOrDecimalNumber) {
  expectTexts<IPType, int>({{0, "UNKNOWN"},
                            {1, "V4"},
                            {2, "V6"},
                            {3, "V4V6"},
                            {4, "4"},
                            {-1, "-1"},
                            {intMin, "-2147483648"},
                            {intMax, "2147483647"}});
}

TEST(ProfileTypesTest, StreamApnClass_AnyValue_NameOrDecimalNumber) {
  expectTexts<ApnClass, int>({{0, "0"},
                              {1, "IMS"},
                              {2, "ADMN"},
                              {3, "INET"},
                              {4, "APP"},
                              {5, "5"},
                              {7, "7"},
                              {-1, "-1"},
                              {intMin, "-2147483648"},
                              {intMax, "2147483647"}});
}

TEST(ProfileTypesTest, StreamApnTypes_SingleBit_ItsName) {
  expectTexts<ApnTypes, unsigned int>({{0x1, "DEFAULT|"},
                                       {0x2, "MMS|"},
                                       {0x4, "SUPL|"},
                                       {0x8, "DUN|"},
                                       {0x10, "HIPRI|"},
                                       {0x20, "FOTA|"},
                                       {0x40, "IMS|"},
                                       {0x80, "CBS|"},
                                       {0x100, "IA|"},
                                       {0x200, "EMERGENCY|"},
                                       {0x400, "MCX|"},
                                       {0x800, "XCAP|"},
                                       {0x8000, "RCS|"}});
}

TEST(ProfileTypesTest, StreamApnTypes_SeveralBits_NamesInAscendingOrder) {
  expectTexts<ApnTypes, unsigned int>(
      {{0, "NONE"},
       {0x41, "DEFAULT|IMS|"},
       {0x8300, "IA|EMERGENCY|RCS|"},
       {0x8FFF, "DEFAULT|MMS|SUPL|DUN|HIPRI|FOTA|IMS|CBS|IA|EMERGENCY|MCX|XCAP|RCS|"}});
}

// The text has the whole mask once for each bit without a name.
TEST(ProfileTypesTest, StreamApnTypes_UnnamedBits_WholeMaskForEach) {
  expectTexts<ApnTypes, unsigned int>({{0x1000, "4096"},
                                       {0x2000, "8192"},
                                       {0x4000, "16384"},
                                       {0x1001, "DEFAULT|4097"},
                                       {0x3000, "1228812288"},
                                       {0x7000, "286722867228672"},
                                       {0xC001, "DEFAULT|49153RCS|"}});
}

TEST(ProfileTypesTest, StreamApnTypes_BitsAboveTheLastName_Ignored) {
  expectTexts<ApnTypes, unsigned int>({{0x10000, ""},
                                       {0x10001, "DEFAULT|"},
                                       {0x11000, "69632"},
                                       {0x80000000, ""},
                                       {0xFFFF0000, ""},
                                       {0x80001000, "2147487744"}});
}

TEST(ProfileTypesTest, StreamFilterMatchType_AnyBits_NamesInOrder) {
  expectTexts<FilterMatchType, unsigned int>(
      {{0, "None"},
       {0x1, "HomeIPSubset|"},
       {0x2, "RoamIPSubset|"},
       {0x4, "ApnNameSubset|"},
       {0x8, "ApnTypeBitmaskSubset|"},
       {0x10, "HomeIPSuperset|"},
       {0x20, "RoamIPSuperset|"},
       {0x11, "HomeIPSubset|HomeIPSuperset|"},
       {0x3F,
        "HomeIPSubset|RoamIPSubset|ApnNameSubset|ApnTypeBitmaskSubset|HomeIPSuperset|"
        "RoamIPSuperset|"},
       {0x40, ""},
       {0x80000044, "ApnNameSubset|"}});
}

TEST(ProfileTypesTest, Stream_Chained_ReturnsTheSameStream) {
  std::ostringstream out;
  EXPECT_EQ(&(out << ApnTypes::IMS), &out);
  EXPECT_EQ(&(out << FilterMatchType::ApnNameSubset), &out);
  EXPECT_EQ(&(out << AuthType::PAP), &out);
  EXPECT_EQ(&(out << IPType::V6), &out);
  EXPECT_EQ(&(out << ApnClass::APP), &out);
  out << ApnTypes::MMS << ' ' << FilterMatchType::RoamIPSubset << '.';
  EXPECT_EQ(out.str(), "IMS|ApnNameSubset|PAPV6APPMMS| RoamIPSubset|.");
}

}  // namespace
}  // namespace pavo::test
