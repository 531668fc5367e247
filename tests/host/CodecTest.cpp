// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests compare, byte by byte, the messages that are made of structures and the structures
// that are made of messages.
#include "HostTest.h"
#include "Layouts.h"

namespace pavo::test {
namespace {

class CodecTest : public HostTest {
 protected:
  // Sends a structure. Returns the bytes that arrive at the modem, and the structure of the
  // response.
  Bytes encode(unsigned id, Bytes structure, size_t responseSize = 8) {
    Bytes response(responseSize);
    const int error = ovix_client_send_msg_sync(client.get(), id, structure.data(), size(structure),
                                                response.data(), size(response), longTimeoutMs);
    EXPECT_EQ(error, OVIX_CLIENT_NO_ERROR);
    const auto requests = modem.requests();
    if (requests.empty()) {
      ADD_FAILURE() << "nothing arrived";
      return {};
    }
    EXPECT_EQ(requests.back().kind, rawRequest);
    EXPECT_EQ(requests.back().messageId, id);
    return requests.back().payload;
  }

  int tryEncode(unsigned id, Bytes structure, size_t responseSize) {
    Bytes response(responseSize);
    return ovix_client_send_msg_sync(client.get(), id, structure.data(), size(structure),
                                     response.data(), size(response), longTimeoutMs);
  }

  Bytes decode(int kind, unsigned id, const Bytes& encoded, size_t structureSize) {
    Bytes structure(structureSize, 0xEE);  // The decoder has to clear it.
    const int error = ovix_client_message_decode(client.get(), kind, id, encoded.data(),
                                                 size(encoded), structure.data(), size(structure));
    EXPECT_EQ(error, OVIX_CLIENT_NO_ERROR);
    return structure;
  }

  // Returns a message with exactly one setting.
  static std::pair<Bytes, Bytes> withSetting(const SettingsMessage& message, const Setting& setting,
                                             const Bytes& value) {
    Bytes structure(message.size);
    place(structure, 0, message.structStart);
    place(structure, setting.valueAt[message.form], value);
    structure[setting.flagAt[message.form]] = 1;
    return {structure, message.encodedStart + field(setting.tag, value)};
  }

  // Returns a message with all settings, each with a different value.
  static std::pair<Bytes, Bytes> withAll(const SettingsMessage& message) {
    Bytes structure(message.size);
    Bytes encoded = message.encodedStart;
    place(structure, 0, message.structStart);
    for (const Setting& setting : settings) {
      place(structure, setting.valueAt[message.form], setting.sample());
      structure[setting.flagAt[message.form]] = 1;
      encoded = encoded + field(setting.tag, setting.sample());
    }
    return {structure, encoded};
  }

  static size_t responseSizeOf(const SettingsMessage& message) {
    return message.form == createForm ? 24 : 16;
  }

  static unsigned size(const Bytes& bytes) { return static_cast<unsigned>(bytes.size()); }

