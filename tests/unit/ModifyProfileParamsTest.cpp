// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/ModifyProfileParams.h>

#include "SampleParams.h"

#include <gtest/gtest.h>

namespace pavo::test {
namespace {

TEST(ModifyProfileParamsTest, Construct_Default_NothingToChange) {
  ModifyProfileParams params;
  EXPECT_EQ(params.dump(), "");
  params.setPassword("x");
  EXPECT_EQ(params.dump(), "Password=x,");
}

TEST(ModifyProfileParamsTest, Construct_FromRecord_EverythingCopiedAndDumpedAlike) {
  for (const bool isPavo : {false, true}) {
    for (const bool isIA : {false, true}) {
      const ProfileParams record = everyAttribute(isPavo, isIA);
      const ModifyProfileParams params(record);
      EXPECT_EQ(params.getIsPavoProfile(), isPavo);
      EXPECT_EQ(params.getIsIAProfile(), isIA);
      EXPECT_EQ(params.dump(), everyAttributeText(isPavo, isIA));
      EXPECT_EQ(params.dump(), record.dump());
    }
  }
}

}  // namespace
}  // namespace pavo::test
