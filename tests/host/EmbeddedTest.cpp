// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// If no modem is named, the library uses the modem inside the process. The library's tables and the
// modem's state the messages twice, and the two statements have to agree.
#include "HostTest.h"
#include "Recorder.h"

#include <cstring>

namespace pavo::test {
namespace {

class EmbeddedTest : public ::testing::Test {
 protected:
  template <typename Request, typename Response>
  static int send(const Handle& client, unsigned id, Request& request, Response& response) {
    return ovix_client_send_msg_sync(client.get(), id, &request, sizeof request, &response,
                                     sizeof response, longTimeoutMs);
  }

  const ScopedModem unnamed{nullptr};
};

TEST_F(EmbeddedTest, GetAnyService_WithoutAName_FindsTheModemInside) {
  ovix_service_info info{};
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_NO_ERROR);
}

TEST_F(EmbeddedTest, GetAnyService_EmptyName_FindsTheModemInside) {
  const ScopedModem empty("");
  ovix_service_info info{};
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_NO_ERROR);
}

TEST_F(EmbeddedTest, Register_Notifier_IsTold) {
  Events events;
  ovix_client_os_params params{};
  ovix_client_type notifier = nullptr;
  ASSERT_EQ(ovix_client_notifier_init(wdsService(), &params, &notifier), OVIX_CLIENT_NO_ERROR);
  const Handle owner(notifier);
  ovix_client_register_notify_cb(notifier, recordNotification, &events);
  EXPECT_TRUE(events.waitFor(1));
}

TEST_F(EmbeddedTest, Send_CreateReadListDelete_AgreesWithTheModem) {
  const Handle client = openClient();
  auto create = std::make_unique<wds_create_profile_req_msg_v01>();
  std::strcpy(create->profile_name, "embedded");
  create->profile_name_valid = 1;
  std::strcpy(create->apn_name, "internet");
  create->apn_name_valid = 1;
  create->pdp_type = WDS_PDP_TYPE_IPV4V6_V01;
  create->pdp_type_valid = 1;
  create->apn_type_mask = WDS_APN_TYPE_DEFAULT_V01 | WDS_APN_TYPE_RCS_V01;
  create->apn_type_mask_valid = 1;
  create->persistent_valid = 1;
  wds_create_profile_resp_msg_v01 created{};
  ASSERT_EQ(send(client, OVIX_WDS_CREATE_PROFILE_REQ_V01, *create, created), 0);
  ASSERT_EQ(created.resp.result, 0) << created.resp.error;

  wds_get_profile_settings_req_msg_v01 read{created.profile};
  auto settings = std::make_unique<wds_get_profile_settings_resp_msg_v01>();
  ASSERT_EQ(send(client, OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01, read, *settings), 0);
  EXPECT_EQ(settings->resp.result, 0);
  EXPECT_STREQ(settings->apn_name, "internet");
  EXPECT_EQ(settings->pdp_type, WDS_PDP_TYPE_IPV4V6_V01);
  EXPECT_EQ(settings->apn_type_mask, create->apn_type_mask);

  wds_get_profile_list_req_msg_v01 list{};
  list.profile_type_valid = 1;
  auto listed = std::make_unique<wds_get_profile_list_resp_msg_v01>();
  ASSERT_EQ(send(client, OVIX_WDS_GET_PROFILE_LIST_REQ_V01, list, *listed), 0);
  bool found = false;
  for (uint32_t i = 0; i < listed->profile_list_len; ++i) {
    found = found || listed->profile_list[i].profile_index == created.profile.profile_index;
  }
  EXPECT_TRUE(found);

  wds_delete_profile_req_msg_v01 remove{created.profile};
  wds_delete_profile_resp_msg_v01 removed{};
  ASSERT_EQ(send(client, OVIX_WDS_DELETE_PROFILE_REQ_V01, remove, removed), 0);
  EXPECT_EQ(removed.resp.result, 0);
}

TEST_F(EmbeddedTest, Send_CreateAfterRegistration_IsIndicated) {
  // An earlier test of this process may have left an absence to be reported. This client reports
  // it, so the client below receives no profile-ready event.
  openClient();
  Indications indications;
  Handle client = openClient(recordIndication, &indications);
  wds_result_resp_msg_v01 result{};
  wds_bind_subscription_req_msg_v01 bind{};
  bind.subscription = 1;
  ASSERT_EQ(send(client, OVIX_WDS_BIND_SUBSCRIPTION_REQ_V01, bind, result), 0);
  wds_indication_register_req_msg_v01 reports{};
  reports.report_profile_changed_events_valid = 1;
  reports.report_profile_changed_events = 1;
  ASSERT_EQ(send(client, OVIX_WDS_INDICATION_REGISTER_REQ_V01, reports, result), 0);
  auto events = std::make_unique<wds_configure_profile_event_list_req_msg_v01>();
  events->profile_event_list_valid = 1;
  events->profile_event_list_len = 1;
  events->profile_event_list[0].profile_type = WDS_PROFILE_TYPE_ANY_V01;
  events->profile_event_list[0].profile_index = WDS_PROFILE_INDEX_ANY_V01;
  events->report_switch_valid = 1;
  events->report_switch = 1;
  ASSERT_EQ(send(client, OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01, *events, result), 0);

  auto create = std::make_unique<wds_create_profile_req_msg_v01>();
  wds_create_profile_resp_msg_v01 created{};
  ASSERT_EQ(send(client, OVIX_WDS_CREATE_PROFILE_REQ_V01, *create, created), 0);
  ASSERT_EQ(created.resp.result, 0) << created.resp.error;
  ASSERT_TRUE(indications.waitFor(2));
  const Indication first = indications.all()[0];
  EXPECT_EQ(first.messageId, unsigned{OVIX_WDS_PROFILE_CHANGED_IND_V01});
  wds_profile_changed_ind_msg_v01 changed{};
  ASSERT_EQ(ovix_client_message_decode(
                client.get(), OVIX_MESSAGE_INDICATION, first.messageId, first.payload.data(),
                static_cast<unsigned>(first.payload.size()), &changed, sizeof changed),
            0);
  EXPECT_EQ(changed.profile_changed_event_valid, 1);
  EXPECT_EQ(changed.profile_changed_event.event, WDS_PROFILE_EVENT_CREATE_V01);
  EXPECT_EQ(changed.profile_changed_event.profile_index, created.profile.profile_index);
  EXPECT_EQ(sendDelete(client.get(), created.profile.profile_index), 0);
  client.release();
}

}  // namespace
}  // namespace pavo::test
