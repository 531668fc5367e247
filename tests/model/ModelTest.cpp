// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests run two hundred random sequences of three hundred steps each (a tenth of the
// sequences in builds with a sanitizer). They are ten tests so that they run side by side.
#include "Driver.h"
#include "system/Stress.h"

#include <gtest/gtest.h>

#include <iostream>

namespace pavo::test::model {
namespace {

constexpr int seeds = rounds(200);
constexpr int tests = 10;
constexpr std::size_t stepsPerSeed = 300;
constexpr int waitingPercent = 2;

class ModelTest : public testing::TestWithParam<int> {};

TEST_P(ModelTest, RandomSteps_AnySeed_LibraryAndModemAreAsTheModelSays) {
  Counts counts;
  for (int seed = GetParam(); seed < seeds; seed += tests) {
    const std::string difference =
        check(static_cast<std::uint64_t>(seed), stepsPerSeed, waitingPercent, counts);
    ASSERT_EQ(difference, "");
  }
  std::cout << "model: " << textOf(counts) << "\n";
}

INSTANTIATE_TEST_SUITE_P(Seeds, ModelTest, testing::Range(0, tests));

}  // namespace
}  // namespace pavo::test::model
