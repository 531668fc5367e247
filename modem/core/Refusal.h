// The reason why the modem refuses a request: an error code for the client's response, and a line
// for the control channel.
#pragma once

#include <string>

#include "modem/common/Error.h"
#include "modem/core/Messages.h"

namespace modem {

class Refusal : public Error {
 public:
  Refusal(ErrorCode why, const std::string& detail)
      : Error(std::string(errorName(why)) + ": " + detail), code(why) {}

  const ErrorCode code;
};

}  // namespace modem
