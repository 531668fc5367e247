// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Waiting for the user to end a verb that stays.
#pragma once

#include <optional>

namespace pavoctl {

// Turns SIGINT, SIGTERM and SIGHUP into something to wait for. Make it before the library starts:
// threads inherit the mask, and a signal that reaches one of them would end the process before
// profiles are released.
class StopSignal {
 public:
  StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;
  ~StopSignal();

  // Blocks until a signal came, or the other end of standard input was closed if that is a pipe or
  // a socket: then the caller is gone or done. /dev/null says nothing of that kind, a terminal has
  // Ctrl-C.
  void wait();

  // Blocks until a signal came (true), wakeFd is readable or the time is over (false).
  bool waitFor(int wakeFd, int timeoutMs) const;

  // Whether a signal came. It stays so until take() has it.
  bool hasCome() const;
  // The signal, which counts as gone from then on; 0 when none came.
  int take() const;

  // Readable when a signal came.
  int fd() const { return signalFd; }

 private:
  int signalFd = -1;
};

}  // namespace pavoctl
