// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/server/LineLimit.h"

#include <gtest/gtest.h>

namespace modem {
namespace {

using std::chrono::milliseconds;

TEST(LineLimit, Admit_WithinASecond_OnlyTheFirstThenTheNumberOfTheOthers) {
  LineLimit limit;
  const LineLimit::Clock::time_point start{};
  EXPECT_EQ(limit.admit("first", start), "first");
  EXPECT_EQ(limit.admit("second", start + milliseconds(1)), std::nullopt);
  EXPECT_EQ(limit.admit("third", start + milliseconds(999)), std::nullopt);
  EXPECT_EQ(limit.admit("fourth", start + milliseconds(1000)),
            "fourth (2 such lines left out before)");
  EXPECT_EQ(limit.admit("fifth", start + milliseconds(1999)), std::nullopt);
}

TEST(LineLimit, Admit_OneASecond_AllAsTheyAre) {
  LineLimit limit;
  const LineLimit::Clock::time_point start{};
  EXPECT_EQ(limit.admit("first", start), "first");
  EXPECT_EQ(limit.admit("second", start + milliseconds(1000)), "second");
  EXPECT_EQ(limit.admit("third", start + milliseconds(2000)), "third");
}

}  // namespace
}  // namespace modem
