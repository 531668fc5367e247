#include "CallbackQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "Trace.h"
#include "base/Thread.h"

namespace ovix {

struct CallbackQueue::State {
  std::mutex mutex;
  // All below are guarded by the mutex.
  std::condition_variable changed;
  std::deque<Callback> waiting;
  std::thread thread;
  std::thread::id runningOn;  // No thread while no callback runs.
  bool stopped = false;
  bool isOverflowing = false;  // From the first that was dropped until none waits.

  void run();
};

void CallbackQueue::State::run() {
  std::unique_lock lock(mutex);
  while (true) {
    changed.wait(lock, [this] { return stopped || !waiting.empty(); });
    if (stopped) {
      return;
    }
    Callback callback = std::move(waiting.front());
    waiting.pop_front();
    isOverflowing = isOverflowing && !waiting.empty();
    runningOn = std::this_thread::get_id();
    lock.unlock();
    callback();
    callback = nullptr;
    lock.lock();
    runningOn = {};
    changed.notify_all();
  }
}

CallbackQueue::CallbackQueue() : state(std::make_shared<State>()) {}

CallbackQueue::~CallbackQueue() { stop(); }

void CallbackQueue::start() {
  const std::lock_guard lock(state->mutex);
  if (state->stopped || state->thread.joinable()) {
    return;
  }
  state->thread = startThread("ovix-callbacks", [state = state] { state->run(); });
}

void CallbackQueue::post(Callback callback) {
  {
    const std::lock_guard lock(state->mutex);
    if (state->stopped) {
      return;
    }
    state->waiting.push_back(std::move(callback));
  }
  state->changed.notify_all();
}

void CallbackQueue::postIfRoom(Callback callback) {
  std::unique_lock lock(state->mutex);
  if (state->waiting.size() < waitingMax) {
    lock.unlock();
    post(std::move(callback));
  } else if (!std::exchange(state->isOverflowing, true)) {
    lock.unlock();
    trace("%zu callbacks wait, indications are dropped", waitingMax);
  }
}

void CallbackQueue::stop() {
  std::deque<Callback> dropped;
  std::thread ended;
  std::unique_lock lock(state->mutex);
  state->stopped = true;
  dropped.swap(state->waiting);
  ended.swap(state->thread);
  state->changed.notify_all();
  if (state->runningOn == std::this_thread::get_id()) {
    if (ended.joinable()) {
      ended.detach();
    }
    return;
  }
  // The thread may have been taken, and detached, by a stop() from inside the callback that is
  // still running, so that waiting for the thread is not enough.
  state->changed.wait(lock, [this] { return state->runningOn == std::thread::id(); });
  lock.unlock();
  if (ended.joinable()) {
    ended.join();
  }
}

}  // namespace ovix
