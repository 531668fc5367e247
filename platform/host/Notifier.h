// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Watches for the service: keeps a connection to the modem and calls a callback when it is
// established (event available), when the modem ends it (event gone) and when it is established
// again.
//
//   constructed --setCallback--> absent <--connected, lost--> present
//        |                          |                            |
//        +--------------------------+----------- stop -----------+--> stopped
//
// The handle registry and the calls under way own it. Every function may be called from any
// thread, from inside a callback too; callbacks run with no lock held.
#pragma once

#include "CallbackQueue.h"
#include "base/Mutex.h"
#include "base/UniqueFd.h"
#include "ovix_client.h"

#include <thread>

namespace ovix {

class Notifier {
 public:
  // Throws when the system has no file descriptor left.
  explicit Notifier(ovix_service_object_type serviceObject);
  Notifier(const Notifier&) = delete;
  Notifier& operator=(const Notifier&) = delete;
  ~Notifier();

  // The first call starts the watch; a later one replaces the callback. Throws when the system has
  // no thread left.
  void setCallback(ovix_client_type ownHandle, ovix_client_notify_cb newCallback, void* data)
      EXCLUDES(mutex);

  // Once stop() has returned, no callback runs or will run, except the one that called it.
  void stop() EXCLUDES(mutex);

 private:
  void watch();
  void announce(ovix_client_service_event event) EXCLUDES(mutex);
  void post(ovix_client_service_event event) REQUIRES(mutex);
  bool isStopRequested(int waitMs) const;

  // Constant after construction.
  const ovix_service_object_type service;
  const pavo::UniqueFd stopFd;  // is readable once stop() was called

  CallbackQueue callbacks;

  pavo::Mutex mutex;
  ovix_client_type handle GUARDED_BY(mutex) = nullptr;
  ovix_client_notify_cb callback GUARDED_BY(mutex) = nullptr;
  void* callbackData GUARDED_BY(mutex) = nullptr;
  bool isPresent GUARDED_BY(mutex) = false;
  bool isWatching GUARDED_BY(mutex) = false;
  bool isStopping GUARDED_BY(mutex) = false;
  std::thread watcher GUARDED_BY(mutex);
};

}  // namespace ovix
