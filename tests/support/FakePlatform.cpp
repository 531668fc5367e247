// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FakePlatform.h"

#include "FakeModem.h"

#include <android/log.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <deque>
#include <map>
#include <mutex>
#include <type_traits>
#include <utility>

namespace pavo::test {

namespace {

constexpr std::chrono::milliseconds conditionPollInterval{5};

struct MessageSizes {
  unsigned int msgId;
  unsigned int requestLength;
  unsigned int responseLength;
};

constexpr MessageSizes messageSizes[] = {
    {OVIX_WDS_INDICATION_REGISTER_REQ_V01, 408, 8},
    {OVIX_WDS_CREATE_PROFILE_REQ_V01, 3256, 24},
    {OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01, 3256, 16},
    {OVIX_WDS_DELETE_PROFILE_REQ_V01, 8, 16},
    {OVIX_WDS_GET_PROFILE_LIST_REQ_V01, 184, 14300},
    {OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01, 8, 3272},
    {OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01, 2052, 8},
    {OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01, 4, 8},
};

bool isZeroed(const void* block, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(block);
  return std::all_of(bytes, bytes + size, [](std::uint8_t byte) { return byte == 0; });
}

std::vector<std::uint8_t> copyBytes(const void* bytes, std::size_t size) {
  const auto* first = static_cast<const std::uint8_t*>(bytes);
  return first == nullptr ? std::vector<std::uint8_t>() : std::vector(first, first + size);
}

// Returns the address of the one service object. The library only passes the pointer on.
ovix_service_object_type theServiceObject() {
  static const char object = 0;
  return reinterpret_cast<ovix_service_object_type>(&object);
}

struct Behaviour {
  bool serviceObjectPresent = true;
  FakePlatform::Announcement announcement = FakePlatform::Announcement::FromPlatformThread;
  ovix_client_error_type getAnyServiceResult = 0;
  ovix_client_error_type notifierInitResult = 0;
  bool failedInitMakesNotifier = false;
  ovix_client_error_type registerNotifyCbResult = 0;
  ovix_client_error_type clientInitResult = 0;
  ovix_client_error_type registerErrorCbResult = 0;
  ovix_client_error_type decodeResult = 0;
  bool emitsIndications = false;
  std::function<void(const std::string&)> logHook;
  std::map<unsigned int, std::deque<ModemHandler>> next;
  std::map<unsigned int, ModemHandler> every;
  // The key is the number of the send since the reset.
  std::map<std::size_t, ModemHandler> nth;
  std::size_t sends = 0;
};

}  // namespace

struct FakePlatform::State {
  mutable std::mutex mutex;
  std::condition_variable changed;

  // The mutex guards all members below.

  // This number counts changes, so that a waiter notices a change between its check and its wait.
  std::uint64_t version = 0;
  Behaviour behaviour;
  FakeModem modem;

  // No handle is used twice in a process, so a handle left over from an earlier test cannot be
  // mistaken for one of this test.
  std::uintptr_t lastHandle = 0x1000;
  std::uintptr_t lastHandleBeforeReset = 0x1000;
  std::vector<Notifier> notifiers;
  std::vector<Client> clients;
  std::vector<std::pair<ovix_client_type, std::thread::id>> callbacksRunning;

  std::vector<PlatformCall> recorded;
  // This number changes when `recorded` is emptied: a send in progress then has no record to
  // complete.
  std::uint64_t recordNumber = 0;
  std::size_t sendsInProgress = 0;
  std::vector<std::string> misuses;

  std::deque<std::function<void()>> posted;
  bool postedInProgress = false;
  // A forked process has none of its parent's threads and starts its own.
  pid_t postedThreadOwner = 0;

  template <typename Value>
  void set(Value Behaviour::*member, Value value) {
    const std::lock_guard lock(mutex);
    behaviour.*member = value;
  }

  void change() {
    ++version;
    changed.notify_all();
  }

  void misuse(std::string text) { misuses.push_back(std::move(text)); }

  void expectZeroed(const char* what, const void* block, std::size_t size) {
    if (block == nullptr || !isZeroed(block, size)) {
      misuse(std::string(what) + " is null or not zeroed");
    }
  }

  std::size_t record(PlatformCall call) {
    call.thread = std::this_thread::get_id();
    recorded.push_back(std::move(call));
    change();
    return recorded.size() - 1;
  }

