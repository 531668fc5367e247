// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "OvixWdsProxy.h"

#include "Conversions.h"
#include "LogWrapper.h"
#include "Modem3gppProfile.h"
#include "WakeFd.h"
#include "base/ErrorText.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <utility>

namespace pavo {

namespace {

// The version of the service that this library is written for.
constexpr int serviceMajor = 1;
constexpr int serviceMinor = 257;
constexpr int serviceLibrary = 6;

// The proxies that exist. A callback holds the lock while it works on its proxy. The destructor of
// a proxy first removes the proxy from this set, so it waits for that callback, and later callbacks
// no longer find the proxy. The lock is not held across calls into the messaging library, because
// they may wait for callbacks. Nor is it held across a log line, because the log writer may raise
// another callback. The object is never destroyed, because callbacks come until the process ends.
struct LiveProxies {
  Mutex mutex;
  std::set<const void*> proxies GUARDED_BY(mutex);

  static LiveProxies& instance() {
    static LiveProxies& live = *new LiveProxies;
    return live;
  }

  void add(const OvixWdsProxy* proxy) {
    const MutexLock lock(mutex);
    proxies.insert(proxy);
  }

  void remove(const OvixWdsProxy* proxy) {
    const MutexLock lock(mutex);
    proxies.erase(proxy);
  }

  // Runs work on the proxy. Returns false when the proxy is gone.
  template <typename Work>
  bool with(void* proxy, const Work& work) {
    const MutexLock lock(mutex);
    const bool isLive = proxies.contains(proxy);
    if (isLive) {
      work(*static_cast<OvixWdsProxy*>(proxy));
    }
    return isLive;
  }
};

// The result of a callback's write to an eventfd. The result is logged after the lock is released.
struct WakeUp {
  int written = notifiedBytes;
  int error = 0;

  void send(const UniqueFd& fd) {
    written = notifyFd(fd.get());
    error = errno;
  }
  bool hasFailed() const { return written != notifiedBytes; }
};

// Zeroes the message with its padding, because the messaging library and the modem see all of it.
template <typename Message>
void clear(Message& message) {
  std::memset(&message, 0, sizeof message);
}

void fill(wds_profile_identifier_type_v01& identifier, int profileId) {
  identifier = convertToProfileIdentifier(profileId);
}

bool report(bool succeeded, LogLevel successLevel, const char* success, const char* failure) {
  LogWrapper::log(succeeded ? successLevel : LogLevel::Error, logTag, "%s",
                  succeeded ? success : failure);
  return succeeded;
}

ProfileChangedEvent eventOf(wds_profile_event_enum_v01 code) {
  switch (code) {
    case WDS_PROFILE_EVENT_CREATE_V01:
      return ProfileChangedEvent::Create;
    case WDS_PROFILE_EVENT_DELETE_V01:
      return ProfileChangedEvent::Delete;
    case WDS_PROFILE_EVENT_MODIFY_V01:
      return ProfileChangedEvent::Modify;
    case WDS_PROFILE_EVENT_SUBSCRIPTION_CHANGE_V01:
      return ProfileChangedEvent::SubscriptionChange;
    case WDS_PROFILE_EVENT_READY_V01:
    default:
      // A newer modem may report other events. Reading all profiles again is right for each of
      // them.
      return ProfileChangedEvent::ProfileReady;
  }
}

}  // namespace

OvixWdsProxy::OvixWdsProxy(EventManager& eventManager, int subscription)
    : eventManager(eventManager),
      subscription(subscription),
      serviceObject(
          wds_get_service_object_internal_v01(serviceMajor, serviceMinor, serviceLibrary)),
      // The default is set before the registrations below, because the loop may already be running
      // and an indication may come at once.
      profileChangedIndCb([](ProfileChangedInd) {
        LogWrapper::log(LogLevel::Debug, logTag,
                        "OvixWdsProxy::no profileChangedIndCb registered!");
      }) {
  svcUpFd = watch(handleSvcUp);
  errorFd = watch(handleError);
  indicationFd = watch(handleIndication);
  // From here on the callbacks may write to the descriptors.
  LiveProxies::instance().add(this);
  registerOvixSvcUp();
}

OvixWdsProxy::~OvixWdsProxy() {
  LiveProxies::instance().remove(this);
  releaseNotifier();
  releaseClient();
  for (const UniqueFd* fd : {&svcUpFd, &errorFd, &indicationFd}) {
    eventManager.removeEventHandler(fd->get());
  }
}

UniqueFd OvixWdsProxy::watch(EventManager::EventCallback callback) {
  UniqueFd fd = makeWakeFd();
  eventManager.addEssentialHandler(fd.get(), callback, this, EPOLLIN);
  return fd;
}

void OvixWdsProxy::releaseNotifier() {
  if (notifier != nullptr) {
    ovix_client_release(std::exchange(notifier, nullptr));
  }
}

void OvixWdsProxy::releaseClient() {
  if (client == nullptr) {
    return;
  }
  const ovix_client_type released = std::exchange(client, nullptr);
  ovix_client_release(released);
  // Indications of the released client can no longer be decoded, and the modem that sent them is
  // gone.
  const MutexLock lock(queueMutex);
  std::erase_if(indQueue, [released](const std::unique_ptr<IndInfo_t>& indication) {
    return indication != nullptr && indication->user_handle == released;
  });
}

void OvixWdsProxy::registerOvixSvcUp() {
  LogWrapper::log(LogLevel::High, logTag, "OvixWdsProxy::registerOvixSvcUp");
  if (serviceObject == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "cannot obtain service obj, fatal error");
    return;
  }
  // After a second error without a service-up in between, the old notifier is still armed. The
  // results of the platform's calls are ignored. If the platform makes no notifier, the handle
  // stays empty.
  releaseNotifier();
  clear(osParams);
  ovix_client_notifier_init(serviceObject, &osParams, &notifier);
  ovix_client_register_notify_cb(notifier, ovixNotifyCb, this);
}

