// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The wireless data service's message tables. The offsets come from the structures of wds_v01.h,
// the tags from docs/modem-messages.md.
#include "ServiceObject.h"
#include "ServicePresence.h"
#include "base/Mutex.h"
#include "wds_v01.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using ovix::Field;
using ovix::Layout;
using ovix::mandatory;
using ovix::mandatoryOnSuccess;
using ovix::Message;
using ovix::Part;
using ovix::PartKind;

constexpr ovix::ListShape noList{};

template <PartKind kind, uint16_t width>
constexpr Part onePart[]{{kind, /*offset=*/0, width}};

constexpr Part resultParts[]{
    {PartKind::Number, offsetof(ovix_response_type_v01, result), 4},
    {PartKind::Number, offsetof(ovix_response_type_v01, error), 4},
};
constexpr Part identifierParts[]{
    {PartKind::Number, offsetof(wds_profile_identifier_type_v01, profile_type), 4},
    {PartKind::Number, offsetof(wds_profile_identifier_type_v01, profile_index), 1},
};
constexpr Part infoParts[]{
    {PartKind::Number, offsetof(wds_profile_info_type_v01, profile_type), 4},
    {PartKind::Number, offsetof(wds_profile_info_type_v01, profile_index), 1},
    {PartKind::CountedText, offsetof(wds_profile_info_type_v01, profile_name),
     OVIX_WDS_PROFILE_NAME_MAX_V01},
};
constexpr Part changedEventParts[]{
    {PartKind::Number, offsetof(wds_profile_changed_event_type_v01, profile_type), 4},
    {PartKind::Number, offsetof(wds_profile_changed_event_type_v01, profile_index), 1},
    {PartKind::Number, offsetof(wds_profile_changed_event_type_v01, event), 4},
};

// The result that opens every response.
constexpr Field resultField{0x02, mandatory, /*valueAt=*/0, resultParts, noList};

