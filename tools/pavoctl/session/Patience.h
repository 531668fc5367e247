// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Limits how long the library may keep the tool waiting.
#pragma once

#include "Errors.h"
#include "StopSignal.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>

namespace pavoctl {

// The library's calls block and cannot be interrupted. Each request that the modem leaves without
// an answer costs a second, and a table of 255 profiles takes 256 requests. While a Patience lives,
// a thread of its own waits beside the calling thread. When the limit is over, it ends the process
// with one line and an exit status.
class Patience {
 public:
  // The limit counts from now on. At its end the process complains and exits with exitFailed. A
  // Patience inside another one does nothing: the limit and the complaint of the outer one count.
  // It is for the main thread only. When the signal comes that obey() has named, the process ends
  // with interruption as its complaint. Without an interruption the signal has to wait.
  Patience(std::chrono::milliseconds limit, std::string complaint, std::string interruption = "");
  // The complaint is made on the thread of the Patience, when the limit is over.
  Patience(std::chrono::milliseconds limit, std::function<std::string()> complaint);
  // The limit counts from the moment when the user stops the tool. At its end the process exits
  // with exitDone, without a complaint.
  Patience(const StopSignal& stop, std::chrono::milliseconds limit);
  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;
  ~Patience();

  // From now on the signal ends every wait that has an interruption.
  static void obey(const StopSignal& stop);

  // To be called by a session that is to outlive a modem that hangs. From now on the process prints
  // the complaint at the end of a limit and goes on waiting. A signal then ends the process.
  static void outlast(const StopSignal& stop);

  // Ends the process with status when it has not ended by itself within the limit. The library's
  // end may hold it up.
  static void limitExit(std::chrono::milliseconds limit, ExitStatus status);

 private:
  Patience(int startFd, std::chrono::milliseconds limit, std::function<std::string()> complaint,
           std::string interruption, ExitStatus status);
  void run();
  // Handles the end of the limit. It returns only in a session, when the slow call has finished
  // after all.
  void runOut() const;

  const bool isOutermost;
  const int startFd;  // readable when the limit begins to count; -1: it counts at once
  const std::chrono::milliseconds limit;
  const std::function<std::string()> complaint;  // null: no complaint
  const std::string interruption;                // empty: no signal ends the wait
  const ExitStatus status;
  const int doneFd;
  std::thread thread;
};

}  // namespace pavoctl
