// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/AddProfileParams.h>

#include "LogLines.h"
#include "MessageBytes.h"
#include "Modem3gppProfile.h"
#include "OvixWdsProxy.h"
#include "ProxyTest.h"
#include "Sequence.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace pavo::test {
namespace {

std::string successLine(const std::string& message) {
  return "H OvixWdsProxy OVIX_WDS_" + message + "_REQ_V01 request successful!";
}

std::string failureLine(const std::string& message) {
  return "E Unable send OVIX_WDS_" + message + "_REQ_V01 message";
}

ProfileParams someParams() {
  AddProfileParams params(/*isPersistent=*/true, /*isIAProfile=*/false);
  params.setApnName("internet");
  return params;
}

class OvixWdsProxyOperationTest : public ProxyTest {
 protected:
  OvixWdsProxyOperationTest() { open(); }

  // Returns the lines without the ends of the profiles that the operation was called with or
  // returned.
  Sequence takeLines() {
    Sequence sequence = takeRecorded();
    std::erase(sequence, line::profileEnd);
    return sequence;
  }

  // Answers the next request of the message with this response.
  template <typename Response>
  void answerNext(unsigned int msgId, const Response& response) {
    platform.onNext(msgId, [response](ModemExchange& exchange) {
      exchange.respond(response);
      return OVIX_CLIENT_NO_ERROR;
    });
  }

  void putProfiles(std::initializer_list<int> indices) {
    for (const int index : indices) {
      platform.setProfile(static_cast<std::uint8_t>(index), {});
    }
  }

  static std::vector<int> idsOf(const std::list<std::shared_ptr<ModemProfile>>& profiles) {
    std::vector<int> ids;
    for (const auto& profile : profiles) {
      ids.push_back(profile != nullptr ? profile->getProfileId() : -1);
    }
    return ids;
  }
};

// A ProxyOperation is an operation by name, with the numbers and words of its message.
struct ProxyOperation {
  std::string message;
  unsigned int msgId;
  std::size_t requestLength;
  unsigned int responseLength;
  // Returns whether the operation succeeded.
  std::function<bool(OvixWdsProxy&)> run;
};

std::vector<ProxyOperation> allOperations() {
  return {
      {"CREATE_PROFILE", 0x0027, 3256, 24,
       [](OvixWdsProxy& proxy) {
         Modem3gppProfile profile(someParams());
         return proxy.add(profile);
       }},
      {"MODIFY_PROFILE_SETTINGS", 0x0028, 3256, 16,
       [](OvixWdsProxy& proxy) { return proxy.modify(Modem3gppProfile(someParams()), 5); }},
      {"DELETE_PROFILE", 0x0029, 8, 16, [](OvixWdsProxy& proxy) { return proxy.remove(5); }},
      {"GET_PROFILE_SETTINGS", 0x002B, 8, 3272,
       [](OvixWdsProxy& proxy) { return proxy.get(5) != nullptr; }},
      {"GET_PROFILE_LIST", 0x002A, 184, 14300,
       [](OvixWdsProxy& proxy) { return !proxy.getAllProfiles().empty(); }},
  };
}

TEST_F(OvixWdsProxyOperationTest, AnyOperation_Accepted_NumbersLengthsTimeoutAndSuccessLine) {
  for (const ProxyOperation& operation : allOperations()) {
    SCOPED_TRACE(operation.message);
    putProfiles({5});
    platform.clearCalls();
    EXPECT_TRUE(operation.run(*proxy));
    const PlatformCall sent = platform.sent().front();
    EXPECT_EQ(sent.msgId, operation.msgId);
    EXPECT_EQ(sent.bytes.size(), operation.requestLength);
    EXPECT_EQ(sent.outLength, operation.responseLength);
    EXPECT_EQ(sent.timeoutMs, 1000U);
    EXPECT_EQ(sent.handle, client().handle);
    const Sequence lines = recorded();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[1], successLine(operation.message));
  }
}

