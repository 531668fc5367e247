// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

/*
 * The wireless data service, version 1: the C structures of the messages that manage 3GPP
 * profiles, and their value enumerations.
 *
 * The structures are exchanged with the messaging library by address and length, so every offset
 * is part of the binary interface. Naturally aligned flat members express them; reserved_N fills
 * the space from offset N that no client of this header uses. The assertions at the end prove every
 * offset and size on whatever target compiles this. An optional field is an x_valid byte and its x.
 */
#ifndef WDS_V01_H
#define WDS_V01_H

#include "ovix_client.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
/* A fixed underlying type makes every 32-bit value that a modem may send a legal one. */
#define WDS_ENUM_BEGIN(name) enum name : int32_t {
#define WDS_ENUM_END(name) }
#define WDS_ALIGN64 alignas(8)
#define WDS_STATIC_ASSERT(condition) static_assert(condition, #condition)
#else
#define WDS_ENUM_BEGIN(name) \
  typedef int32_t name;      \
  enum {
#define WDS_ENUM_END(name) }
#define WDS_ALIGN64 _Alignas(8)
#define WDS_STATIC_ASSERT(condition) _Static_assert(condition, #condition)
#endif

/* clang-format off */
#define OVIX_WDS_INDICATION_REGISTER_REQ_V01            0x0003
#define OVIX_WDS_CREATE_PROFILE_REQ_V01                 0x0027
#define OVIX_WDS_MODIFY_PROFILE_SETTINGS_REQ_V01        0x0028
#define OVIX_WDS_DELETE_PROFILE_REQ_V01                 0x0029
#define OVIX_WDS_GET_PROFILE_LIST_REQ_V01               0x002A
#define OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01           0x002B
#define OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01   0x00A7
#define OVIX_WDS_PROFILE_CHANGED_IND_V01                0x00A8
#define OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01              0x00AF

#define OVIX_WDS_PROFILE_NAME_MAX_V01                   50
#define OVIX_WDS_APN_NAME_MAX_V01                       150
#define OVIX_WDS_USER_NAME_MAX_V01                      127
#define OVIX_WDS_PASSWORD_MAX_V01                       127
#define OVIX_WDS_PROFILE_LIST_MAX_V01                   255
#define OVIX_WDS_EVENT_LIST_MAX_V01                     255

#define WDS_PROFILE_INDEX_ANY_V01                       255

WDS_ENUM_BEGIN(wds_profile_type_enum_v01)
  WDS_PROFILE_TYPE_3GPP_V01 = 0,
  WDS_PROFILE_TYPE_ANY_V01 = 255,
WDS_ENUM_END(wds_profile_type_enum_v01);

/* PDP type. */
WDS_ENUM_BEGIN(wds_pdp_type_enum_v01)
  WDS_PDP_TYPE_IPV4_V01 = 0,
  WDS_PDP_TYPE_PPP_V01 = 1,
  WDS_PDP_TYPE_IPV6_V01 = 2,
  WDS_PDP_TYPE_IPV4V6_V01 = 3,
WDS_ENUM_END(wds_pdp_type_enum_v01);

/* PDP type of the home override and of roaming. */
WDS_ENUM_BEGIN(wds_common_pdp_type_enum_v01)
  WDS_COMMON_PDP_TYPE_IPV4_V01 = 0,
  WDS_COMMON_PDP_TYPE_IPV6_V01 = 1,
  WDS_COMMON_PDP_TYPE_IPV4V6_V01 = 2,
  WDS_COMMON_PDP_TYPE_UNSPECIFIED_V01 = 255,
WDS_ENUM_END(wds_common_pdp_type_enum_v01);

WDS_ENUM_BEGIN(wds_profile_pdn_type_enum_v01)
  WDS_PROFILE_PDN_TYPE_IPV4_V01 = 0,
  WDS_PROFILE_PDN_TYPE_IPV6_V01 = 1,
  WDS_PROFILE_PDN_TYPE_IPV4_OR_IPV6_V01 = 2,
  WDS_PROFILE_PDN_TYPE_UNSPECIFIED_V01 = 3,
WDS_ENUM_END(wds_profile_pdn_type_enum_v01);

WDS_ENUM_BEGIN(wds_profile_auth_protocol_enum_v01)
  WDS_PROFILE_AUTH_NONE_V01 = 0,
  WDS_PROFILE_AUTH_PAP_V01 = 1,
  WDS_PROFILE_AUTH_CHAP_V01 = 2,
  WDS_PROFILE_AUTH_PAP_OR_CHAP_V01 = 3,
WDS_ENUM_END(wds_profile_auth_protocol_enum_v01);

WDS_ENUM_BEGIN(wds_profile_event_enum_v01)
  WDS_PROFILE_EVENT_CREATE_V01 = 1,
  WDS_PROFILE_EVENT_DELETE_V01 = 2,
  WDS_PROFILE_EVENT_MODIFY_V01 = 3,
  WDS_PROFILE_EVENT_SUBSCRIPTION_CHANGE_V01 = 4,
  WDS_PROFILE_EVENT_READY_V01 = 5,
WDS_ENUM_END(wds_profile_event_enum_v01);

/* Authentication preference, a bit set. */
#define WDS_AUTH_PREFERENCE_PAP_V01  0x1
#define WDS_AUTH_PREFERENCE_CHAP_V01 0x2

/* APN-type mask, a 64-bit bit set. */
#define WDS_APN_TYPE_DEFAULT_V01     UINT64_C(0x0001)
#define WDS_APN_TYPE_IMS_V01         UINT64_C(0x0002)
#define WDS_APN_TYPE_MMS_V01         UINT64_C(0x0004)
#define WDS_APN_TYPE_DUN_V01         UINT64_C(0x0008)
#define WDS_APN_TYPE_SUPL_V01        UINT64_C(0x0010)
#define WDS_APN_TYPE_HIPRI_V01       UINT64_C(0x0020)
#define WDS_APN_TYPE_FOTA_V01        UINT64_C(0x0040)
#define WDS_APN_TYPE_CBS_V01         UINT64_C(0x0080)
#define WDS_APN_TYPE_IA_V01          UINT64_C(0x0100)
#define WDS_APN_TYPE_EMERGENCY_V01   UINT64_C(0x0200)
#define WDS_APN_TYPE_XCAP_V01        UINT64_C(0x0400)
#define WDS_APN_TYPE_MCX_V01         UINT64_C(0x0800)
#define WDS_APN_TYPE_RCS_V01         UINT64_C(0x1000)
/* clang-format on */

/* The result that opens every response: 0 is success; error tells why not. */
typedef struct {
  int32_t result;
  int32_t error;
} ovix_response_type_v01;

typedef struct {
  wds_profile_type_enum_v01 profile_type;
  uint8_t profile_index;
  uint8_t reserved_5[3];
} wds_profile_identifier_type_v01;

typedef struct {
  ovix_response_type_v01 resp;
} wds_result_resp_msg_v01;

/* Bind subscription. */
typedef struct {
  int32_t subscription;
} wds_bind_subscription_req_msg_v01;

/* Indication register. */
typedef struct {
  uint8_t reserved_0[16];
  uint8_t report_profile_changed_events_valid;
  uint8_t report_profile_changed_events;
  uint8_t reserved_18[390];
} wds_indication_register_req_msg_v01;

/* Profile event list configuration. */
typedef struct {
  uint8_t profile_event_list_valid;
  uint32_t profile_event_list_len;
  wds_profile_identifier_type_v01 profile_event_list[OVIX_WDS_EVENT_LIST_MAX_V01];
  /* The modem interface gives this pair no name; clients set it. */
  uint8_t report_switch_valid;
  uint8_t report_switch;
  uint8_t reserved_2050[2];
} wds_configure_profile_event_list_req_msg_v01;

/* Create profile. */
typedef struct {
  wds_profile_type_enum_v01 profile_type;
  uint8_t profile_name_valid;
  char profile_name[OVIX_WDS_PROFILE_NAME_MAX_V01 + 1];
  uint8_t pdp_type_valid;
  wds_pdp_type_enum_v01 pdp_type;
  uint8_t reserved_64[16];
  uint8_t apn_name_valid;
  char apn_name[OVIX_WDS_APN_NAME_MAX_V01 + 1];
  uint8_t reserved_232[168];
  uint8_t user_name_valid;
  char user_name[OVIX_WDS_USER_NAME_MAX_V01 + 1];
  uint8_t password_valid;
  char password[OVIX_WDS_PASSWORD_MAX_V01 + 1];
  uint8_t authentication_preference_valid;
  uint8_t authentication_preference;
  uint8_t reserved_660[320];
  uint8_t apn_disabled_valid;
  uint8_t apn_disabled;
  uint8_t reserved_982[6];
  uint8_t apn_class_valid;
  uint8_t apn_class;
  uint8_t reserved_990[10];
  uint8_t support_emergency_calls_valid;
  uint8_t support_emergency_calls;
  uint8_t reserved_1002[14];
  uint8_t max_pdn_conn_per_block_valid;
  uint16_t max_pdn_conn_per_block;
  uint8_t max_pdn_conn_timer_valid;
  uint16_t max_pdn_conn_timer;
  uint8_t pdn_req_wait_interval_valid;
  uint16_t pdn_req_wait_interval;
  uint8_t reserved_1028[14];
  uint8_t lte_roaming_pdp_type_valid;
  wds_common_pdp_type_enum_v01 lte_roaming_pdp_type;
  uint8_t umts_roaming_pdp_type_valid;
  wds_common_pdp_type_enum_v01 umts_roaming_pdp_type;
  uint8_t reserved_1056[48];
  uint8_t override_home_pdp_type_valid;
  wds_common_pdp_type_enum_v01 override_home_pdp_type;
  uint8_t reserved_1112[1068];
  uint8_t persistent_valid;
  uint8_t persistent;
  uint8_t reserved_2182[1050];
  uint8_t apn_type_mask_valid;
  WDS_ALIGN64 uint64_t apn_type_mask;
  uint8_t clat_enabled_valid;
  uint8_t clat_enabled;
  uint8_t reserved_3250[6];
} wds_create_profile_req_msg_v01;

typedef struct {
  ovix_response_type_v01 resp;
  wds_profile_identifier_type_v01 profile;
  uint8_t reserved_16[8];
} wds_create_profile_resp_msg_v01;

/* Modify profile settings. */
typedef struct {
  wds_profile_identifier_type_v01 profile;
  uint8_t profile_name_valid;
  char profile_name[OVIX_WDS_PROFILE_NAME_MAX_V01 + 1];
  uint8_t pdp_type_valid;
  wds_pdp_type_enum_v01 pdp_type;
  uint8_t reserved_68[16];
  uint8_t apn_name_valid;
  char apn_name[OVIX_WDS_APN_NAME_MAX_V01 + 1];
  uint8_t reserved_236[168];
  uint8_t user_name_valid;
  char user_name[OVIX_WDS_USER_NAME_MAX_V01 + 1];
  uint8_t password_valid;
  char password[OVIX_WDS_PASSWORD_MAX_V01 + 1];
  uint8_t authentication_preference_valid;
  uint8_t authentication_preference;
  uint8_t reserved_664[320];
  uint8_t apn_disabled_valid;
  uint8_t apn_disabled;
  uint8_t reserved_986[6];
  uint8_t apn_class_valid;
  uint8_t apn_class;
  uint8_t reserved_994[14];
  uint8_t support_emergency_calls_valid;
  uint8_t support_emergency_calls;
  uint8_t reserved_1010[14];
  uint8_t max_pdn_conn_per_block_valid;
  uint16_t max_pdn_conn_per_block;
  uint8_t max_pdn_conn_timer_valid;
  uint16_t max_pdn_conn_timer;
  uint8_t pdn_req_wait_interval_valid;
  uint16_t pdn_req_wait_interval;
  uint8_t reserved_1036[14];
  uint8_t lte_roaming_pdp_type_valid;
  wds_common_pdp_type_enum_v01 lte_roaming_pdp_type;
  uint8_t umts_roaming_pdp_type_valid;
  wds_common_pdp_type_enum_v01 umts_roaming_pdp_type;
  uint8_t reserved_1064[48];
  uint8_t override_home_pdp_type_valid;
  wds_common_pdp_type_enum_v01 override_home_pdp_type;
  uint8_t reserved_1120[1068];
  /* As in the settings. Not for a change: persistence is fixed when a profile is created. */
  uint8_t persistent_valid;
  uint8_t persistent;
  uint8_t reserved_2190[1046];
  uint8_t apn_type_mask_valid;
  WDS_ALIGN64 uint64_t apn_type_mask;
  uint8_t clat_enabled_valid;
  uint8_t clat_enabled;
  uint8_t reserved_3250[6];
} wds_modify_profile_settings_req_msg_v01;

typedef struct {
  ovix_response_type_v01 resp;
  uint8_t reserved_8[8];
} wds_modify_profile_settings_resp_msg_v01;

/* Delete profile. */
typedef struct {
  wds_profile_identifier_type_v01 profile;
} wds_delete_profile_req_msg_v01;

typedef struct {
  ovix_response_type_v01 resp;
  uint8_t reserved_8[8];
} wds_delete_profile_resp_msg_v01;

/* Get profile list. */
typedef struct {
  uint8_t profile_type_valid;
  wds_profile_type_enum_v01 profile_type;
  uint8_t reserved_8[176];
} wds_get_profile_list_req_msg_v01;

typedef struct {
  wds_profile_type_enum_v01 profile_type;
  uint8_t profile_index;
  char profile_name[OVIX_WDS_PROFILE_NAME_MAX_V01 + 1];
} wds_profile_info_type_v01;

typedef struct {
  ovix_response_type_v01 resp;
  uint32_t profile_list_len;
  wds_profile_info_type_v01 profile_list[OVIX_WDS_PROFILE_LIST_MAX_V01];
  uint8_t reserved_14292[8];
} wds_get_profile_list_resp_msg_v01;

/* Get profile settings. */
typedef struct {
  wds_profile_identifier_type_v01 profile;
} wds_get_profile_settings_req_msg_v01;

typedef struct {
  ovix_response_type_v01 resp;
  uint8_t profile_name_valid;
  char profile_name[OVIX_WDS_PROFILE_NAME_MAX_V01 + 1];
  uint8_t pdp_type_valid;
  wds_pdp_type_enum_v01 pdp_type;
  uint8_t reserved_68[16];
  uint8_t apn_name_valid;
  char apn_name[OVIX_WDS_APN_NAME_MAX_V01 + 1];
  uint8_t reserved_236[168];
  uint8_t user_name_valid;
  char user_name[OVIX_WDS_USER_NAME_MAX_V01 + 1];
  uint8_t password_valid;
  char password[OVIX_WDS_PASSWORD_MAX_V01 + 1];
  uint8_t authentication_preference_valid;
  uint8_t authentication_preference;
  uint8_t reserved_664[320];
  uint8_t apn_disabled_valid;
  uint8_t apn_disabled;
  uint8_t reserved_986[6];
  uint8_t apn_class_valid;
  uint8_t apn_class;
  uint8_t reserved_994[14];
  uint8_t support_emergency_calls_valid;
  uint8_t support_emergency_calls;
  uint8_t reserved_1010[14];
  uint8_t max_pdn_conn_per_block_valid;
  uint16_t max_pdn_conn_per_block;
  uint8_t max_pdn_conn_timer_valid;
  uint16_t max_pdn_conn_timer;
  uint8_t pdn_req_wait_interval_valid;
  uint16_t pdn_req_wait_interval;
  uint8_t reserved_1036[14];
  uint8_t lte_roaming_pdp_type_valid;
  wds_common_pdp_type_enum_v01 lte_roaming_pdp_type;
  uint8_t umts_roaming_pdp_type_valid;
  wds_common_pdp_type_enum_v01 umts_roaming_pdp_type;
  uint8_t reserved_1064[48];
  uint8_t override_home_pdp_type_valid;
  wds_common_pdp_type_enum_v01 override_home_pdp_type;
  uint8_t reserved_1120[1068];
  uint8_t persistent_valid;
  uint8_t persistent;
  uint8_t reserved_2190[1050];
  uint8_t apn_type_mask_valid;
  WDS_ALIGN64 uint64_t apn_type_mask;
  uint8_t clat_enabled_valid;
  uint8_t clat_enabled;
  uint8_t reserved_3258[14];
} wds_get_profile_settings_resp_msg_v01;

/* Profile changed indication. */
typedef struct {
  wds_profile_type_enum_v01 profile_type;
  uint8_t profile_index;
  wds_profile_event_enum_v01 event;
} wds_profile_changed_event_type_v01;

typedef struct {
  uint8_t profile_changed_event_valid;
  wds_profile_changed_event_type_v01 profile_changed_event;
} wds_profile_changed_ind_msg_v01;

/* clang-format off */
#define WDS_AT(type, field, at) WDS_STATIC_ASSERT(offsetof(type, field) == (at))
/* The valid flag of an optional field and its value. */
#define WDS_PAIR_AT(type, field, flagAt, at) \
  WDS_AT(type, field##_valid, flagAt); WDS_AT(type, field, at)
#define WDS_SIZE(type, size) WDS_STATIC_ASSERT(sizeof(type) == (size))

WDS_SIZE(wds_profile_type_enum_v01, 4);
WDS_SIZE(ovix_response_type_v01, 8);
WDS_AT(ovix_response_type_v01, result, 0);
WDS_AT(ovix_response_type_v01, error, 4);
WDS_SIZE(wds_profile_identifier_type_v01, 8);
WDS_AT(wds_profile_identifier_type_v01, profile_type, 0);
WDS_AT(wds_profile_identifier_type_v01, profile_index, 4);
WDS_SIZE(wds_result_resp_msg_v01, 8);

WDS_SIZE(wds_bind_subscription_req_msg_v01, 4);

WDS_SIZE(wds_indication_register_req_msg_v01, 408);
WDS_PAIR_AT(wds_indication_register_req_msg_v01, report_profile_changed_events, 16, 17);

WDS_SIZE(wds_configure_profile_event_list_req_msg_v01, 2052);
WDS_AT(wds_configure_profile_event_list_req_msg_v01, profile_event_list_valid, 0);
WDS_AT(wds_configure_profile_event_list_req_msg_v01, profile_event_list_len, 4);
WDS_AT(wds_configure_profile_event_list_req_msg_v01, profile_event_list, 8);
WDS_PAIR_AT(wds_configure_profile_event_list_req_msg_v01, report_switch, 2048, 2049);

WDS_SIZE(wds_create_profile_req_msg_v01, 3256);
WDS_AT(wds_create_profile_req_msg_v01, profile_type, 0);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, profile_name, 4, 5);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, pdp_type, 56, 60);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, apn_name, 80, 81);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, user_name, 400, 401);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, password, 529, 530);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, authentication_preference, 658, 659);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, apn_disabled, 980, 981);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, apn_class, 988, 989);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, support_emergency_calls, 1000, 1001);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, max_pdn_conn_per_block, 1016, 1018);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, max_pdn_conn_timer, 1020, 1022);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, pdn_req_wait_interval, 1024, 1026);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, lte_roaming_pdp_type, 1042, 1044);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, umts_roaming_pdp_type, 1048, 1052);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, override_home_pdp_type, 1104, 1108);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, persistent, 2180, 2181);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, apn_type_mask, 3232, 3240);
WDS_PAIR_AT(wds_create_profile_req_msg_v01, clat_enabled, 3248, 3249);

