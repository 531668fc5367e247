// Runs the callbacks of one handle, one after the other, in the order in which they were posted, on
// a thread of its own: whoever posts, the reader of a connection above all, never waits for one.
//
//   idle --start--> running --stop--> stopped
//
// post() and stop() may be called from any thread, from inside a callback too. A callback runs with
// no lock held.
#pragma once

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

  // After stop() this does nothing.
  void post(Callback callback);

  // When it has returned, no callback runs or will run. Called from inside one of the callbacks, it
  // does not wait for that one, and the thread ends on its own after it.
  void stop();

 private:
  struct State;

  // The thread shares it: after a stop() from inside a callback it outlives this object.
  const std::shared_ptr<State> state;
};

}  // namespace ovix
