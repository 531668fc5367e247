// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// ClientRequestManager is the worker: a thread, the event loop that the thread runs, and the
// profile cache. Apart from dump(), and from stop() after the join, only that thread uses the
// cache.
//
// States: building -> running -> stopped. The constructor registers with the platform before it
// starts the thread. stop() joins the thread and destroys the cache, even while callers still hold
// the object.
#pragma once

#include "ClientRequest.h"
#include "ClientResponse.h"
#include "EventManager.h"
#include "ProfileCache.h"
#include "RequestPort.h"
#include "base/Mutex.h"
#include "base/UniqueFd.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace pavo {

class ClientRequestManager {
 public:
  // Builds all parts and starts the thread. Ends the process when the thread or a file descriptor
  // cannot be created.
  explicit ClientRequestManager(int subscription);
  ClientRequestManager(const ClientRequestManager&) = delete;
  ClientRequestManager& operator=(const ClientRequestManager&) = delete;
  // Calls stop(), which does nothing when the worker has already stopped.
  ~ClientRequestManager();

  // Hands one request to the worker and waits for the response; see RequestPort::submit.
  std::shared_ptr<ClientResponse> processClientRequest(
      const std::shared_ptr<ClientRequest>& request);

  // Answers all waiting and later callers with an empty response, joins the thread and destroys the
  // cache. The listeners of live keys run on the calling thread. stop() waits for at most one modem
  // request in progress. Only one thread may call it: the thread that took the worker out of its
  // Manager. The destructor's call then does nothing. Returns false, and the worker goes on, where
  // waiting for the worker is impossible: on its own thread, on the thread of a worker that this
  // worker waits for, and in a forked child. The caller must then keep the object for ever.
  bool stop();

  // Returns whether this process is a forked child of the process that created the worker.
  bool isInForkedChild() const { return port->isInForkedChild(); }

  // Runs the event loop until stop(). This is the body of the worker's thread.
  void runPavoThread();

  // The event loop calls this for the request eventfd. arg is the ClientRequestManager.
  static void handleClientRequest(int fd, void* arg);

  // Returns the cache's dump, or no lines when the worker has stopped. Thread-safe.
  std::vector<std::string> dump();

 private:
  using Response = std::shared_ptr<ClientResponse>;

  void startThread() noexcept;
  Response handle(const ClientRequest& request);
  Response refuse(const ClientRequest& request);
  Response refuse(const CallbackRequest& request);
  Response perform(const ClientRequest& request);
  Response add(const AddRequest& request);
  Response modify(const ModifyRequest& request);
  Response remove(const DeleteRequest& request);
  Response filter(const FilterRequest& request);
  Response match(const MatchRequest& request);
  Response get(const GetRequest& request);
  Response callback(const CallbackRequest& request);
  Response refresh(const RefreshRequest& request);

  const std::shared_ptr<RequestPort> port;
  std::thread thread;
  // The worker's thread sets this flag when it starts. The event loop's request to stop is never
  // cleared, so a stop() that comes before the thread has started is not lost.
  std::atomic<bool> running{false};
  UniqueFd requestFd;
  EventManager eventManager;
  // Guards profileCache against being destroyed by stop() during a dump(). The worker takes no
  // lock: stop() has joined it by then.
  Mutex cacheMutex;
  std::unique_ptr<ProfileCache> profileCache;
  // Whether the modem's configuration is being replaced. Profile operations are refused meanwhile.
  // Only the worker's thread uses this flag.
  bool refreshInProgress = false;
};

}  // namespace pavo
