// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/Manager.h>

#include "Aliases.h"
#include "DiagWriter.h"
#include "FakePlatformTest.h"
#include "LogWrapper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>

namespace pavo::test {
namespace {

// Returns the calls of the diagnostic channel, one line each, with the Android log's lines only on
// request.
Lines channelCalls(bool withAndroidLog = false) {
  Lines calls;
  for (const PlatformCall& call : FakePlatform::instance().calls()) {
    if (call.kind == FakePlatform::Kind::DiagInit) {
      calls.emplace_back("open");
    } else if (call.kind == FakePlatform::Kind::DiagDeInit) {
      calls.emplace_back("close");
    } else if (call.kind == FakePlatform::Kind::DiagMessage) {
      calls.push_back("diag " + call.message);
    } else if (call.kind == FakePlatform::Kind::Log && withAndroidLog) {
      calls.push_back("android " + call.message);
    }
  }
  return calls;
}

// Prints the masks of the messages and the opening and closing of the channel, for a process that
// ends.
void printChannel() {
  for (const PlatformCall& call : FakePlatform::instance().calls()) {
    if (call.kind == FakePlatform::Kind::DiagInit) {
      std::fprintf(stderr, "open\n");
    } else if (call.kind == FakePlatform::Kind::DiagDeInit) {
      std::fprintf(stderr, "close\n");
    } else if (call.kind == FakePlatform::Kind::DiagMessage) {
      std::fprintf(stderr, "%d %s\n", call.priority, call.message.c_str());
    }
  }
}

// No writer is installed before or after a test, whatever an earlier test has left.
class DiagWriterTest : public FakePlatformTest {
 protected:
  void SetUp() override {
    LogWrapper::getInstance().setLogWriter(nullptr);
    platform.clearCalls();
  }
  void TearDown() override { LogWrapper::getInstance().setLogWriter(nullptr); }

  // Waits until the worker has written the last line of its start and is done with the writer. A
  // call that goes through the worker afterwards shows the latter.
  bool waitUntilQuiet(Manager& manager) {
    const bool isLastLine = platform.waitFor([] {
      const Lines calls = channelCalls();
      return std::find(calls.begin(), calls.end(),
                       "diag OvixWdsProxy config register request successful!") != calls.end();
    });
    manager.getProfile(nullptr);
    return isLastLine;
  }
};

TEST_F(DiagWriterTest, ConvertPrio_AnyLevel_MaskOfTheChannel) {
  const std::pair<int, int> cases[] = {{0, 1}, {1, 1}, {2, 1}, {3, 4}, {4, 16},
                                       {5, 4}, {6, 1}, {9, 1}, {-1, 1}};
  DiagWriter writer;
  for (const auto& [level, mask] : cases) {
    EXPECT_EQ(writer.convertPrio(static_cast<LogLevel>(level)), mask) << level;
  }
}

// The channel has five levels only.
TEST_F(DiagWriterTest, Write_LevelThatTheChannelDoesNotKnow_Nothing) {
  class Unknown : public DiagWriter {
    int convertPrio(LogLevel) override { return 0x20; }
  };
  Unknown writer;
  writer.write(LogLevel::High, "PAVO", "message");
  EXPECT_TRUE(platform.calls(FakePlatform::Kind::DiagMessage).empty());
}

TEST_F(DiagWriterTest, Construct_Any_ChannelOpenForAsLongAsItExists) {
  {
    DiagWriter writer;
    EXPECT_EQ(channelCalls(), Lines{"open"});
    EXPECT_EQ(platform.calls(FakePlatform::Kind::DiagInit)[0].handle, nullptr);
    writer.write(LogLevel::High, "PAVO", "message");
  }
  EXPECT_EQ(channelCalls(), (Lines{"open", "diag message", "close"}));
}

TEST_F(DiagWriterTest, Write_EveryLevel_MessageWithTheFixedDescriptor) {
  DiagWriter first;
  DiagWriter second;
  for (int level = 0; level <= 6; ++level) {
    first.write(static_cast<LogLevel>(level), "PAVO", "first %s");
    second.write(static_cast<LogLevel>(level), "tag", "second");
  }
  const auto messages = platform.calls(FakePlatform::Kind::DiagMessage);
  ASSERT_EQ(messages.size(), 14U);
  EXPECT_EQ(messages[0].tag, "PAVO");
  EXPECT_EQ(messages[0].message, "first %s");
  EXPECT_EQ(messages[1].tag, "tag");
  EXPECT_EQ(messages[1].message, "second");
  const diag_msg_descriptor* const descriptor = messages[0].descriptor;
  EXPECT_EQ(descriptor->line, 118);
  EXPECT_EQ(descriptor->ss_id, 63);
  EXPECT_STREQ(descriptor->format, "|%s| %s");
  EXPECT_TRUE(std::string(descriptor->file).ends_with("src/LocalLogBuffer.cpp"));
  for (const PlatformCall& call : messages) {
    EXPECT_EQ(call.descriptor, descriptor);
    EXPECT_EQ(call.priority, messages[0].priority);
  }
}

TEST_F(DiagWriterTest, Write_NulInTheMessage_PartBeforeIt) {
  DiagWriter writer;
  writer.write(LogLevel::High, "PAVO", std::string("before\0after", 12));
  EXPECT_EQ(platform.calls(FakePlatform::Kind::DiagMessage).at(0).message, "before");
}

TEST_F(DiagWriterTest, Init_DiagnosticChannel_OpenedBeforeTheFirstLineAndEveryLineGoesThere) {
  Manager manager;
  manager.init(/*subscription=*/3, /*useAndroidLog=*/false);
  ASSERT_TRUE(platform.waitForRegistration());
  manager.filter(FilterProfileParams());
  const Lines calls = channelCalls();
  ASSERT_GE(calls.size(), 2U);
  EXPECT_EQ(calls[0], "open");
  EXPECT_EQ(calls[1], "diag Manager::init(3)");
  EXPECT_EQ(platform.count(FakePlatform::Kind::DiagInit), 1U);
  EXPECT_EQ(platform.count(FakePlatform::Kind::DiagDeInit), 0U);
  EXPECT_EQ(platform.logLines().size(), 0U);
  for (const PlatformCall& call : platform.calls(FakePlatform::Kind::DiagMessage)) {
    EXPECT_EQ(call.tag, "PAVO") << call.message;
  }
  EXPECT_THAT(calls, testing::Contains("diag Manager::filter < Filter Success "));
}

TEST_F(DiagWriterTest, Init_SecondTime_NewChannelBeforeTheOldIsClosedAndThenTheLine) {
  Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/false);
  ASSERT_TRUE(waitUntilQuiet(manager));
  platform.clearCalls();
  manager.init(/*subscription=*/1, /*useAndroidLog=*/false);
  const Lines calls = channelCalls();
  ASSERT_GE(calls.size(), 3U);
  EXPECT_EQ(Lines(calls.begin(), calls.begin() + 3),
            (Lines{"open", "close", "diag Manager::init(1)"}));
  EXPECT_EQ(platform.count(FakePlatform::Kind::DiagInit), 1U);
  EXPECT_EQ(platform.count(FakePlatform::Kind::DiagDeInit), 1U);
}

TEST_F(DiagWriterTest, Init_AndroidLogSecond_ChannelClosedOnceBeforeTheLine) {
  Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/false);
  ASSERT_TRUE(waitUntilQuiet(manager));
  platform.clearCalls();
  manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
  const Lines calls = channelCalls(/*withAndroidLog=*/true);
  ASSERT_GE(calls.size(), 2U);
  EXPECT_EQ(Lines(calls.begin(), calls.begin() + 2), (Lines{"close", "android Manager::init(1)"}));
  EXPECT_EQ(platform.count(FakePlatform::Kind::DiagDeInit), 1U);
}

