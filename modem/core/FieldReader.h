// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reads a payload as a sequence of fields (tag, length, value).
//
// The constructor checks the framing of all fields; each getter checks the length of its value.
// Both throw a Refusal with the code for a malformed message. The reader refers to the caller's
// payload and must not outlive it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace modem {

using ByteView = std::span<const uint8_t>;

inline constexpr size_t fieldHeaderBytes = 3;

class FieldReader {
 public:
  explicit FieldReader(ByteView payload);

  // These return nothing if the payload has no such field.
  std::optional<ByteView> bytes(uint8_t tag) const;
  std::optional<std::string> text(uint8_t tag) const;
  std::optional<int32_t> i32(uint8_t tag) const;

  // Number is an unsigned integer, and the field has to have its width.
  template <typename Number>
  std::optional<Number> number(uint8_t tag) const {
    const auto wide = numberOfWidth(tag, sizeof(Number));
    return wide ? std::optional<Number>(static_cast<Number>(*wide)) : std::nullopt;
  }

 private:
  std::optional<uint64_t> numberOfWidth(uint8_t tag, size_t width) const;

  std::array<std::optional<ByteView>, 256> values;
};

// Reads a little-endian number of 1 to 8 bytes.
uint64_t numberFrom(ByteView bytes);

// Returns the name of a field in error texts, such as "field 0x1F".
std::string fieldName(uint8_t tag);

}  // namespace modem
