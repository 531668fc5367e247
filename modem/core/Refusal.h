// Why the modem does not do what it was asked to do: an error code for the response of a client,
// and one line for the people who ask over the control channel.
#pragma once

#include <stdexcept>
#include <string>

#include "modem/core/Messages.h"

namespace modem {

class Refusal : public std::runtime_error {
 public:
  Refusal(ErrorCode why, const std::string& detail)
      : std::runtime_error(std::string(errorName(why)) + ": " + detail), code(why) {}

  const ErrorCode code;
};

}  // namespace modem
