// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "base/Fork.h"

#include <pthread.h>

#include <atomic>
#include <vector>

namespace pavo {

namespace {

// The number of forks between the process that loaded the library and this process.
std::atomic<unsigned int> forks{0};

// The object is never destroyed, because a process may fork while it exits.
struct ForkGuard {
  Mutex mutex;
  std::vector<Mutex*> keptFree GUARDED_BY(mutex);

  static ForkGuard& instance() {
    static ForkGuard& guard = *new ForkGuard;
    return guard;
  }

  ForkGuard() { ::pthread_atfork(beforeFork, afterForkInParent, afterForkInChild); }

  // The forking thread holds all these mutexes across fork(). The thread safety analysis cannot
  // follow the loop, nor a lock that one function takes and another releases.
  static void beforeFork() NO_THREAD_SAFETY_ANALYSIS {
    ForkGuard& guard = instance();
    guard.mutex.lock();
    for (Mutex* const kept : guard.keptFree) {
      kept->lock();
    }
  }

  static void afterForkInParent() NO_THREAD_SAFETY_ANALYSIS {
    ForkGuard& guard = instance();
    for (auto kept = guard.keptFree.rbegin(); kept != guard.keptFree.rend(); ++kept) {
      (*kept)->unlock();
    }
    guard.mutex.unlock();
  }

  static void afterForkInChild() {
    forks.fetch_add(1, std::memory_order_relaxed);
    afterForkInParent();
  }
};

}  // namespace

ProcessMark::ProcessMark() {
  // The first mark installs the handlers that count the forks.
  ForkGuard::instance();
  generation = forks.load(std::memory_order_relaxed);
}

bool ProcessMark::isInForkedChild() const {
  return generation != forks.load(std::memory_order_relaxed);
}

void keepFreeAcrossFork(Mutex& mutex) {
  ForkGuard& guard = ForkGuard::instance();
  const MutexLock lock(guard.mutex);
  guard.keptFree.push_back(&mutex);
}

}  // namespace pavo
