// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/Mutex.h"

namespace pavo {

// Lets one caller in at a time, in the order of their arrival. A plain mutex may let a thread that
// has just left in again before the waiting threads, so one busy thread could keep the others out
// for any time. A caller that finds the queue empty pays only for the lock.
class CAPABILITY("mutex") TurnQueue {
 public:
  void enter() ACQUIRE() {
    const MutexLock lock(mutex);
    if (!isTaken) {
      isTaken = true;
      return;
    }
    Waiter self;
    (last != nullptr ? last->next : first) = &self;
    last = &self;
    while (!self.isNext) {
      self.wakeUp.wait(mutex);
    }
  }

  void leave() RELEASE() {
    const MutexLock lock(mutex);
    if (first == nullptr) {
      isTaken = false;
      return;
    }
    Waiter& next = *first;
    first = next.next;
    if (first == nullptr) {
      last = nullptr;
    }
    next.isNext = true;
    // The notification happens under the lock, because wakeUp stands on the stack of the thread
    // that wakes up.
    next.wakeUp.notifyOne();
  }

 private:
  struct Waiter {
    CondVar wakeUp;
    bool isNext = false;
    Waiter* next = nullptr;
  };

  Mutex mutex;
  bool isTaken GUARDED_BY(mutex) = false;
  Waiter* first GUARDED_BY(mutex) = nullptr;
  Waiter* last GUARDED_BY(mutex) = nullptr;
};

class SCOPED_CAPABILITY Turn {
 public:
  explicit Turn(TurnQueue& queue) ACQUIRE(queue) : queue(queue) { queue.enter(); }
  ~Turn() RELEASE() { queue.leave(); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  TurnQueue& queue;
};

}  // namespace pavo
