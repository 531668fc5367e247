#include <csignal>
#include <cstdlib>
#include <exception>

#include "CommandLine.h"
#include "Context.h"
#include "Errors.h"
#include "Output.h"

int main(int argc, char** argv) {
  using namespace pavoctl;
  // A reader that has gone is reported like any other output that cannot be written.
  std::signal(SIGPIPE, SIG_IGN);
  // A host's diagnostic channel is standard error unless it is told otherwise, and standard error
  // is for the tool's one line. A device has a channel of its own and does not look at this.
  ::setenv("PAVO_DIAG_FILE", "/dev/null", /*overwrite=*/0);
  try {
    Output output;
    const CommandLine line = CommandLine::parse(argc, argv);
    if (!line.help.empty()) {
      output.write(line.help);
      return exitDone;
    }
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
