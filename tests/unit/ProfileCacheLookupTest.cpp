// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests read the cache: match, get and filter.
#include "LogLines.h"
#include "RunningManagerTest.h"

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProfileCacheLookupTest : public RunningManagerTest {
 protected:
  // Returns a key whose profile is gone from the cache.
  Key keyOfNullEntry() {
    Key key = addConfirmed("ims");
    platform.rejectNext(0x2B);
    indicate(1, WDS_PROFILE_EVENT_MODIFY_V01);
    EXPECT_THAT(cached(), ElementsAre(entryLine(key, "null")));
    takeKeptLines();
    platform.clearCalls();
    return key;
  }
  Key unknownKey() {
    Key key = addConfirmed("ims");
    EXPECT_TRUE(manager.deleteProfile(key));
    takeKeptLines();
    platform.clearCalls();
    return key;
  }
};

TEST_F(ProfileCacheLookupTest, Match_CachedProfile_OnlyTheTraces) {
  const Key key = addConfirmed("ims");
  takeKeptLines();
  platform.clearCalls();
  FilterProfileParams filter;
  filter.setApnName("ims");
  EXPECT_TRUE(manager.match(filter, key));
  filter.setApnName("net");
  EXPECT_FALSE(manager.match(filter, key));
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("Manager::match > Match " + key->dump() + " None: ApnName=ims,",
                          "Manager::match < Match Success true",
                          "Manager::match > Match " + key->dump() + " None: ApnName=net,",
                          "Manager::match < Match Success false"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheLookupTest, Match_UnknownToken_FalseAndAnError) {
  const Key key = unknownKey();
  EXPECT_FALSE(manager.match(FilterProfileParams(), key));
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::match > Match " + key->dump() + " None: ",
                                           line::unknown, "Manager::match < Match Success false"));
}

TEST_F(ProfileCacheLookupTest, Match_NullEntry_FalseWithoutALine) {
  const Key key = keyOfNullEntry();
  EXPECT_FALSE(manager.match(FilterProfileParams(), key));
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::match > Match " + key->dump() + " None: ",
                                           "Manager::match < Match Success false"));
}

TEST_F(ProfileCacheLookupTest, Match_EmptyKey_FalseAndOnlyTheTraces) {
  EXPECT_FALSE(manager.match(FilterProfileParams(), nullptr));
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::match > Match  None: ",
                                           "Manager::match < Match Failure false"));
}

TEST_F(ProfileCacheLookupTest, Get_CachedProfile_OnlyTheTraces) {
  const Key key = addConfirmed("ims");
  takeKeptLines();
  platform.clearCalls();
  const auto read = manager.getProfile(key);
  ASSERT_TRUE(read.has_value());
  const std::string text = "ApnName=ims,IsPavoProfile=1,IsIAProfile=0,";
  EXPECT_EQ(read->dump(), text);
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::getProfile > Get " + key->dump(),
                                           "Manager::getProfile < Get Success " + text));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheLookupTest, Get_UnknownToken_NothingAndAnError) {
  const Key key = unknownKey();
  EXPECT_FALSE(manager.getProfile(key).has_value());
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::getProfile > Get " + key->dump(),
                                           line::unknown, "Manager::getProfile < Get Failure "));
}

TEST_F(ProfileCacheLookupTest, Get_NullEntry_NothingWithoutALine) {
  const Key key = keyOfNullEntry();
  EXPECT_FALSE(manager.getProfile(key).has_value());
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::getProfile > Get " + key->dump(),
                                           "Manager::getProfile < Get Failure "));
}

TEST_F(ProfileCacheLookupTest, Get_EmptyKey_NothingAndOnlyTheTraces) {
  EXPECT_FALSE(manager.getProfile(nullptr).has_value());
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("Manager::getProfile > Get ", "Manager::getProfile < Get Failure "));
}

TEST_F(ProfileCacheLookupTest, Filter_OneMatches_AKeyOfItsToken) {
  const Key key = addConfirmed("ims");
  const Key other = addConfirmed("net");
  takeKeptLines();
  platform.clearCalls();
  FilterProfileParams filter;
  filter.setApnName("net");
  const std::list<Key> keys = manager.filter(filter);
  ASSERT_EQ(keys.size(), 1U);
  EXPECT_NE(keys.front(), other);
  EXPECT_EQ(keys.front()->dump(), other->dump());
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("Manager::filter > Filter params: None: ApnName=net,",
                          "Manager::filter < Filter Success " + other->dump() + ","));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST_F(ProfileCacheLookupTest, Filter_NoneMatches_EmptyListAndSuccess) {
  EXPECT_THAT(manager.filter(FilterProfileParams()), IsEmpty());
  EXPECT_THAT(takeKeptLines(), ElementsAre("Manager::filter > Filter params: None: ",
                                           "Manager::filter < Filter Success "));
}

TEST_F(ProfileCacheLookupTest, Filter_NullEntries_AnErrorEachAndSkipped) {
  for (const int index : {1, 2, 3}) {
    setModemProfile(static_cast<std::uint8_t>(index), "apn");
  }
  platform.rejectNext(0x2B);
  platform.rejectNext(0x2B);
  manager.refresh(PDC_REFRESH_COMPLETED);
  takeKeptLines();
  const std::list<Key> keys = manager.filter(FilterProfileParams());
  ASSERT_EQ(keys.size(), 1U);
  EXPECT_EQ(keys.front()->getProfileId(), 3);
  EXPECT_THAT(takeKeptLines(),
              ElementsAre("Manager::filter > Filter params: None: ",
                          "Error: ProfileCache: null profile", "Error: ProfileCache: null profile",
                          "Manager::filter < Filter Success " + keys.front()->dump() + ","));
}

TEST_F(ProfileCacheLookupTest, Refused_DuringARefresh_EmptyWhateverTheStatus) {
  const Key key = addConfirmed("ims");
  manager.refresh(PDC_REFRESH_STARTED);
  takeKeptLines();
  platform.clearCalls();
  EXPECT_THAT(manager.filter(FilterProfileParams()), IsEmpty());
  EXPECT_FALSE(manager.match(FilterProfileParams(), key));
  EXPECT_FALSE(manager.getProfile(key).has_value());
  EXPECT_FALSE(manager.modifyProfile(ModifyProfileParams(), key));
  EXPECT_FALSE(manager.deleteProfile(key));
  EXPECT_EQ(add("net"), nullptr);
  EXPECT_THAT(platform.sent(), IsEmpty());
  EXPECT_THAT(
      takeKeptLines(),
      ElementsAre("Manager::filter > Filter params: None: ", "Manager::filter < Filter Failure ",
                  "Manager::match > Match " + key->dump() + " None: ",
                  "Manager::match < Match Failure false",
                  "Manager::getProfile > Get " + key->dump(), "Manager::getProfile < Get Failure ",
                  "Manager::modifyProfile > Modify " + key->dump() + " ",
                  "Manager::modifyProfile < Modify Failure",
                  "Manager::deleteProfile > Delete " + key->dump(),
                  "Manager::deleteProfile < Delete Failure",
                  "Manager::addProfile > Add  persist=0: ApnName=net,IsIAProfile=0,",
                  "Manager::addProfile < Add Failure "));
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_NE(add("net"), nullptr);
}

}  // namespace
}  // namespace pavo::test
