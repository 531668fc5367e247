// A mutex, its lock and its condition variable that clang's -Wthread-safety understands.
#pragma once

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
  // May return early: call it in a loop that tests the condition.
  void wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock<std::mutex> lock(mutex.mutex, std::adopt_lock);
    condition.wait(lock);
    lock.release();
  }
  void notifyOne() { condition.notify_one(); }
  void notifyAll() { condition.notify_all(); }

 private:
  std::condition_variable condition;
};

}  // namespace pavo
