// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Dry runs of add, modify and delete.
#pragma once

#include "CommandLine.h"

namespace pavoctl {

// A dry run changes nothing on the modem. wouldAdd does not even start the library.
ExitStatus wouldAdd(const CommandLine& line, Context& context);
ExitStatus wouldModify(const CommandLine& line, Context& context);
ExitStatus wouldDelete(const CommandLine& line, Context& context);

}  // namespace pavoctl
