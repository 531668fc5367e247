// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// In these tests, listeners on the worker thread call the library, drop keys or throw.
#include <pavo/Manager.h>

#include "SystemTest.h"

#include <atomic>
#include <list>
#include <stdexcept>

namespace pavo::test {
namespace {

using testing::HasSubstr;

ModifyProfileParams userNamed(const std::string& user) {
  ModifyProfileParams change;
  change.setUserName(user);
  return change;
}

class WorkerThreadTest : public SystemTest {
 protected:
  WorkerThreadTest() { connect(); }

  // Returns the number of lines since position that report this outcome of a call on the worker
  // thread.
  std::size_t callsThatWere(const std::string& outcome, std::size_t position) {
    const std::string start = "called on the worker thread, " + outcome + ": ";
    std::size_t count = 0;
    for (const std::string& message : log.messagesSince(position)) {
      count += message.starts_with(start) ? 1 : 0;
    }
    return count;
  }

  // Deletes the key's profile on the modem. To a listener this is an edit by another client.
  void deleteByAnother(const Key& key) {
    control("delete", {{"index", key->getProfileId()}});
    settle();
  }
};

TEST_F(WorkerThreadTest, Listener_DropsItsOwnKey_IsReleasedAfterwards) {
  Key key = add(transientProfile("ims"));
  const int index = key->getProfileId();
  std::atomic<bool> ran = false;
  key->registerExpirationListener([&] {
    key.reset();
    ran = true;
  });
  settle();
  const std::size_t position = log.end();
  control("delete", {{"index", index}});
  settle();
  EXPECT_TRUE(ran);
  EXPECT_EQ(log.count("~ProfileKey", position), 1u);
  EXPECT_EQ(callsThatWere("put off", position), 1u);
  expectCacheEqualsTable();
}

TEST_F(WorkerThreadTest, Listener_DropsTheLastKeyOfAnotherProfile_DeletesItAfterTheEvent) {
  const Key key = add(transientProfile("first"));
  Key other = add(transientProfile("second"));
  key->registerExpirationListener([&] { other.reset(); });
  settle();
  deleteByAnother(key);
  ASSERT_TRUE(waitUntil([&] { return table().empty(); })) << "the release was lost";
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(WorkerThreadTest, Listener_DropsKeysDuringAClientsDelete_DeletesThemAfterwards) {
  const Key key = add(transientProfile("first"));
  std::list<Key> others;
  for (int i = 0; i < 5; ++i) {
    others.push_back(add(transientProfile("other" + std::to_string(i))));
  }
  key->registerExpirationListener([&] { others.clear(); });
  EXPECT_TRUE(manager->deleteProfile(key));
  ASSERT_TRUE(waitUntil([&] { return table().empty(); })) << "a release was lost";
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(WorkerThreadTest, Listener_CallsEveryOperation_IsAnsweredEmptyAndLogged) {
  const Key key = add(transientProfile("ims"));
  const Key other = add(transientProfile("other"));
  int answers = 0;
  std::atomic<bool> ran = false;
  key->registerExpirationListener([&] {
    answers += manager->addProfile(transientProfile("new")) != nullptr;
    answers += manager->modifyProfile(userNamed("user"), other);
    answers += manager->deleteProfile(other);
    answers += !manager->filter(FilterProfileParams()).empty();
    answers += manager->getProfile(other).has_value();
    answers += manager->match(FilterProfileParams(), other);
    manager->refresh(PDC_REFRESH_STARTED);
    manager->init(0, /*useAndroidLog=*/true);
    other->registerExpirationListener([] {});
    ran = true;
  });
  settle();
  const std::size_t position = log.end();
  deleteByAnother(key);
  EXPECT_TRUE(ran);
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(callsThatWere("refused", position), 9u);
  EXPECT_TRUE(manager->getProfile(other)) << "the refresh was refused, too";
  expectCacheEqualsTable();
}

TEST_F(WorkerThreadTest, Listener_CallsDump_SeesAConsistentCache) {
  const Key key = add(transientProfile("ims"));
  const Key other = add(transientProfile("other"));
  std::vector<std::string> lines;
  key->registerExpirationListener([&] { lines = manager->dump(); });
  deleteByAnother(key);
  ASSERT_FALSE(lines.empty());
  EXPECT_THAT(lines[1], HasSubstr("ApnName=other,"));
  EXPECT_EQ(lines[2], "Pending:");
}

TEST_F(WorkerThreadTest, Listener_CallsDumpDuringARefresh_SeesAnEmptyCache) {
  const Key key = add(transientProfile("ims"));
  settle();
  std::vector<std::string> lines;
  key->registerExpirationListener([&] { lines = manager->dump(); });
  refresh();
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "Cache:");
  EXPECT_EQ(lines[1], "Pending:");
}

TEST_F(WorkerThreadTest, Listener_Throws_TheNextOnesStillRun) {
  const Key key = add(transientProfile("ims"));
  std::atomic<int> runs = 0;
  key->registerExpirationListener([] { throw std::runtime_error("from a listener"); });
  key->registerExpirationListener([] { throw 42; });
  key->registerExpirationListener([&runs] { ++runs; });
  deleteByAnother(key);
  EXPECT_EQ(runs, 1);
  expectCacheEqualsTable();
}

TEST_F(WorkerThreadTest, Listener_Empty_IsIgnored) {
  const Key key = add(transientProfile("ims"));
  std::atomic<int> runs = 0;
  key->registerExpirationListener({});
  key->registerExpirationListener(nullptr);
  key->registerExpirationListener([&runs] { ++runs; });
  deleteByAnother(key);
  EXPECT_EQ(runs, 1);
}

TEST_F(WorkerThreadTest, Listener_OwnsItsKey_KeepsTheProfileUntilItGoes) {
  const Key key = add(transientProfile("ims"));
  auto witness = std::make_shared<int>(0);
  key->registerExpirationListener([key = key, witness] {});
  deleteByAnother(key);
  EXPECT_EQ(witness.use_count(), 1) << "the listener is still stored";
  expectCacheEqualsTable();
}

TEST_F(WorkerThreadTest, Listener_OwnsTheLastKeyOfAnother_ReleasesItWhenItGoes) {
  const Key key = add(transientProfile("ims"));
  key->registerExpirationListener([other = add(transientProfile("other"))] {});
  deleteByAnother(key);
  ASSERT_TRUE(waitUntil([&] { return table().empty(); })) << "the release was lost";
  expectCacheEqualsTable();
}

TEST_F(WorkerThreadTest, Listener_AtInit_MayUseKeysAndTheManager) {
  // The listener runs on the thread that replaces the worker; the worker has ended by then.
  const Key key = add(transientProfile("ims"));
  Key other = add(transientProfile("other"));
  std::atomic<bool> ran = false;
  key->registerExpirationListener([&] {
    other.reset();
    manager->getProfile(key);
    manager->dump();
    ran = true;
  });
  manager->init(0, /*useAndroidLog=*/true);
  EXPECT_TRUE(ran);
  awaitRegistered();
  settle();
}

TEST_F(WorkerThreadTest, Listener_AtDestruction_MayUseKeys) {
  const Key key = add(transientProfile("ims"));
  Key other = add(transientProfile("other"));
  std::atomic<bool> ran = false;
  key->registerExpirationListener([&] {
    other.reset();
    ran = true;
  });
  manager.reset();
  EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace pavo::test
