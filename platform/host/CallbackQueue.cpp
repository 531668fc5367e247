// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CallbackQueue.h"

#include "DebugLine.h"
#include "base/Mutex.h"
#include "base/Thread.h"

#include <deque>
#include <thread>
#include <utility>

namespace ovix {

using pavo::MutexLock;

struct CallbackQueue::State {
  pavo::Mutex mutex;
  pavo::CondVar changed;
  std::deque<Callback> waiting GUARDED_BY(mutex);
  std::thread thread GUARDED_BY(mutex);
  std::thread::id runningOn GUARDED_BY(mutex);  // No thread while no callback runs.
  bool isStopped GUARDED_BY(mutex) = false;
  // This is set from the first dropped callback until no callback waits.
  bool isOverflowing GUARDED_BY(mutex) = false;

  void start(std::shared_ptr<State> self) EXCLUDES(mutex);
  void run() EXCLUDES(mutex);
  void push(Callback callback) REQUIRES(mutex);
  void pushIfRoom(Callback callback) EXCLUDES(mutex);
  void stop() EXCLUDES(mutex);

 private:
  Callback takeNext() EXCLUDES(mutex);
  void noteReturned() EXCLUDES(mutex);
};

void CallbackQueue::State::start(std::shared_ptr<State> self) {
  const MutexLock lock(mutex);
  if (!isStopped && !thread.joinable()) {
    thread = pavo::startThread("ovix-callbacks", [self = std::move(self)] { self->run(); });
  }
}

void CallbackQueue::State::run() {
  while (Callback callback = takeNext()) {
    callback();
    // This destroys the callback's captures before stop() returns.
    callback = nullptr;
    noteReturned();
  }
}

// Waits for a callback. The result is empty after stop().
CallbackQueue::Callback CallbackQueue::State::takeNext() {
  const MutexLock lock(mutex);
  while (!isStopped && waiting.empty()) {
    changed.wait(mutex);
  }
  if (isStopped) {
    return nullptr;
  }
  Callback next = std::move(waiting.front());
  waiting.pop_front();
  isOverflowing = isOverflowing && !waiting.empty();
  runningOn = std::this_thread::get_id();
  return next;
}

void CallbackQueue::State::noteReturned() {
  const MutexLock lock(mutex);
  runningOn = {};
  changed.notifyAll();
}

void CallbackQueue::State::push(Callback callback) {
  if (!isStopped) {
    waiting.push_back(std::move(callback));
    changed.notifyAll();
  }
}

void CallbackQueue::State::pushIfRoom(Callback callback) {
  bool isFirstDropped = false;
  {
    const MutexLock lock(mutex);
    if (waiting.size() < waitingMax) {
      push(std::move(callback));
    } else {
      isFirstDropped = !std::exchange(isOverflowing, true);
    }
  }
  if (isFirstDropped) {
    writeDebugLine("%zu callbacks wait, indications are dropped", waitingMax);
  }
}

void CallbackQueue::State::stop() {
  std::deque<Callback> dropped;
  std::thread ended;
  {
    const MutexLock lock(mutex);
    isStopped = true;
    dropped.swap(waiting);
    ended.swap(thread);
    changed.notifyAll();
    if (runningOn == std::this_thread::get_id()) {
      if (ended.joinable()) {
        ended.detach();
      }
      return;
    }
    // A stop() from inside the callback that is still running may have detached the thread. Then
    // there is no thread to join, and the callback itself has to be waited for.
    while (runningOn != std::thread::id()) {
      changed.wait(mutex);
    }
  }
  if (ended.joinable()) {
    ended.join();
  }
}

CallbackQueue::CallbackQueue() : state(std::make_shared<State>()) {}

CallbackQueue::~CallbackQueue() { stop(); }

void CallbackQueue::start() { state->start(state); }

void CallbackQueue::post(Callback callback) {
  State& shared = *state;
  const MutexLock lock(shared.mutex);
  shared.push(std::move(callback));
}

void CallbackQueue::postIfRoom(Callback callback) { state->pushIfRoom(std::move(callback)); }

void CallbackQueue::stop() { state->stop(); }

}  // namespace ovix
