// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover the life of a client against a scripted modem: opening, sending, timeouts, the
// end of the connection, release.
#include "HostTest.h"
#include "Recorder.h"

#include <signal.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <future>
#include <latch>
#include <semaphore>
#include <thread>

namespace pavo::test {
namespace {

using Clock = std::chrono::steady_clock;

class ClientTest : public HostTest {};

Bytes profileChanged(unsigned index) { return field(0x10, u32(0) + u8(index) + u32(3)); }

// Answers with the requested index as error code.
void echoIndex(RawPeer& peer, const RawFrame& request) {
  peer.respond(request, result(/*code=*/1, /*error=*/request.payload.at(7)));
}

TEST_F(ClientTest, Open_WithoutModem_Fails) {
  ovix_client_type client = &client;
  EXPECT_EQ(tryOpen(client), OVIX_CLIENT_SERVICE_ERROR);
  EXPECT_EQ(client, nullptr);
}

TEST_F(ClientTest, Open_VariableNamesAnotherModemMeanwhile_StaysWithTheServices) {
  RawModem modem(path);
  const std::string elsewhere = folder.file("another");
  const ScopedVariable changed("OVIX_MODEM", elsewhere.c_str());
  openClient();
  EXPECT_EQ(modem.hellos().size(), 1u);
}

TEST_F(ClientTest, Open_SocketPathTooLong_Fails) {
  const std::string longPath(200, 'x');
  const ScopedModem longNamed(longPath.c_str());
  ovix_client_type client = nullptr;
  EXPECT_EQ(tryOpen(client), OVIX_CLIENT_SERVICE_ERROR);
}

TEST_F(ClientTest, Open_NullArguments_AreRefused) {
  ovix_service_info info{};
  ovix_client_os_params params{};
  ovix_client_type client = nullptr;
  EXPECT_EQ(ovix_client_init(nullptr, wdsService(), nullptr, nullptr, &params, &client),
            OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(ovix_client_init(&info, nullptr, nullptr, nullptr, &params, &client),
            OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(ovix_client_init(&info, wdsService(), nullptr, nullptr, nullptr, &client),
            OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(ovix_client_init(&info, wdsService(), nullptr, nullptr, &params, nullptr),
            OVIX_CLIENT_INVALID_ARGUMENT);
}

TEST_F(ClientTest, Open_HelloThatIsNone_Fails) {
  const std::vector<std::pair<const char*, Bytes>> answers{
      {"a response", rawFrame(rawResponse, 0, 0, u32(7))},
      {"too short", rawFrame(rawHello, 0, 0, u16(7))},
      {"too long", rawFrame(rawHello, 0, 0, u64(7))},
      {"another version", u32(4) + u8(rawHello) + u8(2) + u16(0) + u32(0) + u32(7)},
      {"oversize", u32(65537) + u8(rawHello) + u8(1) + u16(0) + u32(0)},
      {"no frame", Bytes(64, 0xFF)},
  };
  for (const auto& [name, answer] : answers) {
    SCOPED_TRACE(name);
    const RawModem modem(path, RawModem::succeed, answer);
    ovix_service_info info{};
    EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_SERVICE_ERROR);
  }
}

TEST_F(ClientTest, Open_ModemThatHangsUpInsteadOfHello_Fails) {
  // The client takes a second frame as the answer to its hello, and that frame never comes: only
  // half a header arrives.
  RawModem modem(path, RawModem::succeed, Bytes(6, 0));
  std::thread hangUp([&] {
    EXPECT_TRUE(waitUntil([&] { return modem.lastPeer() != nullptr; }));
    modem.lastPeer()->hangUp();
  });
  ovix_client_type client = nullptr;
  EXPECT_EQ(tryOpen(client), OVIX_CLIENT_SERVICE_ERROR);
  hangUp.join();
}

TEST_F(ClientTest, Open_SilentModem_GivesUp) {
  const RawModem modem(path, RawModem::succeed, /*helloAnswer=*/{});
  ovix_client_type client = nullptr;
  EXPECT_EQ(tryOpen(client), OVIX_CLIENT_SERVICE_ERROR);
}

TEST_F(ClientTest, Open_IndicationRightBehindTheHello_IsDelivered) {
  Indications indications;
  const RawModem modem(path, RawModem::succeed,
                       RawModem::hello() + rawFrame(rawIndication, 0xA8, 0, profileChanged(1)));
  const Handle client = openClient(recordIndication, &indications);
  EXPECT_TRUE(indications.waitFor(1));
}

TEST_F(ClientTest, GetAnyService_WithAndWithoutModem_TellsWhich) {
  ovix_service_info info{};
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_SERVICE_ERROR);
  {
    const RawModem modem(path);
    EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_NO_ERROR);
  }
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_SERVICE_ERROR);
}

TEST_F(ClientTest, GetAnyService_NullArguments_AreRefused) {
  ovix_service_info info{};
  EXPECT_EQ(ovix_client_get_any_service(nullptr, &info), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), nullptr), OVIX_CLIENT_INVALID_ARGUMENT);
}

