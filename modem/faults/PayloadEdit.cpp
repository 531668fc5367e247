// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/PayloadEdit.h"

#include "modem/core/FieldReader.h"
#include "modem/core/FieldWriter.h"
#include "modem/core/Messages.h"
#include "modem/core/Refusal.h"

namespace modem {

Bytes withFields(ByteView payload, const FieldChange& change) {
  try {
    const FieldReader fields(payload);
    FieldWriter out;
    for (unsigned number = 0; number <= UINT8_MAX; ++number) {
      const auto tag = static_cast<uint8_t>(number);
      const auto value = fields.bytes(tag);
      if (const auto changed = value ? change(tag, *value) : std::nullopt) {
        out.bytes(tag, *changed);
      }
    }
    return out.take();
  } catch (const Refusal&) {
    return toBytes(payload);
  }
}

Bytes withField(ByteView payload, uint8_t tag, const std::function<Bytes(ByteView value)>& change) {
  return withFields(payload, [&](uint8_t present, ByteView value) -> std::optional<Bytes> {
    return present == tag ? change(value) : toBytes(value);
  });
}

Bytes withSettings(ByteView payload, const Profile& settings) {
  FieldWriter written;
  writeSettings(written, settings);
  Bytes out = written.take();
  const FieldReader replaced(out);
  const Bytes kept = withFields(payload, [&](uint8_t tag, ByteView value) {
    return replaced.bytes(tag) ? std::nullopt : std::optional(toBytes(value));
  });
  out.insert(out.end(), kept.begin(), kept.end());
  return out;
}

bool isSuccess(ByteView response) {
  const auto result = FieldReader(response).bytes(tagResult);
  return result && result->size() >= 4 && numberFrom(result->first(4)) == resultSuccess;
}

}  // namespace modem
