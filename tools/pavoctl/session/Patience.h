// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// How long the library may keep the tool waiting.
#pragma once

#include "Errors.h"
#include "StopSignal.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>

namespace pavoctl {

// The library's calls block and cannot be interrupted: each request that the modem leaves without
// an answer costs a second, and reading a table of 255 profiles is 256 requests. While one of these
// lives, a thread waits beside the one that calls, and ends the process with one line and a status
// when it takes too long.
class Patience {
 public:
  // For that long from now on; then complaint and exitFailed. Inside another one it does nothing:
  // the outer one's time and words count. Main thread only. An interruption is the complaint when
  // the signal comes that obey() has named; without one the signal has to wait.
  Patience(std::chrono::milliseconds limit, std::string complaint, std::string interruption = "");
  // The complaint is made when the time is over, on another thread.
  Patience(std::chrono::milliseconds limit, std::function<std::string()> complaint);
  // For that long from the moment the user stops the tool; then exitDone, in silence.
  Patience(const StopSignal& stop, std::chrono::milliseconds limit);
  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;
  ~Patience();

  // From now on a signal ends what has an interruption.
  static void obey(const StopSignal& stop);

  // In a session that is to outlive a modem that hangs: from now on, when a limit is over, the
  // complaint is printed and the waiting goes on; a signal ends the process then.
  static void outlast(const StopSignal& stop);

  // The way out of the process, which the library's end may hold up, takes at most that long.
  static void limitExit(std::chrono::milliseconds limit, ExitStatus status);

 private:
  Patience(int startFd, std::chrono::milliseconds limit, std::function<std::string()> complaint,
           std::string interruption, ExitStatus status);
  void run();
  // The time is over. Returns only in a session, when what took so long is done after all.
  void runOut() const;

  const bool isOutermost;
  const int startFd;  // Readable when the time begins; -1: at once.
  const std::chrono::milliseconds limit;
  const std::function<std::string()> complaint;  // None: silence.
  const std::string interruption;                // Empty: it is not to be interrupted.
  const ExitStatus status;
  const int doneFd;
  std::thread thread;
};

}  // namespace pavoctl
