// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header builds encoded messages and frames by hand from the layout in docs/modem-messages.md.
// Tests compare the messaging library's encoding with these bytes, so nothing here uses its code.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace pavo::test {

using Bytes = std::vector<uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

inline Bytes u8(unsigned value) { return {static_cast<uint8_t>(value)}; }
inline Bytes u16(unsigned value) { return u8(value & 0xFF) + u8(value >> 8); }
inline Bytes u32(uint32_t value) { return u16(value & 0xFFFF) + u16(value >> 16); }
inline Bytes u64(uint64_t value) {
  return u32(static_cast<uint32_t>(value)) + u32(static_cast<uint32_t>(value >> 32));
}
inline Bytes text(const std::string& value) { return {value.begin(), value.end()}; }
inline Bytes field(unsigned tag, const Bytes& value) {
  return u8(tag) + u16(static_cast<unsigned>(value.size())) + value;
}
inline Bytes result(uint32_t code, uint32_t error) { return field(0x02, u32(code) + u32(error)); }
inline Bytes success() { return result(/*code=*/0, /*error=*/0); }

enum RawKind : uint8_t {
  rawRequest,
  rawResponse,
  rawIndication,
  rawControl,
  rawAnswer,
  rawHello,
  rawUnchecked,
};

inline Bytes rawFrame(unsigned kind, unsigned messageId, uint32_t transaction,
                      const Bytes& payload) {
  return u32(static_cast<uint32_t>(payload.size())) + u8(kind) + u8(/*version=*/1) +
         u16(messageId) + u32(transaction) + payload;
}

}  // namespace pavo::test
