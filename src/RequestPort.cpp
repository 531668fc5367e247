#include "RequestPort.h"

#include "LogWrapper.h"
#include "WakeFd.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <utility>

namespace pavo {

namespace {

// The open ports by number. Never destroyed: keys are dropped until the very end of the process.
struct OpenPorts {
  Mutex mutex;
  std::uint64_t lastNumber GUARDED_BY(mutex) = 0;
  std::map<std::uint64_t, std::shared_ptr<RequestPort>> ports GUARDED_BY(mutex);

  static OpenPorts& instance() {
    static OpenPorts& open = *new OpenPorts;
    return open;
  }

  std::uint64_t add(std::shared_ptr<RequestPort> port) {
    const MutexLock lock(mutex);
    if (__builtin_add_overflow(lastNumber, 1U, &lastNumber)) {
      std::abort();
    }
    ports.emplace(lastNumber, std::move(port));
    return lastNumber;
  }

  void remove(std::uint64_t number) {
    const MutexLock lock(mutex);
    ports.erase(number);
  }

  std::shared_ptr<RequestPort> find(std::uint64_t number) {
    const MutexLock lock(mutex);
    const auto found = ports.find(number);
    return found != ports.end() ? found->second : nullptr;
  }
};

thread_local bool isWorkerThread = false;

}  // namespace

std::shared_ptr<RequestPort> RequestPort::create() {
  std::shared_ptr<RequestPort> port(new RequestPort);
  port->number = OpenPorts::instance().add(port);
  return port;
}

requestFunction RequestPort::getRequestFunction() const {
  const std::uint64_t portNumber = number;
  return [portNumber](const std::shared_ptr<ClientRequest>& request) {
    const std::shared_ptr<RequestPort> port = OpenPorts::instance().find(portNumber);
    return port != nullptr ? port->submit(request) : std::shared_ptr<ClientResponse>();
  };
}

std::shared_ptr<ClientResponse> RequestPort::submit(const std::shared_ptr<ClientRequest>& request) {
  if (onWorkerThread()) {
    // Before another thread may have it: this may be the worker of another Manager.
    const std::string& text = request->text();
    logOnWorkerThread(putOff(request) ? "put off" : "refused", text.c_str());
    return nullptr;
  }
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
  return std::exchange(responseSlot, nullptr);
}

void RequestPort::close() {
  OpenPorts::instance().remove(number);
  // The slot's handle dies after the lock: it may be the last one of a key.
  std::shared_ptr<ClientRequest> unanswered;
  {
    const MutexLock lock(slotMutex);
    closed = true;
    unanswered.swap(requestSlot);
  }
  answered.notifyAll();
  std::vector<std::shared_ptr<ClientRequest>> unserved;
  {
    const MutexLock lock(putOffMutex);
    acceptsPutOff = false;
    unserved.swap(putOffReleases);
  }
}

bool RequestPort::putOff(const std::shared_ptr<ClientRequest>& request) {
  if (request->getRequestType() != ReqRespType::Callback ||
      !static_cast<const CallbackRequest&>(*request).hasReleaseToken()) {
    return false;
  }
  const MutexLock lock(putOffMutex);
  if (acceptsPutOff) {
    putOffReleases.push_back(request);
    // Under the lock: a closed port's descriptor may belong to somebody else by now.
    notifyFd(wakeFd.load());
  }
  return true;
}

std::vector<std::shared_ptr<ClientRequest>> RequestPort::takePutOff() {
  const MutexLock lock(putOffMutex);
  return std::exchange(putOffReleases, {});
}

void RequestPort::becomeWorkerThread() { isWorkerThread = true; }

bool RequestPort::onWorkerThread() { return isWorkerThread; }

void RequestPort::logOnWorkerThread(const char* outcome, const char* call) {
  LogWrapper::log(LogLevel::Error, logTag, "called on the worker thread, %s: %s", outcome, call);
}

}  // namespace pavo
