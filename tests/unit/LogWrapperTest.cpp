// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "AdbWriter.h"
#include "Aliases.h"
#include "CapturingLogWriter.h"
#include "LocalLogBuffer.h"
#include "LogWrapper.h"
#include "StartedManagerTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace pavo::test {
namespace {

constexpr std::size_t charsMax = 511;

constexpr LogLevel allLevels[] = {LogLevel::Verbose,       LogLevel::Debug, LogLevel::Info,
                                  LogLevel::Error,         LogLevel::Fatal, LogLevel::High,
                                  static_cast<LogLevel>(6)};

// Returns the messages in the process's buffer.
Lines keptMessages() {
  Lines messages;
  for (const std::string& line : LocalLogBuffer::getInstance().getLogs()) {
    const std::string nameEnd = "[PAVO]";
    messages.push_back(line.substr(line.find(nameEnd) + nameEnd.size()));
  }
  return messages;
}

// No writer is installed and no line is kept, before and after a test.
class LogWrapperTest : public testing::Test {
 protected:
  LogWrapperTest() { clear(); }
  ~LogWrapperTest() override { clear(); }

  static void clear() {
    LogWrapper::getInstance().setLogWriter(nullptr);
    LocalLogBuffer::getInstance().flush();
  }
};

// This structure counts the calls of the writers of one test, from any thread.
struct WriterCounts {
  std::atomic<int> made{0};
  std::atomic<int> destroyed{0};
  std::atomic<int> lines{0};
};

class CountingWriter : public LogWriter {
 public:
  explicit CountingWriter(WriterCounts& target) : counts(target) { ++counts.made; }
  CountingWriter(const CountingWriter&) = delete;
  CountingWriter& operator=(const CountingWriter&) = delete;
  ~CountingWriter() override { ++counts.destroyed; }

  void write(LogLevel /*level*/, std::string /*tag*/, std::string message) override {
    // `last` is a member, so that a sanitizer detects a writer that is used after its end.
    last = std::to_string(message.size());
    ++counts.lines;
  }
  int convertPrio(LogLevel level) override { return static_cast<int>(level); }

