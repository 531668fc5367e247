// What the user asked for.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/ProfileParams.h>

#include <string>

#include "Secrets.h"
#include "Session.h"

namespace pavoctl {

enum class Verb { list, get, add, modify, remove, refresh, dump, watch, import };

struct CommandLine {
  Verb verb = Verb::list;
  // When not empty: text to print instead of doing anything.
  std::string help;

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
  bool isDryRun = false;             // import

  // Throws UsageError.
  static CommandLine parse(int argc, const char* const* argv);
};

}  // namespace pavoctl
