// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests compare the tool's simulation, and its record of the library's steps, with the
// library itself.
#include "Chance.h"
#include "Library.h"
#include "lists/ApnFile.h"
#include "lists/ApnMapping.h"
#include "policies/PolicyRun.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <functional>

namespace pavo::test {
namespace {

using pavoctl::CachedProfile;
using pavoctl::Policy;
using pavoctl::PolicyCall;
using pavoctl::PolicyOutcome;
using pavoctl::PolicyResult;
using pavoctl::Secrets;
using pavoctl::Snapshot;
using OrderedJson = nlohmann::ordered_json;

constexpr std::array allPolicies{Policy::setupDataCall, Policy::emergency, Policy::lteAttach,
                                 Policy::matchAttach,   Policy::apnClass,  Policy::apnTypes};

// Removes the values that only the modem decides: the numbers of new profiles and their places.
OrderedJson withoutNewIds(OrderedJson json, const Snapshot& before) {
  const auto isNew = [&](const OrderedJson& id) {
    return std::none_of(
        before.profiles.begin(), before.profiles.end(),
        [&](const CachedProfile& cached) { return OrderedJson(cached.profile.id) == id; });
  };
  if (!json.is_structured()) {
    return json;
  }
  for (auto& part : json) {
    part = withoutNewIds(part, before);
  }
  if (json.is_object() && json.contains("id") && isNew(json["id"])) {
    json["id"] = nullptr;
  }
  for (const char* list : {"found", "rejected"}) {
    if (json.contains(list)) {
      std::sort(json[list].begin(), json[list].end());
    }
  }
  return json;
}

// Returns the profiles. New ones are described by their contents alone.
std::vector<OrderedJson> contentsOf(const std::vector<CachedProfile>& profiles,
                                    const Snapshot& before) {
  std::vector<OrderedJson> contents;
  for (const auto& cached : profiles) {
    contents.push_back(withoutNewIds(pavoctl::toJson(cached.profile, Secrets::shown), before));
  }
  std::sort(contents.begin(), contents.end());
  return contents;
}

std::string textOf(const PolicyCall& call) {
  std::string text = pavoctl::nameOf(call.policy);
  text += call.isUpdateAllowed ? " with updates, " : " without updates, ";
  text += std::to_string(call.profileId);
  for (const auto& params : call.wanted) {
    text += "\n  " + params.dump();
  }
  return text;
}

class PolicyTest : public LibraryTest {
 protected:
  // Simulates the call, makes it and compares the two, step by step and profile by profile.
  PolicyResult makeAndCompare(const PolicyCall& call) {
    SCOPED_TRACE(textOf(call));
    const Snapshot before = session.snapshot();
    const PolicyOutcome simulated = pavoctl::simulate(call, before, Secrets::shown);
    PolicyResult performed = pavoctl::perform(call, session, Secrets::shown);
    const Snapshot after = session.snapshot();
    EXPECT_EQ(withoutNewIds(simulated.steps, before),
              withoutNewIds(performed.outcome.steps, before));
    EXPECT_EQ(simulated.isCreated, performed.outcome.isCreated);
    EXPECT_EQ(simulated.isMatching, performed.outcome.isMatching);
    EXPECT_THAT(performed.outcome.refused, testing::IsEmpty());
    EXPECT_EQ(contentsOf(simulated.profiles, before), contentsOf(after.profiles, before));
    EXPECT_EQ(contentsOf(performed.outcome.profiles, before), contentsOf(after.profiles, before));
    for (const auto& step : performed.outcome.steps) {
      EXPECT_FALSE(step.contains("unclear")) << step;
    }
    return performed;
  }
};

PolicyCall anyCall(Chance& chance, const std::function<ProfileParams()>& anyWanted) {
  PolicyCall call;
  call.policy = allPolicies.at(static_cast<std::size_t>(chance.upTo(allPolicies.size())));
  call.isUpdateAllowed = chance.oneIn(2);
  call.profileId = 1 + chance.upTo(20);
  const int count = pavoctl::isForList(call.policy) ? chance.upTo(5) : 1;
  for (int i = 0; i < count; ++i) {
    call.wanted.push_back(anyWanted());
  }
  return call;
}

TEST_F(PolicyTest, AnyCall_OnAnyTable_IsSimulatedAndRecordedAsItIs) {
  Chance chance;
  for (int table = 0; table < 8; ++table) {
    nlohmann::json profiles = nlohmann::json::array();
    for (int i = chance.upTo(16); i > 0; --i) {
      profiles.push_back(anyProfile(chance));
    }
    setProfiles(profiles);
    for (int i = 0; i < 12; ++i) {
      makeAndCompare(anyCall(chance, [&] { return anyParams(chance); }));
      if (HasFailure()) {
        return;
      }
    }
  }
}

// These tests use an operator's own access points, unchanged and slightly changed.
class OperatorsTest : public PolicyTest, public testing::WithParamInterface<const char*> {};

TEST_P(OperatorsTest, AnyCall_ForItsAccessPoints_IsSimulatedAndRecordedAsItIs) {
  std::vector<ProfileParams> own;
  for (const auto& entry :
       pavoctl::readApnFile("/usr/share/mobile-broadband-provider-info/apns-conf.xml").entries) {
    if (entry.isOf(GetParam())) {
      own.push_back(pavoctl::mapApn(entry).params);
    }
  }
  ASSERT_FALSE(own.empty());
  setProfiles(nlohmann::json::array());
  Chance chance;
  for (const auto& params : own) {
    session.add(AddProfileParams(params, /*isPersistent=*/true, /*isIAProfile=*/chance.oneIn(4)));
  }
  const auto anyWanted = [&] {
    ProfileParams wanted =
        own.at(static_cast<std::size_t>(chance.upTo(static_cast<int>(own.size()))));
    if (chance.oneIn(2)) {
      wanted.setHomeIPType(static_cast<IPType>(chance.upTo(4)));
    }
    if (chance.oneIn(3)) {
      wanted.setApnClass(chance.among({ApnClass::INET, ApnClass::IMS}));
    }
    if (chance.oneIn(4)) {
      wanted.setApnName("other");
    }
    return wanted;
  };
  for (int i = 0; i < 16 && !HasFailure(); ++i) {
    makeAndCompare(anyCall(chance, anyWanted));
  }
}

INSTANTIATE_TEST_SUITE_P(Operators, OperatorsTest,
                         testing::Values("23402", "26201", "310410", "22201"));

}  // namespace
}  // namespace pavo::test
