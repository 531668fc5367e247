// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// OvixWdsProxy is the library's client of the modem's wireless data service.
//
// States: no client, notifier armed -> (service up) -> client open, bound and registered ->
// (service error) -> no client, notifier armed -> ...
//
// The messaging library's threads enter only the three static callbacks, which queue indications
// and wake the worker. Apart from construction and destruction, everything else runs on the
// worker's thread, in the event loop. A callback that comes during or after the destruction of its
// proxy does nothing.
#pragma once

#include "EventManager.h"
#include "ModemProfile.h"
#include "ProfileChangedInd.h"
#include "ThreadChecker.h"
#include "base/Mutex.h"
#include "base/UniqueFd.h"
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

  // No modem has a reason to send this many indications before the worker takes the first. A faulty
  // modem that sends more must not fill the device's memory.
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
  // Sets the callback for lost indications. When indications were dropped because the queue was
  // full, the worker's thread calls it once the queue has been emptied.
  void registerIndicationsLost(IndicationsLostCb callback);
  void handleProfileChangedInd(const wds_profile_changed_event_type_v01& field);

  // The operations on profiles. Each waits for the modem, up to a second for each request.

  // Creates the profile and sets its id to the index that the modem gave it.
  bool add(ModemProfile& profile);
  // Changes the attributes that difference holds, on the profile with that id.
  bool modify(const ModemProfile& difference, int profileId);
  bool remove(int profileId);
  // Returns an empty pointer when the profile cannot be read.
  std::shared_ptr<ModemProfile> get(int profileId);
  // Returns all profiles in the modem's order, with an empty pointer for each profile that cannot
  // be read. When the loop is asked to stop meanwhile, returns the profiles read so far.
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
  // How long indications may keep the worker from requests. A turn also finishes the indication
  // that it has begun.
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
  bool hasLost() EXCLUDES(queueMutex);
  void reportLost() EXCLUDES(queueMutex);

  // These members are constant after construction.
  EventManager& eventManager;
  const int subscription;
  const ovix_service_object_type serviceObject;
  UniqueFd svcUpFd;
  UniqueFd errorFd;
  UniqueFd indicationFd;

  // The messaging library's threads and the worker share the queue.
  Mutex queueMutex;
  std::deque<std::unique_ptr<IndInfo_t>> indQueue GUARDED_BY(queueMutex);
  // True from the first dropped indication until the queue has been emptied or the client released.
  bool hasLostIndications GUARDED_BY(queueMutex) = false;

  // Only the worker's thread uses these members.
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
