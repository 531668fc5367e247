// Reading files as a whole.
#pragma once

#include <optional>
#include <string>

#include "modem/common/Error.h"

namespace modem {

// Throws Error when it is not there or cannot be read.
std::string readFile(const std::string& path);

// Empty when it is not there.
std::optional<std::string> readFileIfAny(const std::string& path);

}  // namespace modem