void OvixWdsProxy::ovixNotifyCb(ovix_client_type /*client*/,
                                ovix_service_object_type /*serviceObject*/,
                                ovix_client_service_event event, void* proxy) noexcept {
  if (proxy == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "OvixWdsProxy instance is null");
    return;
  }
  const bool isUp = event == OVIX_CLIENT_SERVICE_AVAILABLE;
  WakeUp wakeUp;
  const bool isLive = LiveProxies::instance().with(proxy, [&](const OvixWdsProxy& self) {
    if (isUp) {
      wakeUp.send(self.svcUpFd);
    }
  });
  if (isLive && !isUp) {
    LogWrapper::log(LogLevel::Error, logTag, "OvixWdsProxy notify cb: unsupported service event");
  }
  if (wakeUp.hasFailed()) {
    LogWrapper::log(LogLevel::Error, logTag, "error in writing rv:%d, error:%s", wakeUp.written,
                    errorText(wakeUp.error).c_str());
  }
}

void OvixWdsProxy::handleSvcUp(int fd, void* proxy) {
  LogWrapper::log(LogLevel::Debug, logTag,
                  "OvixWdsProxy service is up, trying to initialize svc client");
  drainFd(fd, LogLevel::Error);
  if (proxy == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "OvixWdsProxy instance is null");
    return;
  }
  static_cast<OvixWdsProxy*>(proxy)->openClient();
}

void OvixWdsProxy::openClient() {
  workerThread.check();
  ovix_service_info serviceInfo;
  clear(serviceInfo);
  if (ovix_client_get_any_service(serviceObject, &serviceInfo) != OVIX_CLIENT_NO_ERROR) {
    LogWrapper::log(LogLevel::Error, logTag, "error get service.");
    return;
  }
  if (eventManager.isStopRequested()) {
    return;
  }
  releaseNotifier();
  if (client != nullptr) {
    LogWrapper::log(LogLevel::Debug, logTag,
                    "OvixWdsProxy client is already present, so skipping client initialization.");
    return;
  }
  clear(osParams);
  const int opened =
      ovix_client_init(&serviceInfo, serviceObject, ovixIndCb, this, &osParams, &client);
  if (opened != OVIX_CLIENT_NO_ERROR) {
    // The messaging library may have left a handle there, but it is not an open client.
    client = nullptr;
    LogWrapper::log(LogLevel::Error, logTag, "ovix_client_init error. ErrCode : %d", opened);
    return;
  }
  const int registered = ovix_client_register_error_cb(client, ovixErrorCb, this);
  LogWrapper::log(LogLevel::Debug, logTag, "ovix_client_register_error_cb result: %d", registered);
  if (eventManager.isStopRequested()) {
    return;
  }
  registerOvixIndications();
  if (hasLost()) {
    notifyFd(indicationFd.get());
  }
}

