// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "CapturingLogWriter.h"
#include "MessageBytes.h"
#include "Modem3gppProfile.h"
#include "ModemProfile.h"

#include <sys/mman.h>

#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pavo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A BareProfile is the base with nothing added.
class BareProfile : public ModemProfile {
 public:
  using ModemProfile::ModemProfile;
  std::shared_ptr<ModemProfile> diff(const ModifyProfileParams&) const override { return nullptr; }
  ProfileParams get() const override { return {}; }
  wds_create_profile_req_msg_v01 constructAddRequest() const override { return {}; }
  wds_modify_profile_settings_req_msg_v01 constructModifyRequest() const override { return {}; }
};

class StubKey : public IProfileKey {
 public:
  int getProfileId() override { return 0; }
  void registerExpirationListener(std::function<void()>) override {}
  std::string dump() override { return "stub"; }
};

ProfileParams baseAttributes() {
  ProfileParams params;
  params.setApnName("Some.APN_1");
  params.setUserName("User");
  params.setPassword("Secret");
  params.setAuthType(AuthType::PAP);
  params.setApnTypesMask(0x41);
  params.setApnClass(ApnClass::APP);
  params.setIsClatEnabled(true);
  return params;
}

TEST(ModemProfileTest, Construct_FromParams_BaseAttributesInModemForm) {
  const BareProfile profile(baseAttributes());
  EXPECT_EQ(profile.dump(),
            "ProfileId=-1,ApnName=some.apn_1,UserName=User,Password=Secret,AuthType=PAP,"
            "ApnTypesMask=3,ApnClass=APP,IsClatEnabled=1,");
}

TEST(ModemProfileTest, Construct_FromSettings_OnlyTheBasesFields) {
  const auto settings = emptySettings()
                            .u8(60, 1)
                            .u8(84, 1)
                            .text(85, "ims")
                            .u8(2188, 1)
                            .u8(2189, 1)
                            .u8(3240, 1)
                            .u64(3248, 5)
                            .u8(3256, 1)
                            .u8(3257, 2);
  const BareProfile profile(300, settings.as<wds_get_profile_settings_resp_msg_v01>());
  EXPECT_EQ(profile.dump(), "ProfileId=300,ApnTypesMask=5,IsClatEnabled=1,");
  EXPECT_TRUE(profile.getIsPersistent());
  EXPECT_FALSE(profile.getIsPavoCreated());
}

TEST(ModemProfileTest, Construct_ApnName_CutTo150BytesInLowerCase) {
  struct Row {
    std::string given;
    std::string stored;
  };
  for (const Row& row : {Row{"", ""}, Row{"IMS", "ims"}, Row{"A\xC4_9", "a\xC4_9"},
                         Row{std::string(150, 'Q'), std::string(150, 'q')},
                         Row{std::string(151, 'Q'), std::string(150, 'q')}}) {
    SCOPED_TRACE(row.given);
    ProfileParams params;
    params.setApnName(row.given);
    const BareProfile profile(params);
    EXPECT_TRUE(profile.hasApnName());
    EXPECT_EQ(profile.getApnName(), row.stored);
  }
}

TEST(ModemProfileTest, Getters_AbsentAttributes_ReadAsZero) {
  const BareProfile profile{ProfileParams()};
  EXPECT_FALSE(profile.hasApnName());
  EXPECT_EQ(profile.getApnName(), "");
  EXPECT_FALSE(profile.hasUserName());
  EXPECT_EQ(profile.getUserName(), "");
  EXPECT_FALSE(profile.hasPassword());
  EXPECT_EQ(profile.getPassword(), "");
  EXPECT_FALSE(profile.hasAuthType());
  EXPECT_EQ(profile.getAuthType(), AuthType::NONE);
  EXPECT_FALSE(profile.hasApnTypesMask());
  EXPECT_EQ(profile.getApnTypesMask(), 0U);
  EXPECT_FALSE(profile.hasApnClass());
  EXPECT_EQ(profile.getApnClass(), ApnClass::UNCLASSIFIED);
  EXPECT_FALSE(profile.hasIsClatEnabled());
  EXPECT_FALSE(profile.getIsClatEnabled());
  EXPECT_FALSE(profile.hasCommonIPType());
  EXPECT_EQ(profile.getCommonIPType(), IPType::UNKNOWN);
  EXPECT_FALSE(profile.hasOverrideHomeIPType());
  EXPECT_EQ(profile.getOverrideHomeIPType(), IPType::UNKNOWN);
}