TEST_F(ClientTest, Hello_JoiningARunningModem_HasNotWaited) {
  RawModem modem(path);
  openClient();
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(0));
}

// The modem may be away between the search for the service and the opening, and no caller would try
// again.
TEST_F(ClientTest, Open_ModemComesMeanwhile_Succeeds) {
  ovix_client_type client = nullptr;
  auto opened = std::async(std::launch::async, [&] { return tryOpen(client); });
  const RawModem modem(path);
  EXPECT_EQ(opened.get(), OVIX_CLIENT_NO_ERROR);
  ovix_client_release(client);
}

TEST_F(ClientTest, Hello_AfterAFailedAttempt_HasWaitedOnce) {
  ovix_client_type client = nullptr;
  EXPECT_EQ(tryOpen(client), OVIX_CLIENT_SERVICE_ERROR);
  RawModem modem(path);
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(1));
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(0));
}

TEST_F(ClientTest, Hello_AfterALostConnection_HasWaited) {
  RawModem modem(path);
  Events errors;  // The record outlives the client, whose callbacks end with it.
  const Handle lost = openClient();
  ovix_client_register_error_cb(lost.get(), recordError, &errors);
  modem.lastPeer()->hangUp();
  ASSERT_TRUE(errors.waitFor(1));
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(1));
}

TEST_F(ClientTest, Hello_AfterARelease_HasNotWaited) {
  RawModem modem(path);
  openClient();
  Handle released = openClient();
  released.release();
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(0));
}

TEST_F(ClientTest, Hello_OfAProbe_SaysWhatItIsForAndForgetsNothing) {
  ovix_service_info info{};
  EXPECT_NE(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_NO_ERROR);
  RawModem modem(path);
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(modem.hellos().back(), u8(2));
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(1));
}

TEST_F(ClientTest, Open_ModemRefuses_AnswersItsCode) {
  for (const int code : {-7, -1, 1, 0x7FFFFFFF}) {
    SCOPED_TRACE(code);
    RawModem modem(path, RawModem::succeed, RawModem::refusal(code));
    ovix_client_type client = this;
    EXPECT_EQ(tryOpen(client), code);
    EXPECT_EQ(client, nullptr);
  }
  // A refused client has seen an absence of the service, so its next hello says so.
  RawModem modem(path);
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(1));
}

TEST_F(ClientTest, GetAnyService_ModemRefuses_AnswersItsCode) {
  const RawModem modem(path, RawModem::succeed, RawModem::refusal(-7));
  ovix_service_info info{};
  EXPECT_EQ(ovix_client_get_any_service(wdsService(), &info), -7);
}

TEST_F(ClientTest, Send_UnknownHandles_AreRefused) {
  const RawModem modem(path);
  Handle client = openClient();
  const ovix_client_type released = client.get();
  client.release();
  int nobody = 0;
  for (ovix_client_type handle : {ovix_client_type{nullptr}, released, ovix_client_type{&nobody},
                                  reinterpret_cast<ovix_client_type>(UINTPTR_MAX)}) {
    SCOPED_TRACE(handle);
    char buffer[16];
    EXPECT_EQ(sendDelete(handle, 1), OVIX_CLIENT_INVALID_HANDLE);
    EXPECT_EQ(ovix_client_register_error_cb(handle, recordError, nullptr),
              OVIX_CLIENT_INVALID_HANDLE);
    EXPECT_EQ(ovix_client_register_notify_cb(handle, recordNotification, nullptr),
              OVIX_CLIENT_INVALID_HANDLE);
    EXPECT_EQ(ovix_client_message_decode(handle, 2, 0xA8, buffer, 12, buffer, 16),
              OVIX_CLIENT_INVALID_HANDLE);
    EXPECT_EQ(ovix_client_release(handle), OVIX_CLIENT_INVALID_HANDLE);
  }
}

