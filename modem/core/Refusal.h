// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The reason why the modem refuses a request: an error code for the client's response, and a line
// for the control channel.
#pragma once

#include "modem/common/Error.h"
#include "modem/core/Messages.h"

#include <string>

namespace modem {

class Refusal : public Error {
 public:
  Refusal(ErrorCode why, const std::string& detail)
      : Error(std::string(errorName(why)) + ": " + detail), code(why) {}

  const ErrorCode code;
};

}  // namespace modem
