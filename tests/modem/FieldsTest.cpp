// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/core/Refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace modem {
namespace {

using testing::ElementsAre;

using Bytes = std::vector<uint8_t>;

std::optional<ErrorCode> refusalOf(const Bytes& payload) {
  try {
    FieldReader(payload).number<uint16_t>(0x19);
    return std::nullopt;
  } catch (const Refusal& refusal) {
    return refusal.code;
  }
}

TEST(FieldWriter, Number_EachWidth_IsLittleEndianWithItsLength) {
  FieldWriter fields;
  fields.number(0x16, uint8_t{1});
  fields.number(0x19, uint16_t{0x0203});
  fields.number(0x11, uint32_t{0x04050607});
  fields.number(0x10, int32_t{-2});
  EXPECT_THAT(fields.take(), ElementsAre(0x16, 1, 0, 1, 0x19, 2, 0, 3, 2, 0x11, 4, 0, 7, 6, 5, 4,
                                         0x10, 4, 0, 0xFE, 0xFF, 0xFF, 0xFF));
}

TEST(FieldWriter, Text_AnyBytes_HasNoTerminator) {
  FieldWriter fields;
  fields.text(0x12, "ims");
  EXPECT_THAT(fields.take(), ElementsAre(0x12, 3, 0, 'i', 'm', 's'));
}

TEST(FieldReader, Read_AnyOrderAndUnknownTags_FindsEachField) {
  const Bytes payload = {0x12, 2, 0, 'a', 'b', 0xEE, 1, 0, 9, 0x10, 4, 0, 0xFF, 0xFF, 0xFF, 0xFF};
  const FieldReader fields(payload);
  EXPECT_EQ(fields.text(0x12), "ab");
  EXPECT_EQ(fields.i32(0x10), -1);
  EXPECT_EQ(fields.text(0x13), std::nullopt);
  EXPECT_EQ(fields.number<uint8_t>(0x16), std::nullopt);
}

TEST(FieldReader, Read_EmptyText_IsThere) {
  const Bytes payload = {0x12, 0, 0};
  EXPECT_EQ(FieldReader(payload).text(0x12), "");
}

TEST(FieldReader, Read_WidestNumber_KeepsAllBits) {
  FieldWriter fields;
  fields.number(0x20, uint64_t{0xFEDCBA9876543210});
  const Bytes payload = fields.take();
  EXPECT_EQ(FieldReader(payload).number<uint64_t>(0x20), 0xFEDCBA9876543210u);
}

struct MalformedCase {
  const char* name;
  Bytes payload;
};

class FieldReaderMalformed : public testing::TestWithParam<MalformedCase> {};

TEST_P(FieldReaderMalformed, Read_MalformedPayload_IsRefused) {
  EXPECT_EQ(refusalOf(GetParam().payload), ErrorCode::MalformedMessage);
}

INSTANTIATE_TEST_SUITE_P(
    Payloads, FieldReaderMalformed,
    testing::Values(MalformedCase{"OneByte", {0x19}}, MalformedCase{"HalfALength", {0x19, 2}},
                    MalformedCase{"NoValue", {0x19, 2, 0}},
                    MalformedCase{"ShortValue", {0x19, 2, 0, 1}},
                    MalformedCase{"LengthBeyondTheEnd", {0x19, 0xFF, 0xFF, 1, 2}},
                    MalformedCase{"TagTwice", {0x19, 2, 0, 1, 2, 0x19, 2, 0, 1, 2}},
                    MalformedCase{"UnknownTagTwice", {0xEE, 0, 0, 0xEE, 0, 0}},
                    MalformedCase{"NumberTooNarrow", {0x19, 1, 0, 1}},
                    MalformedCase{"NumberTooWide", {0x19, 3, 0, 1, 2, 3}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace modem
