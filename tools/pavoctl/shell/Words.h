// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Splits a line of the shell into the words of a command.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// Reads the line as a Unix shell does. Blanks separate words, and # begins a comment. '...' takes
// everything literally. In "..." and outside of quotes a backslash takes the next character
// literally. Throws UsageError for a quote that does not end.
std::vector<std::string> wordsOf(std::string_view line);

// Does the same for a line that is being typed. The last word may be empty, and a quote may be
// open.
std::vector<std::string> wordsSoFar(std::string_view line);

}  // namespace pavoctl
