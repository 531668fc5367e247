// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "FakeModem.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

namespace pavo::test {

namespace {

enum ModemError : std::int32_t {
  NoResources = 3,
  InvalidProfileIndex = 4,
};

template <typename Value>
void copyField(std::uint8_t fromValid, const Value& from, std::uint8_t& toValid, Value& to) {
  if (fromValid == 0) {
    return;
  }
  toValid = fromValid;
  if constexpr (std::is_array_v<Value>) {
    std::copy(std::begin(from), std::end(from), std::begin(to));
  } else {
    to = from;
  }
}

// The messages hold the same fields at different offsets, so the fields are copied by name.
template <typename Request>
void copySettings(const Request& from, FakeModem::Settings& to) {
#define COPY(field) copyField(from.field##_valid, from.field, to.field##_valid, to.field)
  COPY(profile_name);
  COPY(pdp_type);
  COPY(apn_name);
  COPY(user_name);
  COPY(password);
  COPY(authentication_preference);
  COPY(apn_disabled);
  COPY(apn_class);
  COPY(support_emergency_calls);
  COPY(max_pdn_conn_per_block);
  COPY(max_pdn_conn_timer);
  COPY(pdn_req_wait_interval);
  COPY(lte_roaming_pdp_type);
  COPY(umts_roaming_pdp_type);
  COPY(override_home_pdp_type);
  COPY(apn_type_mask);
  COPY(clat_enabled);
#undef COPY
}

}  // namespace

std::vector<FakeModem::Change> FakeModem::answer(const ModemExchange& exchange) {
  switch (exchange.msgId) {
    case OVIX_WDS_CREATE_PROFILE_REQ_V01:
      return create(exchange);
    case OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01:
      return modify(exchange);
    case OVIX_WDS_DELETE_PROFILE_REQ_V01:
      return remove(exchange);
    case OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01:
      read(exchange);
      return {};
    case OVIX_WDS_GET_PROFILE_LIST_REQ_V01:
      list(exchange);
      return {};
    default:
      exchange.respondResult(0);
      return {};
  }
}

std::optional<FakeModem::Settings> FakeModem::get(std::uint8_t index) const {
  const auto found = profiles.find(index);
  return found == profiles.end() ? std::nullopt : std::optional(found->second);
}

std::vector<FakeModem::Change> FakeModem::create(const ModemExchange& exchange) {
  if (profiles.size() > std::numeric_limits<std::uint8_t>::max()) {
    exchange.respondResult(/*result=*/1, NoResources);
    return {};
  }
  while (profiles.count(nextIndex) != 0) {
    ++nextIndex;
  }
  const std::uint8_t index = nextIndex++;
  const auto request = exchange.request<wds_create_profile_req_msg_v01>();
  Settings settings{};
  copySettings(request, settings);
  copyField(request.persistent_valid, request.persistent, settings.persistent_valid,
            settings.persistent);
  profiles[index] = settings;

  wds_create_profile_resp_msg_v01 response{};
  response.profile.profile_index = index;
  exchange.respond(response);
  return {{index, WDS_PROFILE_EVENT_CREATE_V01}, {index, WDS_PROFILE_EVENT_MODIFY_V01}};
}

std::vector<FakeModem::Change> FakeModem::modify(const ModemExchange& exchange) {
  const auto request = exchange.request<wds_modify_profile_settings_req_msg_v01>();
  const std::uint8_t index = request.profile.profile_index;
  const auto found = profiles.find(index);
  if (found == profiles.end()) {
    exchange.respondResult(/*result=*/1, InvalidProfileIndex);
    return {};
  }
  copySettings(request, found->second);
  exchange.respondResult(0);
  return {{index, WDS_PROFILE_EVENT_MODIFY_V01}};
}

std::vector<FakeModem::Change> FakeModem::remove(const ModemExchange& exchange) {
  const auto request = exchange.request<wds_delete_profile_req_msg_v01>();
  const std::uint8_t index = request.profile.profile_index;
  if (profiles.erase(index) == 0) {
    exchange.respondResult(/*result=*/1, InvalidProfileIndex);
    return {};
  }
  exchange.respondResult(0);
  return {{index, WDS_PROFILE_EVENT_DELETE_V01}};
}

void FakeModem::read(const ModemExchange& exchange) const {
  const auto request = exchange.request<wds_get_profile_settings_req_msg_v01>();
  const auto found = profiles.find(request.profile.profile_index);
  if (found == profiles.end()) {
    exchange.respondResult(/*result=*/1, InvalidProfileIndex);
    return;
  }
  exchange.respond(found->second);
}

void FakeModem::list(const ModemExchange& exchange) const {
  wds_get_profile_list_resp_msg_v01 response{};
  for (const auto& [index, settings] : profiles) {
    if (response.profile_list_len == OVIX_WDS_PROFILE_LIST_MAX_V01) {
      break;
    }
    wds_profile_info_type_v01& entry = response.profile_list[response.profile_list_len++];
    entry.profile_index = index;
    std::memcpy(entry.profile_name, settings.profile_name, sizeof entry.profile_name);
  }
  exchange.respond(response);
}

}  // namespace pavo::test