  ovix_client_type newHandle() { return reinterpret_cast<ovix_client_type>(++lastHandle); }

  bool isLeftOver(ovix_client_type handle) const {
    return reinterpret_cast<std::uintptr_t>(handle) <= lastHandleBeforeReset;
  }

  template <typename Holder>
  static Holder* findLive(std::vector<Holder>& holders, ovix_client_type handle) {
    const auto found = std::find_if(holders.begin(), holders.end(), [handle](const Holder& h) {
      return h.handle == handle && !h.released;
    });
    return found == holders.end() ? nullptr : &*found;
  }

  // A send may legally pass null; the fake answers it with an error.
  Client* findClient(const char* function, ovix_client_type handle) {
    Client* const client = findLive(clients, handle);
    if (client == nullptr && handle != nullptr && !isLeftOver(handle)) {
      misuse(std::string(function) + " on a dead client");
    }
    return client;
  }

  void checkSend(const ModemExchange& exchange) {
    expectZeroed("the response of a send", exchange.resp, exchange.responseLength);
    const auto* const sizes =
        std::find_if(std::begin(messageSizes), std::end(messageSizes),
                     [&](const MessageSizes& s) { return s.msgId == exchange.msgId; });
    if (sizes == std::end(messageSizes) || sizes->requestLength != exchange.requestLength ||
        sizes->responseLength != exchange.responseLength) {
      misuse("message " + std::to_string(exchange.msgId) + " sent with lengths " +
             std::to_string(exchange.requestLength) + " and " +
             std::to_string(exchange.responseLength));
    }
  }

  bool runsOnOtherThread(ovix_client_type handle) const {
    return std::any_of(callbacksRunning.begin(), callbacksRunning.end(), [handle](const auto& r) {
      return r.first == handle && r.second != std::this_thread::get_id();
    });
  }
};

struct BlockedSend::Gate {
  std::mutex mutex;
  std::condition_variable changed;
  bool entered = false;
  bool open = false;

