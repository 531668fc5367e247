// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests cover edits by the modem itself and by another process that uses the library.
#include <pavo/Manager.h>

#include "SystemTest.h"

#include <atomic>
#include <csignal>
#include <list>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::IsEmpty;

class OtherClientsTest : public SystemTest {
 protected:
  OtherClientsTest() { connect(); }
};

TEST_F(OtherClientsTest, Create_ByAnother_AppearsWithoutARefresh) {
  control("create", {{"apn", "operator"}, {"pdpType", "V6"}});
  expectCacheEqualsTable();
  EXPECT_EQ(manager->filter(byApn("operator")).size(), 1u);
}

TEST_F(OtherClientsTest, Create_ByAnother_NamedLikeTheLibrarys_IsNotDeletedWithItsKeys) {
  control("create", {{"apn", "operator"}, {"name", "pavo_profile"}, {"persistent", false}});
  settle();
  Key key = find("operator");
  EXPECT_TRUE(manager->getProfile(key)->getIsPavoProfile());
  key.reset();
  EXPECT_EQ(table().size(), 1u);
}

TEST_F(OtherClientsTest, Modify_ByAnother_IsReadThroughTheSameKey) {
  const Key key = add(transientProfile("ims"));
  control("modify", {{"index", key->getProfileId()}, {"apn", "changed"}, {"class", 4}});
  expectCacheEqualsTable();
  const std::optional<ProfileParams> read = manager->getProfile(key);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->getApnName(), "changed");
  EXPECT_EQ(read->getApnClass(), ApnClass::APP);
}

TEST_F(OtherClientsTest, Modify_ByAnother_OfAProfileNotCached_ChangesNothing) {
  manager = std::make_unique<Manager>();
  control("create", {{"apn", "before"}});
  connect();
  control("modify", {{"index", 1}, {"apn", "after"}});
  settle();
  EXPECT_THAT(cache(), IsEmpty());
}

TEST_F(OtherClientsTest, Delete_ByAnother_TakesTheProfileAway) {
  const Key key = add(persistentProfile("ims"));
  control("delete", {{"index", key->getProfileId()}});
  expectCacheEqualsTable();
  EXPECT_FALSE(manager->getProfile(key));
}

TEST_F(OtherClientsTest, Delete_ByAnother_OfAnIndexThatIsUsedAgain_LeavesTheNewProfile) {
  const Key old = add(transientProfile("old"));
  const int index = old->getProfileId();
  control("delete", {{"index", index}});
  const int again = control("create", {{"apn", "new"}})["index"];
  EXPECT_EQ(index, again);
  expectCacheEqualsTable();
  EXPECT_FALSE(manager->getProfile(old));
}

TEST_F(OtherClientsTest, Edits_ManyByAnother_LeaveCacheAndTableEqual) {
  for (int round = 0; round < 20; ++round) {
    SCOPED_TRACE(round);
    const int index = control("create", {{"apn", "apn" + std::to_string(round)}})["index"];
    control("modify", {{"index", index}, {"user", "user" + std::to_string(round)}});
    expectCacheEqualsTable();
    if (round % 3 != 0) {
      control("delete", {{"index", index}});
      expectCacheEqualsTable();
    }
  }
}

TEST_F(OtherClientsTest, Edits_FasterThanTheLibraryReads_AreRightAfterARefresh) {
  // If a profile is deleted before the library could read it, its entry has no profile.
  for (int round = 0; round < 200; ++round) {
    const int index = control("create", {{"apn", "apn" + std::to_string(round)}})["index"];
    control("modify", {{"index", index}, {"user", "user" + std::to_string(round)}});
    if (round % 20 != 0) {
      control("delete", {{"index", index}});
    }
  }
  settle();
  refresh();
  expectCacheEqualsTable();
}

TEST_F(OtherClientsTest, Edits_MixedWithOwn_LeaveCacheAndTableEqual) {
  std::list<Key> keys;
  for (int round = 0; round < 6; ++round) {
    SCOPED_TRACE(round);
    keys.push_back(add(transientProfile("own" + std::to_string(round))));
    const int index = control("create", {{"apn", "other" + std::to_string(round)}})["index"];
    control("modify", {{"index", keys.back()->getProfileId()}, {"class", round}});
    expectCacheEqualsTable();
    if (round % 2 == 0) {
      control("delete", {{"index", index}});
      expectCacheEqualsTable();
    }
    if (round % 3 == 0) {
      EXPECT_TRUE(manager->deleteProfile(keys.front()));
      keys.pop_front();
      expectCacheEqualsTable();
    }
  }
  expectNothingPending();
}

TEST_F(OtherClientsTest, SubscriptionChange_WithNewProfiles_ReplacesEverything) {
  const Key key = add(transientProfile("ims"));
  control("indicate", {{"event", 4}, {"index", 255}});
  expectCacheEqualsTable();
  EXPECT_FALSE(manager->getProfile(key)) << "keys do not live over a change of subscription";
}