template <typename Request, typename Response>
bool OvixWdsProxy::send(unsigned int messageId, Request& request, Response& response) {
  workerThread.check();
  clear(response);
  return ovix_client_send_msg_sync(client, messageId, &request, sizeof request, &response,
                                   sizeof response, sendTimeoutMs) == OVIX_CLIENT_NO_ERROR &&
         response.resp.result == 0;
}

void OvixWdsProxy::registerOvixIndications() {
  wds_result_resp_msg_v01 response;

  wds_bind_subscription_req_msg_v01 bind;
  clear(bind);
  bind.subscription = subscription;
  report(send(OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01, bind, response), LogLevel::Debug,
         "OvixWdsProxy bind register request successful!", "Unable send bind req message");
  if (eventManager.isStopRequested()) {
    return;
  }

  wds_indication_register_req_msg_v01 indications;
  clear(indications);
  indications.report_profile_changed_events_valid = 1;
  indications.report_profile_changed_events = 1;
  report(send(OVIX_WDS_INDICATION_REGISTER_REQ_V01, indications, response), LogLevel::Debug,
         "OvixWdsProxy indication register request successful!",
         "Unable send indication req message");
  if (eventManager.isStopRequested()) {
    return;
  }

  wds_configure_profile_event_list_req_msg_v01 events;
  clear(events);
  events.profile_event_list_valid = 1;
  events.profile_event_list_len = 1;
  events.profile_event_list[0].profile_type = WDS_PROFILE_TYPE_ANY_V01;
  events.profile_event_list[0].profile_index = WDS_PROFILE_INDEX_ANY_V01;
  events.report_switch_valid = 1;
  events.report_switch = 1;
  report(send(OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01, events, response), LogLevel::Debug,
         "OvixWdsProxy config register request successful!", "Unable send config req message");
}

void OvixWdsProxy::ovixErrorCb(ovix_client_type /*client*/, ovix_client_error_type /*error*/,
                               void* proxy) noexcept {
  // Log filters search for this exact text. Its number is not the current line.
  LogWrapper::log(LogLevel::Debug, logTag, "src/OvixWdsProxy:%d:%s", 161, "ovixErrorCb");
  if (proxy == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "OvixWdsProxy NULL in ovixErrorCb");
    return;
  }
  WakeUp wakeUp;
  LiveProxies::instance().with(proxy,
                               [&wakeUp](const OvixWdsProxy& self) { wakeUp.send(self.errorFd); });
  if (wakeUp.hasFailed()) {
    LogWrapper::log(LogLevel::Error, logTag, "error in writing rv: %d, error: %s", wakeUp.written,
                    errorText(wakeUp.error).c_str());
  }
}

void OvixWdsProxy::handleError(int fd, void* proxy) {
  LogWrapper::log(LogLevel::Debug, logTag, "src/OvixWdsProxy:%d:%s", 230, "handleError");
  drainFd(fd, LogLevel::Error);
  if (proxy == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "arg is null");
    return;
  }
  auto& self = *static_cast<OvixWdsProxy*>(proxy);
  self.releaseClient();
  LogWrapper::log(LogLevel::Info, logTag, "Handling modem down");
  self.registerOvixSvcUp();
}

void OvixWdsProxy::ovixIndCb(ovix_client_type client, unsigned int msg_id, void* ind_buf,
                             unsigned int ind_buf_len, void* ind_cb_data) noexcept {
  LogWrapper::log(LogLevel::Verbose, logTag, "%s:%d",
                  "static void pavo::OvixWdsProxy::ovixIndCb(ovix_client_type, unsigned int, "
                  "void *, unsigned int, void *)",
                  116);
  if (ind_buf_len == 0 || ind_buf == nullptr || ind_cb_data == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "The ind_cb_data/ind_buf is null or ind_buf_len is %d",
                    static_cast<int>(ind_buf_len));
    return;
  }
  WakeUp wakeUp;
  bool isFirstLost = false;
  LiveProxies::instance().with(ind_cb_data, [&](OvixWdsProxy& self) {
    auto indication = std::make_unique<IndInfo_t>(IndInfo_t{
        client, msg_id, std::make_unique<std::uint8_t[]>(ind_buf_len), ind_buf_len, &self});
    std::memcpy(indication->ind_buf.get(), ind_buf, ind_buf_len);
    {
      const MutexLock lock(self.queueMutex);
      if (self.indQueue.size() >= indicationsQueuedMax) {
        // The queued indications already have a wake-up.
        isFirstLost = !std::exchange(self.hasLostIndications, true);
        return;
      }
      self.indQueue.push_back(std::move(indication));
    }
    wakeUp.send(self.indicationFd);
  });
  if (isFirstLost) {
    LogWrapper::log(LogLevel::Error, logTag,
                    "%d indications are queued, dropping more until they are handled",
                    static_cast<int>(indicationsQueuedMax));
  }
  if (wakeUp.hasFailed()) {
    LogWrapper::log(LogLevel::Error, logTag, "Error in writing rv: %d, error: %s", wakeUp.written,
                    errorText(wakeUp.error).c_str());
  }
}