WDS_SIZE(wds_create_profile_resp_msg_v01, 24);
WDS_AT(wds_create_profile_resp_msg_v01, profile.profile_index, 12);

WDS_SIZE(wds_modify_profile_settings_req_msg_v01, 3256);
WDS_AT(wds_modify_profile_settings_req_msg_v01, profile.profile_type, 0);
WDS_AT(wds_modify_profile_settings_req_msg_v01, profile.profile_index, 4);
WDS_PAIR_AT(wds_modify_profile_settings_req_msg_v01, apn_type_mask, 3236, 3240);
WDS_PAIR_AT(wds_modify_profile_settings_req_msg_v01, clat_enabled, 3248, 3249);
WDS_SIZE(wds_modify_profile_settings_resp_msg_v01, 16);

WDS_SIZE(wds_get_profile_settings_resp_msg_v01, 3272);
WDS_PAIR_AT(wds_get_profile_settings_resp_msg_v01, apn_type_mask, 3240, 3248);
WDS_PAIR_AT(wds_get_profile_settings_resp_msg_v01, clat_enabled, 3256, 3257);

/* What the modify request and the settings response hold at the same place. */
#define WDS_SETTINGS_AT(type) \
  WDS_PAIR_AT(type, profile_name, 8, 9); \
  WDS_PAIR_AT(type, pdp_type, 60, 64); \
  WDS_PAIR_AT(type, apn_name, 84, 85); \
  WDS_PAIR_AT(type, user_name, 404, 405); \
  WDS_PAIR_AT(type, password, 533, 534); \
  WDS_PAIR_AT(type, authentication_preference, 662, 663); \
  WDS_PAIR_AT(type, apn_disabled, 984, 985); \
  WDS_PAIR_AT(type, apn_class, 992, 993); \
  WDS_PAIR_AT(type, support_emergency_calls, 1008, 1009); \
  WDS_PAIR_AT(type, max_pdn_conn_per_block, 1024, 1026); \
  WDS_PAIR_AT(type, max_pdn_conn_timer, 1028, 1030); \
  WDS_PAIR_AT(type, pdn_req_wait_interval, 1032, 1034); \
  WDS_PAIR_AT(type, lte_roaming_pdp_type, 1050, 1052); \
  WDS_PAIR_AT(type, umts_roaming_pdp_type, 1056, 1060); \
  WDS_PAIR_AT(type, override_home_pdp_type, 1112, 1116); \
  WDS_PAIR_AT(type, persistent, 2188, 2189)
