// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "wire/Frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace wire {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using Bytes = std::vector<uint8_t>;

FrameReader::Status feed(FrameReader& reader, const Bytes& bytes, Frame& frame) {
  reader.append(bytes.data(), bytes.size());
  return reader.next(frame);
}

TEST(Frame, Encode_AnyFrame_LaysOutTheHeaderLittleEndian) {
  EXPECT_THAT(encodeFrame({FrameKind::Indication, 0x00A8, 0x01020304, {0xEE, 0xFF}}),
              ElementsAre(2, 0, 0, 0, 2, 1, 0xA8, 0, 4, 3, 2, 1, 0xEE, 0xFF));
}

TEST(Frame, Encode_LongestPayload_Works) {
  const Frame frame{FrameKind::Request, 1, 1, Bytes(framePayloadBytesMax)};
  EXPECT_EQ(encodeFrame(frame).size(), frameHeaderBytes + framePayloadBytesMax);
}

TEST(Frame, Encode_PayloadAboveTheLimit_Throws) {
  const Frame frame{FrameKind::Request, 1, 1, Bytes(framePayloadBytesMax + 1)};
  EXPECT_THROW(encodeFrame(frame), std::length_error);
}

TEST(FrameReader, Next_ByteByByte_IsReadyAfterTheLastByteOnly) {
  const Bytes bytes = encodeFrame({FrameKind::Response, 0x27, 9, {1, 2, 3}});
  FrameReader reader;
  Frame frame;
  for (size_t i = 0; i + 1 < bytes.size(); ++i) {
    ASSERT_EQ(feed(reader, {bytes[i]}, frame), FrameReader::Status::NeedMore) << "byte " << i;
    ASSERT_TRUE(reader.isMidFrame());
  }
  ASSERT_EQ(feed(reader, {bytes.back()}, frame), FrameReader::Status::Ready);
  EXPECT_FALSE(reader.isMidFrame());
  EXPECT_EQ(frame.kind, FrameKind::Response);
  EXPECT_EQ(frame.messageId, 0x27);
  EXPECT_EQ(frame.transaction, 9u);
  EXPECT_THAT(frame.payload, ElementsAre(1, 2, 3));
}

TEST(FrameReader, Next_SeveralFramesAtOnce_GivesThemInOrder) {
  Bytes bytes = encodeFrame({FrameKind::Request, 1, 1, {7}});
  const Bytes second = encodeFrame({FrameKind::Request, 2, 2, {}});
  bytes.insert(bytes.end(), second.begin(), second.end());
  FrameReader reader;
  Frame frame;
  ASSERT_EQ(feed(reader, bytes, frame), FrameReader::Status::Ready);
  EXPECT_EQ(frame.messageId, 1);
  ASSERT_EQ(reader.next(frame), FrameReader::Status::Ready);
  EXPECT_EQ(frame.messageId, 2);
  EXPECT_TRUE(frame.payload.empty());
  EXPECT_EQ(reader.next(frame), FrameReader::Status::NeedMore);
}

TEST(FrameReader, Next_LongestPayload_IsReady) {
  FrameReader reader;
  Frame frame;
  const Bytes bytes = encodeFrame({FrameKind::Request, 1, 1, Bytes(framePayloadBytesMax, 5)});
  ASSERT_EQ(feed(reader, bytes, frame), FrameReader::Status::Ready);
  EXPECT_EQ(frame.payload.size(), framePayloadBytesMax);
}

struct BrokenHeader {
  const char* name;
  size_t offset;
  uint8_t byte;
  const char* reason;
};

class FrameReaderBroken : public testing::TestWithParam<BrokenHeader> {};

TEST_P(FrameReaderBroken, Next_HeaderIsWrong_BreaksBeforeThePayloadComes) {
  Bytes header = encodeFrame({FrameKind::Request, 1, 1, {}});
  header[GetParam().offset] = GetParam().byte;
  FrameReader reader;
  Frame frame;
  EXPECT_EQ(feed(reader, header, frame), FrameReader::Status::Broken);
  EXPECT_THAT(reader.reason(), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(Headers, FrameReaderBroken,
                         testing::Values(BrokenHeader{"Length", 3, 1, "payload of 16777216"},
                                         BrokenHeader{"Kind", 4, 7, "unknown frame kind 7"},
                                         BrokenHeader{"Version", 5, 2, "protocol version 2"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(FrameReader, Next_OneByteAboveTheLimit_Breaks) {
  FrameReader reader;
  Frame frame;
  EXPECT_EQ(feed(reader, {1, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0}, frame), FrameReader::Status::Broken);
}

TEST(FrameReader, Next_AfterABrokenFrame_StaysBroken) {
  FrameReader reader;
  Frame frame;
  feed(reader, {0, 0, 0, 0, 9, 1, 0, 0, 0, 0, 0, 0}, frame);
  EXPECT_EQ(feed(reader, encodeFrame({FrameKind::Request, 1, 1, {}}), frame),
            FrameReader::Status::Broken);
  EXPECT_FALSE(reader.isMidFrame());
}

}  // namespace
}  // namespace wire