std::size_t OvixWdsProxy::queueSize() {
  const MutexLock lock(queueMutex);
  return indQueue.size();
}

std::unique_ptr<IndInfo_t> OvixWdsProxy::takeIndication() {
  const MutexLock lock(queueMutex);
  std::unique_ptr<IndInfo_t> oldest = std::move(indQueue.front());
  indQueue.pop_front();
  return oldest;
}

void OvixWdsProxy::handleIndication(int fd, void* proxy) {
  drainFd(fd, LogLevel::Error);
  if (proxy == nullptr) {
    LogWrapper::log(LogLevel::Error, logTag, "OvixWdsProxy nullptr in handleIndication");
    return;
  }
  auto& self = *static_cast<OvixWdsProxy*>(proxy);
  if (std::exchange(self.isGivingWay, false)) {
    // The last turn ended before the queue was empty, so this turn only renews the wake-up. The
    // kernel reports this descriptor before one that became ready during the last turn. A client's
    // request therefore comes next in the same wait and is handled now.
    notifyFd(fd);
    return;
  }
  // Indications are delivered until the queue is empty, unless that takes too long. Each indication
  // may cost a modem request, and clients and stop() wait meanwhile.
  const auto turnEnd = std::chrono::steady_clock::now() + indicationTurnMax;
  for (bool isFirst = true;; isFirst = false) {
    const std::size_t queued = self.queueSize();
    const bool isOver = self.eventManager.isStopRequested() ||
                        (!isFirst && std::chrono::steady_clock::now() >= turnEnd);
    if (queued != 0 && isOver) {
      // The remaining indications need a new wake-up, because the descriptor has been drained.
      self.isGivingWay = true;
      notifyFd(fd);
      return;
    }
    LogWrapper::log(LogLevel::Debug, logTag, "OvixWdsProxy: handleIndication indQueue.size[%d]",
                    static_cast<int>(queued));
    if (queued == 0) {
      self.reportLost();
      return;
    }
    const std::unique_ptr<IndInfo_t> indication = self.takeIndication();
    if (indication == nullptr) {
      LogWrapper::log(LogLevel::Error, logTag, "handleIndication: arg is null");
      return;
    }
    if (!self.deliver(*indication)) {
      return;
    }
  }
}

bool OvixWdsProxy::hasLost() {
  const MutexLock lock(queueMutex);
  return hasLostIndications;
}

void OvixWdsProxy::reportLost() {
  if (client == nullptr) {
    // Nothing can be read now. openClient() brings this about again.
    return;
  }
  bool isLossNew = false;
  {
    const MutexLock lock(queueMutex);
    isLossNew = std::exchange(hasLostIndications, false);
  }
  if (isLossNew) {
    indicationsLostCb();
  }
}

// Delivers one indication. Returns false when the rest of the queue has to wait for the next
// wake-up.
bool OvixWdsProxy::deliver(const IndInfo_t& indication) {
  workerThread.check();
  if (indication.msg_id != OVIX_WDS_PROFILE_CHANGED_IND_V01) {
    LogWrapper::log(LogLevel::Verbose, logTag, "Unknown message ID %lu received",
                    static_cast<unsigned long>(indication.msg_id));
    return true;
  }
  wds_profile_changed_ind_msg_v01 message;
  clear(message);
  if (ovix_client_message_decode(indication.user_handle, OVIX_MESSAGE_INDICATION, indication.msg_id,
                                 indication.ind_buf.get(), indication.ind_buf_len, &message,
                                 sizeof message) != OVIX_CLIENT_NO_ERROR) {
    // The field's log filters search for exactly this text.
    LogWrapper::log(LogLevel::Error, logTag, "Unable to decode the nr status ind message");
    return false;
  }
  if (message.profile_changed_event_valid == 0) {
    LogWrapper::log(LogLevel::Error, logTag, "Profile changed ind TLV is not valid");
  } else {
    handleProfileChangedInd(message.profile_changed_event);
  }
  return true;
}

