// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover expiration listeners: when they run, on which thread, and which calls they may
// make.
#include "RunningManagerTest.h"

#include <stdexcept>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCacheListenerTest : public RunningManagerTest {
 protected:
  // An End is a way in which a profile leaves the cache while its key lives.
  struct End {
    const char* what;
    std::function<void(ProfileCacheListenerTest&, const Key&)> come;
  };

  static std::vector<End> ends() {
    using Test = ProfileCacheListenerTest;
    return {
        {"remove", [](Test& t, const Key& key) { EXPECT_TRUE(t.manager.deleteProfile(key)); }},
        {"delete indication",
         [](Test& t, const Key& key) {
           t.indicate(static_cast<std::uint8_t>(key->getProfileId()), WDS_PROFILE_EVENT_DELETE_V01);
         }},
        {"modify indication",
         [](Test& t, const Key& key) {
           t.indicate(static_cast<std::uint8_t>(key->getProfileId()), WDS_PROFILE_EVENT_MODIFY_V01);
         }},
        {"refresh", [](Test& t, const Key&) { t.manager.refresh(PDC_REFRESH_COMPLETED); }},
        {"refresh by the modem",
         [](Test& t, const Key&) { t.indicate(0, WDS_PROFILE_EVENT_READY_V01); }},
    };
  }
};

TEST_F(ProfileCacheListenerTest, Listeners_AnyEnd_RunOnceOnTheWorkerInOrder) {
  for (const End& end : ends()) {
    SCOPED_TRACE(end.what);
    const Key key = addConfirmed("ims");
    const Key other = keyOf(key->getProfileId());
    std::string order;
    std::thread::id thread;
    key->registerExpirationListener([&] {
      order += "1";
      thread = std::this_thread::get_id();
    });
    other->registerExpirationListener([&] { order += "2"; });
    const std::function<void()> twice = [&] { order += "3"; };
    key->registerExpirationListener(twice);
    key->registerExpirationListener(twice);
    log->clear();
    end.come(*this, key);
    EXPECT_EQ(order, "1233");
    EXPECT_EQ(lineCount("invoke callback"), 4U);
    EXPECT_NE(thread, std::this_thread::get_id());
    const auto sent = platform.sent();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(thread, sent.back().thread);
  }
}

TEST_F(ProfileCacheListenerTest, Register_CachedToken_OnlyAVerboseLine) {
  const Key key = addConfirmed("ims");
  log->clear();
  key->registerExpirationListener([] {});
  EXPECT_THAT(takeKeptLines(), IsEmpty());
  log->clear();
  key->registerExpirationListener([] {});
  const std::string line =
      "ProfileCache: registerExpirationListener " + std::to_string(tokenOf(key));
  const auto lines = log->lines();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), CapturedLine{LogLevel::Verbose, "PAVO", line}),
            1);
}

TEST_F(ProfileCacheListenerTest, Register_UnknownToken_AnErrorAndItNeverRuns) {
  const Key key = addConfirmed("ims");
  manager.refresh(PDC_REFRESH_COMPLETED);
  takeKeptLines();
  bool hasRun = false;
  key->registerExpirationListener([&] { hasRun = true; });
  EXPECT_THAT(takeKeptLines(), ElementsAre("Error: ProfileCache: token is not present or expired"));
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_FALSE(hasRun);
}

TEST_F(ProfileCacheListenerTest, Register_NullEntry_Nothing) {
  const Key key = addConfirmed("ims");
  platform.rejectNext(0x2B);
  indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
  takeKeptLines();
  bool hasRun = false;
  key->registerExpirationListener([&] { hasRun = true; });
  EXPECT_THAT(takeKeptLines(), IsEmpty());
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_FALSE(hasRun);
}

TEST_F(ProfileCacheListenerTest, Listeners_OfDroppedKeys_AreSkipped) {
  const Key key = addConfirmed("ims");
  Key dropped = keyOf(1);
  std::string order;
  dropped->registerExpirationListener([&] { order += "dropped"; });
  key->registerExpirationListener([&] { order += "kept"; });
  dropped.reset();
  log->clear();
  ASSERT_TRUE(manager.deleteProfile(key));
  EXPECT_EQ(order, "kept");
  EXPECT_EQ(lineCount("invoke callback"), 1U);
}

