// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Lets a verb wait until the user stops it.
#pragma once

#include <optional>

namespace pavoctl {

// Blocks SIGINT, SIGTERM and SIGHUP, and makes them readable from a descriptor. Construct this
// before the library starts: threads inherit the mask, and a signal that reached an unmasked thread
// would end the process before profiles are released.
class StopSignal {
 public:
  StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;
  ~StopSignal();

  // Blocks until a signal has come. When standard input is a pipe or a socket, the call also
  // returns when its other end was closed, because the caller is then gone or done. Other inputs
  // are not watched: /dev/null is always at its end, and a terminal has Ctrl-C.
  void wait();

  // Returns true when a signal has come, and false when wakeFd is readable or the time is over.
  bool waitFor(int wakeFd, int timeoutMs) const;

  // Returns whether a signal has come. It stays so until take() has taken the signal.
  bool hasCome() const;
  // Returns the signal and forgets it; 0 when none has come.
  int take() const;

  // The descriptor is readable when a signal has come.
  int fd() const { return signalFd; }

 private:
  int signalFd = -1;
};

}  // namespace pavoctl
