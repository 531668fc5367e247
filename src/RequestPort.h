// Where callers' threads and the worker meet: one request slot and one response slot.
//
// Every key's request function names a port by its number, never the port or the worker itself, so
// a key may outlive its worker by any time: the number is then unknown and the answer empty.
//
// States: open without a descriptor (the worker is being built) -> open -> closed. A closed port
// answers empty; its request functions no longer find it, and touch none of its locks.
//
// Locks, in this order: turns (one caller at a time, held for the whole call), slotMutex (the
// slots; the worker holds it while it handles a request). putOffMutex is a leaf.
#pragma once

#include "ClientRequest.h"
#include "ClientResponse.h"
#include "Mutex.h"
#include "RequestFunction.h"
#include "TurnQueue.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace pavo {

class RequestPort {
 public:
  // A new port, found by its number until it is closed.
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
  // turns. Empty when the port is closed, when the worker cannot be woken, and on a worker thread:
  // that would wait for itself. A release asked for there is put off until the event in hand is
  // done.
  std::shared_ptr<ClientResponse> submit(const std::shared_ptr<ClientRequest>& request)
      EXCLUDES(turns, slotMutex, putOffMutex);

  // Answers everybody who waits, now and later, empty. Waits for a request that is being handled.
  // The releases put off are lost: like those of all keys that outlive the worker, their profiles
  // stay on the modem. Any thread but a worker's.
  void close() EXCLUDES(slotMutex, putOffMutex);

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

 private:
  RequestPort() = default;

  // False when the request is no release.
  bool putOff(const std::shared_ptr<ClientRequest>& request) EXCLUDES(putOffMutex);

  std::uint64_t number = 0;  // constant once the port is created
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
