// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "MessageCodec.h"

#include <algorithm>
#include <bitset>
#include <cstdio>
#include <cstring>

namespace ovix {

namespace {

using MaybeError = std::optional<CodecError>;

constexpr size_t fieldHeaderSize = 3;  // The tag and the length of a value.

bool hasFlag(const Field& field) {
  return field.flagAt != mandatory && field.flagAt != mandatoryOnSuccess;
}

// Returns the error of a value, with the field in front.
CodecError errorAt(uint8_t tag, const CodecError& error) {
  char text[96];
  std::snprintf(text, sizeof text, "field 0x%02X: %s", tag, error.reason.c_str());
  return {text};
}

template <typename T>
uint64_t loadAs(const uint8_t* at) {
  T number;
  std::memcpy(&number, at, sizeof number);
  return number;
}

uint64_t load(const uint8_t* at, size_t width) {
  switch (width) {
    case 1:
      return *at;
    case 2:
      return loadAs<uint16_t>(at);
    case 4:
      return loadAs<uint32_t>(at);
    default:
      return loadAs<uint64_t>(at);
  }
}

template <typename T>
void storeAs(uint8_t* at, uint64_t number) {
  const T narrow = static_cast<T>(number);
  std::memcpy(at, &narrow, sizeof narrow);
}

void store(uint8_t* at, size_t width, uint64_t number) {
  switch (width) {
    case 1:
      return storeAs<uint8_t>(at, number);
    case 2:
      return storeAs<uint16_t>(at, number);
    case 4:
      return storeAs<uint32_t>(at, number);
    default:
      return storeAs<uint64_t>(at, number);
  }
}

void appendNumber(std::vector<uint8_t>& out, uint64_t number, size_t width) {
  for (size_t i = 0; i < width; ++i) {
    out.push_back(static_cast<uint8_t>(number >> (8 * i)));
  }
}

// Reads the bytes of one value from front to back; a read past the end fails and stays failed.
class Cursor {
 public:
  explicit Cursor(std::span<const uint8_t> bytes) : rest(bytes) {}

  bool number(size_t width, uint64_t& result) {
    if (rest.size() < width) {
      return false;
    }
    result = 0;
    for (size_t i = 0; i < width; ++i) {
      result |= uint64_t{rest[i]} << (8 * i);
    }
    rest = rest.subspan(width);
    return true;
  }

  bool take(size_t count, std::span<const uint8_t>& result) {
    if (rest.size() < count) {
      return false;
    }
    result = rest.first(count);
    rest = rest.subspan(count);
    return true;
  }

  size_t left() const { return rest.size(); }

