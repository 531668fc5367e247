// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This client of libpavor.so defines the platform's functions itself. The library has to use these,
// not those of the shared libraries that it is linked with. The program writes the library's calls,
// line by line.
#include <pavo/Manager.h>

#include "Deadline.h"
#include "diag_lsm.h"
#include "ovix_client.h"
#include "wds_v01.h"

#include <android/log.h>

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace {

constexpr std::uint8_t createdIndex = 77;

int serviceStandIn = 0;
int notifierStandIn = 0;
int clientStandIn = 0;

std::mutex outputMutex;
std::atomic<int> androidLines = 0;
std::atomic<int> diagLines = 0;
std::atomic<bool> isConfigured = false;
std::thread notifying;

void say(const std::string& line) {
  const std::lock_guard lock(outputMutex);
  std::cout << line << std::endl;
}

}  // namespace

extern "C" {

ovix_service_object_type wds_get_service_object_internal_v01(int major, int minor, int library) {
  say("service " + std::to_string(major) + " " + std::to_string(minor) + " " +
      std::to_string(library));
  return reinterpret_cast<ovix_service_object_type>(&serviceStandIn);
}

ovix_client_error_type ovix_client_notifier_init(ovix_service_object_type, ovix_client_os_params*,
                                                 ovix_client_type* notifier) {
  *notifier = &notifierStandIn;
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_register_notify_cb(ovix_client_type notifier,
                                                      ovix_client_notify_cb callback, void* data) {
  say("notify");
  notifying = std::thread([notifier, callback, data] {
    callback(notifier, reinterpret_cast<ovix_service_object_type>(&serviceStandIn),
             OVIX_CLIENT_SERVICE_AVAILABLE, data);
  });
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_get_any_service(ovix_service_object_type, ovix_service_info*) {
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_init(ovix_service_info*, ovix_service_object_type,
                                        ovix_client_ind_cb, void*, ovix_client_os_params*,
                                        ovix_client_type* client) {
  say("client");
  *client = &clientStandIn;
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_register_error_cb(ovix_client_type, ovix_client_error_cb,
                                                     void*) {
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_send_msg_sync(ovix_client_type client, unsigned int id, void*,
                                                 unsigned int requestLength, void* response,
                                                 unsigned int responseLength,
                                                 unsigned int timeoutMs) {
  std::memset(response, 0, responseLength);
  say("send " + std::to_string(id) + " " + std::to_string(requestLength) + " " +
      std::to_string(responseLength) + " " + std::to_string(timeoutMs));
  if (id == OVIX_WDS_CREATE_PROFILE_REQ_V01 && client == &clientStandIn) {
    static_cast<wds_create_profile_resp_msg_v01*>(response)->profile.profile_index = createdIndex;
  }
  isConfigured = isConfigured || id == OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01;
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_message_decode(ovix_client_type, int, unsigned int, const void*,
                                                  unsigned int, void*, unsigned int) {
  return OVIX_CLIENT_INVALID_ARGUMENT;
}

ovix_client_error_type ovix_client_release(ovix_client_type handle) {
  say(handle == &clientStandIn ? "release client" : "release notifier");
  return OVIX_CLIENT_NO_ERROR;
}

int Diag_LSM_Init(unsigned char*) {
  say("diag init");
  return 1;
}

int Diag_LSM_DeInit(void) {
  say("diag deinit");
  return 1;
}

void msg_sprintf(const diag_msg_descriptor*, ...) { ++diagLines; }

int __android_log_print(int, const char*, const char*, ...) {
  ++androidLines;
  return 0;
}

}  // extern "C"

int main() {
  {
    pavo::Manager manager;
    manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
    if (!pavo::test::waitUntil([] { return isConfigured.load(); })) {
      return EXIT_FAILURE;
    }
    pavo::AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
    const std::shared_ptr<pavo::IProfileKey> key = manager.addProfile(params);
    say("index " + std::to_string(key != nullptr ? key->getProfileId() : -1));
    say(androidLines > 0 ? "android lines" : "no android lines");
    notifying.join();
    manager.init(/*subscription=*/0, /*useAndroidLog=*/false);
  }
  say(diagLines > 0 ? "diag lines" : "no diag lines");
  notifying.join();
  return EXIT_SUCCESS;
}
