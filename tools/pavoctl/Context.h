// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The objects that the verbs work with. A process has one Context. A shell's verbs share it, and
// with it one library and one cache.
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

  // A verb that waits for a signal calls this before session(). Threads that the library had
  // started earlier would not have the signals blocked, so a signal would end the process.
  StopSignal& stopSignal();
  // A verb that changes the modem calls this first. A signal that comes while the verb waits for
  // the modem then ends the process, with a message on what may be half done. In a shell it does
  // nothing: a shell handles signals itself.
  void obeySignals();

  // Starts the library with the options of the first call. A later call returns the same session
  // with its own timeout. Throws Failure when there is no modem; the next call then tries again.
  Session& session(const Session::Options& options);

  // Gives the key to the shell and prints its number. Only to be called in a shell.
  void keepKey(Key key, bool isJson) const;

  Output& output;
  KeyRing* keys = nullptr;  // the shell's; null outside of a shell
  bool isShellOver = false;

 private:
  std::optional<StopSignal> stop;
  std::optional<Session> running;
};

}  // namespace pavoctl