  void pass() {
    std::unique_lock lock(mutex);
    entered = true;
    changed.notify_all();
    changed.wait_for(lock, patience(), [this] { return open; });
  }
};

BlockedSend::BlockedSend(std::shared_ptr<Gate> theGate) : gate(std::move(theGate)) {}
BlockedSend::BlockedSend(BlockedSend&&) noexcept = default;
BlockedSend::~BlockedSend() { release(); }

bool BlockedSend::waitUntilEntered() const {
  std::unique_lock lock(gate->mutex);
  return gate->changed.wait_for(lock, patience(), [this] { return gate->entered; });
}

void BlockedSend::release() {
  if (!gate) {
    return;
  }
  const std::lock_guard lock(gate->mutex);
  gate->open = true;
  gate->changed.notify_all();
}

FakePlatform& FakePlatform::instance() {
  static FakePlatform& platform = *new FakePlatform;
  return platform;
}

FakePlatform::FakePlatform() : state(std::make_unique<State>()) {}

void FakePlatform::reset() {
  std::unique_lock lock(state->mutex);
  state->posted.clear();
  state->changed.wait_for(lock, patience(), [this] { return !state->postedInProgress; });
  state->posted.clear();
  state->behaviour = {};
  state->modem = {};
  state->lastHandleBeforeReset = state->lastHandle;
  state->notifiers.clear();
  state->clients.clear();
  state->recorded.clear();
  ++state->recordNumber;
  state->misuses.clear();
  state->change();
}

void FakePlatform::setServiceObjectPresent(bool present) {
  state->set(&Behaviour::serviceObjectPresent, present);
}

void FakePlatform::setAnnouncement(Announcement announcement) {
  state->set(&Behaviour::announcement, announcement);
}

void FakePlatform::setGetAnyServiceResult(ovix_client_error_type result) {
  state->set(&Behaviour::getAnyServiceResult, result);
}

void FakePlatform::setNotifierInitResult(ovix_client_error_type result, bool makesNotifier) {
  state->set(&Behaviour::notifierInitResult, result);
  state->set(&Behaviour::failedInitMakesNotifier, makesNotifier);
}

void FakePlatform::setRegisterNotifyCbResult(ovix_client_error_type result) {
  state->set(&Behaviour::registerNotifyCbResult, result);
}

void FakePlatform::setClientInitResult(ovix_client_error_type result) {
  state->set(&Behaviour::clientInitResult, result);
}

void FakePlatform::setRegisterErrorCbResult(ovix_client_error_type result) {
  state->set(&Behaviour::registerErrorCbResult, result);
}

void FakePlatform::setDecodeResult(ovix_client_error_type result) {
  state->set(&Behaviour::decodeResult, result);
}

void FakePlatform::setEmitsIndications(bool emits) {
  state->set(&Behaviour::emitsIndications, emits);
}

void FakePlatform::onNext(unsigned int msgId, ModemHandler handler) {
  const std::lock_guard lock(state->mutex);
  state->behaviour.next[msgId].push_back(std::move(handler));
}

void FakePlatform::onEvery(unsigned int msgId, ModemHandler handler) {
  const std::lock_guard lock(state->mutex);
  state->behaviour.every[msgId] = std::move(handler);
}

void FakePlatform::onNth(std::size_t nth, ModemHandler handler) {
  const std::lock_guard lock(state->mutex);
  state->behaviour.nth[state->behaviour.sends + nth] = std::move(handler);
}

void FakePlatform::failNext(unsigned int msgId, ovix_client_error_type error) {
  onNext(msgId, [error](ModemExchange&) { return error; });
}

void FakePlatform::rejectNext(unsigned int msgId, std::int32_t error) {
  onNext(msgId, [error](ModemExchange& exchange) {
    exchange.respondResult(/*result=*/1, error);
    return OVIX_CLIENT_NO_ERROR;
  });
}

BlockedSend FakePlatform::blockNext(unsigned int msgId) {
  auto gate = std::make_shared<BlockedSend::Gate>();
  onNext(msgId, [this, gate](ModemExchange& exchange) {
    gate->pass();
    return takeHandler(exchange)(exchange);
  });
  return BlockedSend(std::move(gate));
}

ovix_client_error_type FakePlatform::answer(ModemExchange& exchange) {
  std::vector<FakeModem::Change> changes;
  bool emits = false;
  {
    const std::lock_guard lock(state->mutex);
    changes = state->modem.answer(exchange);
    emits = state->behaviour.emitsIndications;
  }
  if (emits) {
    for (const FakeModem::Change& change : changes) {
      post([this, change] { indicateProfileChanged(change.profileIndex, change.event); });
    }
  }
  return OVIX_CLIENT_NO_ERROR;
}

void FakePlatform::setNextProfileIndex(std::uint8_t index) {
  const std::lock_guard lock(state->mutex);
  state->modem.setNextIndex(index);
}

void FakePlatform::setProfile(std::uint8_t index,
                              const wds_get_profile_settings_resp_msg_v01& settings) {
  const std::lock_guard lock(state->mutex);
  state->modem.set(index, settings);
}

void FakePlatform::eraseProfile(std::uint8_t index) {
  const std::lock_guard lock(state->mutex);
  state->modem.erase(index);
}

std::optional<wds_get_profile_settings_resp_msg_v01> FakePlatform::profile(
    std::uint8_t index) const {
  const std::lock_guard lock(state->mutex);
  return state->modem.get(index);
}

std::size_t FakePlatform::profileCount() const {
  const std::lock_guard lock(state->mutex);
  return state->modem.size();
}

bool FakePlatform::call(ovix_client_type handle, const std::function<void()>& callback) {
  const std::pair running(handle, std::this_thread::get_id());
  {
    const std::lock_guard lock(state->mutex);
    if (State::findLive(state->clients, handle) == nullptr &&
        State::findLive(state->notifiers, handle) == nullptr) {
      return false;
    }
    state->callbacksRunning.push_back(running);
  }
  callback();
  const std::lock_guard lock(state->mutex);
  state->callbacksRunning.erase(
      std::find(state->callbacksRunning.begin(), state->callbacksRunning.end(), running));
  state->change();
  return true;
}

bool FakePlatform::notify(ovix_client_service_event event) {
  bool called = false;
  for (const Notifier& notifier : notifiers()) {
    if (notifier.callback != nullptr) {
      called |= call(notifier.handle, [&] {
        notifier.callback(notifier.handle, notifier.serviceObject, event, notifier.data);
      });
    }
  }
  return called;
}

bool FakePlatform::raiseError(ovix_client_error_type error) {
  bool called = false;
  for (const Client& client : clients()) {
    if (client.errorCallback != nullptr) {
      called |= call(client.handle,
                     [&] { client.errorCallback(client.handle, error, client.errorData); });
    }
  }
  return called;
}

bool FakePlatform::indicate(unsigned int msgId, const void* bytes, unsigned int length) {
  bool called = false;
  for (const Client& client : clients()) {
    called |= call(client.handle, [&] {
      // Each callback gets a copy of exactly this size, because its buffer is valid during the call
      // only.
      std::vector<std::uint8_t> buffer = copyBytes(bytes, length);
      client.indicationCallback(client.handle, msgId, bytes == nullptr ? nullptr : buffer.data(),
                                length, client.indicationData);
    });
  }
  return called;
}

wds_profile_changed_ind_msg_v01 FakePlatform::profileChanged(std::uint8_t profileIndex,
                                                             std::int32_t event) {
  wds_profile_changed_ind_msg_v01 indication{};
  indication.profile_changed_event_valid = 1;
  indication.profile_changed_event.profile_index = profileIndex;
  indication.profile_changed_event.event = static_cast<wds_profile_event_enum_v01>(event);
  return indication;
}

bool FakePlatform::indicateProfileChanged(std::uint8_t profileIndex, std::int32_t event) {
  return indicateBytes(profileChanged(profileIndex, event));
}

bool FakePlatform::indicateBytes(const wds_profile_changed_ind_msg_v01& indication) {
  return indicate(OVIX_WDS_PROFILE_CHANGED_IND_V01, &indication, sizeof indication);
}

void FakePlatform::post(std::function<void()> action) {
  const std::lock_guard lock(state->mutex);
  if (state->postedThreadOwner != getpid()) {
    state->postedThreadOwner = getpid();
    state->postedInProgress = false;
    std::thread([this] { runPosted(); }).detach();
  }
  state->posted.push_back(std::move(action));
  state->change();
}

void FakePlatform::runPosted() {
  std::unique_lock lock(state->mutex);
  for (;;) {
    state->changed.wait(lock, [this] { return !state->posted.empty(); });
    const std::function<void()> action = std::move(state->posted.front());
    state->posted.pop_front();
    state->postedInProgress = true;
    lock.unlock();
    action();
    lock.lock();
    state->postedInProgress = false;
    state->change();
  }
}

bool FakePlatform::drainPosted() {
  std::unique_lock lock(state->mutex);
  return state->changed.wait_for(
      lock, patience(), [this] { return state->posted.empty() && !state->postedInProgress; });
}

std::vector<PlatformCall> FakePlatform::calls() const {
  const std::lock_guard lock(state->mutex);
  return state->recorded;
}

std::vector<PlatformCall> FakePlatform::calls(Kind kind) const {
  std::vector<PlatformCall> found;
  const std::lock_guard lock(state->mutex);
  std::copy_if(state->recorded.begin(), state->recorded.end(), std::back_inserter(found),
               [kind](const PlatformCall& call) { return call.kind == kind; });
  return found;
}

std::size_t FakePlatform::count(Kind kind) const {
  const std::lock_guard lock(state->mutex);
  return static_cast<std::size_t>(
      std::count_if(state->recorded.begin(), state->recorded.end(),
                    [kind](const PlatformCall& call) { return call.kind == kind; }));
}

std::vector<PlatformCall> FakePlatform::sent() const { return calls(Kind::Send); }

std::vector<PlatformCall> FakePlatform::sent(unsigned int msgId) const {
  std::vector<PlatformCall> found = sent();
  std::erase_if(found, [msgId](const PlatformCall& call) { return call.msgId != msgId; });
  return found;
}

std::vector<unsigned int> FakePlatform::sentIds() const {
  std::vector<unsigned int> ids;
  for (const PlatformCall& call : sent()) {
    ids.push_back(call.msgId);
  }
  return ids;
}

std::size_t FakePlatform::sentCount(unsigned int msgId) const { return sent(msgId).size(); }

std::vector<PlatformCall> FakePlatform::logLines() const { return calls(Kind::Log); }

std::vector<std::string> FakePlatform::logMessages() const {
  std::vector<std::string> messages;
  for (PlatformCall& line : logLines()) {
    messages.push_back(std::move(line.message));
  }
  return messages;
}

std::vector<std::string> FakePlatform::logMessages(int priority) const {
  std::vector<std::string> messages;
  for (PlatformCall& line : logLines()) {
    if (line.priority == priority) {
      messages.push_back(std::move(line.message));
    }
  }
  return messages;
}

bool FakePlatform::logged(std::string_view message) const {
  const std::vector<std::string> messages = logMessages();
  return std::find(messages.begin(), messages.end(), message) != messages.end();
}

std::size_t FakePlatform::releaseCount(ovix_client_type handle) const {
  const std::vector<PlatformCall> releases = calls(Kind::Release);
  return static_cast<std::size_t>(
      std::count_if(releases.begin(), releases.end(),
                    [handle](const PlatformCall& call) { return call.handle == handle; }));
}

std::vector<FakePlatform::Notifier> FakePlatform::notifiers() const {
  const std::lock_guard lock(state->mutex);
  return state->notifiers;
}

std::vector<FakePlatform::Client> FakePlatform::clients() const {
  const std::lock_guard lock(state->mutex);
  return state->clients;
}

std::size_t FakePlatform::openClientCount() const {
  const std::lock_guard lock(state->mutex);
  return static_cast<std::size_t>(std::count_if(state->clients.begin(), state->clients.end(),
                                                [](const Client& c) { return !c.released; }));
}

std::size_t FakePlatform::armedNotifierCount() const {
  const std::lock_guard lock(state->mutex);
  return static_cast<std::size_t>(std::count_if(state->notifiers.begin(), state->notifiers.end(),
                                                [](const Notifier& n) { return !n.released; }));
}

std::vector<std::string> FakePlatform::misuses() const {
  const std::lock_guard lock(state->mutex);
  return state->misuses;
}

void FakePlatform::clearCalls() {
  const std::lock_guard lock(state->mutex);
  state->recorded.clear();
  ++state->recordNumber;
}

bool FakePlatform::waitFor(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + patience();
  for (;;) {
    std::uint64_t seen = 0;
    {
      const std::lock_guard lock(state->mutex);
      seen = state->version;
    }
    if (condition()) {
      return true;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      return false;
    }
    std::unique_lock lock(state->mutex);
    state->changed.wait_for(lock, conditionPollInterval,
                            [this, seen] { return state->version != seen; });
  }
}

bool FakePlatform::waitForSent(unsigned int msgId, std::size_t atLeast) {
  return waitFor([this, msgId, atLeast] {
    const std::vector<PlatformCall> requests = sent(msgId);
    return static_cast<std::size_t>(
               std::count_if(requests.begin(), requests.end(),
                             [](const PlatformCall& call) { return call.completed; })) >= atLeast;
  });
}

bool FakePlatform::waitForCalls(Kind kind, std::size_t atLeast) {
  return waitFor([this, kind, atLeast] { return count(kind) >= atLeast; });
}

bool FakePlatform::waitForLog(std::string_view message, std::size_t atLeast) {
  return waitFor([this, message, atLeast] {
    const std::vector<std::string> messages = logMessages();
    return static_cast<std::size_t>(std::count(messages.begin(), messages.end(), message)) >=
           atLeast;
  });
}

bool FakePlatform::waitForStart() {
  return waitForLog("OvixWdsProxy config register request successful!");
}

bool FakePlatform::waitForRegistration(std::size_t atLeast) {
  return waitForSent(OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01, atLeast);
}

ovix_service_object_type FakePlatform::getServiceObject(int major, int minor, int libraryVersion) {
  const std::lock_guard lock(state->mutex);
  state->record({.kind = Kind::GetServiceObject, .numbers = {major, minor, libraryVersion}});
  return state->behaviour.serviceObjectPresent ? theServiceObject() : nullptr;
}

ovix_client_error_type FakePlatform::notifierInit(ovix_service_object_type serviceObject,
                                                  ovix_client_os_params* osParams,
                                                  ovix_client_type* notifier) {
  const std::lock_guard lock(state->mutex);
  state->expectZeroed("the notifier's parameter block", osParams, sizeof *osParams);
  // The block belongs to the library, which has to clear it before using it again.
  std::memset(osParams, 0xA5, sizeof *osParams);
  const ovix_client_error_type result = state->behaviour.notifierInitResult;
  if (result == OVIX_CLIENT_NO_ERROR || state->behaviour.failedInitMakesNotifier) {
    *notifier = state->newHandle();
    state->notifiers.push_back({.handle = *notifier, .serviceObject = serviceObject});
  }
  state->record({.kind = Kind::NotifierInit, .handle = *notifier, .result = result});
  return result;
}

ovix_client_error_type FakePlatform::registerNotifyCb(ovix_client_type handle,
                                                      ovix_client_notify_cb callback, void* data) {
  auto announcement = Announcement::Never;
  ovix_client_error_type result = OVIX_CLIENT_NO_ERROR;
  {
    const std::lock_guard lock(state->mutex);
    if (handle == nullptr) {
      state->record({.kind = Kind::RegisterNotifyCb, .result = OVIX_CLIENT_INVALID_HANDLE});
      return OVIX_CLIENT_INVALID_HANDLE;
    }
    Notifier* const notifier = State::findLive(state->notifiers, handle);
    if (notifier == nullptr) {
      state->misuse("a notify callback registered on a dead notifier");
      return OVIX_CLIENT_INVALID_HANDLE;
    }
    notifier->callback = callback;
    notifier->data = data;
    result = state->behaviour.registerNotifyCbResult;
    state->record({.kind = Kind::RegisterNotifyCb, .handle = handle, .result = result});
    announcement = state->behaviour.announcement;
  }
  const auto announce = [this, handle, callback, data] {
    call(handle,
         [&] { callback(handle, theServiceObject(), OVIX_CLIENT_SERVICE_AVAILABLE, data); });
  };
  if (announcement == Announcement::Synchronous) {
    announce();
  } else if (announcement == Announcement::FromPlatformThread) {
    post(announce);
  }
  return result;
}

ovix_client_error_type FakePlatform::getAnyService(ovix_service_object_type,
                                                   ovix_service_info* serviceInfo) {
  const std::lock_guard lock(state->mutex);
  state->expectZeroed("the service information", serviceInfo, sizeof *serviceInfo);
  const ovix_client_error_type result = state->behaviour.getAnyServiceResult;
  if (result == OVIX_CLIENT_NO_ERROR) {
    serviceInfo->reserved[0] = 1;
  }
  state->record({.kind = Kind::GetAnyService, .result = result});
  return result;
}

ovix_client_error_type FakePlatform::clientInit(ovix_service_info* serviceInfo,
                                                ovix_service_object_type serviceObject,
                                                ovix_client_ind_cb callback, void* data,
                                                ovix_client_os_params* osParams,
                                                ovix_client_type* client) {
  const std::lock_guard lock(state->mutex);
  state->expectZeroed("the client's parameter block", osParams, sizeof *osParams);
  std::memset(osParams, 0xA5, sizeof *osParams);
  if (serviceInfo == nullptr || serviceInfo->reserved[0] != 1) {
    state->misuse("a client opened without the service's information");
  }
  const ovix_client_error_type result = state->behaviour.clientInitResult;
  const ovix_client_type handle = state->newHandle();
  // The handle is set even when the call fails: a caller must not take it for a client then.
  *client = handle;
  if (result == OVIX_CLIENT_NO_ERROR) {
    state->clients.push_back({.handle = handle,
                              .serviceObject = serviceObject,
                              .indicationCallback = callback,
                              .indicationData = data});
  }
  state->record({.kind = Kind::ClientInit, .handle = handle, .result = result});
  return result;
}

ovix_client_error_type FakePlatform::registerErrorCb(ovix_client_type handle,
                                                     ovix_client_error_cb callback, void* data) {
  const std::lock_guard lock(state->mutex);
  Client* const client = state->findClient("ovix_client_register_error_cb", handle);
  if (client == nullptr) {
    return OVIX_CLIENT_INVALID_HANDLE;
  }
  client->errorCallback = callback;
  client->errorData = data;
  const ovix_client_error_type result = state->behaviour.registerErrorCbResult;
  state->record({.kind = Kind::RegisterErrorCb, .handle = handle, .result = result});
  return result;
}

ModemHandler FakePlatform::takeHandler(const ModemExchange& exchange) {
  const std::lock_guard lock(state->mutex);
  std::deque<ModemHandler>& next = state->behaviour.next[exchange.msgId];
  if (!next.empty()) {
    ModemHandler handler = std::move(next.front());
    next.pop_front();
    return handler;
  }
  const auto every = state->behaviour.every.find(exchange.msgId);
  if (every != state->behaviour.every.end()) {
    return every->second;
  }
  return [this](ModemExchange& e) { return answer(e); };
}

ovix_client_error_type FakePlatform::send(ModemExchange exchange) {
  ModemHandler handler;
  std::uint64_t recordNumber = 0;
  std::size_t position = 0;
  {
    const std::lock_guard lock(state->mutex);
    state->checkSend(exchange);
    const bool isOpen = state->findClient("a send", exchange.client) != nullptr;
    if (const auto nth = state->behaviour.nth.extract(state->behaviour.sends++)) {
      handler = nth.mapped();
    } else if (!isOpen) {
      handler = [](ModemExchange&) { return OVIX_CLIENT_INVALID_HANDLE; };
    }
    ++state->sendsInProgress;
    recordNumber = state->recordNumber;
    position = state->record({.kind = Kind::Send,
                              .handle = exchange.client,
                              .msgId = exchange.msgId,
                              .bytes = copyBytes(exchange.req, exchange.requestLength),
                              .outLength = exchange.responseLength,
                              .timeoutMs = exchange.timeoutMs,
                              .completed = false});
  }
  if (!handler) {
    handler = takeHandler(exchange);
  }
  const ovix_client_error_type result = handler(exchange);
  const std::lock_guard lock(state->mutex);
  --state->sendsInProgress;
  if (recordNumber == state->recordNumber) {
    state->recorded[position].result = result;
    state->recorded[position].completed = true;
  }
  state->change();
  return result;
}

ovix_client_error_type FakePlatform::decode(ovix_client_type client, int messageKind,
                                            unsigned int msgId, const void* src,
                                            unsigned int srcLength, void* dst,
                                            unsigned int dstLength) {
  const std::lock_guard lock(state->mutex);
  state->expectZeroed("the structure of a decode", dst, dstLength);
  ovix_client_error_type result = state->behaviour.decodeResult;
  if (state->findClient("a decode", client) == nullptr) {
    result = OVIX_CLIENT_INVALID_HANDLE;
  } else if (srcLength != dstLength || messageKind != OVIX_MESSAGE_INDICATION) {
    result = OVIX_CLIENT_DECODE_ERROR;
  }
  if (result == OVIX_CLIENT_NO_ERROR) {
    std::memcpy(dst, src, dstLength);
  }
  state->record({.kind = Kind::Decode,
                 .handle = client,
                 .msgId = msgId,
                 .bytes = copyBytes(src, srcLength),
                 .outLength = dstLength,
                 .result = result,
                 .numbers = {messageKind, 0, 0}});
  return result;
}

ovix_client_error_type FakePlatform::release(ovix_client_type handle) {
  std::unique_lock lock(state->mutex);
  if (state->isLeftOver(handle)) {
    if (handle == nullptr) {
      state->misuse("the release of no handle");
    }
    return OVIX_CLIENT_INVALID_HANDLE;
  }
  Notifier* const notifier = State::findLive(state->notifiers, handle);
  Client* const client = State::findLive(state->clients, handle);
  ovix_client_error_type result = OVIX_CLIENT_NO_ERROR;
  if (notifier != nullptr) {
    notifier->released = true;
  } else if (client != nullptr) {
    client->released = true;
  } else {
    state->misuse("the release of a dead handle");
    result = OVIX_CLIENT_INVALID_HANDLE;
  }
  state->record({.kind = Kind::Release, .handle = handle, .result = result});
  if (!state->changed.wait_for(lock, patience(),
                               [&] { return !state->runsOnOtherThread(handle); })) {
    state->misuse("a release that had to wait for a callback for ever");
  }
  return result;
}

void FakePlatform::record(PlatformCall call) {
  const std::lock_guard lock(state->mutex);
  state->record(std::move(call));
}

pid_t FakePlatform::forkProcess() {
  const std::lock_guard lock(state->mutex);
  return fork();
}

void FakePlatform::setLogHook(std::function<void(const std::string&)> hook) {
  state->set(&Behaviour::logHook, std::move(hook));
}

void FakePlatform::recordLogLine(PlatformCall call) {
  const std::string message = call.message;
  std::function<void(const std::string&)> hook;
  {
    const std::lock_guard lock(state->mutex);
    state->record(std::move(call));
    hook = state->behaviour.logHook;
  }
  if (hook) {
    hook(message);
  }
}

}  // namespace pavo::test

