// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The verb shell: the tool's verbs, one after the other, on one library.
#pragma once

#include "CommandLine.h"

namespace pavoctl {

// Runs until the end of the input, quit, SIGTERM or SIGHUP, and then releases the keys. Returns
// exitDone at a terminal, else the highest status of a command.
ExitStatus runShell(const CommandLine& line, Context& context);

}  // namespace pavoctl
