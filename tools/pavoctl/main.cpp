// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CommandLine.h"
#include "Context.h"
#include "Errors.h"
#include "Output.h"
#include "session/Patience.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>

namespace {

using namespace pavoctl;

// The library's end waits for a request in progress. Such a request takes a second when the modem
// hangs.
constexpr std::chrono::milliseconds exitTimeMax{1500};

// Returns the exit status of the process. Sets the timeout once the library may have been started.
ExitStatus run(int argc, const char* const* argv, std::chrono::milliseconds& timeout) {
  try {
    Output output;
    const CommandLine line = CommandLine::parse(argc, argv);
    if (!line.help.empty()) {
      output.write(line.help);
      return exitDone;
    }
    timeout = line.session.timeout;
    Context context(output);
    return line.action(line, context);
  } catch (const UsageError& error) {
    complain(error.what());
    return exitUsage;
  } catch (const std::exception& error) {
    complain(error.what());
    return exitFailed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  // With SIGPIPE ignored, a reader that has gone is reported like any other output that cannot be
  // written.
  std::signal(SIGPIPE, SIG_IGN);
  // A host's diagnostic channel writes to standard error unless this variable names a file, and
  // standard error is for the tool's one line. A device has a channel of its own and does not read
  // the variable.
  ::setenv("PAVO_DIAG_FILE", "/dev/null", /*overwrite=*/0);
  std::chrono::milliseconds timeout{0};
  const ExitStatus status = run(argc, argv, timeout);
  if (timeout.count() > 0) {
    Patience::limitExit(std::min(timeout, exitTimeMax), status);
  }
  return status;
}
