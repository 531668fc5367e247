// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A line of the shell as the words of a command.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pavoctl {

// As a Unix shell reads it: blanks separate words, '...' takes everything literally, "..." and
// unquoted text know the backslash, # begins a comment. Throws UsageError for a quote that does not
// end.
std::vector<std::string> wordsOf(std::string_view line);

// The same for a line that is being typed: the last word may be empty, and a quote may be open.
std::vector<std::string> wordsSoFar(std::string_view line);

}  // namespace pavoctl
