// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This target calls ovix_client_message_decode with any message, any kind and any bytes, into a
// structure of the right size or of any other.
#include "Input.h"
#include "host/RawModem.h"
#include "ovix_client.h"
#include "support/TemporaryFolder.h"
#include "wds_v01.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <vector>

namespace {

struct Sized {
  int kind;
  unsigned int id;
  std::size_t size;
};

constexpr Sized messages[] = {
    {OVIX_MESSAGE_RESPONSE, OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01,
     sizeof(wds_get_profile_settings_resp_msg_v01)},
    {OVIX_MESSAGE_RESPONSE, OVIX_WDS_GET_PROFILE_LIST_REQ_V01,
     sizeof(wds_get_profile_list_resp_msg_v01)},
    {OVIX_MESSAGE_RESPONSE, OVIX_WDS_CREATE_PROFILE_REQ_V01,
     sizeof(wds_create_profile_resp_msg_v01)},
    {OVIX_MESSAGE_REQUEST, OVIX_WDS_CREATE_PROFILE_REQ_V01, sizeof(wds_create_profile_req_msg_v01)},
    {OVIX_MESSAGE_REQUEST, OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01,
     sizeof(wds_modify_profile_settings_req_msg_v01)},
    {OVIX_MESSAGE_REQUEST, OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01,
     sizeof(wds_configure_profile_event_list_req_msg_v01)},
    {OVIX_MESSAGE_INDICATION, OVIX_WDS_PROFILE_CHANGED_IND_V01,
     sizeof(wds_profile_changed_ind_msg_v01)},
};

ovix_client_type openedClient() {
  static const pavo::test::TemporaryFolder folder;
  ::setenv("OVIX_MODEM", folder.file("modem").c_str(), /*replace=*/1);
  static const pavo::test::RawModem modem(folder.file("modem"));
  ovix_client_type client = nullptr;
  ovix_service_info info{};
  ovix_client_os_params params{};
  ovix_client_init(&info, wds_get_service_object_internal_v01(1, 257, 6), /*ind_cb=*/nullptr,
                   /*ind_cb_data=*/nullptr, &params, &client);
  return client;
}

// The client ends before the modem that it is connected to.
struct OpenClient {
  const ovix_client_type handle = openedClient();
  ~OpenClient() { ovix_client_release(handle); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const OpenClient client;
  if (client.handle == nullptr) {
    std::abort();
  }
  pavo::fuzz::Input input(data, size);
  Sized message = messages[input.byte() % std::size(messages)];
  if (input.byte() % 8 == 7) {
    message = {input.byte() % 4, input.number16(), input.number16()};
  }
  // The bytes are on the heap in memory of exactly their size, so the sanitizer detects a read
  // beyond them.
  const std::vector<std::uint8_t> bytes = input.rest();
  std::vector<std::uint8_t> structure(message.size);
  ovix_client_message_decode(client.handle, message.kind, message.id, bytes.data(),
                             static_cast<unsigned int>(bytes.size()), structure.data(),
                             static_cast<unsigned int>(structure.size()));
  return 0;
}
