// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the user asked for.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/ProfileParams.h>

#include "Errors.h"
#include "policies/PolicyCall.h"
#include "profiles/Secrets.h"
#include "session/Session.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace pavoctl {

class Context;
struct CommandLine;
struct Descriptions;

// Does what the command line asks for. Throws UsageError and Failure.
using Action = ExitStatus (*)(const CommandLine& line, Context& context);

struct CommandLine {
  // When not empty: text to print instead of doing anything.
  std::string help;

  std::string description;  // The form of --describe; the text is then in help.

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
  bool isEveryOperator = false;      // import: not only plmn's
  bool isTemporary = false;          // import: not persistent
  bool isDryRun = false;             // import, and all that change the modem

  PolicyCall call;           // The policies
  std::string elementsFile;  // apn-class, apn-types: more of what is wanted
  bool isExplained = false;  // list, the policies
  bool isCheck = false;      // import: look at the file only
  int keyNumber = 0;         // release, listen; 0: all
  std::string helpTopic;     // help

  std::chrono::milliseconds watchTime{0};      // verify
  std::chrono::milliseconds settleTime{1000};  // verify
  std::optional<int> capacity;                 // usage

  // Throws UsageError.
  static CommandLine parse(int argc, const char* const* argv);
  // A line of the shell, which was started with the globals of start.
  static CommandLine parseInShell(const std::vector<std::string>& words, const CommandLine& start);
  // All that these two understand.
  static Descriptions describe();
};

}  // namespace pavoctl