TEST(ModemProfileTest, Setters_AnyValue_StoredAsGiven) {
  BareProfile profile{ProfileParams()};
  profile.setApnName("MiXed");
  profile.setUserName("");
  profile.setPassword("p");
  profile.setAuthType(AuthType{7});
  profile.setApnTypesMask(~0ULL);
  profile.setApnClass(ApnClass{-7});
  profile.setIsClatEnabled(false);
  profile.setCommonIPType(IPType{9});
  profile.setOverrideHomeIPType(IPType::UNKNOWN);
  profile.setProfileId(12);
  profile.setIsPersistent(true);
  profile.setIsPavoCreated(true);
  EXPECT_EQ(profile.dump(),
            "ProfileId=12,ApnName=MiXed,UserName=,Password=p,AuthType=7,CommonIPType=9,"
            "ApnTypesMask=18446744073709551615,ApnClass=-7,IsClatEnabled=0,");
  EXPECT_EQ(profile.getApnName(), "MiXed");
  EXPECT_EQ(profile.getApnTypesMask(), ~0ULL);
  EXPECT_TRUE(profile.hasOverrideHomeIPType());
  EXPECT_TRUE(profile.hasIsClatEnabled());
  EXPECT_EQ(profile.getProfileId(), 12);
  EXPECT_TRUE(profile.getIsPersistent());
  EXPECT_TRUE(profile.getIsPavoCreated());
}

TEST(ModemProfileTest, ConstructProfileIdentifier_AnyId_TypeZeroAndLowByte) {
  struct Row {
    int id;
    int index;
  };
  for (const Row& row : {Row{0, 0}, Row{7, 7}, Row{255, 255}, Row{258, 2}, Row{-1, 255}}) {
    SCOPED_TRACE(row.id);
    BareProfile profile{ProfileParams()};
    profile.setProfileId(row.id);
    EXPECT_THAT(MessageBytes(8)
                    .u8(4, static_cast<std::uint8_t>(row.index))
                    .differences(MessageBytes::of(profile.constructProfileIdentifier())),
                IsEmpty());
  }
}

TEST(ModemProfileTest, UpdateAddParameters_MessageFullOfOnes_ClearedButForTheBasesFields) {
  BareProfile profile(baseAttributes());
  profile.setIsPersistent(true);
  wds_create_profile_req_msg_v01 request;
  std::memset(&request, 0xFF, sizeof request);
  profile.updateAddParameters(request);
  EXPECT_THAT(MessageBytes(createRequestSize)
                  .u8(2180, 1)
                  .u8(2181, 1)
                  .u8(3232, 1)
                  .u64(3240, 3)
                  .u8(3248, 1)
                  .u8(3249, 1)
                  .differences(MessageBytes::of(request)),
              IsEmpty());
}

TEST(ModemProfileTest, UpdateModifyParameters_MessageFullOfOnes_ClearedButForTheBasesFields) {
  BareProfile profile(baseAttributes());
  profile.setIsPersistent(true);
  profile.setProfileId(9);
  wds_modify_profile_settings_req_msg_v01 request;
  std::memset(&request, 0xFF, sizeof request);
  profile.updateModifyParameters(request);
  EXPECT_THAT(MessageBytes(modifyRequestSize)
                  .u8(4, 9)
                  .u8(3236, 1)
                  .u64(3240, 3)
                  .u8(3248, 1)
                  .u8(3249, 1)
                  .differences(MessageBytes::of(request)),
              IsEmpty());
}

TEST(ModemProfileTest, UpdateGetParameters_OnlyWhatIsPresent_InClientForm) {
  FilterProfileParams nothing;
  BareProfile(ProfileParams()).updateGetParameters(nothing);
  EXPECT_EQ(nothing.dump(), "None: ");

  BareProfile profile(baseAttributes());
  profile.setCommonIPType(IPType::V4);
  profile.setApnTypesMask(0xFFFF'FFFF'0000'3003);
  FilterProfileParams out;
  profile.updateGetParameters(out);
  EXPECT_EQ(out.dump(),
            "None: ApnName=some.apn_1,UserName=User,Password=Secret,AuthType=PAP,"
            "ApnTypesMask=DEFAULT|IMS|RCS|,ApnClass=APP,IsClatEnabled=1,");
}

TEST(ModemProfileTest, RefCount_UpAndDown_IsCounted) {
  BareProfile profile{ProfileParams()};
  profile.incRefCount();
  profile.incRefCount();
  EXPECT_EQ(profile.getRefCount(), 2);
  profile.decRefCount();
  profile.decRefCount();
  profile.decRefCount();
  EXPECT_EQ(profile.getRefCount(), -1);
}

// Finds the count in the object by the bytes that two calls change. Two thousand million calls of
// incRefCount would take too long.
void setRefCount(BareProfile& profile, int count) {
  const auto bytesOf = [&profile] {
    std::vector<int> words(sizeof profile / sizeof(int));
    std::memcpy(words.data(), static_cast<const void*>(&profile), words.size() * sizeof(int));
    return words;
  };
  const std::vector<int> before = bytesOf();
  profile.incRefCount();
  const std::vector<int> after = bytesOf();
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (before[i] != after[i]) {
      std::memcpy(reinterpret_cast<unsigned char*>(&profile) + i * sizeof(int), &count,
                  sizeof count);
    }
  }
}

