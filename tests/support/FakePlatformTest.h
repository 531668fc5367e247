// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// FakePlatformTest is the fixture of tests that run against the fake platform.
#pragma once

#include "FakePlatform.h"

#include <gtest/gtest.h>

namespace pavo::test {

// Starts each test with a healthy, empty platform and ends it with a check that the library kept
// the platform's rules. The check stands in the destructor so that the members of a derived
// fixture, a Manager for example, are gone by then.
class FakePlatformTest : public testing::Test {
 protected:
  FakePlatformTest() { platform.reset(); }
  ~FakePlatformTest() override {
    for (const std::string& misuse : platform.misuses()) {
      ADD_FAILURE() << "The library broke a rule of the platform: " << misuse;
    }
    EXPECT_EQ(platform.openClientCount(), 0U) << "clients that were not released";
    EXPECT_EQ(platform.armedNotifierCount(), 0U) << "notifiers that were not released";
  }

  FakePlatform& platform = FakePlatform::instance();
};

}  // namespace pavo::test
