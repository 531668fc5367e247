// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// EventManager is the event loop: an epoll instance and a table of handlers by file descriptor. The
// loop's thread is the one that calls processEvents(); only one thread may call it at a time.
// Callbacks run on that thread, one by one. Any thread may add and remove handlers, even while the
// loop waits or dispatches. The tables have locks: handlersMutex first, then the lock of the
// approved descriptors. No lock is held across a callback, a log line or a system call.
#pragma once

#include "base/Mutex.h"
#include "base/UniqueFd.h"

#include <sys/epoll.h>

#include <atomic>
#include <map>
#include <optional>

namespace pavo {

class EventManager {
 public:
  using EventCallback = void (*)(int fd, void* data);
  using CloseCallback = void (*)(int fd, void* data);

  // Aborts the process when one of its two file descriptors cannot be created or watched.
  EventManager();
  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;
  // Does not call the close callbacks of the remaining handlers.
  ~EventManager();

  // Registers callback for events (an epoll mask) of fd. Returns false when fd already has a
  // handler; that handler stays. The caller keeps owning fd, with two exceptions: the loop closes
  // fd on a hang-up, and on an event while fd is not approved.
  bool addEventHandler(int fd, EventCallback callback, void* data, CloseCallback closeCallback,
                       int events);

  // Does the same for a descriptor that the loop's owner cannot work without. Aborts the process
  // when the descriptor is not watched afterwards.
  void addEssentialHandler(int fd, EventCallback callback, void* data, int events);

  // Calls the handler's close callback, if it has one. Does not close fd.
  void removeEventHandler(int fd);

  // Drains a non-blocking fd. This is the callback of the loop's own wake-up.
  static void clearRead(int fd, void* data);

  // Waits once, without a time limit, and dispatches up to eventsPerWaitMax ready descriptors.
  void processEvents();

  // Makes the current or the next wait return. Thread-safe.
  void wake();

  // Requests a permanent stop of the work that the loop runs. The owner then stops calling
  // processEvents(). A callback that has several modem requests to send sends no further one.
  // Thread-safe.
  void requestStop() { stopRequested.store(true, std::memory_order_release); }
  bool isStopRequested() const { return stopRequested.load(std::memory_order_acquire); }

  // These functions manage the descriptors, of all loops, whose events may be dispatched. Adding
  // and removing a handler already updates this set. Other code needs them only to take a
  // descriptor out of service.
  static bool isApprovedFd(int fd);
  static void addApprovedFd(int fd);
  static void remApprovedFd(int fd);

 private:
  static constexpr int eventsPerWaitMax = 4;

  enum class Registered { No, WithoutTheKernel, Yes };

  struct HandlerObject {
    EventCallback callback = nullptr;
    CloseCallback closeCallback = nullptr;
    void* data = nullptr;
  };

  struct Registration {
    std::optional<HandlerObject> handler;
    bool isApproved = false;
  };

  Registered registerHandler(int fd, const HandlerObject& handler, int events)
      EXCLUDES(handlersMutex);
  // Reads handler and approval under one lock, because the owner may be removing fd on another
  // thread.
  Registration find(int fd) EXCLUDES(handlersMutex);
  void closeRegistered(int fd, const Registration& registration);
  void dispatch(int fd, unsigned int events);
  void dispatchReadable(int fd);

  UniqueFd epollFd;
  UniqueFd wakeFd;
  std::atomic<bool> stopRequested{false};
  // The buffer is a member, so that a wait allocates nothing. Only the loop's thread uses it.
  epoll_event readyEvents[eventsPerWaitMax] = {};
  Mutex handlersMutex;
  std::map<int, HandlerObject> handlers GUARDED_BY(handlersMutex);
};

}  // namespace pavo
