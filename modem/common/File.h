// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Reading files as a whole, and writing to open ones.
#pragma once

#include "modem/common/Error.h"

#include <optional>
#include <string>
#include <string_view>

namespace modem {

// Throws Error if the file is missing or cannot be read.
std::string readFile(const std::string& path);

// Returns nothing if the file is missing. Throws Error if it cannot be read.
std::optional<std::string> readFileIfAny(const std::string& path);

// Writes all of the text. Throws Error, which names `path`.
void writeAll(int fd, std::string_view text, const std::string& path);

}  // namespace modem
