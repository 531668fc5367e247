// Does what the command line asks for.
#pragma once

#include "CommandLine.h"
#include "Errors.h"
#include "Output.h"

namespace pavoctl {

// Throws UsageError and Failure.
ExitStatus runVerb(const CommandLine& line, Output& output);

}  // namespace pavoctl