TEST_F(ProfileCacheListenerTest, Listeners_OfADroppedKey_GoWithItsRelease) {
  const Key key = addConfirmed("ims");
  Key dropped = keyOf(1);
  const auto held = std::make_shared<int>(0);
  dropped->registerExpirationListener([held] {});
  EXPECT_EQ(held.use_count(), 2);
  dropped.reset();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(ProfileCacheListenerTest, Listeners_EmptyAndThrowing_TheOthersRunAndTheWorkerGoesOn) {
  for (const End& end : ends()) {
    SCOPED_TRACE(end.what);
    const Key key = addConfirmed("ims");
    bool hasRun = false;
    key->registerExpirationListener({});
    key->registerExpirationListener([] { throw std::runtime_error("client"); });
    key->registerExpirationListener([] { throw 7; });
    key->registerExpirationListener([&] { hasRun = true; });
    end.come(*this, key);
    EXPECT_TRUE(hasRun);
    EXPECT_NE(add("alive"), nullptr);
  }
}

// The dump is the one call that a listener may make. The containers must be consistent at that
// moment.
TEST_F(ProfileCacheListenerTest, Dump_InAListener_SeesTheCacheAfterTheChange) {
  struct Row {
    const char* what;
    bool entryRemains;
  };
  const Row rows[] = {{"remove", false},
                      {"delete indication", false},
                      {"modify indication", true},
                      {"refresh", false},
                      {"refresh by the modem", false}};
  const std::vector<End> all = ends();
  for (std::size_t i = 0; i < all.size(); ++i) {
    ASSERT_STREQ(all[i].what, rows[i].what);
    SCOPED_TRACE(all[i].what);
    const Key key = addConfirmed("ims");
    setModemProfile(static_cast<std::uint8_t>(key->getProfileId()), "changed");
    Lines seen;
    key->registerExpirationListener([&] { seen = manager.dump(); });
    all[i].come(*this, key);
    const CacheDump dump = CacheDump::of(seen);
    if (rows[i].entryRemains) {
      EXPECT_THAT(dump.cache, testing::Contains(entryLine(
                                  key, "ProfileId=" + std::to_string(key->getProfileId()) +
                                           ",ApnName=changed,")));
    } else {
      for (const std::string& line : dump.cache) {
        EXPECT_FALSE(line.starts_with("  " + std::to_string(tokenOf(key)) + ":")) << line;
      }
    }
    EXPECT_THAT(dump.pending, IsEmpty());
    for (int index = 0; index < 256; ++index) {
      platform.eraseProfile(static_cast<std::uint8_t>(index));
    }
    manager.refresh(PDC_REFRESH_COMPLETED);
    indicate(static_cast<std::uint8_t>(key->getProfileId()), WDS_PROFILE_EVENT_DELETE_V01);
    ASSERT_THAT(pending(), IsEmpty());
  }
}

TEST_F(ProfileCacheListenerTest, Dump_InListenersOfTwoEntries_BothSeeBothGone) {
  setModemProfile(5, "net");
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  indicate(5, WDS_PROFILE_EVENT_CREATE_V01);
  std::vector<Lines> seen;
  const std::list<Key> keys = keysOf(5);
  for (const Key& key : keys) {
    key->registerExpirationListener([&] { seen.push_back(CacheDump::of(manager.dump()).cache); });
  }
  indicate(5, WDS_PROFILE_EVENT_DELETE_V01);
  EXPECT_THAT(seen, ElementsAre(IsEmpty(), IsEmpty()));
}

TEST_F(ProfileCacheListenerTest, Operations_InAListener_AnswerEmptyAndTheWorkerGoesOn) {
  for (const End& end : ends()) {
    SCOPED_TRACE(end.what);
    const Key key = addConfirmed("ims");
    bool hasRun = false;
    key->registerExpirationListener([&] {
      EXPECT_EQ(add("inner"), nullptr);
      EXPECT_FALSE(manager.modifyProfile(ModifyProfileParams(), key));
      EXPECT_FALSE(manager.deleteProfile(key));
      EXPECT_THAT(manager.filter(FilterProfileParams()), IsEmpty());
      EXPECT_FALSE(manager.getProfile(key).has_value());
      EXPECT_FALSE(manager.match(FilterProfileParams(), key));
      manager.refresh(PDC_REFRESH_STARTED);
      key->registerExpirationListener([] {});
      hasRun = true;
    });
    end.come(*this, key);
    EXPECT_TRUE(hasRun);
    EXPECT_NE(add("alive"), nullptr);
  }
}

TEST_F(ProfileCacheListenerTest, Drop_InAListener_IsCarriedOutAfterwards) {
  const Key key = addConfirmed("ims");
  Key inner = addConfirmed("inner");
  const auto token = tokenOf(inner);
  key->registerExpirationListener([&] { inner.reset(); });
  platform.clearCalls();
  ASSERT_TRUE(manager.deleteProfile(key));
  EXPECT_EQ(inner, nullptr);
  EXPECT_TRUE(platform.waitForSent(0x29, 2));
  EXPECT_TRUE(waitForLine("ProfileCache: releaseProfile token=" + std::to_string(token)));
  EXPECT_TRUE(waitForLine("Released profile 2"));
}

}  // namespace
}  // namespace pavo::test
