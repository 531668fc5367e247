// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This file holds the main of every test program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <iostream>

namespace {

// Prints the seed, since the brief output lacks it; --gtest_random_seed repeats the order with it.
class OrderTeller : public testing::EmptyTestEventListener {
  void OnTestIterationStart(const testing::UnitTest& tests, int /*iteration*/) override {
    if (GTEST_FLAG_GET(shuffle)) {
      std::cout << "order of seed " << tests.random_seed() << std::endl;
    }
  }
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  // The programs have threads, so a death test runs itself in a fresh process, not in a fork.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // Without TZ, the C library reads the zone anew for every tzset, under a lock that the thread
  // sanitizer does not see.
  setenv("TZ", "UTC0", /*overwrite=*/0);
  testing::UnitTest::GetInstance()->listeners().Append(new OrderTeller);
  return RUN_ALL_TESTS();
}
