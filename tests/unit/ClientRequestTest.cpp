// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Aliases.h"
#include "ClientRequest.h"
#include "SampleParams.h"
#include "StartedManagerTest.h"
#include "TextKey.h"

#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>

namespace pavo::test {
namespace {

FilterProfileParams filterByApnName(const std::string& name) {
  FilterProfileParams params;
  params.setApnName(name);
  return params;
}

ModifyProfileParams passwordChange() {
  ModifyProfileParams params;
  params.setPassword("x");
  return params;
}

TEST(ReqRespTypeTest, StreamType_AnyValue_NameOrDecimalNumber) {
  const std::pair<int, const char*> cases[] = {
      {0, "Add"}, {1, "Modify"},   {2, "Delete"},  {3, "Filter"}, {4, "Match"},
      {5, "Get"}, {6, "Callback"}, {7, "Refresh"}, {8, "8"},      {-1, "-1"}};
  for (const auto& [value, text] : cases) {
    std::ostringstream out;
    EXPECT_EQ(&(out << static_cast<ReqRespType>(value)), &out);
    EXPECT_EQ(out.str(), text);
  }
  static_assert(sizeof(ReqRespType) == 4);
}

TEST(ReqRespTypeTest, StreamStatus_AnyValue_NameOrDecimalNumber) {
  const std::pair<int, const char*> cases[] = {
      {0, "Success"}, {1, "Failure"}, {2, "2"}, {-5, "-5"}};
  for (const auto& [value, text] : cases) {
    std::ostringstream out;
    EXPECT_EQ(&(out << static_cast<Status>(value)), &out);
    EXPECT_EQ(out.str(), text);
  }
  static_assert(sizeof(Status) == 4);
}

TEST(ClientRequestTest, Construct_AnyType_ConcreteWithTypeAndText) {
  static_assert(!std::is_abstract_v<ClientRequest>);
  static_assert(std::has_virtual_destructor_v<ClientRequest>);
  EXPECT_EQ(ClientRequest(ReqRespType::Add).dump(), "Add ");
  EXPECT_EQ(ClientRequest(ReqRespType::Add).getRequestType(), ReqRespType::Add);
  const ClientRequest unknown(static_cast<ReqRespType>(9));
  EXPECT_EQ(unknown.dump(), "9 ");
  EXPECT_EQ(static_cast<int>(unknown.getRequestType()), 9);
}

TEST(ClientRequestTest, Text_AnyRequest_EqualsDumpEachTime) {
  const DeleteRequest request(std::make_shared<TextKey>("key"));
  EXPECT_EQ(request.text(), "Delete key");
  EXPECT_EQ(request.text(), request.dump());
}

// Accessors give copies or the like: the request keeps the values that it was made with.
TEST(ClientRequestTest, AddRequest_Any_TypeTextAndOwnParameters) {
  AddProfileParams params(everySettableAttribute(), /*isPersistent=*/false, /*isIAProfile=*/true);
  const AddRequest request(params);
  params.setApnName("changed");
  auto copy = request.getAddProfileParams();
  copy.setApnName("changed");
  EXPECT_EQ(request.getRequestType(), ReqRespType::Add);
  EXPECT_EQ(request.dump(),
            std::string("Add  persist=0: ") + everySettableAttributeText + "IsIAProfile=1,");
  EXPECT_EQ(request.getAddProfileParams().getApnName(), "Internet");
}

TEST(ClientRequestTest, ModifyRequest_WithAndWithoutKey_TypeTextAndOwnParameters) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  const ModifyRequest request(passwordChange(), key);
  auto copy = request.getModifyProfileParams();
  copy.setPassword("changed");
  EXPECT_EQ(request.getRequestType(), ReqRespType::Modify);
  EXPECT_EQ(request.getModifyProfileParams().getPassword(), "x");
  EXPECT_EQ(request.getModifyProfileKey(), key);
  EXPECT_EQ(request.dump(), "Modify 7 token=3 Password=x,");
  EXPECT_EQ(ModifyRequest(passwordChange(), nullptr).dump(), "Modify  Password=x,");
}

TEST(ClientRequestTest, DeleteRequest_WithAndWithoutKey_TypeAndText) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  const DeleteRequest request(key);
  EXPECT_EQ(request.getRequestType(), ReqRespType::Delete);
  EXPECT_EQ(request.getDeleteProfileKey(), key);
  EXPECT_EQ(request.dump(), "Delete 7 token=3");
  EXPECT_EQ(DeleteRequest(nullptr).dump(), "Delete ");
}

TEST(ClientRequestTest, FilterRequest_Any_TypeTextAndOwnParameters) {
  const FilterRequest request(filterByApnName("x"));
  auto copy = request.getFilterParams();
  copy.setApnName("changed");
  EXPECT_EQ(request.getRequestType(), ReqRespType::Filter);
  EXPECT_EQ(request.getFilterParams().getApnName(), "x");
  EXPECT_EQ(request.dump(), "Filter params: None: ApnName=x,");
}