using pavo::test::FakePlatform;

extern "C" {

ovix_service_object_type wds_get_service_object_internal_v01(int idl_major, int idl_minor,
                                                             int library_version) {
  return FakePlatform::instance().getServiceObject(idl_major, idl_minor, library_version);
}

ovix_client_error_type ovix_client_notifier_init(ovix_service_object_type service_object,
                                                 ovix_client_os_params* os_params,
                                                 ovix_client_type* notifier) {
  return FakePlatform::instance().notifierInit(service_object, os_params, notifier);
}

ovix_client_error_type ovix_client_register_notify_cb(ovix_client_type notifier,
                                                      ovix_client_notify_cb callback, void* data) {
  return FakePlatform::instance().registerNotifyCb(notifier, callback, data);
}

ovix_client_error_type ovix_client_get_any_service(ovix_service_object_type service_object,
                                                   ovix_service_info* service_info) {
  return FakePlatform::instance().getAnyService(service_object, service_info);
}

ovix_client_error_type ovix_client_init(ovix_service_info* service_info,
                                        ovix_service_object_type service_object,
                                        ovix_client_ind_cb callback, void* ind_cb_data,
                                        ovix_client_os_params* os_params,
                                        ovix_client_type* client) {
  return FakePlatform::instance().clientInit(service_info, service_object, callback, ind_cb_data,
                                             os_params, client);
}

ovix_client_error_type ovix_client_register_error_cb(ovix_client_type client,
                                                     ovix_client_error_cb callback, void* data) {
  return FakePlatform::instance().registerErrorCb(client, callback, data);
}

ovix_client_error_type ovix_client_send_msg_sync(ovix_client_type client, unsigned int msg_id,
                                                 void* req, unsigned int req_len, void* resp,
                                                 unsigned int resp_len, unsigned int timeout_ms) {
  return FakePlatform::instance().send({.client = client,
                                        .msgId = msg_id,
                                        .req = req,
                                        .requestLength = req_len,
                                        .resp = resp,
                                        .responseLength = resp_len,
                                        .timeoutMs = timeout_ms});
}

ovix_client_error_type ovix_client_message_decode(ovix_client_type client, int message_kind,
                                                  unsigned int msg_id, const void* src,
                                                  unsigned int src_len, void* dst,
                                                  unsigned int dst_len) {
  return FakePlatform::instance().decode(client, message_kind, msg_id, src, src_len, dst, dst_len);
}

ovix_client_error_type ovix_client_release(ovix_client_type client) {
  return FakePlatform::instance().release(client);
}

int Diag_LSM_Init(unsigned char* env) {
  FakePlatform::instance().record({.kind = FakePlatform::Kind::DiagInit, .handle = env});
  return 1;
}

int Diag_LSM_DeInit(void) {
  FakePlatform::instance().record({.kind = FakePlatform::Kind::DiagDeInit});
  return 1;
}

// The library's format is "|%s| %s": a tag and a message.
void msg_sprintf(const diag_msg_descriptor* descriptor, ...) {
  va_list arguments;
  va_start(arguments, descriptor);
  const char* const tag = va_arg(arguments, const char*);
  const char* const message = va_arg(arguments, const char*);
  va_end(arguments);
  FakePlatform::instance().record({.kind = FakePlatform::Kind::DiagMessage,
                                   .priority = static_cast<int>(descriptor->ss_mask),
                                   .tag = tag,
                                   .format = descriptor->format,
                                   .message = message,
                                   .descriptor = descriptor});
}

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  va_list arguments;
  va_start(arguments, fmt);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, fmt, arguments);
  va_end(arguments);
  std::string message(static_cast<std::size_t>(std::max(length, 0)), '\0');
  std::vsnprintf(message.data(), message.size() + 1, fmt, again);
  va_end(again);
  FakePlatform::instance().recordLogLine({.kind = FakePlatform::Kind::Log,
                                          .priority = prio,
                                          .tag = tag,
                                          .format = fmt,
                                          .message = std::move(message)});
  return length;
}
}
