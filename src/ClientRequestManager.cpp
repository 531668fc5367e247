// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ClientRequestManager.h"

#include "LogWrapper.h"
#include "ProfileKey.h"
#include "WakeFd.h"

#include <sys/epoll.h>

#include <list>
#include <optional>
#include <system_error>
#include <utility>

namespace pavo {

namespace {

// Throws the error again with a text of its own. std::terminate() prints this text, and the field's
// crash reports are searched for "thread constructor failed". The text of std::thread's exception
// depends on the standard library.
[[noreturn]] void failThread(const std::error_code& code) {
  throw std::system_error(code, "thread constructor failed");
}

// A key of a class that is not the library's own is treated like an empty key.
std::shared_ptr<ProfileKey> ownKey(const std::shared_ptr<IProfileKey>& key) {
  return std::dynamic_pointer_cast<ProfileKey>(key);
}

Status statusOf(bool succeeded) { return succeeded ? Status::Success : Status::Failure; }

}  // namespace

ClientRequestManager::ClientRequestManager(int subscription)
    : port(RequestPort::create()),
      profileCache(
          std::make_unique<ProfileCache>(eventManager, subscription, port->getRequestFunction())) {
  LogWrapper::log(LogLevel::Debug, logTag, "pavo::ClientRequestManager: constructor");
  startThread();
  requestFd = makeWakeFd();
  port->open(requestFd.get());
  eventManager.addEssentialHandler(requestFd.get(), handleClientRequest, this, EPOLLIN);
}

// When the thread cannot be created, the exception cannot leave this noexcept function and
// therefore ends the process.
void ClientRequestManager::startThread() noexcept {
  try {
    thread = std::thread(&ClientRequestManager::runPavoThread, this);
  } catch (const std::system_error& error) {
    failThread(error.code());
  }
}

ClientRequestManager::~ClientRequestManager() { stop(); }

bool ClientRequestManager::stop() {
  if (eventManager.isStopRequested()) {
    return true;
  }
  if (!port->beginEnd(thread.get_id())) {
    return false;
  }
  LogWrapper::log(LogLevel::Debug, logTag, "pavo::ClientRequestManager: destructor");
  // The stop is requested before close(), because close() waits for the request that the worker is
  // handling. A refresh then stops between two modem requests.
  eventManager.requestStop();
  // The port is closed before the worker ends. Otherwise a caller could wait for a worker that has
  // ended, or write to its closed descriptor.
  port->close();
  eventManager.removeEventHandler(requestFd.get());
  running.store(false, std::memory_order_release);
  eventManager.wake();
  thread.join();
  port->workerJoined();
  // The descriptor is closed after the join, because the worker may be handling its event until
  // then.
  requestFd.reset();
  std::unique_ptr<ProfileCache> ended;
  {
    const MutexLock lock(cacheMutex);
    ended.swap(profileCache);
  }
  // `ended` is destroyed here, so the listeners run on the stopping thread. If the cache lived as
  // long as this object, an overlapping call or dump() could destroy it later, on a thread that
  // must not run listeners.
  ended.reset();
  port->end();
  return true;
}

void ClientRequestManager::runPavoThread() {
  RequestPort::becomeWorkerThread();
  LogWrapper::log(LogLevel::High, logTag, "PAVO thread started");
  running.store(true, std::memory_order_release);
  while (running.load(std::memory_order_acquire) && !eventManager.isStopRequested()) {
    eventManager.processEvents();
  }
}

std::shared_ptr<ClientResponse> ClientRequestManager::processClientRequest(
    const std::shared_ptr<ClientRequest>& request) {
  return port->submit(request);
}

void ClientRequestManager::handleClientRequest(int fd, void* arg) {
  // Log filters search for this exact text. Its number is not the current line.
  LogWrapper::log(LogLevel::Debug, logTag, ":%d:%s", 77, "handleClientRequest");
  drainFd(fd, LogLevel::Error);
  if (arg == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "arg is null");
    return;
  }
  auto& self = *static_cast<ClientRequestManager*>(arg);
  if (const std::shared_ptr<ClientRequest> release = self.port->takePutOff()) {
    self.handle(*release);
  }
  self.port->serve([&self](const ClientRequest& request) { return self.handle(request); });
}

ClientRequestManager::Response ClientRequestManager::handle(const ClientRequest& request) {
  if (LogWrapper::isLogged(LogLevel::Info)) {
    LogWrapper::log(LogLevel::Info, logTag, "Handling %s", request.text().c_str());
  }
  if (refreshInProgress && request.getRequestType() != ReqRespType::Refresh) {
    return refuse(request);
  }
  return perform(request);
}

