// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The exceptions with which the tool's parts end a verb. Their text becomes one line on standard
// error.
#pragma once

#include <stdexcept>

namespace pavoctl {

enum ExitStatus : int {
  exitDone = 0,
  exitFailed = 1,
  exitUsage = 2,
};

// The command line asks for something that makes no sense; nothing has been sent to the modem.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The library, the modem or the system refused.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The modem has not answered. The request may have been carried out all the same, and further
// requests make no sense.
class NoAnswer : public Failure {
 public:
  using Failure::Failure;
};

// The tool's own output cannot be written. The verb's changes to the modem stay.
class OutputFailure : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace pavoctl