TEST(ClientRequestTest, MatchRequest_WithAndWithoutKey_TypeTextAndOwnParameters) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  const MatchRequest request(filterByApnName("x"), key);
  auto copy = request.getMatchParams();
  copy.setApnName("changed");
  EXPECT_EQ(request.getRequestType(), ReqRespType::Match);
  EXPECT_EQ(request.getMatchParams().getApnName(), "x");
  EXPECT_EQ(request.getMatchKey(), key);
  EXPECT_EQ(request.dump(), "Match 7 token=3 None: ApnName=x,");
  EXPECT_EQ(MatchRequest(filterByApnName("x"), nullptr).dump(), "Match  None: ApnName=x,");
}

TEST(ClientRequestTest, GetRequest_WithAndWithoutKey_TypeAndText) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  const GetRequest request(key);
  EXPECT_EQ(request.getRequestType(), ReqRespType::Get);
  EXPECT_EQ(request.getProfileKey(), key);
  EXPECT_EQ(request.dump(), "Get 7 token=3");
  EXPECT_EQ(GetRequest(nullptr).dump(), "Get ");
}

TEST(ClientRequestTest, RefreshRequest_AnyStatus_HeldInEightBitsAndNotInTheText) {
  static_assert(sizeof(PDCRefreshStatus) == 1);
  for (const int status : {0, 1, 2, 255}) {
    const RefreshRequest request(static_cast<PDCRefreshStatus>(status));
    EXPECT_EQ(request.getRequestType(), ReqRespType::Refresh);
    EXPECT_EQ(static_cast<int>(request.getStatus()), status);
    EXPECT_EQ(request.dump(), "Refresh ");
  }
}

TEST(ClientRequestTest, Key_HeldByARequest_Shared) {
  auto key = std::make_shared<TextKey>("key");
  const std::weak_ptr<TextKey> watch = key;
  auto request = std::make_unique<GetRequest>(key);
  key.reset();
  EXPECT_FALSE(watch.expired());
  request.reset();
  EXPECT_TRUE(watch.expired());
}

TEST(CallbackRequestTest, Construct_Default_NothingToDo) {
  const CallbackRequest request;
  EXPECT_EQ(request.getRequestType(), ReqRespType::Callback);
  EXPECT_FALSE(request.hasReleaseToken());
  EXPECT_FALSE(request.hasExpirationInfo());
  EXPECT_EQ(request.dump(), "Callback ");
}

TEST(CallbackRequestTest, SetReleaseToken_Any_PresentAlsoWhenZero) {
  for (const unsigned long long token : {0ULL, 17ULL, 18446744073709551615ULL}) {
    CallbackRequest request;
    request.setReleaseToken(token);
    EXPECT_TRUE(request.hasReleaseToken());
    EXPECT_EQ(request.getReleaseToken(), token);
    EXPECT_EQ(request.dump(), "Callback Release " + std::to_string(token));
  }
}

TEST(CallbackRequestTest, SetExpirationInfo_LiveKey_AllThreeReadBack) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  int calls = 0;
  CallbackRequest request;
  request.setExpirationInfo([&calls] { ++calls; }, key, 3);
  EXPECT_TRUE(request.hasExpirationInfo());
  EXPECT_FALSE(request.hasReleaseToken());
  EXPECT_EQ(request.getExpirationToken(), 3U);
  EXPECT_EQ(request.getExpirationKey().lock(), key);
  request.getExpirationCb()();
  EXPECT_EQ(calls, 1);
  // The token follows the key's text directly.
  EXPECT_EQ(request.dump(), "Callback Register 7 token=33");
}

TEST(CallbackRequestTest, SetExpirationInfo_KeyGone_StillSetAndDumpedAsNull) {
  CallbackRequest request;
  request.setExpirationInfo([] {}, std::make_shared<TextKey>("short-lived"), 5);
  EXPECT_TRUE(request.hasExpirationInfo());
  EXPECT_TRUE(request.getExpirationKey().expired());
  EXPECT_EQ(request.dump(), "Callback Register null5");
}

TEST(CallbackRequestTest, SetExpirationInfo_EmptyKeyAndListener_SetAllTheSame) {
  CallbackRequest request;
  request.setExpirationInfo(nullptr, {}, 0);
  EXPECT_TRUE(request.hasExpirationInfo());
  EXPECT_FALSE(static_cast<bool>(request.getExpirationCb()));
  EXPECT_EQ(request.dump(), "Callback Register null0");
}

TEST(CallbackRequestTest, Dump_ReleaseAndExpiration_TheReleaseForm) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  CallbackRequest request;
  request.setExpirationInfo([] {}, key, 3);
  request.setReleaseToken(4);
  EXPECT_TRUE(request.hasReleaseToken());
  EXPECT_TRUE(request.hasExpirationInfo());
  EXPECT_EQ(request.dump(), "Callback Release 4");
}

