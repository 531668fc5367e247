// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What may come next on a line of the shell.
#pragma once

#include "manual/Description.h"

#include <string>
#include <vector>

namespace pavoctl {

// The words that the last one, which is being typed, may become; in the order of the description.
std::vector<std::string> completions(const Description& description,
                                     const std::vector<std::string>& words);

// What all of them begin with.
std::string commonBeginning(const std::vector<std::string>& words);

}  // namespace pavoctl
