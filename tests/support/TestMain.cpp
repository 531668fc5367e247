// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The main of every test program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <iostream>

namespace {

// The order repeats with --gtest_random_seed; the brief output does not tell it.
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
  // The programs have threads: a death test runs itself in a fresh process, not in a fork.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // Without one, the C library reads the zone anew for every tzset, under a lock that the thread
  // sanitizer does not see.
  setenv("TZ", "UTC0", /*overwrite=*/0);
  testing::UnitTest::GetInstance()->listeners().Append(new OrderTeller);
  return RUN_ALL_TESTS();
}