WDS_SETTINGS_AT(wds_modify_profile_settings_req_msg_v01);
WDS_SETTINGS_AT(wds_get_profile_settings_resp_msg_v01);

WDS_SIZE(wds_delete_profile_req_msg_v01, 8);
WDS_SIZE(wds_delete_profile_resp_msg_v01, 16);
WDS_SIZE(wds_get_profile_settings_req_msg_v01, 8);

WDS_SIZE(wds_get_profile_list_req_msg_v01, 184);
WDS_PAIR_AT(wds_get_profile_list_req_msg_v01, profile_type, 0, 4);

WDS_SIZE(wds_profile_info_type_v01, 56);
WDS_AT(wds_profile_info_type_v01, profile_index, 4);
WDS_AT(wds_profile_info_type_v01, profile_name, 5);
WDS_SIZE(wds_get_profile_list_resp_msg_v01, 14300);
WDS_AT(wds_get_profile_list_resp_msg_v01, profile_list_len, 8);
WDS_AT(wds_get_profile_list_resp_msg_v01, profile_list, 12);

WDS_SIZE(wds_profile_changed_ind_msg_v01, 16);
WDS_AT(wds_profile_changed_ind_msg_v01, profile_changed_event_valid, 0);
WDS_AT(wds_profile_changed_ind_msg_v01, profile_changed_event.profile_type, 4);
WDS_AT(wds_profile_changed_ind_msg_v01, profile_changed_event.profile_index, 8);
WDS_AT(wds_profile_changed_ind_msg_v01, profile_changed_event.event, 12);

#undef WDS_SETTINGS_AT
#undef WDS_SIZE
#undef WDS_PAIR_AT
#undef WDS_AT
/* clang-format on */

#ifdef __cplusplus
extern "C" {
#endif

/* Null when the library has no service of that version. */
ovix_service_object_type wds_get_service_object_internal_v01(int idl_major, int idl_minor,
                                                             int library_version);

#ifdef __cplusplus
}
#endif

#endif