TEST_F(ClientTest, Send_HandleOfANotifier_IsRefused) {
  ovix_client_os_params params{};
  ovix_client_type notifier = nullptr;
  ASSERT_EQ(ovix_client_notifier_init(wdsService(), &params, &notifier), OVIX_CLIENT_NO_ERROR);
  const Handle owner(notifier);
  EXPECT_EQ(sendDelete(notifier, 1), OVIX_CLIENT_INVALID_HANDLE);
}

TEST_F(ClientTest, Send_WrongArguments_AreRefused) {
  RawModem modem(path);
  const Handle client = openClient();
  Bytes request(8);
  Bytes response(16);
  const auto send = [&](unsigned id, void* req, unsigned reqLen, void* resp, unsigned respLen) {
    return ovix_client_send_msg_sync(client.get(), id, req, reqLen, resp, respLen, longTimeoutMs);
  };
  const int refused = OVIX_CLIENT_INVALID_ARGUMENT;
  EXPECT_EQ(send(0x0029, nullptr, 8, response.data(), 16), refused);
  EXPECT_EQ(send(0x0029, request.data(), 8, nullptr, 16), refused);
  EXPECT_EQ(send(0x0029, request.data(), 7, response.data(), 16), refused);
  EXPECT_EQ(send(0x0029, request.data(), 9, response.data(), 16), refused);
  EXPECT_EQ(send(0x0029, request.data(), 8, response.data(), 8), refused);
  EXPECT_EQ(send(0x0029, request.data(), 8, response.data(), 17), refused);
  EXPECT_EQ(send(0x1234, request.data(), 8, response.data(), 16), refused);
  EXPECT_EQ(send(0x10029, request.data(), 8, response.data(), 16), refused);
  EXPECT_EQ(send(0x00A8, request.data(), 0, response.data(), 0), refused);
  EXPECT_TRUE(modem.requests().empty());
}

TEST_F(ClientTest, Send_Requests_CarryTransactionsThatDiffer) {
  RawModem modem(path);
  const Handle client = openClient();
  for (uint8_t i = 0; i < 3; ++i) {
    EXPECT_EQ(sendDelete(client.get(), i), OVIX_CLIENT_NO_ERROR);
  }
  const auto requests = modem.requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_NE(requests[0].transaction, 0u);
  EXPECT_NE(requests[0].transaction, requests[1].transaction);
  EXPECT_NE(requests[1].transaction, requests[2].transaction);
}

TEST_F(ClientTest, Send_ModemThatStaysSilent_TimesOutAndLeavesTheResponse) {
  const RawModem modem(path, RawModem::ignore);
  const Handle client = openClient();
  wds_delete_profile_resp_msg_v01 response{};
  response.resp.error = 55;
  const auto start = Clock::now();
  EXPECT_EQ(sendDelete(client.get(), 1, /*timeoutMs=*/40, &response), OVIX_CLIENT_TIMEOUT_ERROR);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(40));
  EXPECT_EQ(response.resp.error, 55);
}