TEST_F(OvixWdsProxyOperationTest, AnyOperation_SendFails_FailureLineAlone) {
  for (const ProxyOperation& operation : allOperations()) {
    for (const bool isRejected : {false, true}) {
      SCOPED_TRACE(operation.message + (isRejected ? ", rejected" : ", not sent"));
      putProfiles({5});
      isRejected ? platform.rejectNext(operation.msgId) : platform.failNext(operation.msgId);
      EXPECT_FALSE(operation.run(*proxy));
      const Sequence lines = takeLines();
      ASSERT_EQ(lines.size(), 2U);
      EXPECT_EQ(lines[1], failureLine(operation.message));
    }
  }
}

// The error code beside a successful result is ignored, and any result but 0 is a failure.
TEST_F(OvixWdsProxyOperationTest, AnyOperation_ResultCode_AloneDecides) {
  putProfiles({5});
  for (const ProxyOperation& operation : allOperations()) {
    for (const std::int32_t result : {-1, 2, 0x01000000}) {
      SCOPED_TRACE(operation.message + " result " + std::to_string(result));
      platform.onNext(operation.msgId, [this, result](ModemExchange& exchange) {
        platform.answer(exchange);
        exchange.respondResult(result, /*error=*/0);
        return OVIX_CLIENT_NO_ERROR;
      });
      EXPECT_FALSE(operation.run(*proxy));
      putProfiles({5});
    }
    SCOPED_TRACE(operation.message + " error code only");
    platform.onNext(operation.msgId, [this](ModemExchange& exchange) {
      platform.answer(exchange);
      exchange.respondResult(/*result=*/0, /*error=*/26);
      return OVIX_CLIENT_NO_ERROR;
    });
    EXPECT_TRUE(operation.run(*proxy));
    putProfiles({5});
  }
}

TEST_F(OvixWdsProxyOperationTest, AnyOperation_ResponseBuffer_Zeroed) {
  for (const ProxyOperation& operation : allOperations()) {
    SCOPED_TRACE(operation.message);
    // The operation runs twice, because values left over from the first call must not show.
    for (int call = 0; call < 2; ++call) {
      bool isZeroed = false;
      platform.onNext(operation.msgId, [&](ModemExchange& exchange) {
        const auto* bytes = static_cast<const std::uint8_t*>(exchange.resp);
        isZeroed = std::all_of(bytes, bytes + exchange.responseLength,
                               [](std::uint8_t byte) { return byte == 0; });
        std::memset(exchange.resp, 0xff, exchange.responseLength);
        return OVIX_CLIENT_TIMEOUT_ERROR;
      });
      operation.run(*proxy);
      EXPECT_TRUE(isZeroed);
    }
  }
}

TEST_F(OvixWdsProxyOperationTest, AnyOperation_NoClient_SentWithoutHandleButTheList) {
  platform.raiseError();
  loop.processEvents();
  for (const ProxyOperation& operation : allOperations()) {
    SCOPED_TRACE(operation.message);
    platform.clearCalls();
    EXPECT_FALSE(operation.run(*proxy));
    if (operation.message == "GET_PROFILE_LIST") {
      EXPECT_EQ(recorded(), Sequence());
      continue;
    }
    ASSERT_EQ(platform.sent().size(), 1U);
    EXPECT_EQ(platform.sent().front().handle, nullptr);
    EXPECT_EQ(platform.sent().front().msgId, operation.msgId);
    EXPECT_EQ(takeLines().back(), failureLine(operation.message));
  }
}

TEST_F(OvixWdsProxyOperationTest, Add_Accepted_ProfileGetsTheModemsIndexUnsigned) {
  for (const int index : {7, 0, 127, 200, 255}) {
    SCOPED_TRACE(index);
    wds_create_profile_resp_msg_v01 response{};
    reinterpret_cast<std::uint8_t*>(&response)[12] = static_cast<std::uint8_t>(index);
    answerNext(OVIX_WDS_CREATE_PROFILE_REQ_V01, response);
    Modem3gppProfile profile(someParams());
    EXPECT_TRUE(proxy->add(profile));
    EXPECT_EQ(profile.getProfileId(), index);
  }
}

