// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A process that uses the library must end at once and cleanly, whatever it still holds.
#include "SystemTest.h"

#include <csignal>

namespace pavo::test {
namespace {

using testing::HasSubstr;

class ExitTest : public SystemTest {
 protected:
  ChildProcess& start(const std::string& scenario) {
    child = std::make_unique<ChildProcess>(
        std::vector<std::string>{PAVO_SYSTEM_EXITS_PROGRAM, scenario});
    return *child;
  }

  void expectEndsCleanly() {
    const auto exit = child->waitForExit();
    ASSERT_TRUE(exit) << "it hangs\n" << child->output() << child->errors();
    EXPECT_EQ(*exit, (ChildProcess::Exit{.code = 0, .signal = 0}))
        << child->output() << child->errors();
    EXPECT_THAT(child->output(), HasSubstr("ending\n"));
    EXPECT_TRUE(waitUntil([&] { return control("show")["clients"] == 0; }));
  }

  // The listener runs because another client deletes the profile.
  void endInListener(const std::string& scenario) {
    start(scenario);
    ASSERT_TRUE(child->waitForOutput("ready\n")) << child->errors();
    for (const auto& [index, profile] : table()) {
      control("delete", {{"index", index}});
    }
    expectEndsCleanly();
  }

  std::size_t expired() {
    const std::string text = child->output();
    std::size_t count = 0;
    for (auto at = text.find("expired\n"); at != std::string::npos;
         at = text.find("expired\n", at + 1)) {
      ++count;
    }
    return count;
  }

  std::unique_ptr<ChildProcess> child;
};

TEST_F(ExitTest, KeyInAGlobal_ConstructedBeforeTheManager_IsHarmless) {
  start("key-in-global-before");
  expectEndsCleanly();
  // The worker had ended when the key was dropped, so the profile stayed.
  EXPECT_EQ(table().size(), 1u);
}

TEST_F(ExitTest, KeyInAStatic_ConstructedAfterTheManager_IsReleased) {
  start("key-in-global-after");
  expectEndsCleanly();
  EXPECT_TRUE(table().empty());
}

TEST_F(ExitTest, KeysWithListeners_InGlobals_AreToldOnce) {
  start("keys-with-listeners");
  expectEndsCleanly();
  EXPECT_EQ(expired(), 8u);
}

TEST_F(ExitTest, Listener_DropsGlobalKeysAtExit_IsHarmless) {
  start("listener-drops-global-keys");
  expectEndsCleanly();
  EXPECT_EQ(expired(), 1u);
}

TEST_F(ExitTest, CallsAfterStaticDestruction_AreAnsweredEmptyAndLogged) {
  start("operations-after-manager");
  expectEndsCleanly();
  EXPECT_THAT(child->output(), HasSubstr("late "));
  EXPECT_THAT(child->output(), HasSubstr("Manager not initialized!"));
}

TEST_F(ExitTest, AManagerInitialisedAfterStaticDestruction_Works) {
  start("init-after-manager");
  expectEndsCleanly();
  EXPECT_THAT(child->output(), HasSubstr("late\n"));
}

TEST_F(ExitTest, AManagerInAGlobal_EndsWithTheProcess) {
  start("manager-in-global");
  expectEndsCleanly();
}

TEST_F(ExitTest, Init_AndExitAtOnce_Ends) {
  for (int i = 0; i < rounds(20); ++i) {
    start("never-connected");
    expectEndsCleanly();
  }
}

TEST_F(ExitTest, Init_WithoutAModemAndExit_Ends) {
  modem.kill();
  start("never-connected");
  const auto exit = child->waitForExit();
  ASSERT_TRUE(exit);
  EXPECT_EQ(exit->code, 0) << child->errors();
}

TEST_F(ExitTest, NeverInitialised_Ends) {
  start("never-initialised");
  expectEndsCleanly();
}

TEST_F(ExitTest, ManyInits_WithKeysOfEachInGlobals_End) {
  start("many-inits");
  expectEndsCleanly();
}

TEST_F(ExitTest, WorkerWaitingForASilentModem_EndsWhenTheRequestHasTimedOut) {
  start("busy-worker");
  ASSERT_TRUE(child->waitForOutput("started\n"));
  control("fail", {{"message", "create-profile"}, {"silent", true}});
  child->sendSignal(SIGUSR1);
  ASSERT_TRUE(waitUntil([&] { return control("faults")["faults"].empty(); }));
  child->sendSignal(SIGUSR1);
  expectEndsCleanly();
}

TEST_F(ExitTest, ThreadsInTheMiddleOfCalls_DoNotHoldTheProcess) {
  for (int i = 0; i < rounds(10); ++i) {
    start("busy-callers");
    expectEndsCleanly();
    // The threads never dropped their keys, so a power cycle removes the profiles.
    control("power-cycle");
  }
}

TEST_F(ExitTest, ExitOnAnotherThread_Ends) {
  start("exit-on-thread");
  expectEndsCleanly();
}

TEST_F(ExitTest, ExitOfAForkedChild_LeavesTheParentsWorkerAndProfilesAlone) {
  start("forked-child-exits");
  expectEndsCleanly();
  EXPECT_EQ(table().size(), 1u);
}

TEST_F(ExitTest, ExitInAListener_OfACallInProgress_Ends) {
  start("exit-in-listener-during-a-call");
  expectEndsCleanly();
}

TEST_F(ExitTest, ExitInAListener_TwoManagers_Ends) {
  endInListener("exit-in-listener-of-two-managers");
}

TEST_F(ExitTest, ExitInAListener_OnTheWorkerThread_Ends) { endInListener("exit-in-listener"); }

TEST_F(ExitTest, Terminate_InTheMiddle_LeavesTheModemInOrder) {
  ChildProcess& program = start("exit-in-listener");
  ASSERT_TRUE(program.waitForOutput("ready\n"));
  program.sendSignal(SIGTERM);
  ASSERT_TRUE(program.waitForExit());
  connect();
  refresh();
  expectCacheEqualsTable();
}

}  // namespace
}  // namespace pavo::test