 private:
  WriterCounts& counts;
  static thread_local std::string last;
};

thread_local std::string CountingWriter::last;

TEST_F(LogWrapperTest, GetInstance_Twice_TheSame) {
  EXPECT_EQ(&LogWrapper::getInstance(), &LogWrapper::getInstance());
}

TEST_F(LogWrapperTest, Log_EveryLevel_WriterGetsLevelTagAndMessage) {
  const CapturingLogWriter log;
  std::vector<CapturedLine> expected;
  for (const LogLevel level : allLevels) {
    LogWrapper::log(level, "TAG", "level %d of %s", static_cast<int>(level), "seven");
    expected.push_back(
        {level, "TAG", "level " + std::to_string(static_cast<int>(level)) + " of seven"});
  }
  EXPECT_EQ(log.lines(), expected);
}

TEST_F(LogWrapperTest, Log_EveryLevel_OnlyErrorAndHighKept) {
  for (const bool hasWriter : {false, true}) {
    clear();
    std::optional<CapturingLogWriter> log;
    if (hasWriter) {
      log.emplace();
    }
    for (const LogLevel level : allLevels) {
      LogWrapper::log(level, "PAVO", "%d", static_cast<int>(level));
    }
    EXPECT_EQ(keptMessages(), (Lines{"3", "5"})) << "with a writer: " << hasWriter;
  }
}

TEST_F(LogWrapperTest, Log_NoWriter_OnlyKeptLevelsGoAnywhere) {
  LogWrapper::log(LogLevel::Info, "PAVO", "nowhere");
  EXPECT_EQ(keptMessages(), Lines{});
  LogWrapper::log(LogLevel::High, "PAVO", "kept");
  EXPECT_EQ(keptMessages(), Lines{"kept"});
}

TEST_F(LogWrapperTest, IsLogged_WithAndWithoutWriter_WhetherTheLineReachesAnybody) {
  for (const LogLevel level : allLevels) {
    EXPECT_EQ(LogWrapper::isLogged(level), level == LogLevel::Error || level == LogLevel::High);
  }
  const CapturingLogWriter log;
  for (const LogLevel level : allLevels) {
    EXPECT_TRUE(LogWrapper::isLogged(level));
  }
}

TEST_F(LogWrapperTest, Log_AnyLength_CutAtTheLimit) {
  for (const std::size_t length : {0U, 1U, 510U, 511U, 512U, 513U, 600U, 5000U}) {
    clear();
    const CapturingLogWriter log;
    std::string message;
    for (std::size_t i = 0; i < length; ++i) {
      message += static_cast<char>('a' + i % 26);
    }
    LogWrapper::log(LogLevel::High, "PAVO", "%s", message.c_str());
    const Lines expected{message.substr(0, charsMax)};
    EXPECT_EQ(log.messages(), expected) << length;
    EXPECT_EQ(keptMessages(), expected) << length;
  }
}

// The limit counts bytes, so a character of several bytes may lose its end.
TEST_F(LogWrapperTest, Log_CharacterOfTwoBytesAtTheLimit_Split) {
  const CapturingLogWriter log;
  const std::string message = std::string(charsMax - 1, 'x') + "\xC3\xA9";
  LogWrapper::log(LogLevel::High, "PAVO", "%s", message.c_str());
  EXPECT_EQ(log.messages(), Lines{message.substr(0, charsMax)});
}

TEST_F(LogWrapperTest, Log_NulInATextArgument_PartBeforeIt) {
  const CapturingLogWriter log;
  const std::string name("before\0after", 12);
  LogWrapper::log(LogLevel::High, "PAVO", "name %s.", name.c_str());
  EXPECT_EQ(log.messages(), Lines{"name before."});
}

TEST_F(LogWrapperTest, Log_PercentSigns_InterpretedInTheFormatOnly) {
  const CapturingLogWriter log;
  LogWrapper::log(LogLevel::High, "PAVO", "100%% of %s", "%d%n");
  EXPECT_EQ(log.messages(), Lines{"100% of %d%n"});
}

// The C locale cannot express this wide character.
TEST_F(LogWrapperTest, Log_FormattingFails_EmptyMessage) {
  const CapturingLogWriter log;
  LogWrapper::log(LogLevel::High, "PAVO", "before %ls", L"\x20AC");
  EXPECT_EQ(log.messages(), Lines{""});
  EXPECT_EQ(keptMessages(), Lines{""});
}

TEST_F(LogWrapperTest, Log_NoTag_EmptyTag) {
  const CapturingLogWriter log;
  LogWrapper::log(LogLevel::High, nullptr, "message");
  EXPECT_EQ(log.lines(), (std::vector<CapturedLine>{{LogLevel::High, "", "message"}}));
}

TEST_F(LogWrapperTest, SetLogWriter_Another_PreviousDestroyedAtOnce) {
  WriterCounts first;
  WriterCounts second;
  LogWrapper::getInstance().setLogWriter(std::make_unique<CountingWriter>(first));
  LogWrapper::log(LogLevel::Verbose, "PAVO", "to the first");
  EXPECT_EQ(first.destroyed, 0);
  LogWrapper::getInstance().setLogWriter(std::make_unique<CountingWriter>(second));
  EXPECT_EQ(first.destroyed, 1);
  LogWrapper::log(LogLevel::Verbose, "PAVO", "to the second");
  LogWrapper::getInstance().setLogWriter(nullptr);
  EXPECT_EQ(second.destroyed, 1);
  LogWrapper::log(LogLevel::Verbose, "PAVO", "to nobody");
  EXPECT_EQ(first.lines, 1);
  EXPECT_EQ(second.lines, 1);
}

TEST_F(LogWrapperTest, SetLogWriter_WhileOthersLog_EveryLineWrittenOnceAndEveryWriterDestroyed) {
  constexpr int replacementCount = 200;
  WriterCounts counts;
  LogWrapper::getInstance().setLogWriter(std::make_unique<CountingWriter>(counts));
  std::atomic<bool> goOn{true};
  std::atomic<int> logged{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&goOn, &logged] {
      while (goOn) {
        LogWrapper::log(LogLevel::Verbose, "PAVO", "line %d", ++logged);
      }
    });
  }
  EXPECT_TRUE(waitUntil([&logged] { return logged > 0; }));
  for (int i = 0; i < replacementCount; ++i) {
    LogWrapper::getInstance().setLogWriter(std::make_unique<CountingWriter>(counts));
  }
  goOn = false;
  for (std::thread& thread : threads) {
    thread.join();
  }
  LogWrapper::getInstance().setLogWriter(nullptr);
  EXPECT_EQ(counts.lines, logged);
  EXPECT_EQ(counts.made, replacementCount + 1);
  EXPECT_EQ(counts.destroyed, counts.made);
}

// These tests read the lines of a manager in operation.
class LoggedOperationTest : public StartedManagerTest {};

TEST_F(LoggedOperationTest, AnyOperation_AndroidLog_TagFormatAndPriorities) {
  platform.rejectNext(OVIX_WDS_CREATE_PROFILE_REQ_V01);
  add("ims");
  const std::pair<const char*, int> cases[] = {
      {"EventManager::wake() EX", LogVerbose},
      {":77:handleClientRequest", LogDebug},
      {"Handling Add  persist=0: ApnName=ims,IsIAProfile=0,", LogInfo},
      {"Manager::addProfile > Add  persist=0: ApnName=ims,IsIAProfile=0,", LogInfo},
      {"Unable send OVIX_WDS_CREATE_PROFILE_REQ_V01 message", LogError}};
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  for (const auto& [message, priority] : cases) {
    EXPECT_THAT(platform.logMessages(priority), testing::Contains(message));
  }
  for (const PlatformCall& line : platform.logLines()) {
    EXPECT_EQ(line.tag, "PAVO") << line.message;
    EXPECT_EQ(line.format, "%s") << line.message;
    EXPECT_NE(line.priority, LogFatal) << line.message;
  }
}