ClientRequestManager::Response ClientRequestManager::refuse(const ClientRequest& request) {
  switch (request.getRequestType()) {
    case ReqRespType::Add:
      return std::make_shared<AddResponse>(Status::Failure, nullptr);
    case ReqRespType::Modify:
      return std::make_shared<ModifyResponse>(Status::Failure);
    case ReqRespType::Delete:
      return std::make_shared<DeleteResponse>(Status::Failure);
    case ReqRespType::Filter:
      return std::make_shared<FilterResponse>(Status::Failure,
                                              std::list<std::shared_ptr<IProfileKey>>());
    case ReqRespType::Match:
      return std::make_shared<MatchResponse>(Status::Failure, /*result=*/false);
    case ReqRespType::Get:
      return std::make_shared<GetResponse>(Status::Failure, std::nullopt);
    case ReqRespType::Callback:
      return refuse(static_cast<const CallbackRequest&>(request));
    case ReqRespType::Refresh:
    default:
      return nullptr;
  }
}

// A refused release still ends the key, and the client may unload the code of its listeners next.
// Therefore the listeners leave the cache with the response.
ClientRequestManager::Response ClientRequestManager::refuse(const CallbackRequest& request) {
  std::list<ExpirationListener> ended;
  if (request.hasReleaseToken()) {
    profileCache->takeEndedListeners(request.getReleaseToken(), request.getReleasedKey(), ended);
  }
  return std::make_shared<CallbackResponse>(Status::Failure, std::move(ended));
}

ClientRequestManager::Response ClientRequestManager::perform(const ClientRequest& request) {
  switch (request.getRequestType()) {
    case ReqRespType::Add:
      return add(static_cast<const AddRequest&>(request));
    case ReqRespType::Modify:
      return modify(static_cast<const ModifyRequest&>(request));
    case ReqRespType::Delete:
      return remove(static_cast<const DeleteRequest&>(request));
    case ReqRespType::Filter:
      return filter(static_cast<const FilterRequest&>(request));
    case ReqRespType::Match:
      return match(static_cast<const MatchRequest&>(request));
    case ReqRespType::Get:
      return get(static_cast<const GetRequest&>(request));
    case ReqRespType::Callback:
      return callback(static_cast<const CallbackRequest&>(request));
    case ReqRespType::Refresh:
      return refresh(static_cast<const RefreshRequest&>(request));
    default:
      return nullptr;
  }
}

ClientRequestManager::Response ClientRequestManager::add(const AddRequest& request) {
  // The status is Success even when nothing was created. The empty key reports the failure.
  return std::make_shared<AddResponse>(Status::Success,
                                       profileCache->add(request.getAddProfileParams()));
}

ClientRequestManager::Response ClientRequestManager::modify(const ModifyRequest& request) {
  const std::shared_ptr<ProfileKey> key = ownKey(request.getModifyProfileKey());
  return std::make_shared<ModifyResponse>(
      statusOf(key != nullptr && profileCache->modify(request.getModifyProfileParams(), key)));
}

ClientRequestManager::Response ClientRequestManager::remove(const DeleteRequest& request) {
  const std::shared_ptr<ProfileKey> key = ownKey(request.getDeleteProfileKey());
  return std::make_shared<DeleteResponse>(statusOf(key != nullptr && profileCache->remove(key)));
}

ClientRequestManager::Response ClientRequestManager::filter(const FilterRequest& request) {
  const std::list<std::shared_ptr<ProfileKey>> keys =
      profileCache->filter(request.getFilterParams());
  return std::make_shared<FilterResponse>(
      Status::Success, std::list<std::shared_ptr<IProfileKey>>(keys.begin(), keys.end()));
}

ClientRequestManager::Response ClientRequestManager::match(const MatchRequest& request) {
  const std::shared_ptr<ProfileKey> key = ownKey(request.getMatchKey());
  const bool matches = key != nullptr && profileCache->match(request.getMatchParams(), key);
  return std::make_shared<MatchResponse>(statusOf(key != nullptr), matches);
}

ClientRequestManager::Response ClientRequestManager::get(const GetRequest& request) {
  std::optional<ProfileParams> params = profileCache->get(ownKey(request.getProfileKey()));
  const Status status = statusOf(params.has_value());
  return std::make_shared<GetResponse>(status, std::move(params));
}

ClientRequestManager::Response ClientRequestManager::callback(const CallbackRequest& request) {
  bool succeeded = false;
  std::list<ExpirationListener> ended;
  if (request.hasReleaseToken()) {
    succeeded =
        profileCache->releaseProfile(request.getReleaseToken(), request.getReleasedKey(), ended);
  } else if (request.hasExpirationInfo()) {
    succeeded = profileCache->registerExpirationListener(
        request.getExpirationCb(), request.getExpirationKey(), request.getExpirationToken());
  }
  return std::make_shared<CallbackResponse>(statusOf(succeeded), std::move(ended));
}

ClientRequestManager::Response ClientRequestManager::refresh(const RefreshRequest& request) {
  if (request.getStatus() == PDC_REFRESH_STARTED) {
    refreshInProgress = true;
  } else {
    refreshInProgress = false;
    profileCache->refresh();
  }
  return std::make_shared<RefreshResponse>(Status::Success);
}

std::vector<std::string> ClientRequestManager::dump() {
  const MutexLock lock(cacheMutex);
  return profileCache != nullptr ? profileCache->dump() : std::vector<std::string>();
}

}  // namespace pavo
