#include <pavo/Manager.h>

#include "FakePlatformTest.h"

namespace pavo::test {
namespace {

class SmokeTest : public FakePlatformTest {};

TEST_F(SmokeTest, AddFilterDropKeys_ServiceUp_ProfileCreatedAndDeleted) {
  Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());

  AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
  params.setApnName("internet");
  auto key = manager.addProfile(params);
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(key->getProfileId(), 1);
  auto keys = manager.filter(FilterProfileParams());
  EXPECT_EQ(keys.size(), 1U);

  keys.clear();
  key.reset();
  EXPECT_TRUE(platform.waitForSent(OVIX_WDS_DELETE_PROFILE_REQ_V01));
  EXPECT_EQ(platform.profileCount(), 0U);
  EXPECT_EQ(platform.sentIds(), (std::vector<unsigned int>{0xAF, 0x03, 0xA7, 0x27, 0x29}));
}

TEST_F(SmokeTest, AddProfile_SendBlocked_DumpStillAnswers) {
  Manager manager;
  manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
  ASSERT_TRUE(platform.waitForRegistration());
  platform.setEmitsIndications(true);
  auto blocked = platform.blockNext(OVIX_WDS_CREATE_PROFILE_REQ_V01);
  std::thread caller([&] { manager.addProfile(AddProfileParams(true, false)); });
  EXPECT_TRUE(blocked.waitUntilEntered());
  EXPECT_FALSE(manager.dump().empty());
  blocked.release();
  caller.join();
  EXPECT_TRUE(platform.waitFor([&] { return platform.count(FakePlatform::Kind::Decode) == 2; }));
  EXPECT_TRUE(platform.waitUntilIdle());
}

}  // namespace
}  // namespace pavo::test
