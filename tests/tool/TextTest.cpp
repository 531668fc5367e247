// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Text.h"

#include <gmock/gmock.h>

namespace pavoctl {
namespace {

using testing::ElementsAre;

TEST(Text, Printable_ControlCharacters_AreEscaped) {
  EXPECT_EQ(printable("a\nb\x1b[2J\x7f"), "a\\x0Ab\\x1B[2J\\x7F");
  EXPECT_EQ(printable("\xC2\x9B"
                      "1m"),
            "\\xC2\\x9B1m");
}

TEST(Text, Printable_OtherText_IsUnchanged) {
  EXPECT_EQ(printable("Zürich, \xFF ~"), "Zürich, \xFF ~");
  EXPECT_EQ(printable("\xC2"), "\xC2");
}

TEST(Text, LowerCase_NonAscii_IsUnchanged) { EXPECT_EQ(lowerCase("ÄBZ[@"), "Äbz[@"); }

TEST(Text, Split_Separators_KeepEmptyParts) {
  EXPECT_THAT(split("a,|b", ",|"), ElementsAre("a", "", "b"));
  EXPECT_THAT(split("", ","), ElementsAre(""));
}

TEST(Text, Trimmed_OnlyBlanks_IsEmpty) {
  EXPECT_EQ(trimmed(" \t\r\n"), "");
  EXPECT_EQ(trimmed(" a b "), "a b");
}

}  // namespace
}  // namespace pavoctl
