// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

namespace pavo {

// The kind of a request or a response. It determines the class to cast to.
enum class ReqRespType : std::int32_t {
  Add = 0,
  Modify = 1,
  Delete = 2,
  Filter = 3,
  Match = 4,
  Get = 5,
  Callback = 6,
  Refresh = 7,
};

enum class Status : std::int32_t {
  Success = 0,
  Failure = 1,
};

void appendValue(std::string& text, ReqRespType type);
void appendValue(std::string& text, Status status);
std::ostream& operator<<(std::ostream& out, ReqRespType type);
std::ostream& operator<<(std::ostream& out, Status status);

}  // namespace pavo