TEST_F(ClientTest, Send_LateAnswer_IsNotTakenForTheNext) {
  std::vector<RawFrame> late;
  const RawModem modem(path, [&](RawPeer& peer, const RawFrame& request) {
    late.push_back(request);
    if (late.size() == 2) {
      peer.respond(late[0], result(1, 100));
      peer.respond(late[1], result(1, 200));
    }
  });
  const Handle client = openClient();
  wds_delete_profile_resp_msg_v01 response{};
  EXPECT_EQ(sendDelete(client.get(), 1, /*timeoutMs=*/10), OVIX_CLIENT_TIMEOUT_ERROR);
  EXPECT_EQ(sendDelete(client.get(), 2, longTimeoutMs, &response), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(response.resp.error, 200);
}

TEST_F(ClientTest, Send_AnswerTwice_CountsOnce) {
  const RawModem modem(path, [](RawPeer& peer, const RawFrame& request) {
    echoIndex(peer, request);
    echoIndex(peer, request);
  });
  const Handle client = openClient();
  for (uint8_t i = 1; i < 20; ++i) {
    wds_delete_profile_resp_msg_v01 response{};
    EXPECT_EQ(sendDelete(client.get(), i, longTimeoutMs, &response), OVIX_CLIENT_NO_ERROR);
    EXPECT_EQ(response.resp.error, i);
  }
}

TEST_F(ClientTest, Send_AnswerToAnotherMessage_IsRefused) {
  const RawModem modem(path, [](RawPeer& peer, const RawFrame& request) {
    peer.send(rawFrame(rawResponse, 0x0028, request.transaction, success()));
  });
  const Handle client = openClient();
  EXPECT_EQ(sendDelete(client.get(), 1), OVIX_CLIENT_DECODE_ERROR);
}

TEST_F(ClientTest, Send_FramesThatNoClientExpects_AreDropped) {
  const RawModem modem(path, [](RawPeer& peer, const RawFrame& request) {
    for (const unsigned kind : {rawRequest, rawControl, rawAnswer, rawHello}) {
      peer.send(rawFrame(kind, request.messageId, request.transaction, result(1, 9)));
    }
    peer.respond(request, success());
  });
  const Handle client = openClient();
  wds_delete_profile_resp_msg_v01 response{};
  EXPECT_EQ(sendDelete(client.get(), 1, longTimeoutMs, &response), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(response.resp.error, 0);
}

TEST_F(ClientTest, Send_AnswerInManyPieces_IsPutTogether) {
  const RawModem modem(path, [](RawPeer& peer, const RawFrame& request) {
    const Bytes whole =
        rawFrame(rawResponse, request.messageId, request.transaction, result(1, 42));
    for (const uint8_t byte : whole) {
      peer.send({byte});
    }
  });
  const Handle client = openClient();
  wds_delete_profile_resp_msg_v01 response{};
  EXPECT_EQ(sendDelete(client.get(), 1, longTimeoutMs, &response), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(response.resp.error, 42);
}

TEST_F(ClientTest, Send_AnswersToSeveralThreadsReversed_ReachTheirOwn) {
  constexpr size_t threadCount = 8;
  std::mutex mutex;
  std::vector<RawFrame> held;
  const RawModem modem(path, [&](RawPeer& peer, const RawFrame& request) {
    const std::lock_guard lock(mutex);
    held.push_back(request);
    if (held.size() == threadCount) {
      for (auto frame = held.rbegin(); frame != held.rend(); ++frame) {
        echoIndex(peer, *frame);
      }
    }
  });
  const Handle client = openClient();
  std::vector<std::thread> threads;
  for (uint8_t i = 0; i < threadCount; ++i) {
    threads.emplace_back([&client, i] {
      wds_delete_profile_resp_msg_v01 response{};
      EXPECT_EQ(sendDelete(client.get(), i, longTimeoutMs, &response), OVIX_CLIENT_NO_ERROR);
      EXPECT_EQ(response.resp.error, i);
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
}

TEST_F(ClientTest, Send_ManyThreadsManyTimes_AllGetTheirOwnAnswer) {
  RawModem modem(path, echoIndex);
  const Handle client = openClient();
  std::vector<std::thread> threads;
  for (unsigned thread = 0; thread < 6; ++thread) {
    threads.emplace_back([&client, thread] {
      for (unsigned i = 0; i < 200; ++i) {
        const auto index = static_cast<uint8_t>(thread * 40 + i % 40);
        wds_delete_profile_resp_msg_v01 response{};
        ASSERT_EQ(sendDelete(client.get(), index, longTimeoutMs, &response), OVIX_CLIENT_NO_ERROR);
        ASSERT_EQ(response.resp.error, index);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(modem.requests().size(), 1200u);
}

TEST_F(ClientTest, Send_ModemThatDoesNotRead_TimesOutInBoundedTime) {
  std::latch ended(1);
  const RawModem modem(path, [&](RawPeer&, const RawFrame&) { ended.wait(); });
  const Handle client = openClient();
  wds_configure_profile_event_list_req_msg_v01 request{};
  request.profile_event_list_valid = 1;
  request.profile_event_list_len = OVIX_WDS_EVENT_LIST_MAX_V01;
  wds_result_resp_msg_v01 response{};
  // The requests together are larger than any socket holds, so the writing itself has to wait at
  // some point. A frame that was written in part ends the connection.
  int error = OVIX_CLIENT_TIMEOUT_ERROR;
  for (int i = 0; i < 500 && error == OVIX_CLIENT_TIMEOUT_ERROR; ++i) {
    error = ovix_client_send_msg_sync(client.get(), OVIX_WDS_CONFIGURE_PROFILE_EVENT_LIST_REQ_V01,
                                      &request, sizeof request, &response, sizeof response,
                                      /*timeout_ms=*/1);
  }
  EXPECT_THAT(error, ::testing::AnyOf(OVIX_CLIENT_TIMEOUT_ERROR, OVIX_CLIENT_SERVICE_ERROR));
  ended.count_down();
}

struct BrokenStream {
  const char* name;
  Bytes bytes;
  bool hangsUp;
};

std::ostream& operator<<(std::ostream& out, const BrokenStream& broken) {
  return out << broken.name;
}

class BrokenStreamTest : public HostTest, public ::testing::WithParamInterface<BrokenStream> {};

TEST_P(BrokenStreamTest, Send_InsteadOfAnAnswer_FailsAtOnceAndTellsTheErrorOnce) {
  const RawModem modem(path, [](RawPeer& peer, const RawFrame&) {
    peer.send(GetParam().bytes);
    if (GetParam().hangsUp) {
      peer.hangUp();
    }
  });
  Events errors;
  Handle client = openClient();
  EXPECT_EQ(ovix_client_register_error_cb(client.get(), recordError, &errors),
            OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(sendDelete(client.get(), 1), OVIX_CLIENT_SERVICE_ERROR);
  EXPECT_EQ(sendDelete(client.get(), 1), OVIX_CLIENT_SERVICE_ERROR);
  ASSERT_TRUE(errors.waitFor(1));
  EXPECT_EQ(errors.all()[0].handle, client.get());
  EXPECT_EQ(errors.all()[0].code, OVIX_CLIENT_SERVICE_ERROR);
  EXPECT_NE(errors.all()[0].thread, std::this_thread::get_id());
  EXPECT_EQ(client.release(), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(errors.all().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Streams, BrokenStreamTest,
    ::testing::Values(
        BrokenStream{"the end", {}, true},
        BrokenStream{"the end inside a header", u32(8) + u8(rawResponse), true},
        BrokenStream{"the end inside a payload",
                     u32(100) + u8(rawResponse) + u8(1) + u16(0x29) + u32(1) + Bytes(99), true},
        BrokenStream{"a payload above the bound",
                     u32(65537) + u8(rawResponse) + u8(1) + u16(0x29) + u32(1), false},
        BrokenStream{"a length of all ones",
                     u32(0xFFFFFFFF) + u8(rawResponse) + u8(1) + u16(0x29) + u32(1), false},
        BrokenStream{"version 0", u32(0) + u8(rawResponse) + u8(0) + u16(0x29) + u32(1), false},
        BrokenStream{"version 2", u32(0) + u8(rawResponse) + u8(2) + u16(0x29) + u32(1), false},
        BrokenStream{"an unknown kind", u32(0) + u8(7) + u8(1) + u16(0x29) + u32(1), false},
        BrokenStream{"noise", Bytes(200, 0xA5), false}));

TEST_F(ClientTest, ErrorCallback_LossBeforeRegistration_IsToldAtRegistration) {
  RawModem modem(path);
  Events errors;  // The record outlives the client, whose callbacks end with it.
  const Handle client = openClient();
  modem.lastPeer()->hangUp();
  ASSERT_TRUE(waitUntil([&] { return sendDelete(client.get(), 1) != OVIX_CLIENT_NO_ERROR; }));
  EXPECT_EQ(ovix_client_register_error_cb(client.get(), recordError, &errors),
            OVIX_CLIENT_NO_ERROR);
  ASSERT_TRUE(errors.waitFor(1));
  EXPECT_NE(errors.all()[0].thread, std::this_thread::get_id());
}

TEST_F(ClientTest, ErrorCallback_ModemGoneWhileIdle_IsTold) {
  auto modem = std::make_unique<RawModem>(path);
  Events errors;  // The record outlives the client, whose callbacks end with it.
  const Handle client = openClient();
  ovix_client_register_error_cb(client.get(), recordError, &errors);
  modem.reset();
  EXPECT_TRUE(errors.waitFor(1));
}

TEST_F(ClientTest, ErrorCallback_Release_IsNoError) {
  const RawModem modem(path);
  Events errors;  // The record outlives the client, whose callbacks end with it.
  Handle client = openClient();
  ovix_client_register_error_cb(client.get(), recordError, &errors);
  client.release();
  EXPECT_TRUE(errors.all().empty());
}

TEST_F(ClientTest, ErrorCallback_Null_IsRefused) {
  const RawModem modem(path);
  const Handle client = openClient();
  EXPECT_EQ(ovix_client_register_error_cb(client.get(), nullptr, nullptr),
            OVIX_CLIENT_INVALID_ARGUMENT);
}

TEST_F(ClientTest, ErrorCallback_AfterIndications_ComesLast) {
  RawModem modem(path);
  std::vector<int> order;
  Gate gate;
  Indications indications;
  indications.inside = [&](const Indication&) {
    EXPECT_TRUE(gate.pass());
    order.push_back(1);
  };
  Events errors;
  errors.inside = [&](const Event&) { order.push_back(2); };
  Handle client = openClient(recordIndication, &indications);
  ovix_client_register_error_cb(client.get(), recordError, &errors);
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  modem.lastPeer()->indicate(0xA8, profileChanged(2));
  modem.lastPeer()->hangUp();
  ASSERT_TRUE(waitUntil([&] { return sendDelete(client.get(), 1) != OVIX_CLIENT_NO_ERROR; }));
  gate.open();
  ASSERT_TRUE(errors.waitFor(1));
  client.release();
  EXPECT_EQ(order, (std::vector<int>{1, 1, 2}));
}

TEST_F(ClientTest, Indication_Many_ArriveUndecodedInOrder) {
  RawModem modem(path);
  Indications indications;
  const Handle client = openClient(recordIndication, &indications);
  for (unsigned i = 0; i < 500; ++i) {
    modem.lastPeer()->indicate(i, Bytes(i % 50, static_cast<uint8_t>(i)));
  }
  ASSERT_TRUE(indications.waitFor(500));
  const auto all = indications.all();
  for (unsigned i = 0; i < 500; ++i) {
    EXPECT_EQ(all[i].handle, client.get());
    EXPECT_EQ(all[i].messageId, i);
    EXPECT_EQ(all[i].payload, Bytes(i % 50, static_cast<uint8_t>(i)));
  }
}

TEST_F(ClientTest, Indication_WithoutCallback_IsDropped) {
  RawModem modem(path, [](RawPeer& peer, const RawFrame& request) {
    peer.indicate(0xA8, profileChanged(1));
    peer.respond(request, success());
  });
  const Handle client = openClient();
  EXPECT_EQ(sendDelete(client.get(), 1), OVIX_CLIENT_NO_ERROR);
}

TEST_F(ClientTest, Indication_SlowCallback_HoldsUpNoRequest) {
  RawModem modem(path);
  Gate gate;
  Indications indications;
  indications.inside = [&](const Indication&) { EXPECT_TRUE(gate.pass()); };
  const Handle client = openClient(recordIndication, &indications);
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  ASSERT_TRUE(indications.waitFor(1));
  for (uint8_t i = 0; i < 10; ++i) {
    modem.lastPeer()->indicate(0xA8, profileChanged(2));
    EXPECT_EQ(sendDelete(client.get(), i), OVIX_CLIENT_NO_ERROR);
  }
  EXPECT_EQ(indications.all().size(), 1u);
  gate.open();
  EXPECT_TRUE(indications.waitFor(11));
}

// The modem indicates more than its client's callback has taken, because the callback waits at a
// gate.
class ClientFloodTest : public ClientTest {
 protected:
  static constexpr size_t waitingMax = 16384;

  ClientFloodTest() {
    indications.inside = [this](const Indication& indication) {
      if (indication.messageId == blocking) {
        EXPECT_TRUE(gates.at(passed++).pass());
      }
    };
  }

  // Returns when the library has taken all indications, queued behind one whose callback blocks.
  void flood(size_t count) {
    const size_t before = indications.all().size();
    modem.lastPeer()->indicate(blocking, {});
    ASSERT_TRUE(indications.waitFor(before + 1));
    for (size_t i = 0; i < count; ++i) {
      modem.lastPeer()->indicate(0xA8, u32(static_cast<uint32_t>(i)));
    }
    ASSERT_EQ(sendDelete(client.get(), 1), OVIX_CLIENT_NO_ERROR);
  }

  static constexpr unsigned blocking = 1;

  RawModem modem{path};
  std::array<Gate, 2> gates;
  size_t passed = 0;  // used by the callbacks' thread only
  Indications indications;
  Handle client = openClient(recordIndication, &indications);
};

TEST_F(ClientFloodTest, Indication_MoreThanMayWait_TheLastAreDroppedAndTheErrorIsTold) {
  Events errors;
  ovix_client_register_error_cb(client.get(), recordError, &errors);
  flood(waitingMax + 10);
  modem.lastPeer()->hangUp();
  ASSERT_TRUE(waitUntil([&] { return sendDelete(client.get(), 1) != OVIX_CLIENT_NO_ERROR; }));
  gates[0].open();
  EXPECT_TRUE(errors.waitFor(1));
  client.release();
  const auto all = indications.all();
  ASSERT_EQ(all.size(), 1 + waitingMax);
  EXPECT_EQ(all.back().payload, u32(waitingMax - 1));
}

TEST_F(ClientFloodTest, Indication_MoreThanMayWaitTwice_IsALineEach) {
  const ScopedVariable traced("OVIX_MODEM_TRACE", "1");
  const auto floodTwice = [this] {
    flood(waitingMax + 10);
    gates[0].open();
    EXPECT_TRUE(indications.waitFor(1 + waitingMax));
    flood(waitingMax + 1);
    std::_Exit(0);
  };
  EXPECT_EXIT(floodTwice(), ::testing::ExitedWithCode(0),
              "^(ovix: 16384 callbacks wait, indications are dropped\n){2}$");
}

TEST_F(ClientTest, Indication_CallbackThatSends_GetsItsAnswer) {
  RawModem modem(path);
  Indications indications;
  std::atomic<int> sent{-1};
  indications.inside = [&](const Indication& indication) {
    sent = sendDelete(indication.handle, 1);
  };
  Handle client = openClient(recordIndication, &indications);
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  ASSERT_TRUE(indications.waitFor(1));
  EXPECT_TRUE(waitUntil([&] { return sent == OVIX_CLIENT_NO_ERROR; }));
  client.release();
}

TEST_F(ClientTest, Indication_CallbackThread_BlocksAllSignals) {
  RawModem modem(path);
  Indications indications;
  std::atomic<int> blocked{0};
  indications.inside = [&](const Indication&) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    for (const int signal : {SIGINT, SIGTERM, SIGALRM, SIGCHLD, SIGUSR1, SIGPIPE}) {
      blocked += sigismember(&mask, signal);
    }
  };
  Handle client = openClient(recordIndication, &indications);
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  ASSERT_TRUE(indications.waitFor(1));
  client.release();
  EXPECT_EQ(blocked, 6);
  sigset_t own;
  pthread_sigmask(SIG_SETMASK, nullptr, &own);
  EXPECT_EQ(sigismember(&own, SIGUSR1), 0);
}

TEST_F(ClientTest, Release_Twice_IsRefusedTheSecondTime) {
  const RawModem modem(path);
  const ovix_client_type client = openClient().disown();
  EXPECT_EQ(ovix_client_release(client), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(ovix_client_release(client), OVIX_CLIENT_INVALID_HANDLE);
}

TEST_F(ClientTest, Release_Handles_AreNeverUsedAgain) {
  const RawModem modem(path);
  Handle first = openClient();
  const ovix_client_type number = first.get();
  first.release();
  EXPECT_NE(openClient().get(), number);
}

TEST_F(ClientTest, Release_DuringACallback_WaitsForItAndDropsTheRest) {
  RawModem modem(path);
  std::counting_semaphore<> permits(0);  // one permit for each callback
  std::atomic<bool> ended{false};
  Indications indications;
  indications.inside = [&](const Indication&) {
    EXPECT_TRUE(permits.try_acquire_for(patience()));
    ended = true;
  };
  const ovix_client_type client = openClient(recordIndication, &indications).disown();
  constexpr unsigned sent = 200;
  for (unsigned index = 1; index <= sent; ++index) {
    modem.lastPeer()->indicate(0xA8, profileChanged(index));
  }
  ASSERT_TRUE(indications.waitFor(1));
  auto release = std::async(std::launch::async, [&] {
    const int error = ovix_client_release(client);
    EXPECT_TRUE(ended);
    return error;
  });
  // The request fails as soon as the release is under way. The release has to wait now.
  ASSERT_TRUE(waitUntil([&] { return sendDelete(client, 1) != OVIX_CLIENT_NO_ERROR; }));
  EXPECT_EQ(release.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
  // More callbacks may begin before the release reaches the queue.
  ASSERT_TRUE(waitUntil([&] {
    permits.release();
    return release.wait_for(std::chrono::milliseconds(100)) == std::future_status::ready;
  }));
  EXPECT_EQ(release.get(), OVIX_CLIENT_NO_ERROR);
  EXPECT_LT(indications.all().size(), sent);
}

TEST_F(ClientTest, Release_InsideItsOwnCallback_DoesNotWaitForItself) {
  RawModem modem(path);
  std::atomic<int> released{1};
  Gate done;
  Indications indications;
  indications.inside = [&](const Indication& indication) {
    released = ovix_client_release(indication.handle);
    done.open();
  };
  const ovix_client_type client = openClient(recordIndication, &indications).disown();
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  modem.lastPeer()->indicate(0xA8, profileChanged(2));
  ASSERT_TRUE(done.pass());
  EXPECT_EQ(released, OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(sendDelete(client, 1), OVIX_CLIENT_INVALID_HANDLE);
  EXPECT_EQ(indications.all().size(), 1u);
}

TEST_F(ClientTest, Release_InsideTheErrorCallback_Works) {
  RawModem modem(path);
  Gate done;
  Events errors;
  errors.inside = [&](const Event& event) {
    EXPECT_EQ(ovix_client_release(event.handle), OVIX_CLIENT_NO_ERROR);
    done.open();
  };
  const ovix_client_type client = openClient().disown();
  ovix_client_register_error_cb(client, recordError, &errors);
  modem.lastPeer()->hangUp();
  EXPECT_TRUE(done.pass());
}

TEST_F(ClientTest, Release_InsideACallbackOfAnotherClient_Works) {
  RawModem modem(path);
  const ovix_client_type other = openClient().disown();
  Gate done;
  Indications indications;
  indications.inside = [&](const Indication&) {
    EXPECT_EQ(ovix_client_release(other), OVIX_CLIENT_NO_ERROR);
    done.open();
  };
  Handle client = openClient(recordIndication, &indications);
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  EXPECT_TRUE(done.pass());
  client.release();
}

TEST_F(ClientTest, Release_FromTwoThreadsDuringACallback_BothWait) {
  RawModem modem(path);
  Gate gate;
  std::atomic<bool> ended{false};
  Indications indications;
  indications.inside = [&](const Indication&) {
    EXPECT_TRUE(gate.pass());
    ended = true;
  };
  const ovix_client_type client = openClient(recordIndication, &indications).disown();
  modem.lastPeer()->indicate(0xA8, profileChanged(1));
  ASSERT_TRUE(indications.waitFor(1));
  const auto releaseIt = [&] {
    // The handle may be unknown to the second release when the first has ended.
    const int error = ovix_client_release(client);
    EXPECT_TRUE(ended) << error;
  };
  std::thread first(releaseIt);
  std::thread second(releaseIt);
  ASSERT_TRUE(waitUntil([&] { return sendDelete(client, 1) != OVIX_CLIENT_NO_ERROR; }));
  gate.open();
  first.join();
  second.join();
}

TEST_F(ClientTest, Release_WithARequestUnderWay_FailsIt) {
  RawModem modem(path, RawModem::ignore);
  const ovix_client_type client = openClient().disown();
  auto sent = std::async(std::launch::async, [&] { return sendDelete(client, 1); });
  ASSERT_TRUE(waitUntil([&] { return modem.requests().size() == 1; }));
  EXPECT_EQ(ovix_client_release(client), OVIX_CLIENT_NO_ERROR);
  EXPECT_EQ(sent.get(), OVIX_CLIENT_SERVICE_ERROR);
}

TEST_F(ClientTest, Release_UnderTraffic_IsCleanEveryTime) {
  RawModem modem(path, [](RawPeer& peer, const RawFrame& request) {
    peer.indicate(0xA8, profileChanged(1));
    peer.respond(request, success());
  });
  for (int round = 0; round < 50; ++round) {
    Indications indications;
    const ovix_client_type client = openClient(recordIndication, &indications).disown();
    std::thread sender([client] {
      while (sendDelete(client, 1) == OVIX_CLIENT_NO_ERROR) {
      }
    });
    ASSERT_TRUE(indications.waitFor(1));
    EXPECT_EQ(ovix_client_release(client), OVIX_CLIENT_NO_ERROR);
    const size_t count = indications.all().size();
    sender.join();
    EXPECT_EQ(indications.all().size(), count);
  }
}

TEST_F(ClientTest, Open_ManyClients_AreIndependent) {
  RawModem modem(path, echoIndex);
  std::vector<Handle> clients;
  for (int i = 0; i < 10; ++i) {
    clients.push_back(openClient());
  }
  clients.erase(clients.begin());
  for (const Handle& client : clients) {
    EXPECT_EQ(sendDelete(client.get(), 3), OVIX_CLIENT_NO_ERROR);
  }
}

}  // namespace
}  // namespace pavo::test
