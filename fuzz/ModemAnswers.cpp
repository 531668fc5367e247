// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This target sends whole answers to the list and settings requests, and indications, as no modem
// should send them. The lengths, flags, enumerations and texts of the structures come from the
// input. The library reads them into its cache, and clients read everything there.
#include <pavo/Manager.h>

#include "FakePlatform.h"
#include "Params.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using pavo::fuzz::Input;
using pavo::test::FakePlatform;
using pavo::test::ModemExchange;

// Each profile gets one of this many answers, whatever its index.
constexpr std::size_t differentSettings = 4;

template <typename Response>
void answerWith(unsigned int message, std::vector<Response> responses) {
  FakePlatform::instance().onEvery(message, [responses](ModemExchange& exchange) {
    const auto& profile = *static_cast<const wds_profile_identifier_type_v01*>(exchange.req);
    exchange.respond(responses[profile.profile_index % responses.size()]);
    return OVIX_CLIENT_NO_ERROR;
  });
}

template <typename Response>
Response scribbled(Input& input, Response response) {
  input.scribbleOn(response);
  response.resp = {};
  return response;
}

void lookAt(pavo::Manager& manager, Input& input) {
  const auto filter = pavo::fuzz::paramsFrom<pavo::FilterProfileParams>(input);
  manager.filter(filter);
  std::size_t looks = 0;
  for (const auto& key : manager.filter(pavo::FilterProfileParams())) {
    if (++looks > differentSettings) {
      break;
    }
    manager.getProfile(key);
    manager.match(filter, key);
    if (!input.isOver()) {
      manager.modifyProfile(pavo::fuzz::paramsFrom<pavo::ModifyProfileParams>(input), key);
    }
  }
  manager.dump();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  wds_get_profile_list_resp_msg_v01 list{};
  // The number is mostly small, for speed, and sometimes larger than the structure has room for.
  const unsigned int few = input.byte();
  list.profile_list_len =
      few < 0xF0 ? few % 8 : input.number16() % (OVIX_WDS_PROFILE_LIST_MAX_V01 + 2U);
  list = scribbled(input, list);
  std::vector<wds_get_profile_settings_resp_msg_v01> settings;
  for (std::size_t i = 0; i < differentSettings; ++i) {
    settings.push_back(scribbled(input, wds_get_profile_settings_resp_msg_v01{}));
  }
  wds_profile_changed_ind_msg_v01 indication =
      FakePlatform::profileChanged(input.byte(), input.byte());
  input.scribbleOn(indication);

  FakePlatform& platform = FakePlatform::instance();
  platform.reset();
  answerWith(OVIX_WDS_GET_PROFILE_LIST_REQ_V01, std::vector{list});
  answerWith(OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01, settings);
  pavo::Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  if (!platform.waitForRegistration()) {
    std::abort();
  }
  manager.refresh(pavo::PDC_REFRESH_COMPLETED);
  lookAt(manager, input);
  platform.indicateBytes(indication);
  manager.getProfile(nullptr);
  lookAt(manager, input);
  for (const std::string& misuse : platform.misuses()) {
    std::fprintf(stderr, "%s\n", misuse.c_str());
    std::abort();
  }
  return 0;
}
