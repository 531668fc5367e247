// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/Manager.h>

#include "LocalLogBuffer.h"
#include "LogWrapper.h"
#include "RunningManagerTest.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <filesystem>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

// Failures show as empty results; no function throws.
static_assert(noexcept(std::declval<Manager&>().init(0, true)));
static_assert(noexcept(std::declval<Manager&>().addProfile(std::declval<AddProfileParams&>())));
static_assert(noexcept(std::declval<Manager&>().modifyProfile(std::declval<ModifyProfileParams&>(),
                                                              nullptr)));
static_assert(noexcept(std::declval<Manager&>().deleteProfile(nullptr)));
static_assert(noexcept(std::declval<Manager&>().filter(std::declval<FilterProfileParams&>())));
static_assert(noexcept(std::declval<Manager&>().getProfile(nullptr)));
static_assert(noexcept(std::declval<Manager&>().match(std::declval<FilterProfileParams&>(),
                                                      nullptr)));
static_assert(noexcept(std::declval<Manager&>().refresh(PDC_REFRESH_STARTED)));
static_assert(noexcept(std::declval<Manager&>().dump()));

using testing::ElementsAre;
using testing::IsEmpty;

// These tests use a Manager before init.
class ManagerTest : public FakePlatformTest {
 protected:
  ManagerTest() { forgetManagers(); }
  ~ManagerTest() override { forgetManagers(); }

  // A Manager leaves its writer behind, and the end of the writer is a call into the platform.
  void forgetManagers() {
    LogWrapper::getInstance().setLogWriter(nullptr);
    platform.reset();
  }

  // Returns the messages of the kept lines, without their times.
  static Lines keptMessages(const Lines& dump) {
    const auto logs = std::find(dump.begin(), dump.end(), "Logs:");
    Lines messages;
    for (auto line = logs == dump.end() ? logs : logs + 1; line != dump.end(); ++line) {
      messages.push_back(line->substr(line->find("[PAVO]") + 6));
    }
    return messages;
  }
};

struct ManagerOperation {
  const char* name;
  // Returns whether the result is the empty one.
  std::function<bool(Manager&, const Key&)> isEmptyAnswer;
  const char* entry;
  const char* castFailure;
};

const ManagerOperation operations[] = {
    {"addProfile",
     [](Manager& m, const Key&) { return m.addProfile(AddProfileParams(true, false)) == nullptr; },
     "Add  persist=1: IsIAProfile=0,", "Unable to cast to AddResponse"},
    {"modifyProfile",
     [](Manager& m, const Key& k) { return !m.modifyProfile(ModifyProfileParams(), k); },
     "Modify  ", "Unable to cast to ModifyResponse"},
    {"deleteProfile", [](Manager& m, const Key& k) { return !m.deleteProfile(k); }, "Delete ",
     "Unable to cast to DeleteResponse"},
    {"filter", [](Manager& m, const Key&) { return m.filter(FilterProfileParams()).empty(); },
     "Filter params: None: ", "Unable to cast to FilterResponse"},
    {"getProfile", [](Manager& m, const Key& k) { return !m.getProfile(k).has_value(); }, "Get ",
     "Error in getProfile"},
    {"match", [](Manager& m, const Key& k) { return !m.match(FilterProfileParams(), k); },
     "Match  None: ", "Unable to cast to MatchResponse"},
    {"refresh",
     [](Manager& m, const Key&) {
       m.refresh(PDC_REFRESH_COMPLETED);
       return true;
     },
     "Refresh ", "Unable to cast to RefreshResponse"},
};

TEST_F(ManagerTest, Construct_OneDebugLine) {
  const CapturingLogWriter log;
  { const Manager manager; }
  EXPECT_THAT(log.lines(),
              ElementsAre(CapturedLine{LogLevel::Debug, "PAVO", "pavo::Manager: constructor"}));
  EXPECT_THAT(platform.calls(), IsEmpty());
}

TEST_F(ManagerTest, Operations_BeforeInit_EmptyAndOneErrorEach) {
  Manager manager;
  for (const ManagerOperation& operation : operations) {
    SCOPED_TRACE(operation.name);
    const CapturingLogWriter log;
    EXPECT_TRUE(operation.isEmptyAnswer(manager, nullptr));
    EXPECT_THAT(log.lines(),
                ElementsAre(CapturedLine{LogLevel::Error, "PAVO", "Manager not initialized!"}));
  }
  EXPECT_THAT(platform.calls(), IsEmpty());
}

TEST_F(ManagerTest, Dump_BeforeInit_TheKeptLinesAlone) {
  LocalLogBuffer::getInstance().flush();
  Manager manager;
  EXPECT_THAT(manager.dump(), ElementsAre("", "Logs:"));
  manager.refresh(PDC_REFRESH_STARTED);
  const Lines dump = manager.dump();
  ASSERT_EQ(dump.size(), 3U);
  EXPECT_THAT(Lines(dump.begin(), dump.begin() + 2), ElementsAre("", "Logs:"));
  EXPECT_THAT(keptMessages(dump), ElementsAre("Manager not initialized!"));
}

