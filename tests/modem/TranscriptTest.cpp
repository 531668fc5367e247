// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Payloads.h"
#include "modem/core/ProfileJson.h"
#include "modem/trace/Transcript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace modem::test {
namespace {

using nlohmann::json;

Frame requestFrame(MessageId messageId, const Payload& payload) {
  return {FrameKind::Request, numberOf(messageId), 7, payload};
}

json fieldsOf(FrameKind kind, MessageId messageId, const Payload& payload) {
  Transcript transcript;
  transcript.add(Direction::In, 1, {kind, numberOf(messageId), 1, payload});
  return transcript.entryToJson(1).value("fields", json("none"));
}

TEST(Transcript, Entry_Request_HasItsFieldsAndItsBytes) {
  Transcript transcript;
  transcript.add(Direction::In, 3,
                 requestFrame(MessageId::ModifyProfile, profileRequest(2, {.apn = "x"})));
  EXPECT_EQ(transcript.entryToJson(1), json::parse(R"({
      "seq": 1, "direction": "in", "client": 3, "kind": "request", "message": "modify-profile",
      "id": 40, "transaction": 7, "fields": {"profile": {"type": 0, "index": 2}, "apn": "x"},
      "payload": "010500000000000212010078"})"));
}

TEST(Transcript, Entry_Response_HasItsResult) {
  FieldWriter answer;
  answer.result(1, 4);
  Transcript transcript;
  transcript.add(Direction::Out, 1,
                 {FrameKind::Response, numberOf(MessageId::DeleteProfile), 7, answer.take()},
                 "error");
  const json entry = transcript.entryToJson(1);
  EXPECT_EQ(entry["result"], json::parse(R"({"result": 1, "error": 4})"));
  EXPECT_EQ(entry["direction"], "out");
  EXPECT_EQ(entry["fault"], "error");
}

TEST(Transcript, Entry_EachOtherMessage_IsDecoded) {
  EXPECT_EQ(
      fieldsOf(FrameKind::Request, MessageId::CreateProfile, createRequest({.clat = uint8_t{1}})),
      json::parse(R"({"type": 0, "clat": true})"));
  EXPECT_EQ(fieldsOf(FrameKind::Request, MessageId::ProfileList, listRequest()),
            json({{"type", 0}}));
  EXPECT_EQ(fieldsOf(FrameKind::Request, MessageId::IndicationRegister, registerRequest()),
            json({{"reportEvents", 1}}));
  EXPECT_EQ(fieldsOf(FrameKind::Request, MessageId::BindSubscription, bindRequest(-1)),
            json({{"subscription", -1}}));
  EXPECT_EQ(fieldsOf(FrameKind::Request, MessageId::ConfigureEvents, allEventsRequest()),
            json::parse(R"({"reportSwitch": 1, "events": [{"type": 255, "index": 255}]})"));
  EXPECT_EQ(
      fieldsOf(FrameKind::Response, MessageId::ProfileList, {3, 9, 0, 1, 0, 0, 0, 0, 0, 4, 1, 'n'}),
      json::parse(R"({"profiles": [{"type": 0, "index": 4, "name": "n"}]})"));
  EXPECT_EQ(fieldsOf(FrameKind::Indication, MessageId::ProfileChanged,
                     {0x10, 9, 0, 0, 0, 0, 0, 4, 2, 0, 0, 0}),
            json::parse(R"({"profile": {"type": 0, "index": 4}, "event": 2})"));
}

TEST(Transcript, Entry_MalformedMessage_SaysSoAndKeepsTheBytes) {
  Transcript transcript;
  transcript.add(Direction::In, 1, requestFrame(MessageId::CreateProfile, {1, 2}));
  EXPECT_EQ(transcript.entryToJson(1)["payload"], "0102");
  EXPECT_TRUE(transcript.entryToJson(1).contains("malformed"));
}

TEST(Transcript, Entry_LongestPayload_IsCutToFitAControlFrame) {
  Transcript transcript;
  transcript.add(Direction::In, 1,
                 requestFrame(MessageId{0x1234}, Payload(wire::framePayloadBytesMax, 0)));
  const json entry = transcript.entryToJson(1);
  EXPECT_LE(dumpLine(entry).size(), Transcript::entryJsonBytesMax);
  EXPECT_EQ(entry["payloadBytes"], wire::framePayloadBytesMax);
}

TEST(Transcript, Add_MoreThanTheLimit_DropsTheOldestAndCounts) {
  Transcript transcript;
  for (size_t i = 0; i < Transcript::entriesMax + 3; ++i) {
    transcript.add(Direction::In, 1, requestFrame(MessageId::ProfileList, {}));
  }
  EXPECT_EQ(transcript.dropped(), 3u);
  EXPECT_EQ(transcript.firstSequence(), 4u);
  EXPECT_EQ(transcript.entryToJson(4)["seq"], 4);
}

TEST(Transcript, Add_MoreBytesThanTheLimit_DropsTheOldest) {
  Transcript transcript;
  const size_t count = Transcript::payloadBytesMax / wire::framePayloadBytesMax + 1;
  for (size_t i = 0; i < count; ++i) {
    transcript.add(Direction::In, 1,
                   requestFrame(MessageId{0x1234}, Payload(wire::framePayloadBytesMax)));
  }
  EXPECT_EQ(transcript.dropped(), 1u);
}

TEST(Transcript, Clear_SomeEntries_GoesOnCounting) {
  Transcript transcript;
  transcript.add(Direction::In, 1, requestFrame(MessageId::ProfileList, {}));
  transcript.clear();
  EXPECT_EQ(transcript.firstSequence(), transcript.endSequence());
  transcript.add(Direction::In, 1, requestFrame(MessageId::ProfileList, {}));
  EXPECT_EQ(transcript.entryToJson(2)["seq"], 2);
}

}  // namespace
}  // namespace modem::test
