// Runs the callbacks of one handle, one after the other, in the order in which they were posted, on
// a thread of its own: whoever posts, the reader of a connection above all, never waits for one.
//
//   idle --start--> running --stop--> stopped
//
// The functions that post, and stop(), may be called from any thread, from inside a callback too. A
// callback runs with no lock held.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <thread>

namespace ovix {

class CallbackQueue {
 public:
  using Callback = std::function<void()>;

  CallbackQueue();
  CallbackQueue(const CallbackQueue&) = delete;
  CallbackQueue& operator=(const CallbackQueue&) = delete;
  ~CallbackQueue();

  // Callbacks posted before wait for it. A second call and one after stop() do nothing.
  void start();

  // As many as may wait. A modem that talks faster than its callbacks run fills no memory with it.
  static constexpr size_t waitingMax = 16384;

  // After stop() this does nothing.
  void post(Callback callback);

  // As post(), for what can be done without: dropped when waitingMax callbacks wait. A line of
  // trace() reports the first that is dropped, and again the first after the queue was empty.
  void postIfRoom(Callback callback);

  // When it has returned, no callback runs or will run. Called from inside one of the callbacks, it
  // does not wait for that one, and the thread ends on its own after it.
  void stop();

 private:
  struct State;

  // The thread shares it: after a stop() from inside a callback it outlives this object.
  const std::shared_ptr<State> state;
};

}  // namespace ovix
