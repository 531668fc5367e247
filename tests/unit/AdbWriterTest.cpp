// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "AdbWriter.h"
#include "FakePlatformTest.h"

#include <gtest/gtest.h>

namespace pavo::test {
namespace {

class AdbWriterTest : public FakePlatformTest {
 protected:
  AdbWriter writer;
};

TEST_F(AdbWriterTest, ConvertPrio_AnyLevel_AndroidPriority) {
  const std::pair<int, int> cases[] = {{0, 2}, {1, 3}, {2, 4}, {3, 6}, {4, 7},
                                       {5, 4}, {6, 4}, {9, 4}, {-1, 4}};
  for (const auto& [level, priority] : cases) {
    EXPECT_EQ(writer.convertPrio(static_cast<LogLevel>(level)), priority) << level;
  }
}

TEST_F(AdbWriterTest, Write_AnyLevel_OneLineWithItsPriority) {
  for (int level = 0; level <= 6; ++level) {
    platform.clearCalls();
    writer.write(static_cast<LogLevel>(level), "tag", "message");
    const auto lines = platform.calls(FakePlatform::Kind::Log);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].priority, writer.convertPrio(static_cast<LogLevel>(level)));
    EXPECT_EQ(lines[0].tag, "tag");
    EXPECT_EQ(lines[0].message, "message");
  }
}

// The message is an argument of a constant format, so its own percent signs mean nothing.
TEST_F(AdbWriterTest, Write_PercentSignsInTheMessage_NotInterpreted) {
  writer.write(LogLevel::High, "PAVO", "100%s%n");
  const auto lines = platform.calls(FakePlatform::Kind::Log);
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].format, "%s");
  EXPECT_EQ(lines[0].message, "100%s%n");
}

TEST_F(AdbWriterTest, Write_NulInTheMessage_PartBeforeIt) {
  writer.write(LogLevel::High, "PAVO", std::string("before\0after", 12));
  EXPECT_EQ(platform.logMessages(), std::vector<std::string>{"before"});
}

TEST_F(AdbWriterTest, Write_EmptyOrLongMessage_Whole) {
  writer.write(LogLevel::High, "PAVO", "");
  writer.write(LogLevel::High, "PAVO", std::string(511, 'x'));
  EXPECT_EQ(platform.logMessages(), (std::vector<std::string>{"", std::string(511, 'x')}));
}

}  // namespace
}  // namespace pavo::test
