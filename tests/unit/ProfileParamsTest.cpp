// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include <pavo/AddProfileParams.h>
#include <pavo/ProfileParams.h>

#include "SampleParams.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <type_traits>
#include <utility>
#include <vector>

namespace pavo::test {
namespace {

// An Attribute is one attribute, accessed by its own accessors alone. "Empty" is the value that is
// read while it is absent.
struct Attribute {
  std::string name;
  std::function<bool(const ProfileParams&)> isPresent;
  std::function<bool(const ProfileParams&)> readsEmpty;
  std::function<bool(const ProfileParams&)> readsFirst;
  std::function<bool(const ProfileParams&)> readsSecond;
  std::function<void(ProfileParams&)> setEmpty;
  std::function<void(ProfileParams&)> setFirst;
  std::function<void(ProfileParams&)> setSecond;
  std::string emptyText;
  std::string firstText;
  std::string secondText;
};

void PrintTo(const Attribute& attribute, std::ostream* out) { *out << attribute.name; }

template <typename T>
struct Accessors {
  T (ProfileParams::*get)() const;
  void (ProfileParams::*set)(T);
  bool (ProfileParams::*has)() const;
};

template <typename T>
struct Sample {
  T value;
  std::string text;
};

template <typename T>
Attribute attribute(const std::string& name, Accessors<T> accessors, const Sample<T>& empty,
                    const Sample<T>& first, const Sample<T>& second) {
  const auto reads = [accessors](const T& value) {
    return [accessors, value](const ProfileParams& p) { return (p.*accessors.get)() == value; };
  };
  const auto sets = [accessors](const T& value) {
    return [accessors, value](ProfileParams& p) { (p.*accessors.set)(value); };
  };
  return {name,
          [accessors](const ProfileParams& p) { return (p.*accessors.has)(); },
          reads(empty.value),
          reads(first.value),
          reads(second.value),
          sets(empty.value),
          sets(first.value),
          sets(second.value),
          name + "=" + empty.text + ",",
          name + "=" + first.text + ",",
          name + "=" + second.text + ","};
}

#define ACCESSORS(name) \
  { &ProfileParams::get##name, &ProfileParams::set##name, &ProfileParams::has##name }

// Returns the attributes in the order of the dump.
std::vector<Attribute> attributes() {
  const auto text = [](const std::string& name, Accessors<std::string> accessors) {
    return attribute<std::string>(name, accessors, {"", ""}, {"One two", "One two"}, {"b", "b"});
  };
  const auto flag = [](const std::string& name, Accessors<bool> accessors) {
    return attribute<bool>(name, accessors, {false, "0"}, {true, "1"}, {false, "0"});
  };
  const auto number = [](const std::string& name, Accessors<int> accessors) {
    return attribute<int>(name, accessors, {0, "0"}, {2147483647, "2147483647"}, {-7, "-7"});
  };
  const auto ipType = [](const std::string& name, Accessors<IPType> accessors) {
    return attribute<IPType>(name, accessors, {IPType::UNKNOWN, "UNKNOWN"}, {IPType::V4V6, "V4V6"},
                             {static_cast<IPType>(4), "4"});
  };
  return {
      text("ApnName", ACCESSORS(ApnName)),
      text("UserName", ACCESSORS(UserName)),
      text("Password", ACCESSORS(Password)),
      attribute<AuthType>("AuthType", ACCESSORS(AuthType), {AuthType::NONE, "NONE"},
                          {AuthType::PAP_CHAP, "PAP_CHAP"}, {static_cast<AuthType>(5), "5"}),
      ipType("HomeIPType", ACCESSORS(HomeIPType)),
      ipType("RoamIPType", ACCESSORS(RoamIPType)),
      attribute<unsigned int>("ApnTypesMask", ACCESSORS(ApnTypesMask), {0, "NONE"},
                              {0x8002, "MMS|RCS|"}, {0xFFFF0040, "IMS|"}),
      attribute<ApnClass>("ApnClass", ACCESSORS(ApnClass), {static_cast<ApnClass>(0), "0"},
                          {ApnClass::IMS, "IMS"}, {static_cast<ApnClass>(7), "7"}),
      flag("IsClatEnabled", ACCESSORS(IsClatEnabled)),
      number("MaxPdnsConnPerBlock", ACCESSORS(MaxPdnsConnPerBlock)),
      number("MaxPdnConnTimer", ACCESSORS(MaxPdnConnTimer)),
      number("PdnReqWaitInterval", ACCESSORS(PdnReqWaitInterval)),
      flag("IsApnDisabled", ACCESSORS(IsApnDisabled)),
      flag("IsEmergencySupported", ACCESSORS(IsEmergencySupported)),
  };
}

#undef ACCESSORS

class ProfileParamsAttributeTest : public testing::TestWithParam<Attribute> {
 protected:
  const Attribute& attribute() const { return GetParam(); }

  void expectOthersAbsent(const ProfileParams& params) const {
    for (const Attribute& other : attributes()) {
      if (other.name != attribute().name) {
        EXPECT_FALSE(other.isPresent(params)) << other.name;
        EXPECT_TRUE(other.readsEmpty(params)) << other.name;
      }
    }
  }
};

INSTANTIATE_TEST_SUITE_P(Each, ProfileParamsAttributeTest, testing::ValuesIn(attributes()),
                         [](const auto& tested) { return tested.param.name; });

TEST_P(ProfileParamsAttributeTest, Get_Absent_ReadsEmpty) {
  const ProfileParams params;
  EXPECT_FALSE(attribute().isPresent(params));
  EXPECT_TRUE(attribute().readsEmpty(params));
}

TEST_P(ProfileParamsAttributeTest, Set_AnyValue_PresentAndAlone) {
  ProfileParams params;
  attribute().setFirst(params);
  EXPECT_TRUE(attribute().isPresent(params));
  EXPECT_TRUE(attribute().readsFirst(params));
  EXPECT_EQ(params.dump(), attribute().firstText);
  expectOthersAbsent(params);
}

TEST_P(ProfileParamsAttributeTest, Set_EmptyValue_PresentAllTheSame) {
  ProfileParams params;
  attribute().setEmpty(params);
  EXPECT_TRUE(attribute().isPresent(params));
  EXPECT_TRUE(attribute().readsEmpty(params));
  EXPECT_EQ(params.dump(), attribute().emptyText);
  expectOthersAbsent(params);
}

TEST_P(ProfileParamsAttributeTest, Set_Again_ValueReplaced) {
  ProfileParams params;
  attribute().setFirst(params);
  attribute().setSecond(params);
  EXPECT_TRUE(attribute().isPresent(params));
  EXPECT_TRUE(attribute().readsSecond(params));
  EXPECT_EQ(params.dump(), attribute().secondText);
}

TEST_P(ProfileParamsAttributeTest, Copy_OriginalChangedAfterwards_CopyKeepsItsValue) {
  ProfileParams params;
  attribute().setFirst(params);
  const ProfileParams constructed(params);
  ProfileParams assigned;
  assigned = params;
  attribute().setSecond(params);
  for (const ProfileParams* copy : {&constructed, &std::as_const(assigned)}) {
    EXPECT_TRUE(attribute().isPresent(*copy));
    EXPECT_TRUE(attribute().readsFirst(*copy));
    expectOthersAbsent(*copy);
  }
}

TEST(ProfileParamsTest, Construct_Default_NothingPresentAndEmptyText) {
  const ProfileParams params;
  EXPECT_EQ(params.dump(), "");
  EXPECT_FALSE(params.getIsPavoProfile());
  EXPECT_FALSE(params.getIsIAProfile());
}

TEST(ProfileParamsTest, Get_Text_ReturnsACopy) {
  ProfileParams params;
  params.setApnName("ims");
  params.setUserName("user");
  params.setPassword("secret");
  auto apnName = params.getApnName();
  auto userName = params.getUserName();
  auto password = params.getPassword();
  apnName += 'x';
  userName[0] = 'x';
  password.clear();
  EXPECT_EQ(params.dump(), "ApnName=ims,UserName=user,Password=secret,");
  static_assert(std::is_same_v<decltype(params.getApnName()), std::string>);
  static_assert(std::is_same_v<decltype(params.getUserName()), std::string>);
  static_assert(std::is_same_v<decltype(params.getPassword()), std::string>);
}

TEST(ProfileParamsTest, Assign_OverOtherAttributes_AbsenceIsCopiedToo) {
  ProfileParams params = everyAttribute(/*isPavo=*/true, /*isIA=*/true);
  params = ProfileParams();
  EXPECT_EQ(params.dump(), "");
  EXPECT_FALSE(params.getIsPavoProfile());
  EXPECT_FALSE(params.getIsIAProfile());
}

TEST(ProfileParamsTest, Copy_EverythingPresent_EverythingCopied) {
  const ProfileParams params = everyAttribute(/*isPavo=*/true, /*isIA=*/false);
  const ProfileParams constructed(params);
  ProfileParams assigned;
  assigned = params;
  EXPECT_EQ(constructed.dump(), everyAttributeText(true, false));
  EXPECT_EQ(assigned.dump(), everyAttributeText(true, false));
}

TEST(ProfileParamsTest, Dump_EverythingPresent_FixedOrderWithACommaAfterEach) {
  EXPECT_EQ(everyAttribute(/*isPavo=*/true, /*isIA=*/false).dump(),
            "ApnName=Internet,UserName=user,Password=secret,AuthType=PAP_CHAP,HomeIPType=V4V6,"
            "RoamIPType=V4,ApnTypesMask=DEFAULT|IMS|,ApnClass=INET,IsClatEnabled=1,"
            "MaxPdnsConnPerBlock=20,MaxPdnConnTimer=300,PdnReqWaitInterval=-3,IsApnDisabled=1,"
            "IsEmergencySupported=0,IsPavoProfile=1,IsIAProfile=0,");
}

TEST(ProfileParamsTest, GetFlag_PresentOrNot_TrueOnlyWhenPresentAndTrue) {
  for (const bool isPavo : {false, true}) {
    for (const bool isIA : {false, true}) {
      const ProfileParams params = everyAttribute(isPavo, isIA);
      EXPECT_EQ(params.getIsPavoProfile(), isPavo);
      EXPECT_EQ(params.getIsIAProfile(), isIA);
    }
  }
}

TEST(ProfileParamsTest, Dump_ThroughTheBase_TextOfTheDerivedRecord) {
  const AddProfileParams derived(/*isPersistent=*/true, /*isIAProfile=*/true);
  const ProfileParams& base = derived;
  EXPECT_EQ(base.dump(), " persist=1: IsIAProfile=1,");
}

// The address sanitizer detects memory that a non-virtual destructor leaves behind.
TEST(ProfileParamsTest, Delete_ThroughTheBase_WholeRecordDestroyed) {
  static_assert(std::has_virtual_destructor_v<ProfileParams>);
  std::unique_ptr<ProfileParams> record =
      std::make_unique<AddProfileParams>(everySettableAttribute(), /*isPersistent=*/true,
                                         /*isIAProfile=*/true);
  record->setApnName(std::string(1000, 'a'));
  record.reset();
  EXPECT_EQ(record, nullptr);
}

}  // namespace
}  // namespace pavo::test
