// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "RequestPort.h"

#include "LogWrapper.h"
#include "WakeFd.h"
#include "base/ErrorText.h"

#include <cerrno>
#include <cstdlib>
#include <deque>
#include <map>
#include <optional>
#include <utility>

namespace pavo {

namespace {

bool isRelease(const ClientRequest& request) {
  return request.getRequestType() == ReqRespType::Callback &&
         static_cast<const CallbackRequest&>(request).hasReleaseToken();
}

// The ports that have not ended, by number, and the threads that wait because a port is ending. The
// object is never destroyed, because keys are dropped until the process ends.
class Ports {
 public:
  static Ports& instance() {
    static Ports& ports = *new Ports;
    return ports;
  }

  std::uint64_t add(std::shared_ptr<RequestPort> port) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    if (__builtin_add_overflow(lastNumber, 1U, &lastNumber)) {
      std::abort();
    }
    ports.emplace(lastNumber, Entry{std::move(port), std::nullopt});
    return lastNumber;
  }

  std::shared_ptr<RequestPort> find(std::uint64_t number) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    const auto found = ports.find(number);
    return found != ports.end() ? found->second.port : nullptr;
  }

  // Records that the calling thread ends the port and waits for its worker. Returns false when that
  // wait would close a circle of waiting threads.
  bool beginEnd(std::uint64_t number, std::thread::id workerThread) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    if (waitsForCallingThread(workerThread)) {
      return false;
    }
    ports.at(number).endingThread = std::this_thread::get_id();
    waits[std::this_thread::get_id()] = {number, workerThread};
    return true;
  }

  void workerJoined() EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    waits.erase(std::this_thread::get_id());
  }

  void end(std::uint64_t number) EXCLUDES(mutex) {
    std::shared_ptr<RequestPort> ended;
    {
      const MutexLock lock(mutex);
      const auto found = ports.find(number);
      if (found == ports.end()) {
        return;
      }
      ended = std::move(found->second.port);
      ports.erase(found);
      std::erase_if(waits, [number](const auto& wait) { return wait.second.port == number; });
    }
    portEnded.notifyAll();
  }

  // Waits until an ending port has ended. Does not wait when the thread that ends the port is the
  // calling one or waits for it.
  void awaitEnd(std::uint64_t number) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    const auto found = ports.find(number);
    if (found == ports.end() || !found->second.endingThread ||
        waitsForCallingThread(*found->second.endingThread)) {
      return;
    }
    waits[std::this_thread::get_id()] = {number, *found->second.endingThread};
    while (ports.contains(number)) {
      portEnded.wait(mutex);
    }
  }

 private:
  struct Entry {
    std::shared_ptr<RequestPort> port;
    std::optional<std::thread::id> endingThread;
  };

  // A thread's wait for another thread to do its part in the end of a port.
  struct Wait {
    std::uint64_t port;
    std::thread::id thread;
  };

  Ports() { keepFreeAcrossFork(mutex); }

  bool waitsForCallingThread(std::thread::id thread) const REQUIRES(mutex) {
    while (thread != std::this_thread::get_id()) {
      const auto wait = waits.find(thread);
      if (wait == waits.end()) {
        return false;
      }
      thread = wait->second.thread;
    }
    return true;
  }

  Mutex mutex;
  CondVar portEnded;
  std::uint64_t lastNumber GUARDED_BY(mutex) = 0;
  std::map<std::uint64_t, Entry> ports GUARDED_BY(mutex);
  // The key is the waiting thread. A thread waits for one other at a time.
  std::map<std::thread::id, Wait> waits GUARDED_BY(mutex);
};

thread_local bool isWorkerThread = false;

}  // namespace

std::shared_ptr<RequestPort> RequestPort::create() {
  std::shared_ptr<RequestPort> port(new RequestPort);
  port->number = Ports::instance().add(port);
  return port;
}

