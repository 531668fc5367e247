// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Answers.h"
#include "RawClient.h"
#include "modem/client/ControlClient.h"
#include "modem/service/EmbeddedModem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace modem::test {
namespace {

TEST(EmbeddedModem, Connect_SeveralTimes_ReachesTheSameModem) {
  RawClient one{UniqueFd(connectEmbedded())};
  RawClient two{UniqueFd(connectEmbedded())};
  const auto boot = one.hello();
  ASSERT_TRUE(boot);
  EXPECT_EQ(two.hello(), boot);
  const Payload created = one.request(MessageId::CreateProfile, createRequest({.apn = "shared"}));
  const uint8_t index = createdIndexOf(created);
  EXPECT_EQ(settingsOf(two.request(MessageId::ProfileSettings, profileRequest(index))).apn,
            "shared");
  two.request(MessageId::DeleteProfile, profileRequest(index));
}

TEST(EmbeddedModem, Connect_ManyThreadsAtOnce_AllAreServed) {
  std::vector<std::thread> threads;
  std::atomic<int> served = 0;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&served] {
      RawClient client{UniqueFd(connectEmbedded())};
      served += client.hello().has_value() ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(served, 8);
}

TEST(EmbeddedModem, Control_QuitAndShow_QuitIsRefusedAndTheCapacityIsTheDefault) {
  ControlClient control(connectEmbedded());
  EXPECT_EQ(control.call("quit")["ok"], false);
  EXPECT_EQ(control.call("show")["capacity"], 16);
}

TEST(EmbeddedModem, Connect_CallersSignalMask_StaysAsItWas) {
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  UniqueFd connection(connectEmbedded());
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int signal = 1; signal < NSIG; ++signal) {
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
  }
}

}  // namespace
}  // namespace modem::test