  RawModem modem{path, [](RawPeer& peer, const RawFrame& request) {
                   const bool creates = request.messageId == 0x0027;
                   peer.respond(request,
                                creates ? success() + field(0x03, u32(0) + u8(9)) : success());
                 }};
  Handle client = openClient();
};

class SettingsCodecTest
    : public CodecTest,
      public ::testing::WithParamInterface<std::tuple<SettingsMessage, Setting>> {};

TEST_P(SettingsCodecTest, EncodeAndDecode_OneSetting_AreEachOthersInverse) {
  const auto& [message, setting] = GetParam();
  const auto [structure, encoded] = withSetting(message, setting, setting.sample());
  if (message.kind == OVIX_MESSAGE_REQUEST) {
    EXPECT_EQ(encode(message.id, structure, responseSizeOf(message)), encoded);
  }
  EXPECT_EQ(decode(message.kind, message.id, encoded, message.size), structure);
}

INSTANTIATE_TEST_SUITE_P(All, SettingsCodecTest,
                         ::testing::Combine(::testing::ValuesIn(settingsMessages),
                                            ::testing::ValuesIn(settings)));

TEST_F(CodecTest, Encode_AllSettings_InTheOrderOfTheirTags) {
  for (const SettingsMessage& message : settingsMessages) {
    SCOPED_TRACE(message.name);
    if (message.kind == OVIX_MESSAGE_REQUEST) {
      const auto [structure, encoded] = withAll(message);
      EXPECT_EQ(encode(message.id, structure, responseSizeOf(message)), encoded);
    }
  }
}

TEST_F(CodecTest, Decode_AllSettings_FillsTheWholeStructure) {
  for (const SettingsMessage& message : settingsMessages) {
    SCOPED_TRACE(message.name);
    const auto [structure, encoded] = withAll(message);
    EXPECT_EQ(decode(message.kind, message.id, encoded, message.size), structure);
  }
}

TEST_F(CodecTest, Decode_FieldsInReverse_AreTakenAlike) {
  const SettingsMessage& message = settingsMessages[2];
  const auto [structure, inOrder] = withAll(message);
  Bytes encoded;
  for (auto setting = settings.rbegin(); setting != settings.rend(); ++setting) {
    encoded = encoded + field(setting->tag, setting->sample());
  }
  EXPECT_EQ(decode(message.kind, message.id, encoded + message.encodedStart, message.size),
            structure);
}

TEST_F(CodecTest, EncodeAndDecode_EmptyTexts_ArePresent) {
  for (const SettingsMessage& message : settingsMessages) {
    for (const Setting& setting : settings) {
      if (setting.textMax != 0) {
        SCOPED_TRACE(std::string(message.name) + ", " + setting.name);
        const auto [structure, encoded] = withSetting(message, setting, {});
        if (message.kind == OVIX_MESSAGE_REQUEST) {
          EXPECT_EQ(encode(message.id, structure, responseSizeOf(message)), encoded);
        }
        EXPECT_EQ(decode(message.kind, message.id, encoded, message.size), structure);
      }
    }
  }
}

TEST_F(CodecTest, Encode_SettingWithoutItsFlag_IsLeftOut) {
  Bytes structure(3256);
  for (const Setting& setting : settings) {
    place(structure, setting.valueAt[modifyForm], setting.sample());
  }
  place(structure, 0, u32(0) + u8(5));
  EXPECT_EQ(encode(0x0028, structure, 16), field(0x01, u32(0) + u8(5)));
}

TEST_F(CodecTest, Encode_FlagOfAnyNonZeroValue_CountsAsSet) {
  Bytes structure(408);
  structure[16] = 0x80;
  structure[17] = 3;
  EXPECT_EQ(encode(0x0003, structure), field(0x20, u8(3)));
}

TEST_F(CodecTest, Encode_TextWithoutEnd_IsRefusedAndNothingIsSent) {
  for (const Setting& setting : settings) {
    if (setting.textMax != 0) {
      SCOPED_TRACE(setting.name);
      const auto [structure, encoded] =
          withSetting(settingsMessages[0], setting, Bytes(setting.textMax + 1, 'x'));
      EXPECT_EQ(tryEncode(0x0027, structure, 24), OVIX_CLIENT_ENCODE_ERROR);
    }
  }
  EXPECT_TRUE(modem.requests().empty());
}

TEST_F(CodecTest, Encode_BindSubscription_AsNumber) {
  EXPECT_EQ(encode(0x00AF, u32(0xFFFFFFFE)), field(0x01, u32(0xFFFFFFFE)));
}

TEST_F(CodecTest, Encode_IndicationRegisterWithNothing_IsEmpty) {
  EXPECT_EQ(encode(0x0003, Bytes(408)), Bytes());
}

TEST_F(CodecTest, Encode_DeleteAndReadRequests_AsIdentifier) {
  const Bytes structure = u32(0) + u8(200) + Bytes(3);
  EXPECT_EQ(encode(0x0029, structure, 16), field(0x01, u32(0) + u8(200)));
  const Bytes encoded = field(0x01, u32(0) + u8(200));
  EXPECT_EQ(decode(OVIX_MESSAGE_REQUEST, 0x0029, encoded, 8), structure);
  EXPECT_EQ(decode(OVIX_MESSAGE_REQUEST, 0x002B, encoded, 8), structure);
}

TEST_F(CodecTest, Encode_EventList_OfOneElement) {
  Bytes structure(2052);
  place(structure, 0, u8(1));
  place(structure, 4, u32(1) + u32(255) + u8(255));
  place(structure, 2048, u8(1) + u8(1));
  const Bytes encoded = field(0x10, u16(1) + u32(255) + u8(255)) + field(0x11, u8(1));
  EXPECT_EQ(encode(0x00A7, structure), encoded);
  EXPECT_EQ(decode(OVIX_MESSAGE_REQUEST, 0x00A7, encoded, 2052), structure);
}

TEST_F(CodecTest, Encode_EventListThatIsFull_HasAllElements) {
  Bytes structure(2052);
  structure[0] = 1;
  place(structure, 4, u32(255));
  Bytes list = u16(255);
  for (uint32_t i = 0; i < 255; ++i) {
    place(structure, 8 + 8 * i, u32(i * 1000) + u8(i));
    list = list + u32(i * 1000) + u8(i);
  }
  EXPECT_EQ(encode(0x00A7, structure), field(0x10, list));
  EXPECT_EQ(decode(OVIX_MESSAGE_REQUEST, 0x00A7, field(0x10, list), 2052), structure);
}

TEST_F(CodecTest, Encode_EventListAboveItsBound_IsRefused) {
  for (const uint32_t count : {256u, 65536u, 0xFFFFFFFFu}) {
    Bytes structure(2052);
    structure[0] = 1;
    place(structure, 4, u32(count));
    EXPECT_EQ(tryEncode(0x00A7, structure, 8), OVIX_CLIENT_ENCODE_ERROR) << count;
  }
}

TEST_F(CodecTest, Decode_CreateResponse_HoldsTheIdentifier) {
  const Bytes structure = decode(OVIX_MESSAGE_RESPONSE, 0x0027,
                                 success() + field(0x03, u32(0x11223344) + u8(0xFE)), 24);
  EXPECT_EQ(structure, u32(0) + u32(0) + u32(0x11223344) + u8(0xFE) + Bytes(11));
}

TEST_F(CodecTest, Decode_FailureWithoutTheRest_IsComplete) {
  const Bytes failure = result(/*code=*/1, /*error=*/3);
  EXPECT_EQ(decode(OVIX_MESSAGE_RESPONSE, 0x0027, failure, 24), u32(1) + u32(3) + Bytes(16));
  EXPECT_EQ(decode(OVIX_MESSAGE_RESPONSE, 0x002A, failure, 14300), u32(1) + u32(3) + Bytes(14292));
}

TEST_F(CodecTest, Decode_PlainResponses_HoldTheResult) {
  const std::vector<std::pair<unsigned, size_t>> responses{
      {0x0003, 8}, {0x00A7, 8}, {0x00AF, 8}, {0x0028, 16}, {0x0029, 16}};
  for (const auto& [id, structureSize] : responses) {
    SCOPED_TRACE(id);
    EXPECT_EQ(decode(OVIX_MESSAGE_RESPONSE, id, result(0xFFFFFFFF, 0x80000001), structureSize),
              u32(0xFFFFFFFF) + u32(0x80000001) + Bytes(structureSize - 8));
  }
}

TEST_F(CodecTest, Decode_ListThatIsEmpty_HasNoElements) {
  EXPECT_EQ(decode(OVIX_MESSAGE_RESPONSE, 0x002A, success() + field(0x03, u16(0)), 14300),
            Bytes(14300));
}

TEST_F(CodecTest, Decode_ListThatIsFull_HasAllNames) {
  Bytes structure(14300);
  place(structure, 8, u32(255));
  Bytes list = u16(255);
  for (unsigned i = 0; i < 255; ++i) {
    const std::string name(i % 51, static_cast<char>('a' + i % 26));
    place(structure, 12 + 56 * i, u32(i) + u8(i) + text(name));
    list = list + u32(i) + u8(i) + u8(i % 51) + text(name);
  }
  EXPECT_EQ(decode(OVIX_MESSAGE_RESPONSE, 0x002A, success() + field(0x03, list), 14300), structure);
}

TEST_F(CodecTest, EncodeAndDecode_ListRequest_AreEachOthersInverse) {
  Bytes structure(184);
  structure[0] = 1;
  EXPECT_EQ(decode(OVIX_MESSAGE_REQUEST, 0x002A, field(0x10, u32(0)), 184), structure);
  place(structure, 4, u32(255));
  EXPECT_EQ(decode(OVIX_MESSAGE_REQUEST, 0x002A, field(0x10, u32(255)), 184), structure);
}

TEST_F(CodecTest, Decode_ProfileChanged_HasFlagIndexAndEvent) {
  const Bytes encoded = field(0x10, u32(0x01020304) + u8(200) + u32(5));
  EXPECT_EQ(decode(OVIX_MESSAGE_INDICATION, 0x00A8, encoded, 16),
            u8(1) + Bytes(3) + u32(0x01020304) + u8(200) + Bytes(3) + u32(5));
}

TEST_F(CodecTest, Decode_ProfileChangedWithoutItsField_HasNoFlag) {
  EXPECT_EQ(decode(OVIX_MESSAGE_INDICATION, 0x00A8, field(0x77, u8(1)), 16), Bytes(16));
}

TEST_F(CodecTest, Decode_UnknownTags_AreSkipped) {
  const Bytes encoded = field(0x99, Bytes(300)) + success() + field(0xFF, {});
  EXPECT_EQ(decode(OVIX_MESSAGE_RESPONSE, 0x0029, encoded, 16), Bytes(16));
}

}  // namespace
}  // namespace pavo::test
