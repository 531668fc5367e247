// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/Manager.h>

#include "AdbWriter.h"
#include "ClientRequest.h"
#include "ClientRequestManager.h"
#include "ClientResponse.h"
#include "DiagWriter.h"
#include "LocalLogBuffer.h"
#include "LogWrapper.h"
#include "RequestPort.h"
#include "base/Fork.h"
#include "base/Mutex.h"

#include <utility>
#include <vector>

namespace pavo {

namespace {

// Guards the worker pointer of every Manager. This is a leaf lock, held only for a copy or a swap.
// It is never destroyed, because callers' threads may hold it while the process exits.
Mutex& workerMutex() {
  static Mutex& mutex = []() -> Mutex& {
    auto& made = *new Mutex;
    keepFreeAcrossFork(made);
    return made;
  }();
  return mutex;
}

using Worker = std::shared_ptr<ClientRequestManager>;

// Returns a manager's current worker. The worker may be replaced while the copy is in use; it then
// answers with an empty response.
Worker copyOf(const Worker& managersWorker) {
  const MutexLock lock(workerMutex());
  return managersWorker;
}

// Keeps a worker that cannot be stopped when its Manager is destroyed. The list is never destroyed,
// and neither are its workers.
void abandon(Worker worker) {
  struct Abandoned {
    Mutex mutex;
    std::vector<Worker> workers GUARDED_BY(mutex);
  };
  static Abandoned& abandoned = []() -> Abandoned& {
    auto& made = *new Abandoned;
    keepFreeAcrossFork(made.mutex);
    return made;
  }();
  const MutexLock lock(abandoned.mutex);
  abandoned.workers.push_back(std::move(worker));
}

// Returns whether the worker was made before this process was forked. The call is then refused, and
// the refusal is logged.
bool isRefusedInForkedChild(const Worker& worker, const char* call) {
  if (worker == nullptr || !worker->isInForkedChild()) {
    return false;
  }
  RequestPort::logRefusalInForkedChild(call);
  return true;
}

// The log texts of an operation.
struct Operation {
  const char* name;
  const char* entry;
  const char* exit;
  const char* castFailure;
};

constexpr Operation addOperation{"Manager::addProfile", "Manager::addProfile > %s",
                                 "Manager::addProfile < %s", "Unable to cast to AddResponse"};
constexpr Operation modifyOperation{"Manager::modifyProfile", "Manager::modifyProfile > %s",
                                    "Manager::modifyProfile < %s",
                                    "Unable to cast to ModifyResponse"};
constexpr Operation deleteOperation{"Manager::deleteProfile", "Manager::deleteProfile > %s",
                                    "Manager::deleteProfile < %s",
                                    "Unable to cast to DeleteResponse"};
constexpr Operation filterOperation{"Manager::filter", "Manager::filter > %s",
                                    "Manager::filter < %s", "Unable to cast to FilterResponse"};
constexpr Operation getOperation{"Manager::getProfile", "Manager::getProfile > %s",
                                 "Manager::getProfile < %s", "Error in getProfile"};
constexpr Operation matchOperation{"Manager::match", "Manager::match > %s", "Manager::match < %s",
                                   "Unable to cast to MatchResponse"};
constexpr Operation refreshOperation{"Manager::refresh", "Manager::refresh > %s",
                                     "Manager::refresh < %s", "Unable to cast to RefreshResponse"};

// Performs an operation: makes a request of the arguments, hands it to the worker, logs both ends
// and returns the response as the class that answers such a request. Returns an empty pointer when
// there is no response.
template <typename Request, typename Response, typename... Arguments>
std::shared_ptr<const Response> perform(const Operation& operation, const Worker& managersWorker,
                                        Arguments&&... arguments) {
  if (RequestPort::onWorkerThread()) {
    RequestPort::logRefusal(operation.name);
    return nullptr;
  }
  const Worker worker = copyOf(managersWorker);
  if (worker == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "Manager not initialized!");
    return nullptr;
  }
  if (isRefusedInForkedChild(worker, operation.name)) {
    return nullptr;
  }
  const auto request = std::make_shared<Request>(std::forward<Arguments>(arguments)...);
  LogWrapper::log(LogLevel::High, logTag, operation.entry, request->text().c_str());
  const std::shared_ptr<ClientResponse> response = worker->processClientRequest(request);
  LogWrapper::log(LogLevel::High, logTag, operation.exit,
                  response != nullptr ? response->dump().c_str() : "");
  if (response == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "%s", operation.castFailure);
  }
  return std::static_pointer_cast<const Response>(response);
}

}  // namespace