// An optional member of a structure, with its flag.
#define NUMBER(tag, type, member)                                \
  Field {                                                        \
    tag, offsetof(type, member##_valid), offsetof(type, member), \
        onePart<PartKind::Number, sizeof(type::member)>, noList  \
  }
#define TEXT(tag, type, member)                                   \
  Field {                                                         \
    tag, offsetof(type, member##_valid), offsetof(type, member),  \
        onePart<PartKind::Text, sizeof(type::member) - 1>, noList \
  }

// The settings of a profile. Three messages hold them, each at its own offsets and after a field of
// its own.
template <typename M>
constexpr std::array<Field, 19> settingsAfter(Field first) {
  return {first,
          TEXT(0x10, M, profile_name),
          NUMBER(0x11, M, pdp_type),
          TEXT(0x12, M, apn_name),
          TEXT(0x13, M, user_name),
          TEXT(0x14, M, password),
          NUMBER(0x15, M, authentication_preference),
          NUMBER(0x16, M, apn_disabled),
          NUMBER(0x17, M, apn_class),
          NUMBER(0x18, M, support_emergency_calls),
          NUMBER(0x19, M, max_pdn_conn_per_block),
          NUMBER(0x1A, M, max_pdn_conn_timer),
          NUMBER(0x1B, M, pdn_req_wait_interval),
          NUMBER(0x1C, M, lte_roaming_pdp_type),
          NUMBER(0x1D, M, umts_roaming_pdp_type),
          NUMBER(0x1E, M, override_home_pdp_type),
          NUMBER(0x1F, M, persistent),
          NUMBER(0x20, M, apn_type_mask),
          NUMBER(0x21, M, clat_enabled)};
}

constexpr Field resultOnly[]{resultField};

constexpr Field indicationRegisterRequest[]{
    NUMBER(0x20, wds_indication_register_req_msg_v01, report_profile_changed_events)};

constexpr auto createRequest = settingsAfter<wds_create_profile_req_msg_v01>(
    {0x01, mandatory, offsetof(wds_create_profile_req_msg_v01, profile_type),
     onePart<PartKind::Number, 4>, noList});
constexpr Field createResponse[]{
    resultField,
    {0x03, mandatoryOnSuccess, offsetof(wds_create_profile_resp_msg_v01, profile), identifierParts,
     noList}};

constexpr auto modifyRequest = settingsAfter<wds_modify_profile_settings_req_msg_v01>(
    {0x01, mandatory, offsetof(wds_modify_profile_settings_req_msg_v01, profile), identifierParts,
     noList});

constexpr Field deleteRequest[]{
    {0x01, mandatory, offsetof(wds_delete_profile_req_msg_v01, profile), identifierParts, noList}};

constexpr Field listRequest[]{NUMBER(0x10, wds_get_profile_list_req_msg_v01, profile_type)};
constexpr Field listResponse[]{
    resultField,
    {0x03,
     mandatoryOnSuccess,
     offsetof(wds_get_profile_list_resp_msg_v01, profile_list),
     infoParts,
     {offsetof(wds_get_profile_list_resp_msg_v01, profile_list_len),
      sizeof(wds_profile_info_type_v01), OVIX_WDS_PROFILE_LIST_MAX_V01}}};

constexpr Field settingsRequest[]{{0x01, mandatory,
                                   offsetof(wds_get_profile_settings_req_msg_v01, profile),
                                   identifierParts, noList}};
constexpr auto settingsResponse = settingsAfter<wds_get_profile_settings_resp_msg_v01>(resultField);

constexpr Field eventListRequest[]{
    {0x10,
     offsetof(wds_configure_profile_event_list_req_msg_v01, profile_event_list_valid),
     offsetof(wds_configure_profile_event_list_req_msg_v01, profile_event_list),
     identifierParts,
     {offsetof(wds_configure_profile_event_list_req_msg_v01, profile_event_list_len),
      sizeof(wds_profile_identifier_type_v01), OVIX_WDS_EVENT_LIST_MAX_V01}},
    NUMBER(0x11, wds_configure_profile_event_list_req_msg_v01, report_switch)};

constexpr Field bindRequest[]{{0x01, mandatory,
                               offsetof(wds_bind_subscription_req_msg_v01, subscription),
                               onePart<PartKind::Number, 4>, noList}};

constexpr Field changedIndication[]{
    {0x10, offsetof(wds_profile_changed_ind_msg_v01, profile_changed_event_valid),
     offsetof(wds_profile_changed_ind_msg_v01, profile_changed_event), changedEventParts, noList}};

#undef NUMBER
#undef TEXT

constexpr Layout none{};
constexpr Layout plainResponse{sizeof(wds_result_resp_msg_v01), resultOnly};

constexpr Message messages[]{
    {OVIX_WDS_INDICATION_REGISTER_REQ_V01,
     {sizeof(wds_indication_register_req_msg_v01), indicationRegisterRequest},
     plainResponse,
     none},
    {OVIX_WDS_CREATE_PROFILE_REQ_V01,
     {sizeof(wds_create_profile_req_msg_v01), createRequest},
     {sizeof(wds_create_profile_resp_msg_v01), createResponse},
     none},
    {OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01,
     {sizeof(wds_modify_profile_settings_req_msg_v01), modifyRequest},
     {sizeof(wds_modify_profile_settings_resp_msg_v01), resultOnly},
     none},
    {OVIX_WDS_DELETE_PROFILE_REQ_V01,
     {sizeof(wds_delete_profile_req_msg_v01), deleteRequest},
     {sizeof(wds_delete_profile_resp_msg_v01), resultOnly},
     none},
    {OVIX_WDS_GET_PROFILE_LIST_REQ_V01,
     {sizeof(wds_get_profile_list_req_msg_v01), listRequest},
     {sizeof(wds_get_profile_list_resp_msg_v01), listResponse},
     none},
    {OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01,
     {sizeof(wds_get_profile_settings_req_msg_v01), settingsRequest},
     {sizeof(wds_get_profile_settings_resp_msg_v01), settingsResponse},
     none},
    {OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01,
     {sizeof(wds_configure_profile_event_list_req_msg_v01), eventListRequest},
     plainResponse,
     none},
    {OVIX_WDS_PROFILE_CHANGED_IND_V01,
     none,
     none,
     {sizeof(wds_profile_changed_ind_msg_v01), changedIndication}},
    {OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01,
     {sizeof(wds_bind_subscription_req_msg_v01), bindRequest},
     plainResponse,
     none},
};

constexpr bool fieldFits(const Field& field, uint32_t size) {
  const size_t count = field.list.countMax == 0 ? 1 : field.list.countMax;
  for (const Part& part : field.parts) {
    const size_t width = part.width + (part.kind == PartKind::Number ? 0u : 1u);
    if (field.valueAt + (count - 1) * field.list.stride + part.offset + width > size) {
      return false;
    }
  }
  const bool isFlagged = field.flagAt != mandatory && field.flagAt != mandatoryOnSuccess;
  return !field.parts.empty() && (!isFlagged || field.flagAt < size) &&
         (field.list.countMax == 0 || field.list.countAt + sizeof(uint32_t) <= size);
}

constexpr bool layoutFits(const Layout& layout) {
  return std::ranges::all_of(layout.fields,
                             [&](const Field& field) { return fieldFits(field, layout.size); });
}

static_assert(std::ranges::all_of(messages,
                                  [](const Message& message) {
                                    return layoutFits(message.request) &&
                                           layoutFits(message.response) &&
                                           layoutFits(message.indication);
                                  }),
              "the codec relies on every field lying inside its structure");

constexpr int idlMajor = 1;
constexpr int idlMinor = 257;
constexpr int serviceLibraryVersion = 6;

struct Services {
  pavo::Mutex mutex;
  std::map<std::string, ovix_service_object> byPath GUARDED_BY(mutex);
};

// Each path has one object. Callers may compare objects, and may use them until the process ends.
ovix_service_object_type serviceOf(const std::string& modemPath) {
  static Services& services = *new Services;
  const auto fresh = ovix_service_object{ovix::tablesVersion, messages, modemPath};
  const pavo::MutexLock lock(services.mutex);
  return &services.byPath.emplace(modemPath, fresh).first->second;
}

}  // namespace

// A major version stands for one set of structures and has to be the same. A minor version adds
// messages to those of the minor versions before it, so that a client of an older one is served.
// The library version is that of the tables' own format and has to be the same.
//
// The environment variable OVIX_MODEM names the modem; it is read now, on this thread. When it is
// unset or empty, the modem is the one embedded in this process. The service object keeps this
// choice. The call waits up to a second for a modem that does not answer.
ovix_service_object_type wds_get_service_object_internal_v01(int major, int minor,
                                                             int libraryVersion) {
  const bool fits = major == idlMajor && minor >= 0 && minor <= idlMinor &&
                    libraryVersion == serviceLibraryVersion;
  const char* named = std::getenv("OVIX_MODEM");
  const std::string modemPath = named != nullptr ? named : "";
  return fits && ovix::isServiceKnown(modemPath) ? serviceOf(modemPath) : nullptr;
}
