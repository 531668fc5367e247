// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ClientRequest.h"
#include "ClientResponse.h"
#include "EventManager.h"
#include "ProfileCache.h"
#include "ProfileKey.h"
#include "RunningManagerTest.h"

#include <atomic>
#include <csignal>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The cache has no worker here: the test's thread uses it.
class ProfileCacheTest : public FakePlatformTest {
 protected:
  ProfileCacheTest()
      : cache(eventManager, /*subscription=*/0,
              [this](const std::shared_ptr<ClientRequest>& request) {
                asked.push_back(request->dump());
                return std::shared_ptr<ClientResponse>();
              }) {
    EXPECT_TRUE(platform.drainPosted());
    // The service is up, so this turn opens the client.
    eventManager.processEvents();
    EXPECT_EQ(platform.openClientCount(), 1U);
    platform.clearCalls();
    log = std::make_unique<CapturingLogWriter>();
  }

  Lines keptLines() const {
    Lines kept;
    for (const CapturedLine& line : log->lines()) {
      if (line.level == LogLevel::High || line.level == LogLevel::Error) {
        kept.push_back((line.level == LogLevel::Error ? "Error: " : "") + line.message);
      }
    }
    return kept;
  }

  // Holds the requests that the keys have sent.
  Lines asked;
  EventManager eventManager;
  ProfileCache cache;
  std::unique_ptr<CapturingLogWriter> log;
};

TEST_F(ProfileCacheTest, Construct_ServiceUp_EmptyAndNothingRead) {
  EXPECT_THAT(cache.dump(), ElementsAre("Cache:", "Pending:"));
  EXPECT_THAT(platform.sent(), IsEmpty());
}

TEST(TokenDeathTest, Next_CounterAtItsLargest_EndsTheProcess) {
  std::atomic<token> counter{std::numeric_limits<token>::max() - 1};
  EXPECT_EQ(nextToken(counter), std::numeric_limits<token>::max() - 1);
  EXPECT_EXIT(nextToken(counter), testing::KilledBySignal(SIGABRT), "");
}

