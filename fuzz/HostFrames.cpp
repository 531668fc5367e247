// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This target sends the input unchanged as a modem's answer to a request, and then the modem hangs
// up. The messaging library has to answer its caller and to release the client.
#include "host/RawModem.h"
#include "ovix_client.h"
#include "support/TemporaryFolder.h"
#include "wds_v01.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using pavo::test::Bytes;
using pavo::test::RawFrame;
using pavo::test::RawModem;
using pavo::test::RawPeer;

// Reads the whole indication, so that a sanitizer detects missing bytes.
void onIndication(ovix_client_type client, unsigned int id, void* bytes, unsigned int length,
                  void* /*data*/) {
  wds_profile_changed_ind_msg_v01 message{};
  ovix_client_message_decode(client, OVIX_MESSAGE_INDICATION, id, bytes, length, &message,
                             sizeof message);
}

void onError(ovix_client_type /*client*/, ovix_client_error_type /*error*/, void* /*data*/) {}

// Returns the path of the modem's socket, and names it for the messaging library.
const std::string& socketPath() {
  static const pavo::test::TemporaryFolder folder;
  static const std::string path = [] {
    std::string socket = folder.file("modem");
    ::setenv("OVIX_MODEM", socket.c_str(), /*replace=*/1);
    return socket;
  }();
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The service object is requested before there is a modem that could be asked for it, but for the
  // modem of that path.
  static const std::string& path = socketPath();
  static const ovix_service_object_type service = wds_get_service_object_internal_v01(1, 257, 6);
  const Bytes answer(data, data + size);
  const RawModem modem(path, [&answer](RawPeer& peer, const RawFrame&) {
    peer.send(answer);
    peer.hangUp();
  });

  ovix_client_type client = nullptr;
  ovix_service_info info{};
  ovix_client_os_params params{};
  if (ovix_client_init(&info, service, onIndication, /*ind_cb_data=*/nullptr, &params, &client) !=
      OVIX_CLIENT_NO_ERROR) {
    std::abort();
  }
  ovix_client_register_error_cb(client, onError, /*data=*/nullptr);
  wds_get_profile_settings_req_msg_v01 request{};
  wds_get_profile_settings_resp_msg_v01 response{};
  const ovix_client_error_type result =
      ovix_client_send_msg_sync(client, OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01, &request,
                                sizeof request, &response, sizeof response, /*timeout_ms=*/30000);
  if (result == OVIX_CLIENT_TIMEOUT_ERROR || ovix_client_release(client) != OVIX_CLIENT_NO_ERROR) {
    std::abort();
  }
  return 0;
}
