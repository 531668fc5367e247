// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The check of import --check.
#pragma once

#include "CommandLine.h"

namespace pavoctl {

// Throws Failure for a file that cannot be read as an APN list. Returns exitFailed when there are
// findings.
ExitStatus checkFile(const CommandLine& line, Context& context);

}  // namespace pavoctl
