// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What the verbs work with. One for a process: a verb on the command line has it for itself,
// several verbs in one process share it, and with it one library, one cache.
#pragma once

#include "Output.h"
#include "StopSignal.h"
#include "session/Session.h"

#include <optional>

namespace pavoctl {

class KeyRing;

class Context {
 public:
  explicit Context(Output& standardOutput) : output(standardOutput) {}

  // Verbs that stay ask for it before they ask for the session: threads of the library that started
  // earlier would let the signals end the process.
  StopSignal& stopSignal();
  // The same for verbs that change the modem: a signal that comes while the modem is waited for
  // ends the process with a word on what may be half done. A shell has its own way.
  void obeySignals();

  // Starts the library with the first call's options; later calls get the same session, with their
  // timeout. Throws Failure when there is no modem; the next call then tries again.
  Session& session(const Session::Options& options);

  // A key that a verb is to hold goes to the shell, when there is one. Says its number there.
  void keepKey(Key key, bool isJson) const;

  Output& output;
  KeyRing* keys = nullptr;  // The shell's.
  bool isShellOver = false;

 private:
  std::optional<StopSignal> stop;
  std::optional<Session> running;
};

}  // namespace pavoctl
