// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/Thread.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace pavo {
namespace {

// Blocks all signals on this thread, because a new thread inherits the mask of its creator.
class SignalBlocker {
 public:
  SignalBlocker() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
  }
  ~SignalBlocker() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
  SignalBlocker(const SignalBlocker&) = delete;
  SignalBlocker& operator=(const SignalBlocker&) = delete;

 private:
  sigset_t before;
};

}  // namespace

std::thread startThread(const char* name, std::function<void()> body) {
  const SignalBlocker blocker;
  std::thread thread(std::move(body));
  pthread_setname_np(thread.native_handle(), name);
  return thread;
}

}  // namespace pavo