// The other process carries out its arguments one after the other.
class TwoProcessesTest : public OtherClientsTest {
 protected:
  ChildProcess& startPeer(std::vector<std::string> commands) {
    commands.insert(commands.begin(), PAVO_SYSTEM_PEER_PROGRAM);
    peers.push_back(std::make_unique<ChildProcess>(std::move(commands)));
    return *peers.back();
  }

  void expectDone(ChildProcess& peer, const std::string& command) {
    EXPECT_TRUE(peer.waitForOutput("done " + command + "\n")) << peer.output() << peer.errors();
  }

  void expectSucceeds(ChildProcess& peer) {
    const auto exit = peer.waitForExit();
    ASSERT_TRUE(exit) << peer.output() << peer.errors();
    EXPECT_EQ(exit->code, 0) << peer.output() << peer.errors();
  }

  std::vector<std::unique_ptr<ChildProcess>> peers;
};

TEST_F(TwoProcessesTest, Add_InEitherProcess_AppearsInTheOther) {
  ChildProcess& peer = startPeer({"add", "theirs", "await", "ours", "hold"});
  expectDone(peer, "add theirs");
  settle();
  EXPECT_EQ(manager->filter(byApn("theirs")).size(), 1u);
  const Key key = add(transientProfile("ours"));
  expectDone(peer, "await ours");
  expectCacheEqualsTable();
}

TEST_F(TwoProcessesTest, Modify_ByTheOther_RunsOurListenerAndShowsTheChange) {
  const Key key = add(transientProfile("ours"));
  std::atomic<int> runs = 0;
  key->registerExpirationListener([&runs] { ++runs; });
  ChildProcess& peer = startPeer({"refresh", "-", "modify", "ours=changed", "hold"});
  expectDone(peer, "modify ours=changed");
  expectCacheEqualsTable();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(manager->getProfile(key)->getApnName(), "changed");
}

TEST_F(TwoProcessesTest, Delete_ByTheOther_RunsOurListenerAndTakesTheProfile) {
  const Key key = add(transientProfile("ours"));
  std::atomic<int> runs = 0;
  key->registerExpirationListener([&runs] { ++runs; });
  ChildProcess& peer = startPeer({"refresh", "-", "delete", "ours", "hold"});
  expectDone(peer, "delete ours");
  expectCacheEqualsTable();
  EXPECT_EQ(runs, 1);
  EXPECT_FALSE(manager->getProfile(key));
}

TEST_F(TwoProcessesTest, Delete_ByUs_RunsTheListenerOfTheOther) {
  const Key key = add(transientProfile("ours"));
  ChildProcess& peer = startPeer({"refresh", "-", "listen", "ours", "await-expired", "ours"});
  expectDone(peer, "listen ours");
  EXPECT_TRUE(manager->deleteProfile(key));
  expectSucceeds(peer);
  expectCacheEqualsTable();
}

TEST_F(TwoProcessesTest, Exit_OfTheOther_DeletesTheProfilesOfItsKeys) {
  ChildProcess& peer = startPeer({"add", "theirs", "await", "ours"});
  expectDone(peer, "add theirs");
  settle();
  EXPECT_EQ(table().size(), 1u);
  const Key key = add(transientProfile("ours"));
  expectSucceeds(peer);
  settle();
  EXPECT_EQ(table().size(), 1u);
  expectCacheEqualsTable();
}

TEST_F(TwoProcessesTest, Kill_OfTheOther_LeavesItsProfilesAndDisturbsNobody) {
  ChildProcess& peer = startPeer({"add", "theirs", "hold"});
  expectDone(peer, "add theirs");
  peer.sendSignal(SIGKILL);
  peer.waitForExit();
  awaitRegistered(1);
  expectCacheEqualsTable();
  EXPECT_EQ(table().size(), 1u);
  const Key key = add(transientProfile("ours"));
  expectCacheEqualsTable();
}

TEST_F(TwoProcessesTest, Traffic_FromFourProcessesAtOnce_LeavesCacheAndTableEqual) {
  std::vector<ChildProcess*> started;
  for (int i = 0; i < 3; ++i) {
    started.push_back(&startPeer({"churn", "peer" + std::to_string(i)}));
  }
  for (int i = 0; i < rounds(100); ++i) {
    const Key key = manager->addProfile(transientProfile("ours"));
    manager->filter(FilterProfileParams());
  }
  for (ChildProcess* peer : started) {
    expectSucceeds(*peer);
  }
  // Indications of one index that several processes use in turn cannot be told apart.
  settle();
  refresh();
  expectCacheEqualsTable();
}

}  // namespace
}  // namespace pavo::test