TEST_F(OvixWdsProxyOperationTest, Add_Refused_IdUntouched) {
  Modem3gppProfile profile(someParams());
  profile.setProfileId(42);
  platform.onNext(OVIX_WDS_CREATE_PROFILE_REQ_V01, [](ModemExchange& exchange) {
    wds_create_profile_resp_msg_v01 response{};
    response.resp.result = 1;
    response.profile.profile_index = 9;
    exchange.respond(response);
    return OVIX_CLIENT_NO_ERROR;
  });
  EXPECT_FALSE(proxy->add(profile));
  EXPECT_EQ(profile.getProfileId(), 42);
}

TEST_F(OvixWdsProxyOperationTest, Add_AnyProfile_ItsOwnRequest) {
  Modem3gppProfile profile(someParams());
  profile.setProfileName("name");
  const auto expected = profile.constructAddRequest();
  proxy->add(profile);
  EXPECT_EQ(MessageBytes::of(expected).differences(MessageBytes::of(platform.sent().front().bytes)),
            Sequence());
}

TEST_F(OvixWdsProxyOperationTest, Modify_DifferenceWithAnId_TheTargetsIdIsSent) {
  putProfiles({9});
  Modem3gppProfile difference(someParams());
  difference.setProfileId(3);
  EXPECT_TRUE(proxy->modify(difference, 9));
  auto expected = difference.constructModifyRequest();
  std::memset(&expected, 0, 8);
  expected.profile.profile_index = 9;
  EXPECT_EQ(MessageBytes::of(expected).differences(MessageBytes::of(platform.sent().front().bytes)),
            Sequence());
}

TEST_F(OvixWdsProxyOperationTest, RemoveAndGet_AnyId_TypeZeroAndLowEightBitsAndNoPadding) {
  struct Case {
    int id;
    std::uint8_t index;
  };
  for (const Case& c :
       {Case{1, 1}, Case{0, 0}, Case{200, 200}, Case{255, 255}, Case{300, 44}, Case{-1, 255}}) {
    SCOPED_TRACE(c.id);
    platform.clearCalls();
    proxy->remove(c.id);
    proxy->get(c.id);
    const std::vector<PlatformCall> sent = platform.sent();
    ASSERT_EQ(sent.size(), 2U);
    for (const PlatformCall& request : sent) {
      EXPECT_EQ(MessageBytes(8).u8(4, c.index).differences(MessageBytes::of(request.bytes)),
                Sequence());
    }
  }
}

TEST_F(OvixWdsProxyOperationTest, Get_IdBeyondAByte_ProfileOfTheIndexAsked) {
  putProfiles({44, 200});
  EXPECT_EQ(proxy->get(300)->getProfileId(), 44);
  EXPECT_EQ(proxy->get(200)->getProfileId(), 200);
}

TEST_F(OvixWdsProxyOperationTest, Get_TextsWithoutEnd_CutAtTheirFields) {
  // All bytes after the text's field are one as well, so a reader that searches for the end runs
  // on.
  const MessageBytes settings = MessageBytes(settingsResponseSize)
                                    .u8(8, 1)
                                    .text(9, std::string(51, 'n'))
                                    .u8(84, 1)
                                    .text(85, std::string(151, 'a'))
                                    .text(236, std::string(168, 'x'))
                                    .u8(404, 1)
                                    .text(405, std::string(128, 'u'))
                                    .u8(533, 1)
                                    .text(534, std::string(128, 'p'))
                                    .u8(662, 1)
                                    .text(664, std::string(320, 'y'));
  platform.setProfile(5, settings.as<wds_get_profile_settings_resp_msg_v01>());
  const auto profile = std::static_pointer_cast<Modem3gppProfile>(proxy->get(5));
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile->getProfileName(), std::string(50, 'n'));
  EXPECT_EQ(profile->getApnName(), std::string(150, 'a'));
  EXPECT_EQ(profile->getUserName(), std::string(127, 'u'));
  EXPECT_EQ(profile->getPassword(), std::string(127, 'p'));
}

