// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests show how holding and dropping keys changes the modem's table.
#include <pavo/Manager.h>

#include "SystemTest.h"

#include <atomic>
#include <list>

namespace pavo::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class KeyTest : public SystemTest {
 protected:
  KeyTest() { connect(); }
};

TEST_F(KeyTest, Drop_LastKeyOfANonPersistentProfile_DeletesIt) {
  Key key = add(transientProfile("ims"));
  EXPECT_EQ(table().size(), 1u);
  key.reset();
  EXPECT_THAT(table(), IsEmpty());
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(KeyTest, Drop_LastKeyOfAPersistentProfile_KeepsIt) {
  Key key = add(persistentProfile("ims"));
  key.reset();
  EXPECT_EQ(table().size(), 1u);
  expectCacheEqualsTable();
  EXPECT_NE(find("ims"), nullptr);
}

TEST_F(KeyTest, Drop_KeyOfAModemsProfile_KeepsIt) {
  control("create", {{"apn", "operator"}});
  settle();
  Key key = find("operator");
  key.reset();
  EXPECT_EQ(table().size(), 1u);
  expectCacheEqualsTable();
}

TEST_F(KeyTest, Drop_KeysOneByOne_OnlyTheLastDeletes) {
  std::list<Key> keys = {add(transientProfile("ims"))};
  for (int i = 0; i < 5; ++i) {
    keys.push_back(find("ims"));
  }
  while (keys.size() > 1) {
    keys.pop_front();
    EXPECT_EQ(table().size(), 1u) << keys.size() << " left";
  }
  keys.clear();
  EXPECT_THAT(table(), IsEmpty());
}

TEST_F(KeyTest, Drop_CopiesOfOneKey_ReleaseOnce) {
  Key key = add(transientProfile("ims"));
  const std::size_t position = log.end();
  std::vector<Key> copies(5, key);
  copies.clear();
  EXPECT_EQ(table().size(), 1u);
  key.reset();
  EXPECT_THAT(table(), IsEmpty());
  EXPECT_EQ(log.count("~ProfileKey", position), 1u);
}

TEST_F(KeyTest, Drop_AfterDelete_AsksTheModemForNothing) {
  Key key = add(transientProfile("ims"));
  EXPECT_TRUE(manager->deleteProfile(key));
  settle();
  control("clear-transcript");
  key.reset();
  EXPECT_THAT(requestsSeen(), IsEmpty());
}

TEST_F(KeyTest, Drop_AfterARefresh_KeepsTheProfileOnTheModem) {
  Key key = add(transientProfile("ims"));
  refresh();
  key.reset();
  EXPECT_EQ(table().size(), 1u);
  expectCacheEqualsTable();
}

TEST_F(KeyTest, Drop_AfterTheModemChangedTheProfile_KeepsIt) {
  Key key = add(transientProfile("ims"));
  control("modify", {{"index", key->getProfileId()}, {"user", "other"}});
  settle();
  key.reset();
  EXPECT_EQ(table().size(), 1u);
  expectCacheEqualsTable();
}

TEST_F(KeyTest, Drop_OnAnotherThread_ReleasesJustSo) {
  Key key = add(transientProfile("ims"));
  std::thread([&] { key.reset(); }).join();
  EXPECT_THAT(table(), IsEmpty());
}

TEST_F(KeyTest, Drop_WhenTheModemRefusesTheDelete_KeepsTheProfileCached) {
  Key key = add(transientProfile("ims"));
  const std::string token = key->dump().substr(key->dump().find('=') + 1);
  settle();
  control("fail", {{"message", "delete-profile"}, {"error", 2}});
  key.reset();
  EXPECT_THAT(keptLogFrom("ProfileCache: releaseProfile"),
              ElementsAre("ProfileCache: releaseProfile token=" + token,
                          "Unable send OVIX_WDS_DELETE_PROFILE_REQ_V01 message",
                          "ProfileCache: failed to release profile"));
  EXPECT_EQ(table().size(), 1u);
  expectCacheEqualsTable();
}

TEST_F(KeyTest, Drop_KeysFoundAfterARefusedRelease_KeepTheProfile) {
  Key key = add(transientProfile("ims"));
  control("fail", {{"message", "delete-profile"}, {"error", 2}});
  key.reset();
  // The refused release has left the count at one; this key makes it two.
  Key found = find("ims");
  found.reset();
  EXPECT_EQ(table().size(), 1u);
  found = find("ims");
  Key second = find("ims");
  found.reset();
  second.reset();
  EXPECT_EQ(table().size(), 1u) << "the count goes on from one";
  expectCacheEqualsTable();
}

TEST_F(KeyTest, Drop_ReleasedProfile_LogsTheWholeSequence) {
  Key key = add(transientProfile("ims"));
  settle();
  const std::string id = std::to_string(key->getProfileId());
  key.reset();
  settle();
  EXPECT_THAT(keptLogFrom("ProfileCache: releaseProfile"),
              testing::Contains("Released profile " + id));
  EXPECT_THAT(keptLogFrom("ProfileCache: releaseProfile"),
              testing::Contains("ProfileCache: onIndication < " + id + " Delete"));
  EXPECT_THAT(keptLogFrom("ProfileCache: releaseProfile"),
              testing::Contains("ProfileCache: pending transaction confirmed"));
}

TEST_F(KeyTest, Dump_OfAKey_IsItsIdAndToken) {
  const Key key = add(transientProfile("ims"));
  EXPECT_THAT(key->dump(), StartsWith(std::to_string(key->getProfileId()) + " token="));
  const Key other = find("ims");
  EXPECT_EQ(key->dump(), other->dump()) << "keys of one profile carry one token";
}

TEST_F(KeyTest, Drop_SixteenPersistentAndTransient_LeavesExactlyThePersistent) {
  std::list<Key> keys;
  for (int i = 0; i < 16; ++i) {
    const std::string apn = "apn" + std::to_string(i);
    keys.push_back(add(i % 2 == 0 ? persistentProfile(apn) : transientProfile(apn)));
  }
  keys.clear();
  const ModemTable left = table();
  EXPECT_EQ(left.size(), 8u);
  for (const auto& [index, profile] : left) {
    EXPECT_EQ(profile["persistent"], true) << index;
  }
  expectCacheEqualsTable();
  expectNothingPending();
}

TEST_F(KeyTest, Listener_OnEveryWayThatAProfileGoes_RunsOnce) {
  const std::vector<std::pair<std::string, std::function<void(const Key&)>>> ways = {
      {"deleted by the client", [&](const Key& key) { EXPECT_TRUE(manager->deleteProfile(key)); }},
      {"deleted by another client",
       [&](const Key& key) {
         control("delete", {{"index", key->getProfileId()}});
         settle();
       }},
      {"changed by another client",
       [&](const Key& key) {
         control("modify", {{"index", key->getProfileId()}, {"user", "other"}});
         control("modify", {{"index", key->getProfileId()}, {"user", "again"}});
         settle();
       }},
      {"refreshed", [&](const Key&) { refresh(); }},
      {"the subscription changed",
       [&](const Key&) {
         control("indicate", {{"event", 4}, {"index", 0}});
         settle();
       }},
      {"another worker in its place",
       [&](const Key&) {
         manager->init(0, /*useAndroidLog=*/true);
         awaitRegistered();
       }},
  };
  for (const auto& [description, goes] : ways) {
    SCOPED_TRACE(description);
    const Key key = add(transientProfile("ims"));
    std::atomic<int> runs = 0;
    key->registerExpirationListener([&runs] { ++runs; });
    settle();
    EXPECT_EQ(runs, 0);
    goes(key);
    EXPECT_EQ(runs, 1);
    for (const auto& [index, profile] : table()) {
      control("delete", {{"index", index}});
    }
    settle();
    EXPECT_EQ(runs, 1);
  }
}

TEST_F(KeyTest, Listener_WhenTheManagerGoes_Runs) {
  const Key key = add(transientProfile("ims"));
  std::atomic<int> runs = 0;
  key->registerExpirationListener([&runs] { ++runs; });
  manager.reset();
  EXPECT_EQ(runs, 1);
}

TEST_F(KeyTest, Listener_OfADroppedKey_DoesNotRun) {
  const Key kept = add(transientProfile("ims"));
  Key dropped = find("ims");
  std::atomic<int> runs = 0;
  dropped->registerExpirationListener([&runs] { ++runs; });
  dropped.reset();
  EXPECT_TRUE(manager->deleteProfile(kept));
  EXPECT_EQ(runs, 0);
}

TEST_F(KeyTest, Listener_SeveralOnSeveralKeys_RunInTheOrderOfTheirRegistration) {
  const Key first = add(transientProfile("ims"));
  const Key second = find("ims");
  std::vector<int> order;
  first->registerExpirationListener([&order] { order.push_back(1); });
  second->registerExpirationListener([&order] { order.push_back(2); });
  first->registerExpirationListener([&order] { order.push_back(3); });
  EXPECT_TRUE(manager->deleteProfile(second));
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_F(KeyTest, Listener_DuringARefresh_IsNotStored) {
  const Key key = add(transientProfile("ims"));
  std::atomic<int> runs = 0;
  manager->refresh(PDC_REFRESH_STARTED);
  key->registerExpirationListener([&runs] { ++runs; });
  refresh();
  EXPECT_EQ(runs, 0);
}

}  // namespace
}  // namespace pavo::test
