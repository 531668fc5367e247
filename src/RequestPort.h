// Where callers' threads and the worker meet: one request slot and one response slot.
//
// Every key's request function names a port by its number, never the port or the worker itself, so
// a key may outlive its worker by any time: the number is then unknown and the answer empty.
//
// States: open without a descriptor (the worker is being built) -> open -> ending -> closed ->
// ended. A closed port answers empty. A release that meets an ending or closed port also waits
// until the port has ended, because until then the listener of the released key may run. An ended
// port is no longer found by its request functions.
//
// Locks, in this order: turns (one caller at a time, held for the whole call), slotMutex (the
// slots; the worker holds it while it handles a request). putOffMutex is a leaf.
//
// In a forked child the port is a copy without a worker: it answers empty and touches nothing.
#pragma once

#include "ClientRequest.h"
#include "ClientResponse.h"
#include "Fork.h"
#include "RequestFunction.h"
#include "TurnQueue.h"
#include "base/Mutex.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace pavo {

class RequestPort {
 public:
  // A new port, found by its number until it has ended.
  static std::shared_ptr<RequestPort> create();
  RequestPort(const RequestPort&) = delete;
  RequestPort& operator=(const RequestPort&) = delete;
  ~RequestPort() = default;

  // A request function that submits to this port for as long as it is open. Small enough to be
  // copied into a key without an allocation.
  requestFunction getRequestFunction() const;

  // Gives the port the eventfd that wakes its worker.
  void open(int eventFd) { wakeFd.store(eventFd); }

  // Hands a request to the worker and waits for the response; callers on several threads take
  // turns. Empty when the port is closed, when the worker cannot be woken, in a forked child, and
  // on a worker thread: that would wait for itself. A release asked for on a worker thread is put
  // off until the event in hand is done.
  std::shared_ptr<ClientResponse> submit(const std::shared_ptr<ClientRequest>& request)
      EXCLUDES(turns, slotMutex, putOffMutex);

  // The end of a worker is beginEnd(), close(), workerJoined() and end(), in this order and on one
  // thread, the ending thread.

  // Announces that the calling thread ends the worker that runs on the thread of that id, and is
  // going to wait for it. False, and nothing has changed, when that thread waits for the calling
  // one already or is the calling one: the worker cannot be ended here. False in a forked child,
  // too.
  bool beginEnd(std::thread::id workerThread);

  // Answers all callers, waiting and later ones, empty. Waits for a request that is being handled.
  // The releases put off are lost: like those of all keys that outlive the worker, their profiles
  // stay on the modem.
  void close() EXCLUDES(slotMutex, putOffMutex);

  // The worker's thread has been joined.
  void workerJoined();

  // The worker's cache, and with it every listener, has been destroyed: releases wait no longer.
  void end();

  // Whether this process is a forked child of the one that made the port.
  bool isInForkedChild() const { return process.isInForkedChild(); }

  // Worker: handles the request in the slot, if there is one. handle(request) gives the response;
  // an empty one leaves the caller waiting.
  template <typename Handle>
  void serve(const Handle& handle) EXCLUDES(slotMutex) {
    {
      const MutexLock lock(slotMutex);
      if (requestSlot != nullptr) {
        // Nothing of the request or of its response outlives the lock on this side. The caller, who
        // holds its own handle of every key, is waiting meanwhile, so no key dies on the worker.
        responseSlot = handle(*requestSlot);
        requestSlot.reset();
      }
    }
    // After the unlock: the caller would only wake up to wait for the mutex.
    answered.notifyOne();
  }

  // Worker: the releases put off so far.
  std::vector<std::shared_ptr<ClientRequest>> takePutOff() EXCLUDES(putOffMutex);

  // Marks the calling thread as a worker's, for good.
  static void becomeWorkerThread();
  static bool onWorkerThread();

  // Writes the line for a call that a worker thread made into the library.
  static void logOnWorkerThread(const char* outcome, const char* call);
  static void logRefusal(const char* call) { logOnWorkerThread("refused", call); }
  // Writes the line for a call in a forked child.
  static void logRefusalInForkedChild(const char* call);

 private:
  RequestPort() = default;

  // submit() on a thread that may wait for the worker. Empty when there is no response.
  std::shared_ptr<ClientResponse> exchange(const std::shared_ptr<ClientRequest>& request)
      EXCLUDES(turns, slotMutex);

  // False when the request is no release.
  bool putOff(const std::shared_ptr<ClientRequest>& request) EXCLUDES(putOffMutex);

  std::uint64_t number = 0;  // constant once the port is created
  const ProcessMark process;
  std::atomic<int> wakeFd{-1};

  TurnQueue turns;
  Mutex slotMutex;
  CondVar answered;
  std::shared_ptr<ClientRequest> requestSlot GUARDED_BY(slotMutex);
  std::shared_ptr<ClientResponse> responseSlot GUARDED_BY(slotMutex);
  bool closed GUARDED_BY(slotMutex) = false;

  Mutex putOffMutex;
  std::vector<std::shared_ptr<ClientRequest>> putOffReleases GUARDED_BY(putOffMutex);
  bool acceptsPutOff GUARDED_BY(putOffMutex) = true;
};

}  // namespace pavo
