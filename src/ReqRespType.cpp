// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ReqRespType.h"

#include "NamedValue.h"

namespace pavo {

void appendValue(std::string& text, ReqRespType type) {
  static constexpr const char* names[] = {"Add",   "Modify", "Delete",   "Filter",
                                          "Match", "Get",    "Callback", "Refresh"};
  appendNamed(text, type, names);
}

void appendValue(std::string& text, Status status) {
  static constexpr const char* names[] = {"Success", "Failure"};
  appendNamed(text, status, names);
}

std::ostream& operator<<(std::ostream& out, ReqRespType type) { return streamText(out, type); }
std::ostream& operator<<(std::ostream& out, Status status) { return streamText(out, status); }

}  // namespace pavo