requestFunction RequestPort::getRequestFunction() const {
  const std::uint64_t portNumber = number;
  return [portNumber](const std::shared_ptr<ClientRequest>& request) {
    const std::shared_ptr<RequestPort> port = Ports::instance().find(portNumber);
    return port != nullptr ? port->submit(request) : std::shared_ptr<ClientResponse>();
  };
}

std::shared_ptr<ClientResponse> RequestPort::submit(const std::shared_ptr<ClientRequest>& request) {
  if (isInForkedChild()) {
    // A release is refused without a log line: the profile of a key that is dropped in a child
    // belongs to the parent.
    if (!isRelease(*request)) {
      logRefusalInForkedChild(request->text().c_str());
    }
    return nullptr;
  }
  if (onWorkerThread()) {
    // The text is built before another thread can own the request. The calling thread may be the
    // worker of another Manager.
    const std::string& text = request->text();
    logOnWorkerThread(putOff(request) ? "put off" : "refused", text.c_str());
    return nullptr;
  }
  std::shared_ptr<ClientResponse> response = exchange(request);
  if (response == nullptr && isRelease(*request)) {
    // The worker has not seen the release. While the worker is stopping, the key's listener may be
    // running.
    Ports::instance().awaitEnd(number);
  }
  return response;
}

std::shared_ptr<ClientResponse> RequestPort::exchange(
    const std::shared_ptr<ClientRequest>& request) {
  const Turn turn(turns);
  const MutexLock lock(slotMutex);
  if (closed) {
    return nullptr;
  }
  const int written = notifyFd(wakeFd.load());
  if (written != notifiedBytes) {
    const int error = errno;
    LogWrapper::log(LogLevel::Error, logTag, "error in writing rv: %d error: %s", written,
                    errorText(error).c_str());
    return nullptr;
  }
  requestSlot = request;
  while (responseSlot == nullptr && !closed) {
    answered.wait(slotMutex);
  }
  // A closed port leaves its request in the slot. The caller empties the slot, because it holds
  // another handle: no key of the request is destroyed on the thread that closes the port.
  requestSlot.reset();
  return std::exchange(responseSlot, nullptr);
}

bool RequestPort::beginEnd(std::thread::id workerThread) {
  return !isInForkedChild() && Ports::instance().beginEnd(number, workerThread);
}

void RequestPort::close() {
  {
    const MutexLock lock(slotMutex);
    closed = true;
  }
  answered.notifyAll();
  std::deque<std::shared_ptr<ClientRequest>> unserved;
  {
    const MutexLock lock(putOffMutex);
    acceptsPutOff = false;
    unserved.swap(putOffReleases);
  }
}

void RequestPort::workerJoined() { Ports::instance().workerJoined(); }

void RequestPort::end() { Ports::instance().end(number); }

bool RequestPort::putOff(const std::shared_ptr<ClientRequest>& request) {
  if (!isRelease(*request)) {
    return false;
  }
  const MutexLock lock(putOffMutex);
  if (acceptsPutOff) {
    putOffReleases.push_back(request);
    // The lock is still held, because the number of a closed port's descriptor may already denote
    // another file.
    notifyFd(wakeFd.load());
  }
  return true;
}

std::shared_ptr<ClientRequest> RequestPort::takePutOff() {
  const MutexLock lock(putOffMutex);
  if (putOffReleases.empty()) {
    return nullptr;
  }
  std::shared_ptr<ClientRequest> oldest = std::move(putOffReleases.front());
  putOffReleases.pop_front();
  if (!putOffReleases.empty()) {
    notifyFd(wakeFd.load());
  }
  return oldest;
}

void RequestPort::becomeWorkerThread() { isWorkerThread = true; }

bool RequestPort::onWorkerThread() { return isWorkerThread; }

void RequestPort::logOnWorkerThread(const char* outcome, const char* call) {
  LogWrapper::log(LogLevel::Error, logTag, "called on the worker thread, %s: %s", outcome, call);
}

void RequestPort::logRefusalInForkedChild(const char* call) {
  LogWrapper::log(LogLevel::Error, logTag, "called in a forked child, refused: %s", call);
}

}  // namespace pavo
