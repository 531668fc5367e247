// The library's client of the modem's wireless data service.
//
// States: no client, notifier armed -> (service up) -> client open, bound and registered ->
// (service error) -> no client, notifier armed -> ...
//
// The messaging library's threads enter the three static callbacks only; these queue and wake. All
// else runs on the worker thread, in the event loop. Callbacks that come late, during or after the
// destruction of their proxy, do nothing.
#pragma once

#include "EventManager.h"
#include "ModemProfile.h"
#include "Mutex.h"
#include "ProfileChangedInd.h"
#include "ThreadChecker.h"
#include "UniqueFd.h"
#include "ovix_client.h"
#include "wds_v01.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>

namespace pavo {

class OvixWdsProxy;

// One queued indication.
struct IndInfo_t {
  ovix_client_type user_handle;
  std::uint32_t msg_id;
  std::unique_ptr<std::uint8_t[]> ind_buf;  // a copy: the original ends with the callback
  std::uint32_t ind_buf_len;
  OvixWdsProxy* ind_cb_data;
};

class OvixWdsProxy {
 public:
  using ProfileChangedIndCb = std::function<void(ProfileChangedInd)>;
  using IndicationsLostCb = std::function<void()>;

  // More than any modem has reason to send before the worker takes the first: a burst beyond it is
  // a modem gone wrong, and must not fill the device's memory.
  static constexpr std::size_t indicationsQueuedMax = 16384;

  // Registers with the event loop and arms the notifier; the client opens when the service is up.
  OvixWdsProxy(EventManager& eventManager, int subscription);
  OvixWdsProxy(const OvixWdsProxy&) = delete;
  OvixWdsProxy& operator=(const OvixWdsProxy&) = delete;
  // Releases notifier and client. Queued indications are not delivered.
  ~OvixWdsProxy();

  void registerOvixSvcUp();
  void registerOvixIndications();
  void registerProfileChangedInd(ProfileChangedIndCb callback);
  // Has callback called on the worker thread when indications were dropped because the queue was
  // full, once the queue has been emptied.
  void registerIndicationsLost(IndicationsLostCb callback);
  void handleProfileChangedInd(const wds_profile_changed_event_type_v01& field);

  // The operations on profiles: each waits for the modem, for up to a second a request.

  // Creates the profile and sets its id to the index that the modem gave it.
  bool add(ModemProfile& profile);
  // Changes what difference holds on the profile of that id.
  bool modify(const ModemProfile& difference, int profileId);
  bool remove(int profileId);
  // Empty when it cannot be read.
  std::shared_ptr<ModemProfile> get(int profileId);
  // Every profile in the modem's order, empty ones for those that cannot be read. Those read so far
  // when the loop is asked to stop meanwhile.
  std::list<std::shared_ptr<ModemProfile>> getAllProfiles();

  // The event loop's callbacks; the pointer is the proxy.
  static void handleSvcUp(int fd, void* proxy);
  static void handleError(int fd, void* proxy);
  static void handleIndication(int fd, void* proxy);

  // The messaging library's callbacks; the last pointer is the proxy.
  static void ovixNotifyCb(ovix_client_type client, ovix_service_object_type serviceObject,
                           ovix_client_service_event event, void* proxy) noexcept;
  static void ovixErrorCb(ovix_client_type client, ovix_client_error_type error,
                          void* proxy) noexcept;
  static void ovixIndCb(ovix_client_type client, unsigned int msg_id, void* ind_buf,
                        unsigned int ind_buf_len, void* ind_cb_data) noexcept;

 private:
  static constexpr unsigned int sendTimeoutMs = 1000;
  // How long indications may keep the worker from its clients before it looks for requests. The
  // indication in hand is finished, which costs a modem request more.
  static constexpr std::chrono::milliseconds indicationTurnMax{200};

  UniqueFd watch(EventManager::EventCallback callback);
  void openClient();
  void releaseNotifier();
  void releaseClient();
  template <typename Request, typename Response>
  bool send(unsigned int messageId, Request& request, Response& response);
  std::size_t queueSize() EXCLUDES(queueMutex);
  std::unique_ptr<IndInfo_t> takeIndication() EXCLUDES(queueMutex);
  bool deliver(const IndInfo_t& indication);
  void reportLost();

  // Constant after construction.
  EventManager& eventManager;
  const int subscription;
  const ovix_service_object_type serviceObject;
  UniqueFd svcUpFd;
  UniqueFd errorFd;
  UniqueFd indicationFd;

  // The messaging library's threads and the worker.
  Mutex queueMutex;
  std::deque<std::unique_ptr<IndInfo_t>> indQueue GUARDED_BY(queueMutex);
  // Set when an indication is dropped, until the queue has been emptied.
  bool hasLostIndications GUARDED_BY(queueMutex) = false;

  // The worker thread's.
  ThreadChecker workerThread;
  ovix_client_type client = nullptr;
  ovix_client_type notifier = nullptr;
  ovix_client_os_params osParams{};
  ProfileChangedIndCb profileChangedIndCb;
  IndicationsLostCb indicationsLostCb = [] {};
  // The last turn of indications ended before the queue was empty.
  bool isGivingWay = false;
};

}  // namespace pavo
