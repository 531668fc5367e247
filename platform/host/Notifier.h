// Watches for the service: keeps a connection to the modem and tells a callback when it stands
// (event available), when the modem ends it (event gone) and when it stands again.
//
//   constructed --setCallback--> absent <--connected, lost--> present
//        |                          |                            |
//        +--------------------------+----------- stop -----------+--> stopped
//
// Owned by the handle registry and by the calls under way. Every function may be called from any
// thread, from inside a callback too; callbacks run with no lock held.
#pragma once

#include <mutex>
#include <thread>

#include "CallbackQueue.h"
#include "modem/UniqueFd.h"
#include "ovix_client.h"

namespace ovix {

class Notifier {
 public:
  // Throws when the system has no file descriptor left.
  explicit Notifier(ovix_service_object_type service);
  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;
  ~Notifier();

  // The first call starts the watch; a later one replaces the callback. Throws when there are no
  // threads to be had.
  void setCallback(ovix_client_type handle, ovix_client_notify_cb callback, void* data);

  // When it has returned no callback runs or will run, but for the one that it was called from.
  void stop();

 private:
  void watch();
  void announce(ovix_client_service_event event);
  void post(ovix_client_service_event event);  // With the mutex held.
  bool isStopRequested(int waitMs) const;

  // Constant after construction.
  const ovix_service_object_type service;
  const modem::UniqueFd stopFd;  // Readable once stop() was called.

  CallbackQueue callbacks;

  std::mutex mutex;
  // Guarded by the mutex.
  ovix_client_type handle = nullptr;
  ovix_client_notify_cb callback = nullptr;
  void* callbackData = nullptr;
  bool isPresent = false;
  bool isWatching = false;
  bool stopping = false;
  std::thread watcher;
};

}  // namespace ovix
