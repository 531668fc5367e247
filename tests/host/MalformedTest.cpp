// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests send messages that no modem should send, in every place where one can arrive. The
// library must reject each of them, and none may do harm.
#include "HostTest.h"
#include "Layouts.h"

#include <algorithm>
#include <memory>
#include <random>

namespace pavo::test {
namespace {

struct Malformed {
  const char* name;
  int kind;
  unsigned id;
  size_t size;
  Bytes encoded;
};

std::ostream& operator<<(std::ostream& out, const Malformed& malformed) {
  return out << malformed.name;
}

Bytes listOf(unsigned count, const Bytes& elements) { return field(0x03, u16(count) + elements); }

Bytes longList() {
  Bytes elements;
  for (unsigned i = 0; i < 256; ++i) {
    elements = elements + u32(0) + u8(i) + u8(0);
  }
  return listOf(256, elements);
}

const std::vector<Malformed> malformedMessages{
    {"empty", 1, 0x0029, 16, {}},
    {"a tag alone", 1, 0x0029, 16, u8(0x02)},
    {"half a length", 1, 0x0029, 16, u8(0x02) + u8(8)},
    {"a header without its value", 1, 0x0029, 16, u8(0x02) + u16(8)},
    {"a value cut short", 1, 0x0029, 16, u8(0x02) + u16(8) + u32(0) + Bytes(3)},
    {"a length of all ones", 1, 0x0029, 16, u8(0x02) + u16(0xFFFF) + u32(0) + u32(0)},
    {"a result too short", 1, 0x0029, 16, field(0x02, u32(0) + Bytes(3))},
    {"a result too long", 1, 0x0029, 16, field(0x02, u32(0) + u32(0) + u8(0))},
    {"a result without a value", 1, 0x0029, 16, field(0x02, {})},
    {"no result", 1, 0x0029, 16, field(0x77, u8(1))},
    {"the result twice", 1, 0x0029, 16, success() + success()},
    {"an unknown tag twice", 1, 0x0029, 16, success() + field(0x77, {}) + field(0x77, {})},
    {"rubbish behind the last field", 1, 0x0029, 16, success() + u8(0)},
    {"an unknown tag that leaves the message", 1, 0x0029, 16, success() + u8(0x77) + u16(1)},
    {"a creation without its identifier", 1, 0x0027, 24, success()},
    {"an identifier too short", 1, 0x0027, 24, success() + field(0x03, u32(0))},
    {"an identifier too long", 1, 0x0027, 24, success() + field(0x03, u32(0) + u16(1))},
    {"a list without its field", 1, 0x002A, 14300, success()},
    {"a list without a count", 1, 0x002A, 14300, success() + field(0x03, u8(1))},
    {"a list with too few elements", 1, 0x002A, 14300, success() + listOf(1, {})},
    {"a list with too many elements", 1, 0x002A, 14300,
     success() + listOf(0, u32(0) + u8(1) + u8(0))},
    {"a list that ends in a name", 1, 0x002A, 14300,
     success() + listOf(1, u32(0) + u8(1) + u8(4) + text("abc"))},
    {"a name above its bound in a list", 1, 0x002A, 14300,
     success() + listOf(1, u32(0) + u8(1) + u8(51) + text(std::string(51, 'n')))},
    {"a name of 255 bytes in a list", 1, 0x002A, 14300,
     success() + listOf(1, u32(0) + u8(1) + u8(255) + text(std::string(255, 'n')))},
    {"a list above its bound", 1, 0x002A, 14300, success() + longList()},
    {"a count of all ones", 1, 0x002A, 14300, success() + listOf(0xFFFF, {})},
    {"an indication without bytes", 2, 0x00A8, 16, {}},
    {"an indication too short", 2, 0x00A8, 16, field(0x10, u32(0) + u8(1))},
    {"an indication too long", 2, 0x00A8, 16, field(0x10, u32(0) + u8(1) + u32(1) + u8(0))},
    {"a request without its identifier", 0, 0x0029, 8, field(0x10, u8(1))},
};

class MalformedTest : public HostTest, public ::testing::WithParamInterface<Malformed> {
 protected:
  int decode(int kind, unsigned id, const Bytes& encoded, Bytes& structure) {
    // The memory has exactly the size of the message, so a sanitizer detects a read behind it.
    const auto exact = std::make_unique<uint8_t[]>(encoded.size());
    std::copy(encoded.begin(), encoded.end(), exact.get());
    return ovix_client_message_decode(client.get(), kind, id, exact.get(),
                                      static_cast<unsigned>(encoded.size()), structure.data(),
                                      static_cast<unsigned>(structure.size()));
  }