// Every enumeration and flag has an undeclared value; the sanitizers must have nothing to report.
TEST_F(OvixWdsProxyOperationTest, Get_EveryByteSet_ReadWithoutHarm) {
  MessageBytes settings(settingsResponseSize);
  settings.text(8, std::string(settingsResponseSize - 8, '\xff'));
  platform.setProfile(5, settings.as<wds_get_profile_settings_resp_msg_v01>());
  const auto profile = std::static_pointer_cast<Modem3gppProfile>(proxy->get(5));
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile->getApnName(), std::string(150, '\xff'));
  EXPECT_FALSE(profile->dump().empty());
  EXPECT_FALSE(profile->get().dump().empty());
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_SomeProfiles_ListRequestThenOneReadEach) {
  putProfiles({3, 1, 200});
  EXPECT_EQ(idsOf(proxy->getAllProfiles()), (std::vector{1, 3, 200}));
  const std::string readLine = successLine("GET_PROFILE_SETTINGS");
  EXPECT_EQ(recorded(), (Sequence{"send 0x2a", successLine("GET_PROFILE_LIST"), "send 0x2b",
                                  readLine, "send 0x2b", readLine, "send 0x2b", readLine,
                                  line::profileEnd, line::profileEnd, line::profileEnd}));
  EXPECT_EQ(MessageBytes(184).u8(0, 1).differences(MessageBytes::of(platform.sent().front().bytes)),
            Sequence());
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_EmptyTable_OneRequest) {
  EXPECT_TRUE(proxy->getAllProfiles().empty());
  EXPECT_EQ(recorded(), (Sequence{"send 0x2a", successLine("GET_PROFILE_LIST")}));
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_ListByBytes_ModemsOrderAndRepeats) {
  putProfiles({2, 7, 130});
  MessageBytes list(14300);
  list.u32(8, 4);
  const std::uint8_t indices[] = {130, 7, 2, 7};
  for (std::size_t i = 0; i < std::size(indices); ++i) {
    list.u32(12 + 56 * i, /*profile type=*/255).u8(12 + 56 * i + 4, indices[i]);
  }
  answerNext(OVIX_WDS_GET_PROFILE_LIST_REQ_V01, list.as<wds_get_profile_list_resp_msg_v01>());
  EXPECT_EQ(idsOf(proxy->getAllProfiles()), (std::vector{130, 7, 2, 7}));
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_SecondReadFails_EmptyElementInItsPlace) {
  putProfiles({1, 2, 3});
  platform.onNth(2, [](ModemExchange&) { return OVIX_CLIENT_TIMEOUT_ERROR; });
  EXPECT_EQ(idsOf(proxy->getAllProfiles()), (std::vector{1, -1, 3}));
  const std::string readLine = successLine("GET_PROFILE_SETTINGS");
  EXPECT_EQ(recorded(), (Sequence{"send 0x2a", successLine("GET_PROFILE_LIST"), "send 0x2b",
                                  readLine, "send 0x2b", failureLine("GET_PROFILE_SETTINGS"),
                                  "send 0x2b", readLine, line::profileEnd, line::profileEnd}));
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_ListFails_NoReads) {
  putProfiles({1});
  platform.rejectNext(OVIX_WDS_GET_PROFILE_LIST_REQ_V01);
  EXPECT_TRUE(proxy->getAllProfiles().empty());
  EXPECT_EQ(recorded(), (Sequence{"send 0x2a", failureLine("GET_PROFILE_LIST")}));
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_CountBeyondTheMessage_WhatFits) {
  putProfiles({0});
  for (const std::uint32_t count : {255U, 256U, 0x80000000U, 0xffffffffU}) {
    SCOPED_TRACE(count);
    answerNext(OVIX_WDS_GET_PROFILE_LIST_REQ_V01,
               MessageBytes(14300).u32(8, count).as<wds_get_profile_list_resp_msg_v01>());
    platform.clearCalls();
    EXPECT_EQ(proxy->getAllProfiles().size(), 255U);
    EXPECT_EQ(platform.sentCount(OVIX_WDS_GET_PROFILE_SETTINGS_REQ_V01), 255U);
  }
}

TEST_F(OvixWdsProxyOperationTest, GetAllProfiles_NoClientYet_EmptyWithoutLine) {
  destroy();
  construct();
  platform.clearCalls();
  EXPECT_TRUE(proxy->getAllProfiles().empty());
  EXPECT_EQ(recorded(), Sequence());
}

}  // namespace
}  // namespace pavo::test
