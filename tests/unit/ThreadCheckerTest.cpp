// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ThreadChecker.h"

#include <gtest/gtest.h>

#include <thread>

namespace pavo::test {
namespace {

TEST(ThreadCheckerTest, Check_OnOneThreadOtherThanTheBuilders_IsContent) {
  ThreadChecker checker;
  std::thread([&] {
    checker.check();
    checker.check();
  }).join();
}

#ifndef NDEBUG
TEST(ThreadCheckerTest, Check_OnASecondThread_EndsTheProcess) {
  ThreadChecker checker;
  checker.check();
  EXPECT_DEATH(std::thread([&] { checker.check(); }).join(), "get_id");
}
#endif

}  // namespace
}  // namespace pavo::test
