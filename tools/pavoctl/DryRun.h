// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What add, modify and delete would do.
#pragma once

#include "CommandLine.h"

namespace pavoctl {

// Nothing on the modem changes; the first does not even ask it.
ExitStatus wouldAdd(const CommandLine& line, Context& context);
ExitStatus wouldModify(const CommandLine& line, Context& context);
ExitStatus wouldDelete(const CommandLine& line, Context& context);

}  // namespace pavoctl
