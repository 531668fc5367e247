// Why the modem does not do what it was asked to do: an error code for the response of a client,
// and one line for the people who ask over the control channel.
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
