// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Small helpers for text that comes from outside: files, the command line, the modem.
#pragma once

#include "base/Ascii.h"

#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// Returns the text with control characters, those of C1 in UTF-8 included, written as \xNN. So a
// name from a file or from the modem can neither break a line nor steer the terminal.
std::string printable(std::string_view text);

// Returns printable() of the text between single quotes.
std::string quoted(std::string_view text);
// Without this overload, std::quoted would be found for a std::string.
inline std::string quoted(const std::string& text) { return quoted(std::string_view(text)); }

using pavo::lowerCase;

// Returns the text without blanks, tabs and line ends around it.
std::string_view trimmed(std::string_view text);

// Returns the parts between separators, empty ones included. "" has one empty part.
std::vector<std::string_view> split(std::string_view text, std::string_view separators);

std::string join(const std::vector<std::string>& parts, std::string_view separator);

}  // namespace pavoctl