 private:
  std::span<const uint8_t> rest;
};

MaybeError encodeParts(std::span<const Part> parts, const uint8_t* value,
                       std::vector<uint8_t>& out) {
  for (const Part& part : parts) {
    const uint8_t* at = value + part.offset;
    if (part.kind == PartKind::Number) {
      appendNumber(out, load(at, part.width), part.width);
      continue;
    }
    const size_t length = strnlen(reinterpret_cast<const char*>(at), size_t{part.width} + 1);
    if (length > part.width) {
      return CodecError{"the text has no end"};
    }
    if (part.kind == PartKind::CountedText) {
      out.push_back(static_cast<uint8_t>(length));
    }
    out.insert(out.end(), at, at + length);
  }
  return std::nullopt;
}

MaybeError encodeValue(const Field& field, const uint8_t* structure, std::vector<uint8_t>& out) {
  const uint8_t* value = structure + field.valueAt;
  if (field.list.countMax == 0) {
    return encodeParts(field.parts, value, out);
  }
  const uint64_t count = load(structure + field.list.countAt, sizeof(uint32_t));
  if (count > field.list.countMax) {
    return CodecError{"the list has more elements than fit"};
  }
  appendNumber(out, count, sizeof(uint16_t));
  for (uint64_t i = 0; i < count; ++i) {
    if (MaybeError error = encodeParts(field.parts, value + i * field.list.stride, out)) {
      return error;
    }
  }
  return std::nullopt;
}

// A text and its terminator have width + 1 bytes. A trusted text may take the terminator's byte.
size_t textBytesMax(const Part& part, Bounds bounds) {
  return bounds == Bounds::Trusted ? size_t{part.width} + 1 : part.width;
}

MaybeError decodeParts(std::span<const Part> parts, Cursor& cursor, uint8_t* value, Bounds bounds) {
  for (const Part& part : parts) {
    uint8_t* at = value + part.offset;
    uint64_t number = 0;
    if (part.kind == PartKind::Number) {
      if (!cursor.number(part.width, number)) {
        return CodecError{"the value is too short"};
      }
      store(at, part.width, number);
      continue;
    }
    size_t length = cursor.left();
    if (part.kind == PartKind::CountedText) {
      if (!cursor.number(1, number)) {
        return CodecError{"the value is too short"};
      }
      length = static_cast<size_t>(number);
    }
    if (length > textBytesMax(part, bounds)) {
      return CodecError{"the text is above its bound"};
    }
    std::span<const uint8_t> text;
    if (!cursor.take(length, text)) {
      return CodecError{"the value is too short"};
    }
    std::copy(text.begin(), text.end(), at);
    if (length <= part.width) {
      at[length] = 0;
    }
  }
  return std::nullopt;
}

MaybeError decodeValue(const Field& field, std::span<const uint8_t> bytes, uint8_t* structure,
                       Bounds bounds) {
  Cursor cursor(bytes);
  uint8_t* value = structure + field.valueAt;
  uint64_t count = 1;
  if (field.list.countMax != 0) {
    if (!cursor.number(sizeof(uint16_t), count)) {
      return CodecError{"the value is too short"};
    }
    store(structure + field.list.countAt, sizeof(uint32_t), count);
    if (count > field.list.countMax && bounds == Bounds::Judged) {
      return CodecError{"the list has more elements than fit"};
    }
  }
  const uint64_t room = std::max<uint64_t>(field.list.countMax, 1);
  for (uint64_t i = 0; i < std::min(count, room); ++i) {
    if (MaybeError error =
            decodeParts(field.parts, cursor, value + i * field.list.stride, bounds)) {
      return error;
    }
  }
  if (count > room) {
    return std::nullopt;  // Trusted: the elements that do not fit are not read.
  }
  return cursor.left() == 0 ? MaybeError() : CodecError{"the value is too long"};
}

using Tags = std::bitset<256>;

MaybeError decodeFields(const Layout& layout, std::span<const uint8_t> encoded, uint8_t* structure,
                        Bounds bounds, Tags& seen) {
  Cursor message(encoded);
  while (message.left() > 0) {
    uint64_t tagNumber = 0;
    uint64_t length = 0;
    if (!message.number(1, tagNumber) || !message.number(2, length)) {
      return CodecError{"the message ends inside a field's header"};
    }
    const auto tag = static_cast<uint8_t>(tagNumber);
    std::span<const uint8_t> value;
    if (!message.take(static_cast<size_t>(length), value)) {
      return errorAt(tag, {"the message ends inside the value"});
    }
    if (seen.test(tag)) {
      return errorAt(tag, {"the tag comes twice"});
    }
    seen.set(tag);
    const auto field = std::ranges::find(layout.fields, tag, &Field::tag);
    if (field == layout.fields.end()) {
      continue;
    }
    if (const MaybeError error = decodeValue(*field, value, structure, bounds)) {
      return errorAt(tag, *error);
    }
    if (hasFlag(*field)) {
      structure[field->flagAt] = 1;
    }
  }
  return std::nullopt;
}

MaybeError findMissing(const Layout& layout, const uint8_t* structure, const Tags& seen) {
  for (const Field& field : layout.fields) {
    // Responses alone use mandatoryOnSuccess, and each opens with its result.
    const bool isNeeded = field.flagAt == mandatory || (field.flagAt == mandatoryOnSuccess &&
                                                        load(structure, sizeof(uint32_t)) == 0);
    if (isNeeded && !seen.test(field.tag)) {
      return errorAt(field.tag, {"the field is missing"});
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<CodecError> encodeMessage(const Layout& layout, const void* structure,
                                        std::vector<uint8_t>& encoded) {
  const auto* bytes = static_cast<const uint8_t*>(structure);
  for (const Field& field : layout.fields) {
    if (hasFlag(field) && bytes[field.flagAt] == 0) {
      continue;
    }
    const size_t start = encoded.size();
    encoded.insert(encoded.end(), {field.tag, 0, 0});
    if (const MaybeError error = encodeValue(field, bytes, encoded)) {
      return errorAt(field.tag, *error);
    }
    const size_t length = encoded.size() - start - fieldHeaderSize;
    encoded[start + 1] = static_cast<uint8_t>(length);
    encoded[start + 2] = static_cast<uint8_t>(length >> 8);
  }
  return std::nullopt;
}

std::optional<CodecError> decodeMessage(const Layout& layout, std::span<const uint8_t> encoded,
                                        void* structure, Bounds bounds) {
  std::memset(structure, 0, layout.size);
  auto* bytes = static_cast<uint8_t*>(structure);
  Tags seen;
  MaybeError error = encoded.empty() ? CodecError{"the message is empty"}
                                     : decodeFields(layout, encoded, bytes, bounds, seen);
  if (!error) {
    error = findMissing(layout, bytes, seen);
  }
  if (error) {
    std::memset(structure, 0, layout.size);
  }
  return error;
}

}  // namespace ovix
