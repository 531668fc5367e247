// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The completion of words on a line of the shell.
#pragma once

#include "manual/Description.h"

#include <string>
#include <vector>

namespace pavoctl {

// Returns the words to which the last word, still being typed, may be completed. They stand in the
// order of the description.
std::vector<std::string> completions(const Description& description,
                                     const std::vector<std::string>& words);

// Returns the longest beginning that all of the words share.
std::string commonBeginning(const std::vector<std::string>& words);

}  // namespace pavoctl