TEST_F(LoggedOperationTest, Filter_LongName_TraceCutAtTheLimitInTheLogAndTheBuffer) {
  const std::string beginning = "Manager::filter > Filter params: None: ApnName=";
  // The count includes the text before the name and the comma behind it.
  const std::size_t exact = charsMax - beginning.size() - 1;
  for (const std::size_t nameLength : {exact - 1, exact, exact + 1, exact + 1000}) {
    SCOPED_TRACE(nameLength);
    LocalLogBuffer::getInstance().flush();
    platform.clearCalls();
    FilterProfileParams params;
    params.setApnName(std::string(nameLength, 'n'));
    manager.filter(params);
    const std::string whole = beginning + std::string(nameLength, 'n') + ",";
    EXPECT_EQ(linesBeginning("Manager::filter >"), Lines{whole.substr(0, charsMax)});
    EXPECT_THAT(keptMessages(), testing::Contains(whole.substr(0, charsMax)));
  }
}

TEST_F(LoggedOperationTest, Filter_NulInTheName_TraceEndsThere) {
  FilterProfileParams params;
  params.setApnName(std::string("a\0b", 3));
  manager.filter(params);
  EXPECT_EQ(linesBeginning("Manager::filter >"),
            Lines{"Manager::filter > Filter params: None: ApnName=a"});
}

TEST_F(LoggedOperationTest, AnyOperation_Returned_ItsLinesAreWritten) {
  manager.filter(FilterProfileParams());
  const Lines lines = platform.logMessages();
  EXPECT_THAT(lines, testing::IsSupersetOf(
                         {"Manager::filter > Filter params: None: ",
                          "Handling Filter params: None: ", "Manager::filter < Filter Success "}));
  EXPECT_THAT(keptMessages(), testing::Contains("Manager::filter < Filter Success "));
}

TEST_F(LogWrapperTest, AnyOperation_BeforeInit_KeptAndNowhereElse) {
  FakePlatform::instance().reset();
  Manager manager;
  manager.refresh(PDC_REFRESH_STARTED);
  EXPECT_EQ(keptMessages(), Lines{"Manager not initialized!"});
  EXPECT_TRUE(FakePlatform::instance().calls().empty());
}

// These tests log while the process ends. Each runs in a process of its own, in which nothing has
// been logged before.
class LogAtExitTest : public FakePlatformTest {};

// A LateLogger is destroyed after every static object that is constructed after it.
struct LateLogger {
  LateLogger() = default;
  LateLogger(const LateLogger&) = delete;
  LateLogger& operator=(const LateLogger&) = delete;
  ~LateLogger() {
    LogWrapper::log(LogLevel::Debug, "PAVO", "to nobody");
    LogWrapper::log(LogLevel::Error, "PAVO", "late");
    for (const std::string& message : keptMessages()) {
      std::fprintf(stderr, "kept %s\n", message.c_str());
    }
    for (const std::string& message : FakePlatform::instance().logMessages()) {
      std::fprintf(stderr, "written %s\n", message.c_str());
    }
  }
};

TEST_F(LogAtExitTest, Log_AfterEveryStaticObject_KeptWithoutAWriter) {
  const auto scenario = [] {
    static const LateLogger logger;
    LogWrapper::getInstance().setLogWriter(std::make_unique<AdbWriter>());
    LogWrapper::log(LogLevel::High, "PAVO", "early");
    std::exit(0);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0),
              testing::StrEq("kept early\nkept late\nwritten early\n"));
}

TEST_F(LogAtExitTest, Exit_OtherThreadsLogging_NothingIsUsedAfterItsEnd) {
  const auto scenario = [] {
    static std::atomic<int> logged{0};
    // The handler is registered first, so it runs last: both threads still log when the writer has
    // gone.
    std::atexit([] {
      const int before = logged;
      waitUntil([before] { return logged > before + 10; });
    });
    LogWrapper::getInstance().setLogWriter(std::make_unique<AdbWriter>());
    for (int t = 0; t < 2; ++t) {
      std::thread([] {
        for (;;) {
          LogWrapper::log(LogLevel::High, "PAVO", "line");
          ++logged;
        }
      }).detach();
    }
    waitUntil([] { return logged > 10; });
    std::exit(0);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0), testing::StrEq(""));
}

}  // namespace
}  // namespace pavo::test
