// The event loop: an epoll instance and a table of handlers by file descriptor. The loop's thread
// is whoever calls processEvents(), one thread at a time; callbacks run on it one by one. Handlers
// may be added and removed on any thread, also while the loop waits or dispatches: the tables have
// locks (the handlers', then that of the approved descriptors), never held across a callback, a log
// line or a system call.
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

  // Aborts the process when it cannot have its two file descriptors.
  EventManager();
  EventManager(const EventManager&) = delete;
  EventManager& operator=(const EventManager&) = delete;
  // Calls no close callback of the handlers that are left.
  ~EventManager();

  // Has callback called when fd becomes ready for events (an epoll mask). False when fd has a
  // handler already, which stays. The fd remains the caller's, but for a hang-up and an event on an
  // fd that is not approved: these close it.
  bool addEventHandler(int fd, EventCallback callback, void* data, CloseCallback closeCallback,
                       int events);

  // As addEventHandler, for a descriptor without which the loop's owner cannot work: aborts the
  // process when the kernel does not watch it.
  void addEssentialHandler(int fd, EventCallback callback, void* data, int events);

  // Calls the handler's close callback, if it has one. Does not close fd.
  void removeEventHandler(int fd);

  // Drains a non-blocking fd; the callback of the loop's own wake-up.
  static void clearRead(int fd, void* data);

  // Waits once, for as long as it takes, and dispatches up to eventsPerWaitMax ready descriptors.
  void processEvents();

  // Makes the current or next wait return. Any thread.
  void wake();

  // Asks for the end of what the loop runs, for good: its owner stops calling processEvents(), and
  // a callback that has several requests to the modem ahead sends no further one. Any thread.
  void requestStop() { stopRequested.store(true, std::memory_order_release); }
  bool isStopRequested() const { return stopRequested.load(std::memory_order_acquire); }

  // The descriptors, of all loops, whose events may be dispatched. Adding and removing handlers
  // keeps it; these are for whoever wants to take a descriptor out of service.
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
  // Both at one moment: the owner may be removing fd on another thread.
  Registration find(int fd) EXCLUDES(handlersMutex);
  void closeRegistered(int fd, const Registration& registration);
  void dispatch(int fd, unsigned int events);
  void dispatchReadable(int fd);

  UniqueFd epollFd;
  UniqueFd wakeFd;
  std::atomic<bool> stopRequested{false};
  // A member, so that a wait allocates nothing; the loop's thread only.
  epoll_event readyEvents[eventsPerWaitMax] = {};
  Mutex handlersMutex;
  std::map<int, HandlerObject> handlers GUARDED_BY(handlersMutex);
};

}  // namespace pavo
