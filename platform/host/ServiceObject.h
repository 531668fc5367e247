// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A service object holds the place of the modem, and for each message of a service the places of
// the fields in its C structures and their encoding. It is data only: the service libraries
// (WdsService.cpp) state the tables, and the messaging library (MessageCodec) interprets them.
//
// All tables are constant and live as long as the process; any thread may read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace ovix {

// The encoding of one part of a value.
enum class PartKind : uint8_t {
  Number,       // width bytes, little-endian
  Text,         // the rest of the value; at most width bytes, zero-terminated in the structure
  CountedText,  // a length byte, then as Text
};

// One part of a value; the parts of a value are encoded one after the other.
struct Part {
  PartKind kind;
  uint16_t offset;  // from the start of the value in the structure
  uint16_t width;   // the bytes of a number, or the most bytes of a text
};

// Fields without a valid flag. Any other value of Field::flagAt is the flag's offset.
inline constexpr uint16_t mandatory = 0xFFFF;
// The field is present unless the response's result, at the start of the structure, is a failure.
inline constexpr uint16_t mandatoryOnSuccess = 0xFFFE;

// A list is a two-byte count and that many values, each encoded from the same parts.
struct ListShape {
  uint16_t countAt;   // offset of the 32-bit count
  uint16_t stride;    // from one element to the next
  uint16_t countMax;  // 0: the field is no list
};

struct Field {
  uint8_t tag;
  uint16_t flagAt;
  uint16_t valueAt;
  std::span<const Part> parts;
  ListShape list;
};

// A message in one of its kinds. A size of 0 means that the message has no such kind.
struct Layout {
  uint32_t size;  // of the C structure
  std::span<const Field> fields;
};

struct Message {
  uint16_t id;
  Layout request;
  Layout response;
  Layout indication;
};

// The version changes with every change to the structures above, so that a messaging library never
// interprets the tables of another build.
inline constexpr uint32_t tablesVersion = 2;

}  // namespace ovix

struct ovix_service_object {
  uint32_t tablesVersion;
  std::span<const ovix::Message> messages;
  // The modem's socket; empty for the modem embedded in this process. The caller that asks for the
  // service settles it: the messaging library's threads read no environment, which that caller's
  // program may be changing.
  std::string modemPath;
};
