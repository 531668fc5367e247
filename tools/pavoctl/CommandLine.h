// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The parsed command line.
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

// Carries out the command line. Throws UsageError and Failure.
using Action = ExitStatus (*)(const CommandLine& line, Context& context);

struct CommandLine {
  // When this is not empty, it is printed and nothing else is done.
  std::string help;

  std::string description;  // the form of --describe; the text is then in help

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
  bool isEveryOperator = false;      // import: entries of every operator, not only those of plmn
  bool isTemporary = false;          // import: not persistent
  bool isDryRun = false;             // import and every verb that changes the modem

  PolicyCall call;           // the policy verbs
  std::string elementsFile;  // apn-class, apn-types: a file with further elements
  bool isExplained = false;  // list and the policy verbs
  bool isCheck = false;      // import: only check the file
  int keyNumber = 0;         // release, listen; 0: all
  std::string helpTopic;     // help

  std::chrono::milliseconds watchTime{0};      // verify
  std::chrono::milliseconds settleTime{1000};  // verify
  std::optional<int> capacity;                 // usage

  // Throws UsageError.
  static CommandLine parse(int argc, const char* const* argv);
  // Parses a line of the shell. start holds the global options of the shell's own command line.
  static CommandLine parseInShell(const std::vector<std::string>& words, const CommandLine& start);
  // Returns the commands and options that both of these accept.
  static Descriptions describe();
};

}  // namespace pavoctl
