// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/FilterProfileParams.h>

#include "SampleParams.h"

#include <gtest/gtest.h>

namespace pavo::test {
namespace {

TEST(FilterProfileParamsTest, Construct_Default_NothingToMatch) {
  const FilterProfileParams params;
  EXPECT_EQ(params.getFilterMatchCriteria(), 0U);
  EXPECT_FALSE(params.hasFilterByProfileId());
  EXPECT_EQ(params.getFilterByProfileId(), 0);
  EXPECT_FALSE(params.hasFilterByIsPavoProfile());
  EXPECT_FALSE(params.hasFilterByIsIAProfile());
  EXPECT_EQ(params.dump(), "None: ");
}

TEST(FilterProfileParamsTest, Construct_FromRecord_AttributesAndFlagsButNoCriteriaOrId) {
  const FilterProfileParams params(everyAttribute(/*isPavo=*/true, /*isIA=*/false));
  EXPECT_EQ(params.getFilterMatchCriteria(), 0U);
  EXPECT_FALSE(params.hasFilterByProfileId());
  EXPECT_TRUE(params.hasFilterByIsPavoProfile());
  EXPECT_TRUE(params.getIsPavoProfile());
  EXPECT_TRUE(params.hasFilterByIsIAProfile());
  EXPECT_FALSE(params.getIsIAProfile());
  EXPECT_EQ(params.dump(), "None: " + everyAttributeText(true, false));
}

TEST(FilterProfileParamsTest, SetProfileId_Any_PresentAlsoWhenZeroOrNegative) {
  for (const int id : {3, 0, -1, 256}) {
    FilterProfileParams params;
    params.setFilterByProfileId(id);
    EXPECT_TRUE(params.hasFilterByProfileId()) << id;
    EXPECT_EQ(params.getFilterByProfileId(), id);
    EXPECT_EQ(params.dump(), "None: id=" + std::to_string(id) + ",");
  }
}

TEST(FilterProfileParamsTest, SetFlag_False_PresentAllTheSame) {
  FilterProfileParams byPavo;
  byPavo.setFilterByIsPavoProfile(false);
  EXPECT_TRUE(byPavo.hasFilterByIsPavoProfile());
  EXPECT_FALSE(byPavo.getIsPavoProfile());
  EXPECT_FALSE(byPavo.hasFilterByIsIAProfile());
  EXPECT_EQ(byPavo.dump(), "None: IsPavoProfile=0,");

  FilterProfileParams byIA;
  byIA.setFilterByIsIAProfile(false);
  EXPECT_TRUE(byIA.hasFilterByIsIAProfile());
  EXPECT_FALSE(byIA.getIsIAProfile());
  EXPECT_FALSE(byIA.hasFilterByIsPavoProfile());
  EXPECT_EQ(byIA.dump(), "None: IsIAProfile=0,");
}

TEST(FilterProfileParamsTest, SetFlag_True_ReadThroughTheBase) {
  FilterProfileParams params;
  params.setFilterByIsPavoProfile(true);
  params.setFilterByIsIAProfile(true);
  EXPECT_TRUE(params.getIsPavoProfile());
  EXPECT_TRUE(params.getIsIAProfile());
  EXPECT_EQ(params.dump(), "None: IsPavoProfile=1,IsIAProfile=1,");
}

TEST(FilterProfileParamsTest, AddCriteria_SeveralTimes_BitsCollected) {
  FilterProfileParams params;
  params.addFilterMatchCriteria(ApnNameSubset);
  params.addFilterMatchCriteria(ApnNameSubset | HomeIPSuperset);
  EXPECT_EQ(params.getFilterMatchCriteria(), 0x14U);
  params.addFilterMatchCriteria(0x80000000);
  EXPECT_EQ(params.getFilterMatchCriteria(), 0x80000014U);
}

TEST(FilterProfileParamsTest, RemoveCriteria_SetOrUnsetBits_OnlySetOnesCleared) {
  FilterProfileParams params;
  params.addFilterMatchCriteria(ApnNameSubset | HomeIPSuperset);
  params.removeFilterMatchCriteria(RoamIPSubset);
  EXPECT_EQ(params.getFilterMatchCriteria(), 0x14U);
  params.removeFilterMatchCriteria(ApnNameSubset | RoamIPSuperset);
  EXPECT_EQ(params.getFilterMatchCriteria(), 0x10U);
  params.removeFilterMatchCriteria(0xFFFFFFFF);
  EXPECT_EQ(params.getFilterMatchCriteria(), 0U);
}

TEST(FilterProfileParamsTest, Dump_CriteriaIdAndAttributes_InThisOrder) {
  FilterProfileParams params;
  params.setApnName("internet");
  params.addFilterMatchCriteria(ApnNameSubset);
  EXPECT_EQ(params.dump(), "ApnNameSubset|: ApnName=internet,");
  params.setFilterByProfileId(3);
  EXPECT_EQ(params.dump(), "ApnNameSubset|: id=3,ApnName=internet,");
}

TEST(FilterProfileParamsTest, Dump_ThroughTheBase_TextOfTheFilter) {
  const FilterProfileParams params;
  const ProfileParams& base = params;
  EXPECT_EQ(base.dump(), "None: ");
}

TEST(FilterProfileParamsTest, Copy_Any_CriteriaIdAndAttributesCopied) {
  FilterProfileParams params(everyAttribute(/*isPavo=*/false, /*isIA=*/true));
  params.addFilterMatchCriteria(RoamIPSubset);
  params.setFilterByProfileId(9);
  const FilterProfileParams constructed(params);
  FilterProfileParams assigned;
  assigned = params;
  EXPECT_EQ(constructed.dump(), "RoamIPSubset|: id=9," + everyAttributeText(false, true));
  EXPECT_EQ(assigned.dump(), constructed.dump());
}

}  // namespace
}  // namespace pavo::test
