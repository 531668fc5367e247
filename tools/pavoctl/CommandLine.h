// What the user asked for.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/ProfileParams.h>

#include <string>

#include "Errors.h"
#include "Secrets.h"
#include "Session.h"

namespace pavoctl {

class Context;
struct CommandLine;

// Does what the command line asks for. Throws UsageError and Failure.
using Action = ExitStatus (*)(const CommandLine& line, Context& context);

struct CommandLine {
  // When not empty: text to print instead of doing anything.
  std::string help;

  std::string verb;
  Action action = nullptr;

  Session::Options session;
  bool isJson = false;
  Secrets secrets = Secrets::masked;

  int profileId = 0;                 // get, modify, delete
  pavo::ProfileParams attributes;    // add, modify
  pavo::FilterProfileParams filter;  // list
  bool isPersistent = false;         // add, import
  bool isInitialAttach = false;      // add
  bool isHeld = false;               // add, import
  std::string file;                  // import
  std::string plmn;                  // import
  bool isTemporary = false;          // import: not persistent
  bool isDryRun = false;             // import

  // Throws UsageError.
  static CommandLine parse(int argc, const char* const* argv);
};

}  // namespace pavoctl
