// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/ProfileTable.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace modem {
namespace {

TEST(ProfileTable, Construct_CapacityOutOfRange_Throws) {
  EXPECT_THROW(ProfileTable(0), std::invalid_argument);
  EXPECT_THROW(ProfileTable(256), std::invalid_argument);
}

TEST(ProfileTable, Construct_ByDefault_Holds16) { EXPECT_EQ(ProfileTable().capacity(), 16u); }

TEST(ProfileTable, LowestFreeIndex_AfterAnErase_IsTheGap) {
  ProfileTable table(4);
  table.put(1, {});
  table.put(2, {});
  table.put(3, {});
  table.erase(2);
  EXPECT_EQ(table.lowestFreeIndex(), 2);
}

TEST(ProfileTable, LowestFreeIndex_LargestTableFull_IsNone) {
  ProfileTable table(255);
  for (unsigned index = 1; index <= 255; ++index) {
    ASSERT_EQ(table.lowestFreeIndex(), index);
    table.put(static_cast<uint8_t>(index), {});
  }
  EXPECT_EQ(table.lowestFreeIndex(), std::nullopt);
}

TEST(ProfileTable, Put_IndexThatIsNotFree_Throws) {
  ProfileTable table(2);
  table.put(1, {});
  EXPECT_THROW(table.put(1, {}), std::logic_error);
  EXPECT_THROW(table.put(0, {}), std::logic_error);
  EXPECT_THROW(table.put(3, {}), std::logic_error);
}

TEST(ProfileTable, Persistent_MixedTable_GivesThePersistentOnes) {
  ProfileTable table(4);
  table.put(1, {});
  table.put(2, Profile{.persistent = uint8_t{2}});
  table.put(3, Profile{.persistent = uint8_t{0}});
  ASSERT_EQ(persistentOf(table.all()).size(), 1u);
  EXPECT_TRUE(persistentOf(table.all()).contains(2));
}

}  // namespace
}  // namespace modem
