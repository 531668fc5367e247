// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This benchmark compares a refresh, per profile, with one bare request to the same modem. The
// modem is the emulated one in a process of its own, with as many profiles as a modem can hold.
#include <pavo/Manager.h>

#include "LogWrapper.h"
#include "ModemProcess.h"
#include "ovix_client.h"
#include "wds_v01.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <string>

namespace pavo::bench {
namespace {

constexpr int profileCount = 255;

// Returns the one modem of the whole run. It ends with this process.
test::ModemProcess& fullModem() {
  static test::ModemProcess& modem = []() -> test::ModemProcess& {
    test::ModemProcessOptions options;
    options.keepsStore = false;
    options.arguments = {"--capacity", std::to_string(profileCount)};
    static test::ModemProcess started(options);
    static const test::ModemEnvironment environment(started.socketPath());
    for (int i = 0; i < profileCount; ++i) {
      started.control("create", {{"apn", "internet" + std::to_string(i)}, {"pdpType", "V4V6"}});
    }
    return started;
  }();
  return modem;
}

void refresh(benchmark::State& state) {
  fullModem();
  Manager manager;
  manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
  LogWrapper::getInstance().setLogWriter(nullptr);
  while (manager.filter(FilterProfileParams()).size() != profileCount) {
    manager.refresh(PDC_REFRESH_COMPLETED);
  }
  for (auto _ : state) {
    manager.refresh(PDC_REFRESH_COMPLETED);
  }
}
BENCHMARK(refresh)->Name("Refresh")->UseRealTime();

void ignoreIndication(ovix_client_type, unsigned int, void*, unsigned int, void*) {}

void bareRequests(benchmark::State& state) {
  fullModem();
  const ovix_service_object_type service = wds_get_service_object_internal_v01(1, 257, 6);
  ovix_service_info info{};
  ovix_client_os_params parameters{};
  ovix_client_type client = nullptr;
  if (ovix_client_init(&info, service, ignoreIndication, nullptr, &parameters, &client) != 0) {
    state.SkipWithError("no modem");
    return;
  }
  wds_get_profile_settings_req_msg_v01 request{};
  wds_get_profile_settings_resp_msg_v01 response;
  for (auto _ : state) {
    for (int i = 1; i <= profileCount; ++i) {
      request.profile.profile_index = static_cast<std::uint8_t>(i);
      std::memset(&response, 0, sizeof response);
      const int sent = ovix_client_send_msg_sync(client, OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01,
                                                 &request, sizeof request, &response,
                                                 sizeof response, /*timeout_ms=*/1000);
      if (sent != 0 || response.resp.result != 0) {
        state.SkipWithError("request failed");
        break;
      }
    }
  }
  ovix_client_release(client);
}
BENCHMARK(bareRequests)->Name("BareRequests")->UseRealTime();

}  // namespace
}  // namespace pavo::bench
