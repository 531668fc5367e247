// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Aliases.h"
#include "ClientResponse.h"
#include "SampleParams.h"
#include "StartedManagerTest.h"
#include "TextKey.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

namespace pavo::test {
namespace {

using Keys = std::list<std::shared_ptr<IProfileKey>>;

// This response is concrete, without a status of its own.
class BareResponse : public ClientResponse {
 public:
  using ClientResponse::ClientResponse;
};

TEST(ClientResponseTest, Construct_Base_AbstractAndSetsTheTypeOnly) {
  static_assert(std::is_abstract_v<ClientResponse>);
  static_assert(std::has_virtual_destructor_v<ClientResponse>);
  const BareResponse response(static_cast<ReqRespType>(11));
  EXPECT_EQ(static_cast<int>(response.getResponseType()), 11);
}

TEST(ClientResponseTest, Dump_ResponsesWithoutAResult_TypeAndStatusOnly) {
  struct Case {
    std::function<std::unique_ptr<ClientResponse>(Status)> make;
    ReqRespType type;
    std::string name;
  };
  const Case cases[] = {
      {[](Status s) { return std::make_unique<ModifyResponse>(s); }, ReqRespType::Modify, "Modify"},
      {[](Status s) { return std::make_unique<DeleteResponse>(s); }, ReqRespType::Delete, "Delete"},
      {[](Status s) { return std::make_unique<CallbackResponse>(s); }, ReqRespType::Callback,
       "Callback"},
      {[](Status s) { return std::make_unique<RefreshResponse>(s); }, ReqRespType::Refresh,
       "Refresh"},
  };
  for (const Case& c : cases) {
    const auto success = c.make(Status::Success);
    const auto failure = c.make(Status::Failure);
    const auto other = c.make(static_cast<Status>(3));
    EXPECT_EQ(success->getResponseType(), c.type);
    EXPECT_EQ(success->getStatus(), Status::Success);
    EXPECT_EQ(failure->getStatus(), Status::Failure);
    EXPECT_EQ(success->dump(), c.name + " Success");
    EXPECT_EQ(failure->dump(), c.name + " Failure");
    EXPECT_EQ(other->dump(), c.name + " 3");
  }
}

TEST(ClientResponseTest, AddResponse_WithAndWithoutKey_KeyTextOrNothing) {
  const auto key = std::make_shared<TextKey>("7 token=3");
  const AddResponse response(Status::Success, key);
  EXPECT_EQ(response.getResponseType(), ReqRespType::Add);
  EXPECT_EQ(response.getStatus(), Status::Success);
  EXPECT_EQ(response.getAddProfileKey(), key);
  EXPECT_EQ(response.dump(), "Add Success 7 token=3");
  EXPECT_EQ(AddResponse(Status::Success, nullptr).dump(), "Add Success ");
  EXPECT_EQ(AddResponse(Status::Failure, nullptr).dump(), "Add Failure ");
}

TEST(ClientResponseTest, FilterResponse_AnyList_CommaAfterEachAndNullForEmpty) {
  const Keys keys{std::make_shared<TextKey>("a"), nullptr, std::make_shared<TextKey>("b")};
  const FilterResponse response(Status::Success, keys);
  auto copy = response.getFilterResult();
  copy.clear();
  EXPECT_EQ(response.getResponseType(), ReqRespType::Filter);
  EXPECT_EQ(response.getStatus(), Status::Success);
  EXPECT_EQ(response.getFilterResult(), keys);
  EXPECT_EQ(response.dump(), "Filter Success a,null,b,");
  EXPECT_EQ(FilterResponse(Status::Success, {}).dump(), "Filter Success ");
  EXPECT_EQ(FilterResponse(Status::Failure, {}).dump(), "Filter Failure ");
}

TEST(ClientResponseTest, MatchResponse_EitherResult_InWords) {
  const MatchResponse response(Status::Success, true);
  EXPECT_EQ(response.getResponseType(), ReqRespType::Match);
  EXPECT_EQ(response.getStatus(), Status::Success);
  EXPECT_TRUE(response.getMatchResult());
  EXPECT_EQ(response.dump(), "Match Success true");
  EXPECT_FALSE(MatchResponse(Status::Success, false).getMatchResult());
  EXPECT_EQ(MatchResponse(Status::Success, false).dump(), "Match Success false");
  EXPECT_EQ(MatchResponse(Status::Failure, false).dump(), "Match Failure false");
}

TEST(ClientResponseTest, GetResponse_WithAndWithoutValue_ItsTextOrNothing) {
  const GetResponse response(Status::Success, everySettableAttribute());
  auto copy = response.getParams();
  copy->setApnName("changed");
  EXPECT_EQ(response.getResponseType(), ReqRespType::Get);
  EXPECT_EQ(response.getStatus(), Status::Success);
  EXPECT_EQ(response.getParams()->getApnName(), "Internet");
  EXPECT_EQ(response.dump(), std::string("Get Success ") + everySettableAttributeText);
  EXPECT_EQ(GetResponse(Status::Success, std::nullopt).dump(), "Get Success ");
  EXPECT_EQ(GetResponse(Status::Failure, std::nullopt).dump(), "Get Failure ");
  EXPECT_FALSE(GetResponse(Status::Failure, std::nullopt).getParams().has_value());
}

TEST(ClientResponseTest, Key_HeldByAResponse_Shared) {
  auto key = std::make_shared<TextKey>("key");
  const std::weak_ptr<TextKey> watch = key;
  auto response = std::make_unique<AddResponse>(Status::Success, key);
  key.reset();
  EXPECT_FALSE(watch.expired());
  response.reset();
  EXPECT_TRUE(watch.expired());
}

// These tests check the log lines of responses on their way back.
class ResponseTraceTest : public StartedManagerTest {
 protected:
  static FilterProfileParams byApnName(const std::string& name) {
    FilterProfileParams params;
    params.setApnName(name);
    return params;
  }
};

TEST_F(ResponseTraceTest, AddProfile_Created_ExitLineWithTheKey) {
  const auto key = add("ims");
  ASSERT_NE(key, nullptr);
  EXPECT_EQ(linesBeginning("Manager::addProfile <"),
            Lines{"Manager::addProfile < Add Success " + key->dump()});
}

TEST_F(ResponseTraceTest, AddProfile_RefusedByTheModem_SuccessWithoutAKey) {
  platform.rejectNext(OVIX_WDS_CREATE_PROFILE_REQ_V01);
  EXPECT_EQ(add("ims"), nullptr);
  EXPECT_EQ(linesBeginning("Manager::addProfile <"), Lines{"Manager::addProfile < Add Success "});
}

TEST_F(ResponseTraceTest, AnyOperation_DuringARefresh_FailureWithoutAResult) {
  const auto key = add("ims");
  manager.refresh(PDC_REFRESH_STARTED);
  platform.clearCalls();
  add("other");
  manager.modifyProfile(ModifyProfileParams(), key);
  manager.filter(FilterProfileParams());
  manager.match(FilterProfileParams(), key);
  manager.getProfile(key);
  manager.deleteProfile(key);
  const std::pair<const char*, const char*> cases[] = {
      {"addProfile", "Add Failure "}, {"modifyProfile", "Modify Failure"},
      {"filter", "Filter Failure "},  {"match", "Match Failure false"},
      {"getProfile", "Get Failure "}, {"deleteProfile", "Delete Failure"},
  };
  for (const auto& [operation, text] : cases) {
    const std::string beginning = std::string("Manager::") + operation + " <";
    EXPECT_EQ(linesBeginning(beginning), Lines{beginning + " " + text});
  }
}

TEST_F(ResponseTraceTest, ModifyAndDelete_KnownAndEmptyKey_StatusOnly) {
  const auto key = add("ims");
  ModifyProfileParams change;
  change.setPassword("x");
  manager.modifyProfile(change, key);
  manager.modifyProfile(change, nullptr);
  manager.deleteProfile(key);
  manager.deleteProfile(nullptr);
  EXPECT_EQ(linesBeginning("Manager::modifyProfile <"),
            (Lines{"Manager::modifyProfile < Modify Success",
                   "Manager::modifyProfile < Modify Failure"}));
  EXPECT_EQ(linesBeginning("Manager::deleteProfile <"),
            (Lines{"Manager::deleteProfile < Delete Success",
                   "Manager::deleteProfile < Delete Failure"}));
}

TEST_F(ResponseTraceTest, Filter_NoneAndTwo_KeysWithCommas) {
  manager.filter(byApnName("ims"));
  const auto first = add("ims");
  const auto second = add("ims");
  const auto found = manager.filter(byApnName("ims"));
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(linesBeginning("Manager::filter <"),
            (Lines{"Manager::filter < Filter Success ", "Manager::filter < Filter Success " +
                                                            found.front()->dump() + "," +
                                                            found.back()->dump() + ","}));
}

TEST_F(ResponseTraceTest, Match_YesNoAndEmptyKey_ResultInWords) {
  const auto key = add("ims");
  manager.match(byApnName("ims"), key);
  manager.match(byApnName("other"), key);
  manager.match(byApnName("ims"), nullptr);
  EXPECT_EQ(linesBeginning("Manager::match <"),
            (Lines{"Manager::match < Match Success true", "Manager::match < Match Success false",
                   "Manager::match < Match Failure false"}));
}

TEST_F(ResponseTraceTest, GetProfile_KnownAndEmptyKey_AttributesOrNothing) {
  const auto key = add("ims");
  manager.getProfile(key);
  manager.getProfile(nullptr);
  EXPECT_EQ(linesBeginning("Manager::getProfile <"),
            (Lines{"Manager::getProfile < Get Success ApnName=ims,IsPavoProfile=1,IsIAProfile=0,",
                   "Manager::getProfile < Get Failure "}));
}

TEST_F(ResponseTraceTest, Refresh_EitherPhase_StatusOnly) {
  manager.refresh(PDC_REFRESH_STARTED);
  manager.refresh(PDC_REFRESH_COMPLETED);
  EXPECT_EQ(linesBeginning("Manager::refresh <"),
            (Lines{"Manager::refresh < Refresh Success", "Manager::refresh < Refresh Success"}));
}

}  // namespace
}  // namespace pavo::test