TEST(ModemProfileDeathTest, IncRefCount_AtTheLargestInt_Aborts) {
  EXPECT_EXIT(
      {
        BareProfile profile{ProfileParams()};
        setRefCount(profile, INT_MAX - 1);
        profile.incRefCount();
        if (profile.getRefCount() == INT_MAX) {
          profile.incRefCount();
        }
        _exit(1);
      },
      testing::KilledBySignal(SIGABRT), "");
}

TEST(ModemProfileDeathTest, DecRefCount_AtTheSmallestInt_Aborts) {
  EXPECT_EXIT(
      {
        BareProfile profile{ProfileParams()};
        setRefCount(profile, INT_MIN + 1);
        profile.decRefCount();
        if (profile.getRefCount() == INT_MIN) {
          profile.decRefCount();
        }
        _exit(1);
      },
      testing::KilledBySignal(SIGABRT), "");
}

TEST(ModemProfileTest, Apply_Null_ChangesNothing) {
  Modem3gppProfile profile(baseAttributes());
  const std::string before = profile.dump();
  profile.apply(nullptr);
  EXPECT_EQ(profile.dump(), before);
}

TEST(ModemProfileTest, Apply_Changes_TakesPresentMembersAndNeverIdentity) {
  Modem3gppProfile profile(baseAttributes());
  profile.setProfileName("name");
  profile.setProfileId(4);
  profile.setIsPersistent(true);
  profile.setIsPavoCreated(true);
  profile.incRefCount();
  const auto changes = std::make_shared<Modem3gppProfile>(ProfileParams());
  profile.apply(changes);
  const char* const base =
      "ProfileId=4,ApnName=some.apn_1,UserName=User,Password=Secret,AuthType=PAP,ApnTypesMask=3,"
      "ApnClass=APP,IsClatEnabled=1,ProfileName=name,";
  EXPECT_EQ(profile.dump(), base);

  changes->setApnName("NEW" + std::string(150, 'Z'));
  changes->setUserName("");
  changes->setPassword("q");
  changes->setAuthType(AuthType::NONE);
  changes->setCommonIPType(IPType::V6);
  changes->setApnTypesMask(0);
  changes->setApnClass(ApnClass::UNCLASSIFIED);
  changes->setIsClatEnabled(false);
  changes->setOverrideHomeIPType(IPType::UNKNOWN);
  changes->setLteRoamIPType(IPType::V4);
  changes->setUmtsRoamIPType(IPType::V6);
  changes->setMaxPdnsConnPerBlock(65536);
  changes->setMaxPdnConnTimer(2);
  changes->setPdnReqWaitInterval(3);
  changes->setIsApnDisabled(true);
  changes->setIsEmergencySupported(true);
  changes->setProfileName("other");
  changes->setProfileId(99);
  changes->incRefCount();
  changes->incRefCount();
  profile.apply(changes);
  EXPECT_EQ(profile.dump(),
            "ProfileId=4,ApnName=new" + std::string(147, 'z') +
                ",UserName=,Password=q,AuthType=NONE,CommonIPType=V6,ApnTypesMask=0,ApnClass=0,"
                "IsClatEnabled=0,OverrideHomeIPType=UNKNOWN,LteRoamIP=V4,UmtsRoamIP=V6,"
                "MaxPdnsConnPerBlock=65536,MaxPdnConnTimer=2,PdnReqWaitInterval=3,IsApnDisabled=1,"
                "IsEmergencySupported=1,ProfileName=name,");
  EXPECT_TRUE(profile.getIsPersistent());
  EXPECT_TRUE(profile.getIsPavoCreated());
  EXPECT_EQ(profile.getRefCount(), 1);
}

TEST(ModemProfileTest, Destroy_Listeners_RunInOrderForLiveKeysOnly) {
  const CapturingLogWriter log;
  const auto alive = std::make_shared<StubKey>();
  auto dead = std::make_shared<StubKey>();
  std::string order;
  {
    BareProfile profile{ProfileParams()};
    profile.registerExpirationListener([&] { order += "1"; }, alive);
    profile.registerExpirationListener([&] { order += "dead"; }, dead);
    profile.registerExpirationListener([&] { order += "empty"; }, std::weak_ptr<IProfileKey>());
    const std::function<void()> twice = [&] { order += "2"; };
    profile.registerExpirationListener(twice, alive);
    profile.registerExpirationListener(twice, alive);
    dead.reset();
  }
  EXPECT_EQ(order, "122");
  EXPECT_THAT(log.lines(), ElementsAre(CapturedLine{LogLevel::Debug, "PAVO", "~ModemProfile()"},
                                       CapturedLine{LogLevel::Debug, "PAVO", "invoke callback"},
                                       CapturedLine{LogLevel::Debug, "PAVO", "invoke callback"},
                                       CapturedLine{LogLevel::Debug, "PAVO", "invoke callback"}));
}

