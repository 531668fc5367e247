// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These are the platform's functions at the lowest possible cost. The service is there at once and
// every request succeeds at once. Creates get the next index, and log lines are dropped.
#include "diag_lsm.h"
#include "ovix_client.h"
#include "wds_v01.h"

#include <atomic>
#include <cstdint>

struct ovix_service_object {};

namespace {

const ovix_service_object service{};
char client;
char notifier;
std::atomic<unsigned int> created{0};

}  // namespace

ovix_service_object_type wds_get_service_object_internal_v01(int, int, int) { return &service; }

ovix_client_error_type ovix_client_notifier_init(ovix_service_object_type, ovix_client_os_params*,
                                                 ovix_client_type* handle) {
  *handle = &notifier;
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_register_notify_cb(ovix_client_type handle,
                                                      ovix_client_notify_cb callback, void* data) {
  callback(handle, &service, OVIX_CLIENT_SERVICE_AVAILABLE, data);
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_get_any_service(ovix_service_object_type, ovix_service_info*) {
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_init(ovix_service_info*, ovix_service_object_type,
                                        ovix_client_ind_cb, void*, ovix_client_os_params*,
                                        ovix_client_type* handle) {
  *handle = &client;
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_register_error_cb(ovix_client_type, ovix_client_error_cb,
                                                     void*) {
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_send_msg_sync(ovix_client_type, unsigned int messageId, void*,
                                                 unsigned int, void* response, unsigned int,
                                                 unsigned int) {
  if (messageId == OVIX_WDS_CREATE_PROFILE_REQ_V01) {
    static_cast<wds_create_profile_resp_msg_v01*>(response)->profile.profile_index =
        static_cast<std::uint8_t>(++created);
  }
  return OVIX_CLIENT_NO_ERROR;
}

ovix_client_error_type ovix_client_message_decode(ovix_client_type, int, unsigned int, const void*,
                                                  unsigned int, void*, unsigned int) {
  return OVIX_CLIENT_DECODE_ERROR;
}

ovix_client_error_type ovix_client_release(ovix_client_type) { return OVIX_CLIENT_NO_ERROR; }

int Diag_LSM_Init(unsigned char*) { return 1; }
int Diag_LSM_DeInit(void) { return 1; }
void msg_sprintf(const diag_msg_descriptor*, ...) {}

extern "C" int __android_log_print(int, const char*, const char*, ...) { return 0; }