// The mask of the first message and the end of the channel occur once per process. Each of these
// tests therefore needs a process of its own, in which nothing has been logged before.
class DiagWriterProcessTest : public FakePlatformTest {};

TEST_F(DiagWriterProcessTest, Write_FirstMessageLow_EveryLaterOneLow) {
  const auto scenario = [] {
    DiagWriter writer;
    writer.write(LogLevel::Debug, "PAVO", "debug");
    writer.write(LogLevel::Error, "PAVO", "error");
    DiagWriter another;
    another.write(LogLevel::Fatal, "PAVO", "fatal");
    printChannel();
    std::fflush(stderr);
    std::_Exit(0);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0),
              testing::StrEq("open\n1 debug\n1 error\nopen\n1 fatal\n"));
}

TEST_F(DiagWriterProcessTest, Init_FirstLineHigh_EveryLineHigh) {
  const auto scenario = [] {
    Manager manager;
    manager.init(/*subscription=*/0, /*useAndroidLog=*/false);
    FakePlatform::instance().waitForRegistration();
    manager.filter(FilterProfileParams());
    const auto messages = FakePlatform::instance().calls(FakePlatform::Kind::DiagMessage);
    std::set<int> masks;
    std::set<const void*> descriptors;
    for (const PlatformCall& call : messages) {
      masks.insert(call.priority);
      descriptors.insert(call.descriptor);
    }
    const bool isRight = messages.size() > 10 && masks == std::set<int>{4} &&
                         descriptors.size() == 1 && messages[0].message == "Manager::init(0)";
    std::_Exit(isRight ? 0 : 1);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0), "");
}

TEST_F(DiagWriterProcessTest, Exit_WriterInstalled_ChannelClosed) {
  const auto scenario = [] {
    std::atexit(printChannel);  // It is registered first, so it runs last.
    LogWrapper::getInstance().setLogWriter(std::make_unique<DiagWriter>());
    LogWrapper::log(LogLevel::Error, "PAVO", "message");
    std::exit(0);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0), testing::StrEq("open\n4 message\nclose\n"));
}

TEST_F(DiagWriterProcessTest, Exit_ProcessWideManagerRunning_ItsLastLinesAndThenTheChannelClosed) {
  const auto scenario = [] {
    std::atexit(printChannel);
    Manager::getInstance().init(/*subscription=*/0, /*useAndroidLog=*/false);
    FakePlatform::instance().waitForRegistration();
    std::exit(0);
  };
  EXPECT_EXIT(
      scenario(), testing::ExitedWithCode(0),
      testing::AllOf(testing::StartsWith("open\n4 Manager::init(0)\n"),
                     testing::HasSubstr("\n4 pavo::ClientRequestManager: destructor\n"),
                     testing::EndsWith("\nclose\n"), testing::Not(testing::HasSubstr("close\n4"))));
}

}  // namespace
}  // namespace pavo::test