TEST_F(ManagerTest, Dump_AfterInit_CacheThenKeptLinesOldestFirst) {
  LocalLogBuffer::getInstance().flush();
  Manager manager;
  manager.init(/*subscription=*/3, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  EXPECT_FALSE(manager.getProfile(nullptr).has_value());
  const Lines dump = manager.dump();
  ASSERT_GE(dump.size(), 4U);
  EXPECT_THAT(Lines(dump.begin(), dump.begin() + 4),
              ElementsAre("Cache:", "Pending:", "", "Logs:"));
  Lines kept = keptMessages(dump);
  // The new thread's line may come at any time after the first.
  ASSERT_EQ(std::count(kept.begin(), kept.end(), "PAVO thread started"), 1);
  kept.erase(std::find(kept.begin(), kept.end(), "PAVO thread started"));
  EXPECT_THAT(kept,
              ElementsAre("Manager::init(3)", "OvixWdsProxy::registerOvixSvcUp",
                          "Manager::getProfile > Get ", "Manager::getProfile < Get Failure "));
}

TEST_F(ManagerTest, Init_AnySubscription_FirstLineAndBindRequest) {
  for (const int subscription : {0, 1, -1, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(subscription);
    forgetManagers();
    {
      Manager manager;
      manager.init(subscription, /*useAndroidLog=*/true);
      ASSERT_TRUE(platform.waitForRegistration());
    }
    const Lines messages = platform.logMessages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.front(), "Manager::init(" + std::to_string(subscription) + ")");
    EXPECT_EQ(platform.logLines().front().priority, LogInfo);
    const auto bind = platform.sent(0xAF);
    ASSERT_EQ(bind.size(), 1U);
    EXPECT_THAT(MessageBytes(4)
                    .u32(0, static_cast<std::uint32_t>(subscription))
                    .differences(MessageBytes::of(bind[0].bytes)),
                IsEmpty());
  }
}

TEST_F(ManagerTest, Init_AndroidLog_LineBeforeTheWorkerIsBuilt) {
  Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  const auto calls = platform.calls();
  ASSERT_GE(calls.size(), 2U);
  EXPECT_EQ(calls.front().message, "Manager::init(0)");
  EXPECT_EQ(calls.front().tag, "PAVO");
  EXPECT_EQ(platform.count(PlatformCall::Kind::DiagInit), 0U);
  EXPECT_EQ(platform.count(PlatformCall::Kind::DiagMessage), 0U);
}

TEST_F(ManagerTest, Init_DiagnosticLog_OpenedBeforeTheFirstLine) {
  Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/false);
  ASSERT_TRUE(platform.waitForRegistration());
  const auto calls = platform.calls();
  ASSERT_GE(calls.size(), 2U);
  EXPECT_EQ(calls[0].kind, PlatformCall::Kind::DiagInit);
  EXPECT_EQ(calls[1].kind, PlatformCall::Kind::DiagMessage);
  EXPECT_EQ(calls[1].message, "Manager::init(0)");
  EXPECT_EQ(platform.count(PlatformCall::Kind::Log), 0U);
}

TEST_F(ManagerTest, GetInstance_FromAnyThread_TheSameObject) {
  Manager* const here = &Manager::getInstance();
  auto there = std::async(std::launch::async, [] { return &Manager::getInstance(); });
  EXPECT_EQ(there.get(), here);
}

class RunningManagerOperationsTest : public RunningManagerTest {};

TEST_F(RunningManagerOperationsTest, Operations_InThePlainLog_SendBetweenTheTraces) {
  // The manager's lines go to the platform, so one record holds the order of lines and requests.
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  ASSERT_TRUE(platform.waitForStart());
  const auto record = [&](const std::function<void()>& operation) {
    platform.clearCalls();
    operation();
    Lines steps;
    for (const PlatformCall& call : platform.calls()) {
      if (call.kind == PlatformCall::Kind::Send) {
        steps.push_back("send " + std::to_string(call.msgId));
      } else if (call.message.starts_with("Manager::") || call.message.starts_with("Handling ")) {
        steps.push_back(call.message.substr(0, call.message.find_first_of(" >", 10)) +
                        (call.message.find(" < ") != std::string::npos ? " <" : ""));
      }
    }
    return steps;
  };
  Key key;
  EXPECT_THAT(record([&] { key = add("ims"); }), ElementsAre("Manager::addProfile", "Handling Add",
                                                             "send 39", "Manager::addProfile <"));
  ModifyProfileParams params;
  params.setPassword("x");
  EXPECT_THAT(record([&] { manager.modifyProfile(params, key); }),
              ElementsAre("Manager::modifyProfile", "Handling Modify", "send 40",
                          "Manager::modifyProfile <"));
  EXPECT_THAT(record([&] { manager.deleteProfile(key); }),
              ElementsAre("Manager::deleteProfile", "Handling Delete", "send 41",
                          "Manager::deleteProfile <"));
  EXPECT_THAT(record([&] { manager.refresh(PDC_REFRESH_COMPLETED); }),
              ElementsAre("Manager::refresh", "Handling Refresh", "send 42", "Manager::refresh <"));
}

