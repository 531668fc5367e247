// Reading files as a whole, and writing to open ones.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "modem/common/Error.h"

namespace modem {

// Throws Error when it is not there or cannot be read.
std::string readFile(const std::string& path);

// Empty when it is not there.
std::optional<std::string> readFileIfAny(const std::string& path);

// Writes all of the text. Throws Error, which names `path`.
void writeAll(int fd, std::string_view text, const std::string& path);

}  // namespace modem