  // The modem answers every request with these bytes.
  Bytes answer = success();
  RawModem modem{path,
                 [this](RawPeer& peer, const RawFrame& request) { peer.respond(request, answer); }};
  Handle client = openClient();
};

TEST_P(MalformedTest, Decode_OfIt_FailsAndClearsTheStructure) {
  const Malformed& malformed = GetParam();
  Bytes structure(malformed.size, 0xEE);
  EXPECT_EQ(decode(malformed.kind, malformed.id, malformed.encoded, structure),
            OVIX_CLIENT_DECODE_ERROR);
  EXPECT_EQ(structure, Bytes(malformed.size));
}

INSTANTIATE_TEST_SUITE_P(Messages, MalformedTest, ::testing::ValuesIn(malformedMessages));

TEST_F(MalformedTest, Decode_WidthOtherThanTheFields_FailsForEverySetting) {
  for (const Setting& setting : settings) {
    SCOPED_TRACE(setting.name);
    const size_t width = setting.textMax == 0 ? setting.width : setting.textMax;
    Bytes structure(3272);
    EXPECT_EQ(decode(1, 0x002B, success() + field(setting.tag, Bytes(width + 1)), structure),
              OVIX_CLIENT_DECODE_ERROR);
    if (setting.textMax == 0) {
      EXPECT_EQ(decode(1, 0x002B, success() + field(setting.tag, Bytes(width - 1)), structure),
                OVIX_CLIENT_DECODE_ERROR);
    }
  }
}

TEST_F(MalformedTest, Decode_EveryTruncation_FailsOrEndsAtAField) {
  Bytes whole = success();
  std::vector<size_t> fieldEnds{whole.size()};
  for (const Setting& setting : settings) {
    whole = whole + field(setting.tag, setting.sample());
    fieldEnds.push_back(whole.size());
  }
  for (size_t length = 0; length <= whole.size(); ++length) {
    const bool atEnd = std::ranges::find(fieldEnds, length) != fieldEnds.end();
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    Bytes structure(3272);
    EXPECT_EQ(decode(1, 0x002B, cut, structure) == OVIX_CLIENT_NO_ERROR, atEnd) << length;
  }
}

TEST_F(MalformedTest, Decode_RandomMutations_NeverLeaveTheBounds) {
  Bytes read = success();
  for (const Setting& setting : settings) {
    read = read + field(setting.tag, setting.sample());
  }
  Bytes elements;
  for (unsigned i = 0; i < 20; ++i) {
    elements = elements + u32(0) + u8(i) + u8(3) + text("net");
  }
  const Bytes list = success() + listOf(20, elements);
  std::minstd_rand random(20240607);
  const auto below = [&](size_t bound) { return static_cast<size_t>(random()) % bound; };
  for (int round = 0; round < 20000; ++round) {
    const bool isList = round % 2 == 0;
    Bytes mutated = isList ? list : read;
    for (size_t changes = 1 + below(4); changes > 0 && !mutated.empty(); --changes) {
      const auto at = mutated.begin() + static_cast<std::ptrdiff_t>(below(mutated.size()));
      switch (below(3)) {
        case 0:
          *at = static_cast<uint8_t>(random());
          break;
        case 1:
          mutated.erase(at, at + std::min<std::ptrdiff_t>(mutated.end() - at, 1 + round % 7));
          break;
        default:
          mutated.insert(at, static_cast<uint8_t>(random()));
      }
    }
    Bytes structure(isList ? 14300 : 3272);
    const int error = decode(1, isList ? 0x002A : 0x002B, mutated, structure);
    if (error != OVIX_CLIENT_NO_ERROR) {
      ASSERT_EQ(error, OVIX_CLIENT_DECODE_ERROR);
      ASSERT_EQ(structure, Bytes(structure.size())) << "round " << round;
      continue;
    }
    for (const Setting& setting : settings) {
      if (!isList && setting.textMax != 0) {
        ASSERT_EQ(structure[setting.valueAt[readForm] + setting.textMax], 0) << "round " << round;
      }
    }
    if (isList) {
      ASSERT_LE(structure[8] + 256u * structure[9], 255u) << "round " << round;
    }
  }
}

TEST_F(MalformedTest, Send_AnswerOfEachKindOfNonsense_FailsAndTheClientLivesOn) {
  for (const Malformed& malformed : malformedMessages) {
    if (malformed.id != 0x0029 || malformed.kind != OVIX_MESSAGE_RESPONSE) {
      continue;
    }
    SCOPED_TRACE(malformed.name);
    answer = malformed.encoded;
    wds_delete_profile_resp_msg_v01 response{};
    response.resp.result = 77;
    EXPECT_EQ(sendDelete(client.get(), 1, longTimeoutMs, &response), OVIX_CLIENT_DECODE_ERROR);
    EXPECT_EQ(response.resp.result, 0);
    answer = success();
    EXPECT_EQ(sendDelete(client.get(), 1), OVIX_CLIENT_NO_ERROR);
  }
}

TEST_F(MalformedTest, Send_MalformedAnswerWithTrace_TellsTheReason) {
  answer = success() + success();
  const ScopedVariable traced("OVIX_MODEM_TRACE", "1");
  EXPECT_EXIT(std::_Exit(sendDelete(client.get(), 1) == OVIX_CLIENT_DECODE_ERROR ? 0 : 1),
              ::testing::ExitedWithCode(0),
              "^ovix: message 0x0029: response not decoded: field 0x02: the tag comes twice\n$");
}

TEST_F(MalformedTest, Send_MalformedAnswerWithoutTrace_SaysNothing) {
  answer = {};
  const ScopedVariable untraced("OVIX_MODEM_TRACE", nullptr);
  EXPECT_EXIT(std::_Exit(sendDelete(client.get(), 1) == OVIX_CLIENT_DECODE_ERROR ? 0 : 1),
              ::testing::ExitedWithCode(0), "^$");
}

TEST_F(MalformedTest, Decode_WrongArguments_AreRefused) {
  Bytes structure(16);
  const Bytes good = field(0x10, u32(0) + u8(1) + u32(1));
  const auto decodeWith = [&](int kind, unsigned id, const void* source, unsigned targetSize,
                              void* target) {
    return ovix_client_message_decode(client.get(), kind, id, source, 12, target, targetSize);
  };
  ASSERT_EQ(good.size(), 12u);
  EXPECT_EQ(decodeWith(2, 0xA8, good.data(), 16, structure.data()), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(decodeWith(2, 0xA8, good.data(), 15, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(2, 0xA8, good.data(), 17, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(2, 0xA8, good.data(), 0, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(0, 0xA8, good.data(), 16, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(3, 0xA8, good.data(), 16, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(-1, 0xA8, good.data(), 16, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(2, 0xA9, good.data(), 16, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(2, 0x100A8, good.data(), 16, structure.data()),
            OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(2, 0xA8, nullptr, 16, structure.data()), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(decodeWith(2, 0xA8, good.data(), 16, nullptr), OVIX_CLIENT_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace pavo::test