TEST(CallbackRequestTest, SetExpirationInfo_LiveKey_NotKeptAlive) {
  auto key = std::make_shared<TextKey>("key");
  CallbackRequest request;
  request.setExpirationInfo([] {}, key, 1);
  EXPECT_EQ(key.use_count(), 1);
  key.reset();
  EXPECT_TRUE(request.getExpirationKey().expired());
}

// These tests check the log lines of requests on their way to the worker.
class RequestTraceTest : public StartedManagerTest {
 protected:
  static constexpr std::uint8_t profileIndex = 7;

  // Returns a key of the profile with the given index in its text: "7 token=<n>".
  std::shared_ptr<IProfileKey> addSeventh() {
    platform.setNextProfileIndex(profileIndex);
    auto key = add("ims");
    EXPECT_NE(key, nullptr);
    return key;
  }

  static std::string tokenOf(const std::string& keyText) {
    return keyText.substr(keyText.find('=') + 1);
  }
};

TEST_F(RequestTraceTest, AddProfile_Any_EntryLine) {
  const auto key = add("ims");
  EXPECT_EQ(linesBeginning("Manager::addProfile >"),
            Lines{"Manager::addProfile > Add  persist=0: ApnName=ims,IsIAProfile=0,"});
  EXPECT_EQ(linesBeginning("Handling"),
            Lines{"Handling Add  persist=0: ApnName=ims,IsIAProfile=0,"});
}

TEST_F(RequestTraceTest, ModifyProfile_WithAndWithoutKey_EntryLine) {
  const auto key = addSeventh();
  const std::string keyText = key->dump();
  ASSERT_EQ(keyText, "7 token=" + tokenOf(keyText));
  manager.modifyProfile(passwordChange(), key);
  manager.modifyProfile(passwordChange(), nullptr);
  EXPECT_EQ(linesBeginning("Manager::modifyProfile >"),
            (Lines{"Manager::modifyProfile > Modify " + keyText + " Password=x,",
                   "Manager::modifyProfile > Modify  Password=x,"}));
}

TEST_F(RequestTraceTest, DeleteProfile_WithAndWithoutKey_EntryLine) {
  const auto key = addSeventh();
  manager.deleteProfile(key);
  manager.deleteProfile(nullptr);
  EXPECT_EQ(linesBeginning("Manager::deleteProfile >"),
            (Lines{"Manager::deleteProfile > Delete " + key->dump(),
                   "Manager::deleteProfile > Delete "}));
}

TEST_F(RequestTraceTest, GetProfile_WithAndWithoutKey_EntryLine) {
  const auto key = addSeventh();
  manager.getProfile(key);
  manager.getProfile(nullptr);
  EXPECT_EQ(linesBeginning("Manager::getProfile >"),
            (Lines{"Manager::getProfile > Get " + key->dump(), "Manager::getProfile > Get "}));
}

TEST_F(RequestTraceTest, Filter_Any_EntryLine) {
  manager.filter(filterByApnName("x"));
  EXPECT_EQ(linesBeginning("Manager::filter >"),
            Lines{"Manager::filter > Filter params: None: ApnName=x,"});
}

TEST_F(RequestTraceTest, Match_WithAndWithoutKey_EntryLine) {
  const auto key = addSeventh();
  manager.match(filterByApnName("x"), key);
  manager.match(filterByApnName("x"), nullptr);
  EXPECT_EQ(linesBeginning("Manager::match >"),
            (Lines{"Manager::match > Match " + key->dump() + " None: ApnName=x,",
                   "Manager::match > Match  None: ApnName=x,"}));
}

TEST_F(RequestTraceTest, Refresh_EitherPhase_EntryLine) {
  manager.refresh(PDC_REFRESH_STARTED);
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_EQ(linesBeginning("Manager::refresh >"),
            (Lines{"Manager::refresh > Refresh ", "Manager::refresh > Refresh "}));
}

TEST_F(RequestTraceTest, DropKey_Last_ReleaseOfItsToken) {
  auto key = addSeventh();
  const std::string token = tokenOf(key->dump());
  platform.clearCalls();
  key.reset();
  EXPECT_EQ(linesBeginning("Handling"), Lines{"Handling Callback Release " + token});
}

TEST_F(RequestTraceTest, RegisterExpirationListener_Any_KeyTextAndTokenWithoutABlank) {
  const auto key = addSeventh();
  const std::string keyText = key->dump();
  platform.clearCalls();
  key->registerExpirationListener([] {});
  EXPECT_EQ(linesBeginning("Handling"),
            Lines{"Handling Callback Register " + keyText + tokenOf(keyText)});
}

}  // namespace
}  // namespace pavo::test