// The key selects the profile to delete; all other operations use the cached profile's id.
TEST_F(ProfileCacheTest, AnyOperation_KeyWithAnotherId_OnlyRemoveUsesIt) {
  const auto added = cache.add(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  ASSERT_NE(added, nullptr);
  cache.onIndication({1, ProfileChangedEvent::Create});
  cache.onIndication({1, ProfileChangedEvent::Modify});
  const auto key = std::make_shared<ProfileKey>(99, added->getToken(), requestFunction());
  platform.setProfile(99, {});
  platform.clearCalls();

  ModifyProfileParams change;
  change.setPassword("x");
  EXPECT_TRUE(cache.modify(change, key));
  ASSERT_EQ(platform.sent().size(), 1U);
  EXPECT_EQ(platform.sent()[0].as<wds_modify_profile_settings_req_msg_v01>().profile.profile_index,
            1);
  EXPECT_EQ(cache.dump().back(), "  1 Modify");

  platform.clearCalls();
  EXPECT_TRUE(cache.remove(key));
  ASSERT_EQ(platform.sent().size(), 1U);
  EXPECT_EQ(platform.sent()[0].as<wds_delete_profile_req_msg_v01>().profile.profile_index, 99);
  EXPECT_EQ(cache.dump().back(), "  1 Delete");
}

TEST_F(ProfileCacheTest, OnIndication_EventBeyondTheKnown_AnErrorAndNoChange) {
  for (const int event : {5, 7, -1}) {
    SCOPED_TRACE(event);
    log->clear();
    cache.onIndication({12, static_cast<ProfileChangedEvent>(event)});
    EXPECT_THAT(keptLines(), ElementsAre("ProfileCache: onIndication < 12 " + std::to_string(event),
                                         "ProfileCache: updating cache due to indication!",
                                         "Error: Invalid ProfileChangedEvent"));
    EXPECT_THAT(cache.dump(), ElementsAre("Cache:", "Pending:"));
    EXPECT_THAT(platform.sent(), IsEmpty());
  }
}

TEST_F(ProfileCacheTest, RegisterExpirationListener_AnyPath_False) {
  const auto key = cache.add(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  ASSERT_NE(key, nullptr);
  bool hasRun = false;
  EXPECT_FALSE(cache.registerExpirationListener([&] { hasRun = true; }, key, key->getToken()));
  EXPECT_FALSE(cache.registerExpirationListener([] {}, key, key->getToken() + 1));
  EXPECT_TRUE(cache.remove(key));
  EXPECT_TRUE(hasRun);

  platform.rejectNext(0x2B);
  const token before = ProfileCache::generateToken();
  cache.onIndication({3, ProfileChangedEvent::Create});
  EXPECT_FALSE(cache.registerExpirationListener([] {}, key, before + 1));
}

TEST_F(ProfileCacheTest, TokenBeyond32Bits_InTheLog_ItsLowHalf) {
  const token wide = 0x5'FFFF'FFFEULL;
  EXPECT_FALSE(cache.registerExpirationListener([] {}, {}, wide));
  EXPECT_FALSE(cache.releaseProfile(wide));
  EXPECT_THAT(log->messages(), ElementsAre("ProfileCache: registerExpirationListener -2",
                                           "ProfileCache: token is not present or expired",
                                           "ProfileCache: releaseProfile token=-2",
                                           "ProfileCache: token is not present or expired"));
}

TEST_F(ProfileCacheTest, EmptyKey_AnyOperation_NoLine) {
  const FilterProfileParams filter;
  EXPECT_FALSE(cache.modify(ModifyProfileParams(), nullptr));
  EXPECT_FALSE(cache.remove(nullptr));
  EXPECT_FALSE(cache.match(filter, nullptr));
  EXPECT_FALSE(cache.get(nullptr).has_value());
  EXPECT_THAT(log->lines(), IsEmpty());
}

TEST_F(ProfileCacheTest, ReleaseProfile_ItsResults) {
  const auto key = cache.add(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  const auto others = cache.filter(FilterProfileParams());
  EXPECT_TRUE(cache.releaseProfile(key->getToken()));
  platform.rejectNext(0x29);
  EXPECT_FALSE(cache.releaseProfile(key->getToken()));
  EXPECT_TRUE(cache.releaseProfile(key->getToken()));
  EXPECT_FALSE(cache.releaseProfile(key->getToken()));
  EXPECT_TRUE(cache.refresh());
}

TEST_F(ProfileCacheTest, Keys_UseTheRequestFunctionAndTheCacheDoesNot) {
  auto key = cache.add(AddProfileParams(/*isPersistent=*/false, /*isIAProfile=*/false));
  EXPECT_THAT(asked, IsEmpty());
  const std::string token = std::to_string(key->getToken());
  key->registerExpirationListener([] {});
  key.reset();
  EXPECT_THAT(asked, ElementsAre("Callback Register 1 token=" + token + token,
                                 "Callback Release " + token));
}

TEST(ProfileCacheTokenTest, GenerateToken_SeveralThreads_EveryTokenOnce) {
  constexpr std::size_t tokensEach = 2000;
  std::mutex mutex;
  std::set<token> all;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      std::vector<token> own;
      for (std::size_t n = 0; n < tokensEach; ++n) {
        own.push_back(ProfileCache::generateToken());
      }
      EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
      const std::lock_guard lock(mutex);
      all.insert(own.begin(), own.end());
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(all.size(), 4 * tokensEach);
  EXPECT_EQ(*all.rbegin() - *all.begin(), 4 * tokensEach - 1);
}

TEST(ProfileCacheTokenDeathTest, GenerateToken_FreshProcess_StartsAtZero) {
  EXPECT_EXIT(
      {
        const bool counts = ProfileCache::generateToken() == 0 &&
                            ProfileCache::generateToken() == 1 &&
                            ProfileCache::generateToken() == 2;
        _exit(counts ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace pavo::test
