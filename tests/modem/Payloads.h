// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header makes payloads of requests for tests.
#pragma once

#include "modem/core/FieldWriter.h"
#include "modem/core/Messages.h"
#include "modem/core/Profile.h"

#include <cstdint>
#include <vector>

namespace modem::test {

using Payload = std::vector<uint8_t>;

inline Payload idOf(uint8_t index, uint32_t type = profileType3gpp) {
  Payload id;
  FieldWriter::appendNumber(id, type);
  FieldWriter::appendNumber(id, index);
  return id;
}

inline Payload createRequest(const Profile& profile, uint32_t type = profileType3gpp) {
  FieldWriter fields;
  fields.number(tagProfile, type);
  writeSettings(fields, profile);
  return fields.take();
}

inline Payload profileRequest(uint8_t index, const Profile& changes = {},
                              uint32_t type = profileType3gpp) {
  FieldWriter fields;
  fields.bytes(tagProfile, idOf(index, type));
  writeSettings(fields, changes);
  return fields.take();
}

inline Payload registerRequest(bool isOn = true) {
  FieldWriter fields;
  fields.number(tagReportEvents, static_cast<uint8_t>(isOn));
  return fields.take();
}

inline Payload eventListRequest(const std::vector<Payload>& ids, bool isOn = true) {
  Payload list;
  FieldWriter::appendNumber(list, static_cast<uint16_t>(ids.size()));
  for (const Payload& id : ids) {
    list.insert(list.end(), id.begin(), id.end());
  }
  FieldWriter fields;
  fields.bytes(tagEventList, list);
  fields.number(tagReportSwitch, static_cast<uint8_t>(isOn));
  return fields.take();
}

inline Payload allEventsRequest() {
  return eventListRequest({idOf(profileIndexAny, profileTypeAny)});
}

inline Payload listRequest(uint32_t type = profileType3gpp) {
  FieldWriter fields;
  fields.number(tagListType, type);
  return fields.take();
}

inline Payload bindRequest(int32_t subscription) {
  FieldWriter fields;
  fields.number(tagBindSubscription, subscription);
  return fields.take();
}

}  // namespace modem::test
