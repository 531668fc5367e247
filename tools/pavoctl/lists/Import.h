// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The verb import.
#pragma once

#include "CommandLine.h"

namespace pavoctl {

// Throws Failure for a file that cannot be used. Refused entries are reported one by one.
ExitStatus importFile(const CommandLine& line, Context& context);

}  // namespace pavoctl
