// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CapturingLogWriter.h"
#include "ClientRequest.h"
#include "ClientResponse.h"
#include "LogWrapper.h"
#include "ProfileKey.h"
#include "Sequence.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <vector>

namespace pavo::test {
namespace {

// The request function of this fixture keeps its arguments.
class ProfileKeyTest : public testing::Test {
 protected:
  requestFunction keepRequest() {
    return [this](const std::shared_ptr<ClientRequest>& request) {
      LogWrapper::log(LogLevel::Info, logTag, "requested");
      requests.push_back(std::static_pointer_cast<CallbackRequest>(request));
      return std::make_shared<CallbackResponse>(Status::Failure);
    };
  }

  CapturingLogWriter log;
  std::vector<std::shared_ptr<CallbackRequest>> requests;
};

TEST_F(ProfileKeyTest, Accessors_Always_TheConstructorsValues) {
  const auto key = std::make_shared<ProfileKey>(3, 17ULL, keepRequest());
  EXPECT_EQ(key->getProfileId(), 3);
  EXPECT_EQ(key->getToken(), 17ULL);
  EXPECT_TRUE(requests.empty());
}

TEST_F(ProfileKeyTest, Dump_AnyValues_IdAndToken) {
  struct Case {
    int profileId;
    unsigned long long token;
    const char* text;
  };
  const Case cases[] = {
      {3, 17, "3 token=17"},
      {1, 0, "1 token=0"},
      {255, std::numeric_limits<unsigned long long>::max(), "255 token=18446744073709551615"},
      {-1, 5, "-1 token=5"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(ProfileKey(c.profileId, c.token, {}).dump(), c.text);
  }
}

TEST_F(ProfileKeyTest, Destroy_LastHandle_OneReleaseThenTheLine) {
  auto key = std::make_shared<ProfileKey>(3, 17ULL, keepRequest());
  auto copy = key;
  key.reset();
  EXPECT_TRUE(requests.empty()) << "a copy of the handle released";
  copy.reset();
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_TRUE(requests[0]->hasReleaseToken());
  EXPECT_EQ(requests[0]->getReleaseToken(), 17ULL);
  EXPECT_FALSE(requests[0]->hasExpirationInfo());
  EXPECT_EQ(sequenceOf(log.lines()), (Sequence{"I requested", "D ~ProfileKey"}));
}

TEST_F(ProfileKeyTest, RegisterExpirationListener_Shared_ListenerWeakHandleAndToken) {
  const auto key = std::make_shared<ProfileKey>(3, 17ULL, keepRequest());
  int calls = 0;
  key->registerExpirationListener([&] { ++calls; });
  ASSERT_EQ(requests.size(), 1U);
  const CallbackRequest& request = *requests[0];
  EXPECT_TRUE(request.hasExpirationInfo());
  EXPECT_FALSE(request.hasReleaseToken());
  EXPECT_EQ(request.getExpirationToken(), 17ULL);
  EXPECT_EQ(request.getExpirationKey().lock(), key);
  EXPECT_EQ(key.use_count(), 1) << "the request keeps the key alive";
  request.getExpirationCb()();
  EXPECT_EQ(calls, 1);
}

TEST_F(ProfileKeyTest, RegisterExpirationListener_NotShared_ExpiredHandleAndNoException) {
  ProfileKey key(3, 17ULL, keepRequest());
  EXPECT_NO_THROW(key.registerExpirationListener([] {}));
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_TRUE(requests[0]->getExpirationKey().expired());
}

TEST_F(ProfileKeyTest, AnyCall_EmptyAnswer_Ignored) {
  int calls = 0;
  {
    const auto key = std::make_shared<ProfileKey>(3, 17ULL, [&](const auto&) {
      ++calls;
      return nullptr;
    });
    key->registerExpirationListener([] {});
  }
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(sequenceOf(log.lines()), Sequence{"D ~ProfileKey"});
}

TEST_F(ProfileKeyTest, AnyCall_NoRequestFunction_Nothing) {
  {
    const auto key = std::make_shared<ProfileKey>(3, 17ULL, requestFunction());
    key->registerExpirationListener([] {});
  }
  EXPECT_EQ(sequenceOf(log.lines()), Sequence{"D ~ProfileKey"});
}

}  // namespace
}  // namespace pavo::test
