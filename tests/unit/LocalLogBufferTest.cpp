// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/Manager.h>

#include "Aliases.h"
#include "LocalLogBuffer.h"
#include "LogWrapper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <set>
#include <thread>

namespace {

// The library reads this clock. It is the system's clock unless a test has stopped it.
std::atomic<bool> isClockStopped{false};
std::atomic<std::time_t> stoppedSeconds{0};
std::atomic<int> stoppedMicroseconds{0};
std::atomic<int> conversionsToFail{0};
std::atomic<int> textsToFail{0};

}  // namespace

extern "C" {
int __real_gettimeofday(timeval* now, void* zone);
std::tm* __real_localtime_r(const std::time_t* time, std::tm* local);
std::size_t __real_strftime(char* text, std::size_t size, const char* format, const std::tm* local);

// The linker puts these functions in place of the system's.
int __wrap_gettimeofday(timeval* now, void* zone) {
  if (!isClockStopped) {
    return __real_gettimeofday(now, zone);
  }
  now->tv_sec = stoppedSeconds;
  now->tv_usec = stoppedMicroseconds;
  return 0;
}

std::tm* __wrap_localtime_r(const std::time_t* time, std::tm* local) {
  if (conversionsToFail > 0) {
    --conversionsToFail;
    errno = EOVERFLOW;
    return nullptr;
  }
  return __real_localtime_r(time, local);
}

// The text is undefined after a failed strftime.
std::size_t __wrap_strftime(char* text, std::size_t size, const char* format,
                            const std::tm* local) {
  if (textsToFail > 0) {
    --textsToFail;
    std::fill_n(text, size, 'x');
    return 0;
  }
  return __real_strftime(text, size, format, local);
}
}

namespace pavo::test {
namespace {

class StoppedClock {
 public:
  StoppedClock(std::time_t seconds, int microseconds) {
    set(seconds, microseconds);
    isClockStopped = true;
  }
  StoppedClock(const StoppedClock&) = delete;
  StoppedClock& operator=(const StoppedClock&) = delete;
  ~StoppedClock() { isClockStopped = false; }

