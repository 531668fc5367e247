// The verb import.
#pragma once

#include "CommandLine.h"
#include "Errors.h"
#include "Output.h"

namespace pavoctl {

// Throws Failure for a file that cannot be used; entries that are refused are reported one by one.
ExitStatus importFile(const CommandLine& line, Output& output);

}  // namespace pavoctl
