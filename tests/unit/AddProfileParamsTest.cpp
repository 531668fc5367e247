// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/AddProfileParams.h>

#include "SampleParams.h"

#include <gtest/gtest.h>

namespace pavo::test {
namespace {

struct FlagsCase {
  bool isPersistent;
  bool isIA;
  const char* text;
};

TEST(AddProfileParamsTest, Construct_FlagsOnly_InitialAttachPresentAndNothingElse) {
  const FlagsCase cases[] = {{false, false, " persist=0: IsIAProfile=0,"},
                             {false, true, " persist=0: IsIAProfile=1,"},
                             {true, false, " persist=1: IsIAProfile=0,"},
                             {true, true, " persist=1: IsIAProfile=1,"}};
  for (const FlagsCase& c : cases) {
    const AddProfileParams params(c.isPersistent, c.isIA);
    EXPECT_EQ(params.getIsPersistent(), c.isPersistent) << c.text;
    EXPECT_EQ(params.getIsIAProfile(), c.isIA) << c.text;
    EXPECT_FALSE(params.getIsPavoProfile()) << c.text;
    EXPECT_EQ(params.dump(), c.text);
  }
}

TEST(AddProfileParamsTest, Construct_FromRecord_EveryAttributeCopied) {
  const AddProfileParams params(everyAttribute(/*isPavo=*/true, /*isIA=*/false),
                                /*isPersistent=*/false, /*isIAProfile=*/true);
  EXPECT_FALSE(params.getIsPersistent());
  EXPECT_TRUE(params.getIsPavoProfile());
  EXPECT_EQ(params.dump(), " persist=0: " + everyAttributeText(true, true));
}

TEST(AddProfileParamsTest, Construct_FromInitialAttachRecord_FlagOverwritten) {
  const AddProfileParams params(everyAttribute(/*isPavo=*/false, /*isIA=*/true),
                                /*isPersistent=*/true, /*isIAProfile=*/false);
  EXPECT_TRUE(params.getIsPersistent());
  EXPECT_FALSE(params.getIsIAProfile());
  EXPECT_EQ(params.dump(), " persist=1: " + everyAttributeText(false, false));
}

TEST(AddProfileParamsTest, Dump_SomeAttributes_PersistenceThenThese) {
  AddProfileParams params(/*isPersistent=*/true, /*isIAProfile=*/false);
  params.setApnName("ims");
  params.setApnTypesMask(IMS);
  EXPECT_EQ(params.dump(), " persist=1: ApnName=ims,ApnTypesMask=IMS|,IsIAProfile=0,");
}

TEST(AddProfileParamsTest, Copy_Any_PersistenceAndAttributesCopied) {
  const AddProfileParams params(everySettableAttribute(), /*isPersistent=*/true,
                                /*isIAProfile=*/true);
  const AddProfileParams constructed(params);
  AddProfileParams assigned(/*isPersistent=*/false, /*isIAProfile=*/false);
  assigned = params;
  EXPECT_EQ(constructed.dump(), params.dump());
  EXPECT_EQ(assigned.dump(), params.dump());
}

}  // namespace
}  // namespace pavo::test
