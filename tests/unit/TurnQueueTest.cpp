// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Deadline.h"
#include "ThreadState.h"
#include "TurnQueue.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

TEST(TurnQueueTest, Leave_OthersWait_TheyComeFirstInTheirOrder) {
  TurnQueue queue;
  std::vector<int> order;  // guarded by the turn
  std::vector<std::thread> waiters;
  queue.enter();
  for (int i = 0; i < 3; ++i) {
    std::atomic<int> id{0};
    waiters.emplace_back([&queue, &order, &id, i] {
      id = gettid();
      const Turn turn(queue);
      order.push_back(i);
    });
    EXPECT_TRUE(waitUntil([&] { return id != 0 && isAsleep(id); }));
  }
  queue.leave();
  // A thread that has just left queues behind the threads that came meanwhile.
  queue.enter();
  order.push_back(3);
  queue.leave();
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
}

TEST(TurnQueueTest, Enter_ManyThreads_OneInsideAtATime) {
  TurnQueue queue;
  int inside = 0;
  int visits = 0;
  bool isShared = false;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < 500; ++n) {
        const Turn turn(queue);
        isShared = isShared || ++inside != 1;
        ++visits;
        --inside;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_FALSE(isShared);
  EXPECT_EQ(visits, 8 * 500);
}

}  // namespace
}  // namespace pavo::test
