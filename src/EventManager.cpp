// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "EventManager.h"

#include "LogWrapper.h"
#include "WakeFd.h"
#include "base/ErrorText.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>
#include <utility>

namespace pavo {

namespace {

// The approved descriptors of all loops. The object is never destroyed, because a worker may end
// after the static objects of this library.
struct ApprovedFds {
  Mutex mutex;
  std::set<int> fds GUARDED_BY(mutex);

  static ApprovedFds& instance() {
    static ApprovedFds& approved = *new ApprovedFds;
    return approved;
  }
};

struct EventName {
  unsigned int bit;
  const char* name;
};

constexpr EventName eventNames[] = {{EPOLLOUT, "EPOLLOUT "},
                                    {EPOLLPRI, "EPOLLPRI "},
                                    {EPOLLERR, "EPOLLERR "},
                                    {EPOLLET, "EPOLLET "}};

std::string eventText(unsigned int events) {
  std::string text;
  for (const EventName& entry : eventNames) {
    if ((events & entry.bit) != 0) {
      text += entry.name;
    }
  }
  return text;
}

void* asPointer(void (*function)(int, void*)) { return reinterpret_cast<void*>(function); }

}  // namespace

EventManager::EventManager() {
  epollFd.reset(::epoll_create1(EPOLL_CLOEXEC));
  if (epollFd.get() == -1) {
    LogWrapper::log(LogLevel::Error, logTag, "Cannot create epoll instance");
    std::abort();
  }
  wakeFd = makeWakeFd();
  addEssentialHandler(wakeFd.get(), clearRead, /*data=*/nullptr, EPOLLIN | EPOLLHUP);
  LogWrapper::log(LogLevel::Verbose, logTag, "EventManager is ready. epollFd:%d", epollFd.get());
}

EventManager::~EventManager() { removeEventHandler(wakeFd.get()); }

bool EventManager::addEventHandler(int fd, EventCallback callback, void* data,
                                   CloseCallback closeCallback, int events) {
  // A handler counts as added even when the kernel refuses to watch its descriptor. The result has
  // always been true in that case.
  return registerHandler(fd, {callback, closeCallback, data}, events) != Registered::No;
}

void EventManager::addEssentialHandler(int fd, EventCallback callback, void* data, int events) {
  const HandlerObject handler{callback, /*closeCallback=*/nullptr, data};
  if (registerHandler(fd, handler, events) != Registered::Yes) {
    std::abort();
  }
}

EventManager::Registered EventManager::registerHandler(int fd, const HandlerObject& handler,
                                                       int events) {
  LogWrapper::log(LogLevel::Verbose, logTag,
                  "EventManager::addEventHandler(int %d, EventCallback %p, void* %p, "
                  "CloseCallback %p, events %d) EX",
                  fd, asPointer(handler.callback), handler.data, asPointer(handler.closeCallback),
                  events);
  bool added = false;
  {
    const MutexLock lock(handlersMutex);
    added = handlers.emplace(fd, handler).second;
    if (added) {
      addApprovedFd(fd);
    }
  }
  if (!added) {
    LogWrapper::log(LogLevel::Info, logTag, "fd=%d is already in handlers", fd);
    return Registered::No;
  }
  // The tables must know the descriptor before its first event. The loop may already be waiting on
  // another thread, and it closes descriptors that are not approved.
  epoll_event event{};
  event.events = static_cast<std::uint32_t>(events);
  event.data.fd = fd;
  if (::epoll_ctl(epollFd.get(), EPOLL_CTL_ADD, fd, &event) != 0) {
    LogWrapper::log(LogLevel::Error, logTag, "Cannot add event handler");
    return Registered::WithoutTheKernel;
  }
  return Registered::Yes;
}

void EventManager::removeEventHandler(int fd) {
  LogWrapper::log(LogLevel::Verbose, logTag, "EventManager::removeEventHandler(int fd) EX");
  if (::epoll_ctl(epollFd.get(), EPOLL_CTL_DEL, fd, /*event=*/nullptr) != 0) {
    LogWrapper::log(LogLevel::Error, logTag, "Cannot remove event handler");
  }
  CloseCallback closeCallback = nullptr;
  void* data = nullptr;
  {
    const MutexLock lock(handlersMutex);
    HandlerObject& handler = handlers[fd];
    // The close callback is cleared first, so that a callback that removes its own descriptor is
    // not called again.
    closeCallback = std::exchange(handler.closeCallback, nullptr);
    data = handler.data;
  }
  if (closeCallback != nullptr) {
    closeCallback(fd, data);
  }
  std::size_t erased = 0;
  {
    const MutexLock lock(handlersMutex);
    erased = handlers.erase(fd);
    remApprovedFd(fd);
  }
  if (erased != 1) {
    LogWrapper::log(LogLevel::Error, logTag, "handlers.erase for fd %d, returned %d!", fd,
                    static_cast<int>(erased));
  }
}

void EventManager::clearRead(int fd, void* /*data*/) { drainFd(fd, LogLevel::Info); }

EventManager::Registration EventManager::find(int fd) {
  const MutexLock lock(handlersMutex);
  const auto found = handlers.find(fd);
  return {found != handlers.end() ? std::optional(found->second) : std::nullopt, isApprovedFd(fd)};
}

void EventManager::processEvents() {
  const int count = ::epoll_wait(epollFd.get(), readyEvents, eventsPerWaitMax, /*timeout=*/-1);
  if (count == -1) {
    LogWrapper::log(LogLevel::Error, logTag, "epoll_wait error");
    return;
  }
  // After a request to stop, the events behind the one in hand are not dispatched: each may cost
  // modem requests.
  for (int i = 0; i < count && (i == 0 || !isStopRequested()); ++i) {
    const int fd = readyEvents[i].data.fd;
    const unsigned int events = readyEvents[i].events;
    LogWrapper::log(LogLevel::Verbose, logTag,
                    "there are %d file descriptor(s) with events pending", count - i);
    LogWrapper::log(LogLevel::Verbose, logTag, "processing event number: %d, handling %d for %d", i,
                    static_cast<int>(events), fd);
    dispatch(fd, events);
  }
}

void EventManager::dispatch(int fd, unsigned int events) {
  if ((events & EPOLLHUP) != 0) {
    LogWrapper::log(LogLevel::Info, logTag, "file descriptor '%d' sent HUP.", fd);
    closeRegistered(fd, find(fd));
  } else if ((events & EPOLLIN) != 0) {
    dispatchReadable(fd);
  } else {
    LogWrapper::log(LogLevel::Info, logTag, "Unhandled epoll event: %s [flags 0%o]",
                    eventText(events).c_str(), events);
  }
}

// A descriptor without a handler has a stale event: an earlier callback of the same wait, or
// another thread, has removed the handler. The owner of such a descriptor closes it, and its number
// may already denote another file.
void EventManager::closeRegistered(int fd, const Registration& registration) {
  removeEventHandler(fd);
  if (registration.handler) {
    ::close(fd);
  }
}

void EventManager::dispatchReadable(int fd) {
  // The registration is a copy, because the callback may remove its own handler.
  const Registration registration = find(fd);
  const auto& [handler, isApproved] = registration;
  if (!isApproved) {
    LogWrapper::log(LogLevel::Info, logTag,
                    "file descriptor %d is not on the approved list, cannot process event", fd);
    closeRegistered(fd, registration);
  } else if (!handler) {
    LogWrapper::log(LogLevel::Info, logTag,
                    "file descriptor '%d' does not have an event handler registered", fd);
  } else {
    LogWrapper::log(LogLevel::Verbose, logTag,
                    "file descriptor '%d' is processing events [callback:%p, data:%p]", fd,
                    asPointer(handler->callback), handler->data);
    if (handler->callback == nullptr) {
      LogWrapper::log(LogLevel::Error, logTag, "no callback registered");
    } else {
      handler->callback(fd, handler->data);
    }
  }
}

void EventManager::wake() {
  LogWrapper::log(LogLevel::Verbose, logTag, "EventManager::wake() EX");
  // Operators' test benches wait for this line to see that a worker ends.
  try {
    std::cout << "wake()" << std::endl;
  } catch (const std::ios_base::failure&) {
    // The program has enabled the exceptions of std::cout, and its standard output cannot be
    // written. The wake-up below does not depend on that.
  }
  const int written = notifyFd(wakeFd.get());
  if (written != notifiedBytes) {
    const int error = errno;
    LogWrapper::log(LogLevel::Info, logTag, "Error in writing rv: %d, error: %s", written,
                    errorText(error).c_str());
  }
}

bool EventManager::isApprovedFd(int fd) {
  ApprovedFds& approved = ApprovedFds::instance();
  const MutexLock lock(approved.mutex);
  return approved.fds.contains(fd);
}

void EventManager::addApprovedFd(int fd) {
  ApprovedFds& approved = ApprovedFds::instance();
  const MutexLock lock(approved.mutex);
  approved.fds.insert(fd);
}

void EventManager::remApprovedFd(int fd) {
  ApprovedFds& approved = ApprovedFds::instance();
  const MutexLock lock(approved.mutex);
  approved.fds.erase(fd);
}

}  // namespace pavo
