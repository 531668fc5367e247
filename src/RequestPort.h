// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// RequestPort connects callers' threads with the worker: one request slot and one response slot.
//
// Every key's request function holds the number of a port, never the port or the worker itself. A
// key may therefore outlive its worker by any time: the number is then unknown and the response
// empty.
//
// States: open without a descriptor (the worker is being built) -> open -> ending -> closed ->
// ended. A closed port answers with an empty response. A release that an ending or closed port does
// not handle waits until the port has ended, because the listener of the released key may run until
// then. Request functions no longer find an ended port.
//
// Locks, in this order: turns (one caller at a time, held for the whole call), slotMutex (the
// slots; the worker holds it while it handles a request). putOffMutex is a leaf lock.
//
// In a forked child the port is a copy without a worker: it answers with an empty response and
// touches nothing.
#pragma once

#include "ClientRequest.h"
#include "ClientResponse.h"
#include "RequestFunction.h"
#include "TurnQueue.h"
#include "base/Fork.h"
#include "base/Mutex.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <thread>

namespace pavo {

class RequestPort {
 public:
  // Creates a port. Its request functions find it until it has ended.
  static std::shared_ptr<RequestPort> create();
  RequestPort(const RequestPort&) = delete;
  RequestPort& operator=(const RequestPort&) = delete;
  ~RequestPort() = default;

  // Returns a request function that submits to this port for as long as the port is open. The
  // function is small enough to be copied into a key without an allocation.
  requestFunction getRequestFunction() const;

  // Sets the eventfd that wakes the worker.
  void open(int eventFd) { wakeFd.store(eventFd); }

  // Hands a request to the worker and waits for the response. Callers on several threads take
  // turns. The response is empty when the port is closed, when the worker cannot be woken, in a
  // forked child, and on a worker's thread, because that thread would wait for itself. A release on
  // a worker's thread is put off: the port's worker handles it with a later event.
  std::shared_ptr<ClientResponse> submit(const std::shared_ptr<ClientRequest>& request)
      EXCLUDES(turns, slotMutex, putOffMutex);

  // A worker ends with beginEnd(), close(), workerJoined() and end(), called in this order on one
  // thread, the ending thread.

  // Announces that the calling thread ends the worker that runs on workerThread and is going to
  // wait for it. Returns false, and changes nothing, when workerThread is the calling thread or
  // already waits for it: the worker cannot be ended here. Also returns false in a forked child.
  bool beginEnd(std::thread::id workerThread);

  // Answers all waiting and later callers with an empty response. Waits for a request that is being
  // handled. The releases that were put off are lost: their profiles stay on the modem, like those
  // of all keys that outlive the worker.
  void close() EXCLUDES(slotMutex, putOffMutex);

  // Records that the worker's thread has been joined.
  void workerJoined();

  // Records that the worker's cache, and with it every listener, has been destroyed. Releases no
  // longer wait for the port.
  void end();

  // Returns whether this process is a forked child of the process that made the port.
  bool isInForkedChild() const { return process.isInForkedChild(); }

  // Handles the request in the slot, if there is one. Only the worker calls this. handle(request)
  // returns the response; an empty response leaves the caller waiting.
  template <typename Handle>
  void serve(const Handle& handle) EXCLUDES(slotMutex) {
    {
      const MutexLock lock(slotMutex);
      if (requestSlot != nullptr && !closed) {
        // The worker keeps nothing of the request or of its response beyond the lock. The caller is
        // waiting meanwhile and holds its own handle of every key, so no key is destroyed on the
        // worker.
        responseSlot = handle(*requestSlot);
        requestSlot.reset();
      }
    }
    // The caller is woken after the unlock, because it would otherwise wake up only to wait for the
    // mutex.
    answered.notifyOne();
  }

  // Returns the oldest release that was put off, or nothing. Only the worker calls this, once for
  // each event: a release may cost a modem request, and callers and a stop come between two of
  // them. When there are more, the worker is woken again.
  std::shared_ptr<ClientRequest> takePutOff() EXCLUDES(putOffMutex);

  // Marks the calling thread as a worker's thread, permanently.
  static void becomeWorkerThread();
  static bool onWorkerThread();

  // Logs a call into the library that a worker's thread made.
  static void logOnWorkerThread(const char* outcome, const char* call);
  static void logRefusal(const char* call) { logOnWorkerThread("refused", call); }
  // Logs a call in a forked child.
  static void logRefusalInForkedChild(const char* call);

 private:
  RequestPort() = default;

  // Performs submit() on a thread that may wait for the worker. Returns an empty pointer when there
  // is no response.
  std::shared_ptr<ClientResponse> exchange(const std::shared_ptr<ClientRequest>& request)
      EXCLUDES(turns, slotMutex);

  // Keeps a release for the worker. Returns false when the request is not a release.
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
  std::deque<std::shared_ptr<ClientRequest>> putOffReleases GUARDED_BY(putOffMutex);
  bool acceptsPutOff GUARDED_BY(putOffMutex) = true;
};

}  // namespace pavo