void OvixWdsProxy::registerProfileChangedInd(ProfileChangedIndCb callback) {
  profileChangedIndCb = std::move(callback);
}

void OvixWdsProxy::registerIndicationsLost(IndicationsLostCb callback) {
  indicationsLostCb = std::move(callback);
}

void OvixWdsProxy::handleProfileChangedInd(const wds_profile_changed_event_type_v01& field) {
  LogWrapper::log(LogLevel::Debug, logTag, "OvixWdsProxy ProfileChangedInd received!");
  profileChangedIndCb(ProfileChangedInd{field.profile_index, eventOf(field.event)});
}

bool OvixWdsProxy::add(ModemProfile& profile) {
  wds_create_profile_req_msg_v01 request = profile.constructAddRequest();
  wds_create_profile_resp_msg_v01 response;
  const bool created =
      report(send(OVIX_WDS_CREATE_PROFILE_REQ_V01, request, response), LogLevel::High,
             "OvixWdsProxy OVIX_WDS_CREATE_PROFILE_REQ_V01 request successful!",
             "Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message");
  if (created) {
    profile.setProfileId(response.profile.profile_index);
  }
  return created;
}

bool OvixWdsProxy::modify(const ModemProfile& difference, int profileId) {
  wds_modify_profile_settings_req_msg_v01 request = difference.constructModifyRequest();
  // A difference has no id of its own.
  fill(request.profile, profileId);
  wds_modify_profile_settings_resp_msg_v01 response;
  return report(send(OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01, request, response), LogLevel::High,
                "OvixWdsProxy OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 request successful!",
                "Unable send OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01 message");
}

bool OvixWdsProxy::remove(int profileId) {
  wds_delete_profile_req_msg_v01 request;
  clear(request);
  fill(request.profile, profileId);
  wds_delete_profile_resp_msg_v01 response;
  return report(send(OVIX_WDS_DELETE_PROFILE_REQ_V01, request, response), LogLevel::High,
                "OvixWdsProxy OVIX_WDS_DELETE_PROFILE_REQ_V01 request successful!",
                "Unable send OVIX_WDS_DELETE_PROFILE_REQ_V01 message");
}

std::shared_ptr<ModemProfile> OvixWdsProxy::get(int profileId) {
  wds_get_profile_settings_req_msg_v01 request;
  clear(request);
  fill(request.profile, profileId);
  wds_get_profile_settings_resp_msg_v01 response;
  if (!report(send(OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01, request, response), LogLevel::High,
              "OvixWdsProxy OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 request successful!",
              "Unable send OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01 message")) {
    return nullptr;
  }
  return std::make_shared<Modem3gppProfile>(request.profile.profile_index, response);
}

std::list<std::shared_ptr<ModemProfile>> OvixWdsProxy::getAllProfiles() {
  std::list<std::shared_ptr<ModemProfile>> profiles;
  if (client == nullptr) {
    return profiles;
  }
  wds_get_profile_list_req_msg_v01 request;
  clear(request);
  request.profile_type_valid = 1;
  request.profile_type = WDS_PROFILE_TYPE_3GPP_V01;
  wds_get_profile_list_resp_msg_v01 response;
  if (!report(send(OVIX_WDS_GET_PROFILE_LIST_REQ_V01, request, response), LogLevel::High,
              "OvixWdsProxy OVIX_WDS_GET_PROFILE_LIST_REQ_V01 request successful!",
              "Unable send OVIX_WDS_GET_PROFILE_LIST_REQ_V01 message")) {
    return profiles;
  }
  // A faulty modem may send a count beyond what the message can hold.
  const std::uint32_t count =
      std::min<std::uint32_t>(response.profile_list_len, OVIX_WDS_PROFILE_LIST_MAX_V01);
  for (std::uint32_t i = 0; i < count && !eventManager.isStopRequested(); ++i) {
    profiles.push_back(get(response.profile_list[i].profile_index));
  }
  return profiles;
}

}  // namespace pavo
