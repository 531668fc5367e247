// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A mutex, its lock and its condition variable, with the annotations of clang's -Wthread-safety.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define PAVO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define PAVO_THREAD_ANNOTATION(x)
#endif

#define CAPABILITY(x) PAVO_THREAD_ANNOTATION(capability(x))
#define SCOPED_CAPABILITY PAVO_THREAD_ANNOTATION(scoped_lockable)
#define GUARDED_BY(x) PAVO_THREAD_ANNOTATION(guarded_by(x))
#define REQUIRES(...) PAVO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) PAVO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) PAVO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) PAVO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS PAVO_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace pavo {

class CAPABILITY("mutex") Mutex {
 public:
  void lock() ACQUIRE() { mutex.lock(); }
  void unlock() RELEASE() { mutex.unlock(); }

 private:
  friend class CondVar;
  std::mutex mutex;
};

class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& held) ACQUIRE(held) : mutex(held) { mutex.lock(); }
  ~MutexLock() RELEASE() { mutex.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex;
};

class CondVar {
 public:
  // Both waits may return early: call them in a loop that tests the condition.
  void wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex, std::adopt_lock);
    condition.wait(lock);
    lock.release();
  }
  // Returns false when the deadline has passed.
  template <typename Clock, typename Duration>
  bool waitUntil(Mutex& mutex, const std::chrono::time_point<Clock, Duration>& deadline)
      REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex, std::adopt_lock);
    const std::cv_status status = condition.wait_until(lock, deadline);
    lock.release();
    return status == std::cv_status::no_timeout;
  }
  void notifyOne() { condition.notify_one(); }
  void notifyAll() { condition.notify_all(); }

 private:
  std::condition_variable condition;
};

}  // namespace pavo
