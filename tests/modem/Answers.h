// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header reads the fields of the modem's messages that tests compare.
#pragma once

#include "modem/core/FieldReader.h"
#include "modem/core/Messages.h"
#include "modem/core/Profile.h"

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace modem::test {

struct Result {
  int32_t result = -1;
  ErrorCode error = ErrorCode::None;

  bool operator==(const Result&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Result& value) {
    return out << "result " << value.result << ", " << errorName(value.error);
  }
};

inline constexpr Result success{resultSuccess, ErrorCode::None};

inline Result failure(ErrorCode error) { return {resultFailure, error}; }

inline Result resultOf(std::span<const uint8_t> response) {
  const auto value = FieldReader(response).bytes(tagResult);
  if (!value || value->size() != 8) {
    return {};
  }
  return {static_cast<int32_t>(numberFrom(value->first(4))),
          static_cast<ErrorCode>(numberFrom(value->subspan(4)))};
}

// Returns the index in the response to a create; 0 when there is none.
inline uint8_t createdIndexOf(std::span<const uint8_t> response) {
  const auto id = FieldReader(response).bytes(tagAnswer);
  return id && id->size() == 5 ? (*id)[4] : 0;
}

inline Profile settingsOf(std::span<const uint8_t> response) {
  return readSettings(FieldReader(response));
}

// Returns an indication as "event/index", such as "create/1".
inline std::string eventOf(std::span<const uint8_t> indication) {
  static constexpr const char* names[] = {"0",      "create",       "delete",
                                          "modify", "subscription", "ready"};
  const auto value = FieldReader(indication).bytes(tagChangedProfile);
  if (!value || value->size() != 9 || numberFrom(value->first(4)) != profileType3gpp) {
    return "malformed";
  }
  const uint64_t event = numberFrom(value->subspan(5));
  return (event < std::size(names) ? names[event] : std::to_string(event)) + std::string("/") +
         std::to_string((*value)[4]);
}

}  // namespace modem::test
