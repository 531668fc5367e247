// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/FieldReader.h"

#include "modem/core/Refusal.h"

#include <cstdio>

namespace modem {

namespace {

[[noreturn]] void refuseMalformed(const std::string& detail) {
  throw Refusal(ErrorCode::MalformedMessage, detail);
}

}  // namespace

uint64_t numberFrom(ByteView bytes) {
  uint64_t value = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    value |= static_cast<uint64_t>(bytes[i]) << (8 * i);
  }
  return value;
}

std::string fieldName(uint8_t tag) {
  char name[16];
  std::snprintf(name, sizeof name, "field 0x%02X", static_cast<unsigned>(tag));
  return name;
}

FieldReader::FieldReader(ByteView payload) {
  while (!payload.empty()) {
    if (payload.size() < fieldHeaderBytes) {
      refuseMalformed("the message ends inside a field's header");
    }
    const uint8_t tag = payload[0];
    const size_t length = numberFrom(payload.subspan(1, 2));
    payload = payload.subspan(fieldHeaderBytes);
    if (length > payload.size()) {
      refuseMalformed(fieldName(tag) + " runs out of the message");
    }
    if (values[tag]) {
      refuseMalformed(fieldName(tag) + " comes twice");
    }
    values[tag] = payload.first(length);
    payload = payload.subspan(length);
  }
}

std::optional<ByteView> FieldReader::bytes(uint8_t tag) const { return values[tag]; }

std::optional<std::string> FieldReader::text(uint8_t tag) const {
  if (!values[tag]) {
    return std::nullopt;
  }
  return std::string(values[tag]->begin(), values[tag]->end());
}

std::optional<int32_t> FieldReader::i32(uint8_t tag) const {
  const auto value = number<uint32_t>(tag);
  return value ? std::optional<int32_t>(static_cast<int32_t>(*value)) : std::nullopt;
}

std::optional<uint64_t> FieldReader::numberOfWidth(uint8_t tag, size_t width) const {
  if (!values[tag]) {
    return std::nullopt;
  }
  if (values[tag]->size() != width) {
    refuseMalformed(fieldName(tag) + " is " + std::to_string(values[tag]->size()) +
                    " bytes long, not " + std::to_string(width));
  }
  return numberFrom(*values[tag]);
}

}  // namespace modem
