// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Runs the callbacks of one handle, one after the other, in the order in which they were posted, on
// a thread of its own. So a thread that posts never waits for a callback. The reader of a
// connection depends on that.
//
//   idle --start--> running --stop--> stopped
//
// Every function may be called from any thread, from inside a callback too. A callback runs with no
// lock held.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace ovix {

class CallbackQueue {
 public:
  using Callback = std::function<void()>;

  CallbackQueue();
  CallbackQueue(const CallbackQueue&) = delete;
  CallbackQueue& operator=(const CallbackQueue&) = delete;
  ~CallbackQueue();

  // Callbacks that were posted before start() run after it. A second call and a call after stop()
  // do nothing. Throws std::system_error when the system has no thread left.
  void start();

  // The limit of postIfRoom(). A modem that sends faster than the callbacks run fills no memory.
  static constexpr size_t waitingMax = 16384;

  // Appends the callback. It does nothing after stop().
  void post(Callback callback);

  // Does the same as post(), but drops the callback when waitingMax callbacks wait. A debug line
  // reports the first that is dropped, and again the first after the queue was empty.
  void postIfRoom(Callback callback);

  // Once stop() has returned, no callback runs or will run. A call from inside one of the callbacks
  // does not wait for that one; the thread ends on its own after it.
  void stop();

 private:
  struct State;

  // Shared with the thread, which outlives this object after a stop() from inside a callback.
  const std::shared_ptr<State> state;
};

}  // namespace ovix