Manager& Manager::processWide() {
  static Manager instance;
  return instance;
}

Manager::Manager() {
  // Creates LogWrapper, and the static object that removes its writer at exit, before this Manager
  // is complete. Static objects are destroyed in reverse order, so every static Manager ends while
  // the writer is still there.
  LogWrapper::getInstance();
  LogWrapper::log(LogLevel::Debug, logTag, "pavo::Manager: constructor");
}

Manager::~Manager() {
  Worker last;
  {
    const MutexLock lock(workerMutex());
    last.swap(worker);
  }
  if (last == nullptr) {
    return;
  }
  // The worker is stopped here even when an overlapping caller still holds it, so that its thread
  // and its cache end now. The worker is kept where stopping it is impossible, as in an exit() that
  // a listener has called on the worker's thread.
  if (!last->stop()) {
    abandon(std::move(last));
  }
}

void Manager::init(int subscription, bool useAndroidLog) noexcept {
  if (RequestPort::onWorkerThread()) {
    RequestPort::logRefusal("Manager::init");
    return;
  }
  if (isRefusedInForkedChild(copyOf(worker), "Manager::init")) {
    return;
  }
  std::unique_ptr<LogWriter> writer;
  if (useAndroidLog) {
    writer = std::make_unique<AdbWriter>();
  } else {
    writer = std::make_unique<DiagWriter>();
  }
  LogWrapper::getInstance().setLogWriter(std::move(writer));
  LogWrapper::log(LogLevel::High, logTag, "Manager::init(%d)", subscription);
  // The new worker is in place before the old worker stops.
  const Worker next = std::make_shared<ClientRequestManager>(subscription);
  Worker replaced;
  {
    const MutexLock lock(workerMutex());
    replaced = std::exchange(worker, next);
  }
  if (replaced != nullptr && !replaced->stop()) {
    abandon(std::move(replaced));
  }
}

std::shared_ptr<IProfileKey> Manager::addProfile(const AddProfileParams& params) noexcept {
  const auto response = perform<AddRequest, AddResponse>(addOperation, worker, params);
  return response != nullptr ? response->getAddProfileKey() : nullptr;
}

bool Manager::modifyProfile(const ModifyProfileParams& params,
                            std::shared_ptr<IProfileKey> key) noexcept {
  const auto response =
      perform<ModifyRequest, ModifyResponse>(modifyOperation, worker, params, std::move(key));
  return response != nullptr && response->getStatus() == Status::Success;
}

bool Manager::deleteProfile(std::shared_ptr<IProfileKey> key) noexcept {
  const auto response =
      perform<DeleteRequest, DeleteResponse>(deleteOperation, worker, std::move(key));
  return response != nullptr && response->getStatus() == Status::Success;
}

std::list<std::shared_ptr<IProfileKey>> Manager::filter(
    const FilterProfileParams& params) noexcept {
  const auto response = perform<FilterRequest, FilterResponse>(filterOperation, worker, params);
  return response != nullptr ? response->getFilterResult()
                             : std::list<std::shared_ptr<IProfileKey>>();
}

std::optional<ProfileParams> Manager::getProfile(std::shared_ptr<IProfileKey> key) noexcept {
  const auto response = perform<GetRequest, GetResponse>(getOperation, worker, std::move(key));
  return response != nullptr && response->getStatus() == Status::Success ? response->getParams()
                                                                         : std::nullopt;
}

bool Manager::match(const FilterProfileParams& params, std::shared_ptr<IProfileKey> key) noexcept {
  const auto response =
      perform<MatchRequest, MatchResponse>(matchOperation, worker, params, std::move(key));
  return response != nullptr && response->getMatchResult();
}

void Manager::refresh(PDCRefreshStatus status) noexcept {
  const auto response = perform<RefreshRequest, RefreshResponse>(refreshOperation, worker, status);
  if (response != nullptr) {
    LogWrapper::log(
        LogLevel::Info, logTag,
        status == PDC_REFRESH_STARTED ? "PAVO refresh started" : "PAVO refresh completed");
  }
}

std::vector<std::string> Manager::dump() noexcept {
  std::vector<std::string> lines;
  const Worker current = copyOf(worker);
  if (current != nullptr && !isRefusedInForkedChild(current, "Manager::dump")) {
    lines = current->dump();
  }
  lines.emplace_back();
  lines.emplace_back("Logs:");
  for (std::string& line : LocalLogBuffer::getInstance().getLogs()) {
    lines.push_back(std::move(line));
  }
  return lines;
}

}  // namespace pavo