  void set(std::time_t seconds, int microseconds) {
    stoppedSeconds = seconds;
    stoppedMicroseconds = microseconds;
  }
};

class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    if (const char* before = std::getenv("TZ")) {
      previous = before;
    }
    setenv("TZ", zone, /*overwrite=*/1);
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() {
    if (previous) {
      setenv("TZ", previous->c_str(), /*overwrite=*/1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  std::optional<std::string> previous;
};

constexpr std::time_t someSecond = 1'700'000'000;  // 2023-11-14 22:13:20 UTC

// Returns the line that a buffer makes at that time, on a thread that has made none before.
std::string lineAt(std::time_t seconds, int microseconds) {
  const StoppedClock clock(seconds, microseconds);
  LocalLogBuffer buffer("PAVO", /*capacity=*/1);
  std::thread([&buffer] { buffer.addLogWithTimestamp("message"); }).join();
  return buffer.getLogs().at(0);
}

// Returns the lines without their stamps.
Lines messagesOf(const Lines& lines) {
  Lines messages;
  for (const std::string& line : lines) {
    messages.push_back(line.substr(line.find(']') + 1));
  }
  return messages;
}

TEST(LocalLogBufferTest, AddLog_AtATime_StampNameAndMessage) {
  const TimeZone utc("UTC0");
  EXPECT_EQ(lineAt(someSecond, 12'500), "    2023-11-14 22:13:20.012 [PAVO]message");
}

TEST(LocalLogBufferTest, AddLog_AnyMicrosecond_ThreeDigitsOfMilliseconds) {
  const TimeZone utc("UTC0");
  const std::pair<int, const char*> cases[] = {{0, "000"},       {999, "000"},    {1'000, "001"},
                                               {9'999, "009"},   {12'500, "012"}, {99'999, "099"},
                                               {100'000, "100"}, {999'999, "999"}};
  for (const auto& [microseconds, digits] : cases) {
    EXPECT_EQ(lineAt(someSecond, microseconds),
              std::string("    2023-11-14 22:13:20.") + digits + " [PAVO]message");
  }
}

TEST(LocalLogBufferTest, AddLog_AnyTimeZone_LocalTime) {
  const std::pair<const char*, const char*> cases[] = {{"UTC0", "2023-11-14 22:13:20"},
                                                       {"EAST-5:30", "2023-11-15 03:43:20"},
                                                       {"WEST8", "2023-11-14 14:13:20"}};
  for (const auto& [zone, date] : cases) {
    const TimeZone local(zone);
    EXPECT_EQ(lineAt(someSecond, 0), std::string("    ") + date + ".000 [PAVO]message") << zone;
  }
}

TEST(LocalLogBufferTest, AddLog_ClockMovesOn_EveryLineHasItsOwnTime) {
  const TimeZone utc("UTC0");
  LocalLogBuffer buffer("b", /*capacity=*/10);
  StoppedClock clock(someSecond + 1, 1'000);
  buffer.addLogWithTimestamp("1");
  clock.set(someSecond + 1, 2'000);
  buffer.addLogWithTimestamp("2");
  clock.set(someSecond + 2, 3'000);
  buffer.addLogWithTimestamp("3");
  // The clock goes back, because a wall clock may be set.
  clock.set(someSecond + 1, 4'000);
  buffer.addLogWithTimestamp("4");
  EXPECT_EQ(buffer.getLogs(),
            (Lines{"    2023-11-14 22:13:21.001 [b]1", "    2023-11-14 22:13:21.002 [b]2",
                   "    2023-11-14 22:13:22.003 [b]3", "    2023-11-14 22:13:21.004 [b]4"}));
}

TEST(LocalLogBufferTest, AddLog_FarFuture_WholeYear) {
  const TimeZone utc("UTC0");
  EXPECT_EQ(lineAt(253'402'300'800, 0), "    10000-01-01 00:00:00.000 [PAVO]message");
}

TEST(LocalLogBufferTest, AddLog_TimeBeyondTheCalendar_MillisecondsOnly) {
  EXPECT_EQ(lineAt(std::numeric_limits<std::time_t>::max(), 12'500), "    .012 [PAVO]message");
  EXPECT_EQ(lineAt(std::numeric_limits<std::time_t>::min(), 0), "    .000 [PAVO]message");
}

TEST(LocalLogBufferTest, AddLog_ConversionFailsOnce_NextLineOfTheSameSecondHasItsDate) {
  const TimeZone utc("UTC0");
  const StoppedClock clock(someSecond + 10, 7'000);
  LocalLogBuffer buffer("b", /*capacity=*/10);
  conversionsToFail = 1;
  buffer.addLogWithTimestamp("1");
  buffer.addLogWithTimestamp("2");
  EXPECT_EQ(buffer.getLogs(), (Lines{"    .007 [b]1", "    2023-11-14 22:13:30.007 [b]2"}));
}

TEST(LocalLogBufferTest, AddLog_TextDoesNotFitOnce_EmptyDateAndTheNextLineHasIts) {
  const TimeZone utc("UTC0");
  const StoppedClock clock(someSecond + 20, 7'000);
  LocalLogBuffer buffer("b", /*capacity=*/10);
  textsToFail = 1;
  buffer.addLogWithTimestamp("1");
  buffer.addLogWithTimestamp("2");
  EXPECT_EQ(buffer.getLogs(), (Lines{"    .007 [b]1", "    2023-11-14 22:13:40.007 [b]2"}));
}

TEST(LocalLogBufferTest, AddLog_SystemClock_ShapeOfALine) {
  LocalLogBuffer buffer("name", /*capacity=*/1);
  buffer.addLogWithTimestamp("message");
  EXPECT_THAT(buffer.getLogs(),
              testing::ElementsAre(testing::MatchesRegex(
                  "    [0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]"
                  "\\.[0-9][0-9][0-9] \\[name\\]message")));
}

TEST(LocalLogBufferTest, AddLog_AnyMessage_Unchanged) {
  const std::string messages[] = {"",           " leading and trailing ", "%s %d %n",
                                  "two\nlines", std::string("a\0b", 3),   std::string(5000, 'x'),
                                  "\xFF\xC4"};
  for (const std::string& message : messages) {
    LocalLogBuffer buffer("", /*capacity=*/1);
    buffer.addLogWithTimestamp(message);
    const std::string line = buffer.getLogs().at(0);
    EXPECT_EQ(line.substr(line.find(" []") + 3), message);
  }
}

TEST(LocalLogBufferTest, AddLog_BeyondTheCapacity_OneMoreThanTheCapacityStays) {
  LocalLogBuffer buffer("b", /*capacity=*/2);
  const std::pair<const char*, Lines> steps[] = {{"A", {"A"}},
                                                 {"B", {"A", "B"}},
                                                 {"C", {"A", "B", "C"}},
                                                 {"D", {"B", "C", "D"}},
                                                 {"E", {"C", "D", "E"}}};
  for (const auto& [message, kept] : steps) {
    buffer.addLogWithTimestamp(message);
    EXPECT_EQ(messagesOf(buffer.getLogs()), kept);
  }
}

TEST(LocalLogBufferTest, AddLog_CapacityZero_OnlyTheMostRecent) {
  LocalLogBuffer buffer("b", /*capacity=*/0);
  for (const char* message : {"A", "B", "C"}) {
    buffer.addLogWithTimestamp(message);
    EXPECT_EQ(messagesOf(buffer.getLogs()), Lines{message});
  }
}

TEST(LocalLogBufferTest, AddLog_NegativeCapacity_NothingEvicted) {
  LocalLogBuffer buffer("b", /*capacity=*/-1);
  for (int i = 0; i < 1000; ++i) {
    buffer.addLogWithTimestamp("line");
  }
  EXPECT_EQ(buffer.getLogs().size(), 1000U);
}

TEST(LocalLogBufferTest, Flush_Any_NextLineIsTheOnlyOne) {
  LocalLogBuffer buffer("b", /*capacity=*/5);
  EXPECT_EQ(buffer.getLogs(), Lines{});
  buffer.flush();
  EXPECT_EQ(buffer.getLogs(), Lines{});
  buffer.addLogWithTimestamp("A");
  buffer.addLogWithTimestamp("B");
  buffer.flush();
  EXPECT_EQ(buffer.getLogs(), Lines{});
  buffer.addLogWithTimestamp("C");
  EXPECT_EQ(messagesOf(buffer.getLogs()), Lines{"C"});
}

TEST(LocalLogBufferTest, GetLogs_Any_CopiesOfTheLines) {
  LocalLogBuffer buffer("b", /*capacity=*/5);
  buffer.addLogWithTimestamp("A");
  auto lines = buffer.getLogs();
  lines.front() = "changed";
  lines.clear();
  EXPECT_EQ(messagesOf(buffer.getLogs()), Lines{"A"});
}

TEST(LocalLogBufferTest, GetName_Any_Copy) {
  const LocalLogBuffer buffer("name", /*capacity=*/5);
  auto name = buffer.getName();
  name.clear();
  EXPECT_EQ(buffer.getName(), "name");
}

TEST(LocalLogBufferTest, AddLog_ManyThreads_NoLineLostNorMixed) {
  constexpr int threadCount = 4;
  constexpr int linesEach = 200;
  LocalLogBuffer buffer("b", threadCount * linesEach);
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([&buffer, t] {
      for (int i = 0; i < linesEach; ++i) {
        buffer.addLogWithTimestamp(std::to_string(t) + ":" + std::to_string(i));
        buffer.getLogs();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const Lines messages = messagesOf(buffer.getLogs());
  EXPECT_EQ(messages.size(), static_cast<std::size_t>(threadCount * linesEach));
  EXPECT_EQ(std::set<std::string>(messages.begin(), messages.end()).size(), messages.size());
  for (int t = 0; t < threadCount; ++t) {
    const std::string prefix = std::to_string(t) + ":";
    int next = 0;
    for (const std::string& message : messages) {
      if (message.starts_with(prefix)) {
        EXPECT_EQ(message, prefix + std::to_string(next++));
      }
    }
  }
}

// These tests read the process's buffer as clients do.
class KeptLinesTest : public testing::Test {
 protected:
  KeptLinesTest() {
    LogWrapper::getInstance().setLogWriter(nullptr);
    LocalLogBuffer::getInstance().flush();
  }
  ~KeptLinesTest() override { LocalLogBuffer::getInstance().flush(); }

  // Returns the part of a client's dump after "Logs:", with the stamps checked and removed.
  static Lines dumpedMessages() {
    const Lines lines = Manager().dump();
    EXPECT_GE(lines.size(), 2U);
    if (lines.size() < 2) {
      return {};
    }
    EXPECT_EQ(lines[0], "");
    EXPECT_EQ(lines[1], "Logs:");
    const Lines kept(lines.begin() + 2, lines.end());
    EXPECT_THAT(kept, testing::Each(testing::MatchesRegex(
                          "    .......... ..:..:..\\.[0-9][0-9][0-9] \\[PAVO\\].*")));
    return messagesOf(kept);
  }
};

TEST_F(KeptLinesTest, GetInstance_Any_OneBufferOfItsName) {
  EXPECT_EQ(&LocalLogBuffer::getInstance(), &LocalLogBuffer::getInstance());
  EXPECT_EQ(LocalLogBuffer::getInstance().getName(), "PAVO");
}

TEST_F(KeptLinesTest, Dump_FewLines_OldestFirst) {
  LogWrapper::log(LogLevel::High, "PAVO", "first");
  Manager().filter(FilterProfileParams());
  LogWrapper::log(LogLevel::Error, "PAVO", "last");
  EXPECT_EQ(dumpedMessages(), (Lines{"first", "Manager not initialized!", "last"}));
}

TEST_F(KeptLinesTest, Dump_ManyLines_TheTwoHundredAndOneMostRecent) {
  Lines expected;
  for (int i = 0; i < 450; ++i) {
    LogWrapper::log(i % 2 == 0 ? LogLevel::High : LogLevel::Error, "PAVO", "line %d", i);
    if (i >= 450 - 201) {
      expected.push_back("line " + std::to_string(i));
    }
  }
  EXPECT_EQ(dumpedMessages(), expected);
}

TEST_F(KeptLinesTest, Log_ManyThreadsBelowTheCapacity_NoLineLost) {
  constexpr int threadCount = 4;
  constexpr int linesEach = 40;
  std::vector<std::thread> threads;
  for (int t = 0; t < threadCount; ++t) {
    threads.emplace_back([t] {
      for (int i = 0; i < linesEach; ++i) {
        LogWrapper::log(LogLevel::High, "PAVO", "%d:%d", t, i);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const Lines messages = dumpedMessages();
  EXPECT_EQ(std::set<std::string>(messages.begin(), messages.end()).size(),
            static_cast<std::size_t>(threadCount * linesEach));
}

TEST_F(KeptLinesTest, Dump_AnyTimeZone_LocalTime) {
  const TimeZone east("EAST-5:30");
  const StoppedClock clock(someSecond + 20, 12'500);
  LogWrapper::log(LogLevel::High, "PAVO", "message");
  EXPECT_EQ(Manager().dump(), (Lines{"", "Logs:", "    2023-11-15 03:43:40.012 [PAVO]message"}));
}

}  // namespace
}  // namespace pavo::test
