// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests check that the notifier reports when the modem comes, goes and comes back.
#include "HostTest.h"
#include "Recorder.h"

#include <atomic>
#include <future>
#include <memory>

namespace pavo::test {
namespace {

class NotifierTest : public HostTest {
 protected:
  static Handle makeNotifier() {
    ovix_client_os_params params{};
    ovix_client_type notifier = nullptr;
    EXPECT_EQ(ovix_client_notifier_init(wdsService(), &params, &notifier), OVIX_CLIENT_NO_ERROR);
    EXPECT_NE(notifier, nullptr);
    return Handle(notifier);
  }

  static void listen(const Handle& notifier, Events& events) {
    EXPECT_EQ(ovix_client_register_notify_cb(notifier.get(), recordNotification, &events),
              OVIX_CLIENT_NO_ERROR);
  }

  static std::vector<int> codes(Events& events) {
    std::vector<int> result;
    for (const Event& event : events.all()) {
      result.push_back(event.code);
    }
    return result;
  }

  static constexpr int came = OVIX_CLIENT_SERVICE_AVAILABLE;
  static constexpr int gone = OVIX_CLIENT_SERVICE_GONE;
};

TEST_F(NotifierTest, Init_NullArguments_AreRefused) {
  ovix_client_os_params params{};
  ovix_client_type notifier = nullptr;
  EXPECT_EQ(ovix_client_notifier_init(nullptr, &params, &notifier), OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(ovix_client_notifier_init(wdsService(), nullptr, &notifier),
            OVIX_CLIENT_INVALID_ARGUMENT);
  EXPECT_EQ(ovix_client_notifier_init(wdsService(), &params, nullptr),
            OVIX_CLIENT_INVALID_ARGUMENT);
}

TEST_F(NotifierTest, Register_NullCallback_IsRefused) {
  const Handle notifier = makeNotifier();
  EXPECT_EQ(ovix_client_register_notify_cb(notifier.get(), nullptr, nullptr),
            OVIX_CLIENT_INVALID_ARGUMENT);
}

TEST_F(NotifierTest, Register_HandleOfAClient_IsRefused) {
  const RawModem modem(path);
  const Handle client = openClient();
  EXPECT_EQ(ovix_client_register_notify_cb(client.get(), recordNotification, nullptr),
            OVIX_CLIENT_INVALID_HANDLE);
}

TEST_F(NotifierTest, Register_ModemIsThere_IsToldFromAnotherThread) {
  const RawModem modem(path);
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(events.waitFor(1));
  const Event event = events.all()[0];
  EXPECT_EQ(event.handle, notifier.get());
  EXPECT_EQ(event.code, came);
  EXPECT_NE(event.thread, std::this_thread::get_id());
}

TEST_F(NotifierTest, Register_ModemComesLater_IsTold) {
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  EXPECT_TRUE(events.all().empty());
  const RawModem modem(path);
  EXPECT_TRUE(events.waitFor(1));
  EXPECT_EQ(codes(events), (std::vector<int>{came}));
}

TEST_F(NotifierTest, Register_WhatListensIsNoModem_IsNotTold) {
  auto wrong = std::make_unique<RawModem>(path, RawModem::succeed, Bytes(12, 0xFF));
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  // The notifier has tried more than once.
  ASSERT_TRUE(waitUntil([&] { return wrong->hellos().size() >= 3; }));
  EXPECT_TRUE(events.all().empty());
  wrong.reset();
  const RawModem modem(path);
  EXPECT_TRUE(events.waitFor(1));
}

TEST_F(NotifierTest, Register_ModemRefuses_IsToldWhenItNoLongerDoes) {
  auto refusing = std::make_unique<RawModem>(path, RawModem::succeed, RawModem::refusal(-2));
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(waitUntil([&] { return refusing->hellos().size() >= 3; }));
  EXPECT_EQ(refusing->hellos().back(), u8(4));
  EXPECT_TRUE(events.all().empty());
  refusing.reset();
  const RawModem modem(path);
  ASSERT_TRUE(events.waitFor(1));
  EXPECT_EQ(codes(events), (std::vector<int>{came}));
}

TEST_F(NotifierTest, Watch_VariableNamesAnotherModemMeanwhile_StaysWithItsOwn) {
  auto refusing = std::make_unique<RawModem>(path, RawModem::succeed, RawModem::refusal(-2));
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(waitUntil([&] { return !refusing->hellos().empty(); }));
  const std::string elsewhere = folder.file("another");
  RawModem another(elsewhere);
  const ScopedVariable changed("OVIX_MODEM", elsewhere.c_str());
  const size_t before = refusing->hellos().size();
  ASSERT_TRUE(waitUntil([&] { return refusing->hellos().size() >= before + 3; }));
  refusing.reset();
  const RawModem modem(path);
  ASSERT_TRUE(events.waitFor(1));
  EXPECT_TRUE(another.hellos().empty());
}

TEST_F(NotifierTest, Register_ModemGoesAndReturns_IsToldOfEach) {
  auto modem = std::make_unique<RawModem>(path);
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(events.waitFor(1));
  for (size_t round = 1; round <= 3; ++round) {
    modem.reset();
    ASSERT_TRUE(events.waitFor(2 * round));
    modem = std::make_unique<RawModem>(path);
    ASSERT_TRUE(events.waitFor(2 * round + 1));
  }
  EXPECT_EQ(codes(events), (std::vector<int>{came, gone, came, gone, came, gone, came}));
}

TEST_F(NotifierTest, Register_ModemTalksToIt_IsStillConnected) {
  RawModem modem(path);
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(events.waitFor(1));
  for (unsigned i = 0; i < 1000; ++i) {
    ASSERT_TRUE(modem.lastPeer()->indicate(0xA8, Bytes(100)));
  }
  modem.lastPeer()->hangUp();
  ASSERT_TRUE(events.waitFor(3));
  EXPECT_EQ(codes(events), (std::vector<int>{came, gone, came}));
}

TEST_F(NotifierTest, Register_Again_TellsTheNewCallbackAtOnce) {
  const RawModem modem(path);
  Events first;
  Events second;
  const Handle notifier = makeNotifier();
  listen(notifier, first);
  ASSERT_TRUE(first.waitFor(1));
  listen(notifier, second);
  ASSERT_TRUE(second.waitFor(1));
  EXPECT_EQ(codes(first), (std::vector<int>{came}));
}

TEST_F(NotifierTest, Callback_SlowOne_MissesNoEvent) {
  auto modem = std::make_unique<RawModem>(path);
  Gate gate;
  Events events;
  events.inside = [&](const Event&) { EXPECT_TRUE(gate.pass()); };
  Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(events.waitFor(1));
  modem.reset();
  modem = std::make_unique<RawModem>(path);
  ASSERT_TRUE(waitUntil([&] { return !modem->hellos().empty(); }));
  EXPECT_EQ(events.all().size(), 1u);
  gate.open();
  ASSERT_TRUE(events.waitFor(3));
  EXPECT_EQ(codes(events), (std::vector<int>{came, gone, came}));
  notifier.release();
}

TEST_F(NotifierTest, Callback_OpensAClientAndReleasesTheNotifier_Works) {
  const RawModem modem(path);
  Gate done;
  std::atomic<int> sent{-1};
  Events events;
  events.inside = [&](const Event& event) {
    EXPECT_EQ(ovix_client_release(event.handle), OVIX_CLIENT_NO_ERROR);
    sent = sendDelete(openClient().get(), 1);
    done.open();
  };
  Handle notifier = makeNotifier();
  listen(notifier, events);
  notifier.disown();
  ASSERT_TRUE(done.pass());
  EXPECT_EQ(sent, OVIX_CLIENT_NO_ERROR);
}

TEST_F(NotifierTest, Release_DuringACallback_WaitsForIt) {
  const RawModem modem(path);
  Gate gate;
  std::atomic<bool> ended{false};
  Events events;
  events.inside = [&](const Event&) {
    EXPECT_TRUE(gate.pass());
    ended = true;
  };
  Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(events.waitFor(1));
  auto release = std::async(std::launch::async, [&] {
    EXPECT_EQ(notifier.release(), OVIX_CLIENT_NO_ERROR);
    EXPECT_TRUE(ended);
  });
  gate.open();
  release.get();
}

TEST_F(NotifierTest, Release_WithoutModem_DoesNotWaitForOne) {
  Events events;
  Handle notifier = makeNotifier();
  listen(notifier, events);
  EXPECT_EQ(notifier.release(), OVIX_CLIENT_NO_ERROR);
  const RawModem modem(path);
  EXPECT_TRUE(events.all().empty());
}

TEST_F(NotifierTest, Release_WhileTheModemOwesItsHello_IsAtOnce) {
  RawModem modem(path, RawModem::succeed, /*helloAnswer=*/{});
  Events events;
  Handle notifier = makeNotifier();
  listen(notifier, events);
  ASSERT_TRUE(waitUntil([&] { return !modem.hellos().empty(); }));
  EXPECT_EQ(notifier.release(), OVIX_CLIENT_NO_ERROR);
}

TEST_F(NotifierTest, Release_NeverRegistered_Works) {
  Handle notifier = makeNotifier();
  EXPECT_EQ(notifier.release(), OVIX_CLIENT_NO_ERROR);
}

TEST_F(NotifierTest, Release_RightAfterRegistration_IsCleanEveryTime) {
  const RawModem modem(path);
  for (int round = 0; round < 50; ++round) {
    Events events;
    Handle notifier = makeNotifier();
    listen(notifier, events);
    EXPECT_EQ(notifier.release(), OVIX_CLIENT_NO_ERROR);
    const size_t count = events.all().size();
    EXPECT_LE(count, 1u);
  }
}

TEST_F(NotifierTest, Hello_OfAClientAfterTheNotifierWaited_SaysSo) {
  Events events;
  const Handle notifier = makeNotifier();
  listen(notifier, events);
  // The probe below fails for the same reason for which the notifier waits.
  ovix_service_info info{};
  EXPECT_NE(ovix_client_get_any_service(wdsService(), &info), OVIX_CLIENT_NO_ERROR);
  RawModem modem(path);
  ASSERT_TRUE(events.waitFor(1));
  openClient();
  EXPECT_EQ(modem.hellos().back(), u8(1));
}

}  // namespace
}  // namespace pavo::test
