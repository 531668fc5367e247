// The worker: one thread, the event loop that it runs, and the cache that only it touches.
//
// States: building -> running -> stopped. Building registers with the platform before the thread
// runs; stopping joins the thread and ends the cache, however long callers hold the object after.
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
  // Builds everything and starts the thread. Ends the process when it cannot have a thread or a
  // file descriptor.
  explicit ClientRequestManager(int subscription);
  ClientRequestManager(const ClientRequestManager&) = delete;
  ClientRequestManager& operator=(const ClientRequestManager&) = delete;
  // Stops, unless that was done.
  ~ClientRequestManager();

  // Hands one request to the worker and waits; see RequestPort::submit.
  std::shared_ptr<ClientResponse> processClientRequest(
      const std::shared_ptr<ClientRequest>& request);

  // Answers all waiting and later callers empty, joins the thread and destroys the cache: listeners
  // of live keys run on the calling thread. Waits for one modem request in progress at most. To be
  // called on one thread only, the one that took the worker out of its Manager; the destructor's
  // call then does nothing.
  // False, and the worker goes on, where it cannot be waited for: on its own thread, on the thread
  // of a worker that this one waits for, and in a forked child. The object must then be kept for
  // ever.
  bool stop();

  // Whether this process is a forked child of the one that made the worker.
  bool isInForkedChild() const { return port->isInForkedChild(); }

  // The body of the worker thread.
  void runPavoThread();

  // The event loop's callback of the request eventfd; arg is the ClientRequestManager.
  static void handleClientRequest(int fd, void* arg);

  // The cache's dump; empty when the worker has stopped. Any thread.
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
  // Set by the thread when it runs. The loop's request to stop is never cleared, so a stop that
  // comes before the thread has begun is not lost.
  std::atomic<bool> running{false};
  UniqueFd requestFd;
  EventManager eventManager;
  // Its end, which the worker does not see, and a dump exclude each other.
  Mutex cacheMutex;
  std::unique_ptr<ProfileCache> profileCache;
  // Worker only: the modem's configuration is being replaced, profile operations are refused.
  bool refreshInProgress = false;
};

}  // namespace pavo