TEST_F(RunningManagerOperationsTest, Dump_AnyTime_NoTraceAndNoRequest) {
  const Key key = addConfirmed("ims");
  log->clear();
  platform.clearCalls();
  EXPECT_FALSE(manager.dump().empty());
  EXPECT_THAT(log->lines(), IsEmpty());
  EXPECT_THAT(platform.calls(), IsEmpty());
}

TEST_F(RunningManagerOperationsTest, Dump_WorkerInAnyModemRequest_DoesNotWait) {
  const Key key = addConfirmed("ims");
  struct Row {
    unsigned int msgId;
    std::function<void()> operation;
  };
  ModifyProfileParams params;
  params.setPassword("x");
  const Row rows[] = {
      {0x27, [&] { add("net"); }},
      {0x28, [&] { manager.modifyProfile(params, key); }},
      {0x2A, [&] { manager.refresh(PDC_REFRESH_COMPLETED); }},
      {0x2B, [&] { manager.refresh(PDC_REFRESH_COMPLETED); }},
      {0x29, [&] { manager.deleteProfile(keyOf(1)); }},
      {0x2B, [&] { platform.indicateProfileChanged(1, WDS_PROFILE_EVENT_CREATE_V01); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.msgId);
    auto blocked = platform.blockNext(row.msgId);
    auto operation = std::async(std::launch::async, row.operation);
    ASSERT_TRUE(blocked.waitUntilEntered());
    auto dump = std::async(std::launch::async, [&] { return manager.dump(); });
    ASSERT_EQ(dump.wait_for(patience()), std::future_status::ready);
    EXPECT_EQ(dump.get().front(), "Cache:");
    blocked.release();
    operation.get();
  }
}

// This test is for the thread sanitizer: a dump runs beside every operation that changes the cache.
TEST_F(RunningManagerOperationsTest, Dump_BesideOperationsAndIndications_IsWhole) {
  platform.setEmitsIndications(true);
  std::atomic<bool> isDone{false};
  std::atomic<bool> hasBegun{false};
  auto dumps = std::async(std::launch::async, [&] {
    while (!isDone) {
      for (const std::string& line : CacheDump::of(manager.dump()).cache) {
        EXPECT_THAT(line, testing::MatchesRegex("  [0-9]+: (null|ProfileId=.*,)"));
      }
      hasBegun = true;
    }
  });
  ASSERT_TRUE(waitUntil([&] { return hasBegun.load(); }));
  for (int round = 0; round < 20; ++round) {
    const Key key = add("ims");
    ModifyProfileParams params;
    params.setPassword(std::to_string(round));
    manager.modifyProfile(params, key);
    platform.indicateProfileChanged(static_cast<std::uint8_t>(key->getProfileId()),
                                    WDS_PROFILE_EVENT_MODIFY_V01);
    if (round % 5 == 0) {
      manager.refresh(PDC_REFRESH_COMPLETED);
    }
    manager.deleteProfile(key);
  }
  isDone = true;
  dumps.get();
}

TEST_F(RunningManagerOperationsTest, Refresh_StartedToCompleted_AddIsRefused) {
  manager.refresh(PDC_REFRESH_STARTED);
  EXPECT_EQ(add("ims"), nullptr);
  EXPECT_THAT(platform.sent(), IsEmpty());
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_NE(add("ims"), nullptr);
}

// The requests' eventfd has the highest number, because a worker makes it last.
int requestEventFd() {
  int highest = -1;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(entry.path(), error);
    if (!error && target.string().find("eventfd") != std::string::npos) {
      highest = std::max(highest, std::stoi(entry.path().filename().string()));
    }
  }
  return highest;
}

// Runs in a process of its own, because its worker cannot be woken any more. The process ends with
// 0 when the operation answers empty and logs the reason.
[[noreturn]] void runWithoutWakeFd(const ManagerOperation& operation) {
  Manager& manager = Manager::getInstance();
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  const bool isUp = FakePlatform::instance().waitForStart();
  const CapturingLogWriter log;
  close(requestEventFd());
  const bool isEmpty = operation.isEmptyAnswer(manager, nullptr);
  const std::string trace = std::string("Manager::") + operation.name;
  const std::vector<CapturedLine> expected = {
      {LogLevel::High, "PAVO", trace + " > " + operation.entry},
      {LogLevel::Error, "PAVO", "error in writing rv: -1 error: Bad file descriptor"},
      {LogLevel::High, "PAVO", trace + " < "},
      {LogLevel::Error, "PAVO", operation.castFailure}};
  for (const CapturedLine& line : log.lines()) {
    fprintf(stderr, "%s\n", line.message.c_str());
  }
  _exit(isUp && isEmpty && log.lines() == expected ? 0 : 1);
}

TEST(ManagerDeathTest, Operations_WorkerCannotBeWoken_CastMessageAndEmpty) {
  for (const ManagerOperation& operation : operations) {
    SCOPED_TRACE(operation.name);
    EXPECT_EXIT(runWithoutWakeFd(operation), testing::ExitedWithCode(0), "");
  }
}

}  // namespace
}  // namespace pavo::test
