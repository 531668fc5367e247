// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Builds a payload as a sequence of fields (tag, length, value).
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace modem {

using Bytes = std::vector<uint8_t>;

class FieldWriter {
 public:
  // Number is an unsigned integer or int32_t; it is written in its own width.
  template <typename Number>
  void number(uint8_t tag, Number value) {
    begin(tag, sizeof value);
    appendNumber(payload, value);
  }

  void text(uint8_t tag, std::string_view value);
  void bytes(uint8_t tag, std::span<const uint8_t> value);
  void result(int32_t result, int32_t error);

  Bytes take() { return std::move(payload); }

  template <typename Number>
  static void appendNumber(Bytes& out, Number value) {
    const auto wide = static_cast<uint64_t>(value);
    for (size_t i = 0; i < sizeof value; ++i) {
      out.push_back(static_cast<uint8_t>(wide >> (8 * i)));
    }
  }

 private:
  void begin(uint8_t tag, size_t length);

  Bytes payload;
};

}  // namespace modem