TEST(ModemProfileTest, Destroy_EmptyAndThrowingListeners_TheOthersRun) {
  const CapturingLogWriter log;
  const auto key = std::make_shared<StubKey>();
  std::string order;
  {
    BareProfile profile{ProfileParams()};
    profile.registerExpirationListener({}, key);
    profile.registerExpirationListener([] { throw std::runtime_error("client"); }, key);
    profile.registerExpirationListener([] { throw 1; }, key);
    profile.registerExpirationListener([&] { order += "last"; }, key);
  }
  EXPECT_EQ(order, "last");
  // The empty profile has no listener to run and logs no line.
  EXPECT_EQ(log.messages(LogLevel::Debug).size(), 4U);
}

TEST(ModemProfileTest, Destroy_WithoutListeners_OneLine) {
  const CapturingLogWriter log;
  { const BareProfile profile{ProfileParams()}; }
  EXPECT_THAT(log.messages(), ElementsAre("~ModemProfile()"));
}

struct Tracked {
  explicit Tracked(int& total) : count(total) { ++count; }
  Tracked(const Tracked& other) : count(other.count) { ++count; }
  Tracked& operator=(const Tracked&) = delete;
  ~Tracked() { --count; }
  int& count;
};

TEST(ModemProfileTest, ClearExpiredListeners_LiveAndDeadKeys_OnlyTheLiveStay) {
  int held = 0;
  std::string order;
  const auto alive = std::make_shared<StubKey>();
  auto dead = std::make_shared<StubKey>();
  {
    BareProfile profile{ProfileParams()};
    const auto listener = [&](const char* name) {
      return [&order, name, tracked = Tracked(held)] { order += name; };
    };
    profile.registerExpirationListener(listener("a"), alive);
    profile.registerExpirationListener(listener("b"), dead);
    profile.registerExpirationListener(listener("c"), alive);
    profile.registerExpirationListener(listener("d"), {});
    EXPECT_EQ(held, 4);
    dead.reset();
    profile.clearExpiredListeners();
    EXPECT_EQ(held, 2);
  }
  EXPECT_EQ(order, "ac");
  EXPECT_EQ(held, 0);
}

// A GuardedPage is a page for one shared object and its counts. Writes to it can be forbidden.
class GuardedPage {
 public:
  GuardedPage()
      : start(mmap(/*addr=*/nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                   /*fd=*/-1, /*offset=*/0)) {}
  GuardedPage(const GuardedPage&) = delete;
  GuardedPage& operator=(const GuardedPage&) = delete;
  ~GuardedPage() { munmap(start, bytes); }

  bool forbidWrites() { return mprotect(start, bytes, PROT_READ) == 0; }
  bool allowWrites() { return mprotect(start, bytes, PROT_READ | PROT_WRITE) == 0; }

  static constexpr std::size_t bytes = 4096;
  void* const start;
};

template <typename Object>
struct PageAllocator {
  using value_type = Object;
  explicit PageAllocator(GuardedPage& guarded) : page(guarded) {}
  template <typename Other>
  explicit PageAllocator(const PageAllocator<Other>& other) : page(other.page) {}

  Object* allocate(std::size_t count) {
    static_assert(sizeof(Object) <= GuardedPage::bytes);
    return count == 1 ? static_cast<Object*>(page.start) : nullptr;
  }
  void deallocate(Object*, std::size_t) {}

  GuardedPage& page;
};

// Taking a handle of the key to check it, even for a moment, writes to the count of handles. If the
// client drops its handle just then, that handle is the last one, and the key would be destroyed on
// the worker.
TEST(ModemProfileDeathTest, Listeners_ClearedAndTold_NoHandleOfTheirKeyIsTaken) {
  EXPECT_EXIT(
      {
        GuardedPage page;
        const auto key = std::allocate_shared<StubKey>(PageAllocator<StubKey>(page));
        std::optional<BareProfile> profile(ProfileParams{});
        bool isTold = false;
        profile->registerExpirationListener([&] { isTold = page.allowWrites(); }, key);
        if (!page.forbidWrites()) {
          _exit(1);
        }
        profile->clearExpiredListeners();
        profile.reset();
        _exit(isTold ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace pavo::test
