// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/FieldWriter.h"

#include "modem/core/Messages.h"

#include <stdexcept>

namespace modem {

void FieldWriter::text(uint8_t tag, std::string_view value) {
  begin(tag, value.size());
  payload.insert(payload.end(), value.begin(), value.end());
}

void FieldWriter::bytes(uint8_t tag, std::span<const uint8_t> value) {
  begin(tag, value.size());
  payload.insert(payload.end(), value.begin(), value.end());
}

void FieldWriter::result(int32_t result, int32_t error) {
  begin(tagResult, sizeof result + sizeof error);
  appendNumber(payload, result);
  appendNumber(payload, error);
}

void FieldWriter::begin(uint8_t tag, size_t length) {
  if (length > UINT16_MAX) {
    throw std::length_error("a field is longer than its length can tell");
  }
  payload.push_back(tag);
  appendNumber(payload, static_cast<uint16_t>(length));
}

}  // namespace modem
