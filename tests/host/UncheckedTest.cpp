// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests send answers that the messaging library passes on unchecked, as a library that trusts
// its modem would. The values arrive as the modem sent them, and nothing is written behind the
// structure.
#include "HostTest.h"

#include <cstring>

namespace pavo::test {
namespace {

constexpr size_t nameAt = 9;  // the offset in a settings response
constexpr size_t nameBytes = OVIX_WDS_PROFILE_NAME_MAX_V01 + 1;

class UncheckedTest : public HostTest {
 protected:
  // Sends a request for settings or for the list, and returns the structure that was filled.
  template <typename Request, typename Response>
  ovix_client_error_type ask(unsigned id, Response& response) {
    Request request{};
    std::memset(&response, 0, sizeof response);
    return ovix_client_send_msg_sync(client.get(), id, &request, sizeof request, &response,
                                     sizeof response, longTimeoutMs);
  }
  ovix_client_error_type askSettings(wds_get_profile_settings_resp_msg_v01& response) {
    return ask<wds_get_profile_settings_req_msg_v01>(OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01,
                                                     response);
  }
  ovix_client_error_type askList(wds_get_profile_list_resp_msg_v01& response) {
    return ask<wds_get_profile_list_req_msg_v01>(OVIX_WDS_GET_PROFILE_LIST_REQ_V01, response);
  }

  static Bytes list(unsigned count, unsigned elements) {
    Bytes value = u16(count);
    for (unsigned i = 0; i < elements; ++i) {
      value = value + u32(0) + u8(i) + u8(0);
    }
    return field(0x03, value);
  }

  Bytes answer = success();
  RawModem modem{
      path, [this](RawPeer& peer, const RawFrame& request) {
        peer.send(rawFrame(rawUnchecked, request.messageId, request.transaction, answer));
      }};
  Handle client = openClient();
};

TEST_F(UncheckedTest, Send_TextThatFillsItsPlace_HasNoTerminator) {
  answer = success() + field(0x10, text(std::string(nameBytes, 'n')));
  wds_get_profile_settings_resp_msg_v01 response;
  ASSERT_EQ(askSettings(response), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(response.profile_name_valid, 1);
  EXPECT_EQ(std::string(response.profile_name, nameBytes), std::string(nameBytes, 'n'));
  static_assert(offsetof(wds_get_profile_settings_resp_msg_v01, profile_name) == nameAt);
  const auto* behind = reinterpret_cast<const char*>(&response) + nameAt + nameBytes;
  EXPECT_EQ(*behind, 0);
}

TEST_F(UncheckedTest, Send_TextWithinItsBound_HasItsTerminator) {
  answer = success() + field(0x10, text("name"));
  wds_get_profile_settings_resp_msg_v01 response;
  ASSERT_EQ(askSettings(response), OVIX_CLIENT_NO_ERROR);
  EXPECT_STREQ(response.profile_name, "name");
}

TEST_F(UncheckedTest, Send_TextLongerThanItsPlace_IsRefused) {
  answer = success() + field(0x10, text(std::string(nameBytes + 1, 'n')));
  wds_get_profile_settings_resp_msg_v01 response;
  EXPECT_EQ(askSettings(response), OVIX_CLIENT_DECODE_ERROR);
}

TEST_F(UncheckedTest, Send_CountAboveWhatFits_IsHandedOnWithTheElementsThatFit) {
  answer = success() + list(300, 300);
  wds_get_profile_list_resp_msg_v01 response;
  ASSERT_EQ(askList(response), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(response.profile_list_len, 300u);
  EXPECT_EQ(response.profile_list[254].profile_index, 254);
}

TEST_F(UncheckedTest, Send_CountOfAllOnes_IsHandedOn) {
  answer = success() + list(0xFFFF, 255);
  wds_get_profile_list_resp_msg_v01 response;
  ASSERT_EQ(askList(response), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(response.profile_list_len, 0xFFFFu);
}

TEST_F(UncheckedTest, Send_FewerElementsThanFitAndAreCounted_IsRefused) {
  answer = success() + list(300, 3);
  wds_get_profile_list_resp_msg_v01 response;
  EXPECT_EQ(askList(response), OVIX_CLIENT_DECODE_ERROR);
}

TEST_F(UncheckedTest, Send_NoFields_IsRefusedAsEver) {
  answer = Bytes(16, 0xFF);
  wds_get_profile_list_resp_msg_v01 response;
  EXPECT_EQ(askList(response), OVIX_CLIENT_DECODE_ERROR);
}

}  // namespace
}  // namespace pavo::test
