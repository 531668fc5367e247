// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Chance.h"
#include "Library.h"
#include "matching/Matching.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>

namespace pavo::test {
namespace {

using pavoctl::CachedProfile;
using pavoctl::Snapshot;
using Json = nlohmann::json;

// A Part is a part of a filter. Parts are listed in the order in which the library compares them.
using Part = std::function<void(FilterProfileParams&)>;
using Parts = std::vector<std::pair<Criterion, Part>>;
using Filter = FilterProfileParams;

template <typename Value>
Part part(void (ProfileParams::*set)(Value), std::type_identity_t<Value> value) {
  return [set, value](Filter& filter) { (filter.*set)(value); };
}

Parts anyParts(Chance& chance) {
  const auto ipType = [&] { return static_cast<IPType>(chance.upTo(4)); };
  const bool isInitialAttachAsked = chance.oneIn(8);
  Parts all{
      {Criterion::ApnName,
       part(&Filter::setApnName,
            chance.among<std::string>({"Internet", "net", "ims", "", "a,HomeIPType=V4,b=,"}))},
      {Criterion::HomeIPType, part(&Filter::setHomeIPType, ipType())},
      {Criterion::UserName, part(&Filter::setUserName, chance.among<std::string>({"me", "Me"}))},
      {Criterion::Password, part(&Filter::setPassword, chance.among<std::string>({"p", ""}))},
      {Criterion::AuthType, part(&Filter::setAuthType, static_cast<AuthType>(chance.upTo(5)))},
      {Criterion::ApnTypesMask,
       part(&Filter::setApnTypesMask,
            chance.among<unsigned>({0, DEFAULT, DEFAULT | IMS, DEFAULT | 0x1000}))},
      {Criterion::ApnClass, part(&Filter::setApnClass, static_cast<ApnClass>(chance.upTo(3)))},
      {Criterion::IsClatEnabled, part(&Filter::setIsClatEnabled, chance.oneIn(2))},
      {Criterion::ProfileId,
       [id = chance.upTo(20)](Filter& filter) { filter.setFilterByProfileId(id); }},
      {Criterion::IsIAProfile, [is = chance.oneIn(2)](Filter& f) { f.setFilterByIsIAProfile(is); }},
      {Criterion::IsPavoProfile,
       [is = chance.oneIn(2)](Filter& f) { f.setFilterByIsPavoProfile(is); }},
      {Criterion::RoamIPType, part(&Filter::setRoamIPType, ipType())},
      {Criterion::MaxPdnsConnPerBlock, part(&Filter::setMaxPdnsConnPerBlock, chance.upTo(2))},
      {Criterion::MaxPdnConnTimer, part(&Filter::setMaxPdnConnTimer, chance.upTo(2))},
      {Criterion::PdnReqWaitInterval, part(&Filter::setPdnReqWaitInterval, chance.upTo(2))},
      {Criterion::IsApnDisabled, part(&Filter::setIsApnDisabled, chance.oneIn(2))},
      {Criterion::IsEmergencySupported, part(&Filter::setIsEmergencySupported, chance.oneIn(2))},
  };
  std::erase_if(all, [&](const auto& named) {
    return named.first == Criterion::IsIAProfile ? !isInitialAttachAsked : !chance.oneIn(5);
  });
  return all;
}

Filter filterOf(const Parts& parts, std::size_t count, unsigned criteria) {
  Filter filter;
  filter.addFilterMatchCriteria(criteria);
  for (std::size_t i = 0; i < count; ++i) {
    parts[i].second(filter);
  }
  return filter;
}

std::set<std::uint64_t> tokensOf(const std::list<std::shared_ptr<IProfileKey>>& keys) {
  std::set<std::uint64_t> tokens;
  for (const auto& key : keys) {
    tokens.insert(pavoctl::tokenOf(*key));
  }
  return tokens;
}

class MatchingTest : public LibraryTest {};

TEST_F(MatchingTest, FirstMismatch_AnyFilterAndProfile_IsWhereTheLibraryStops) {
  Chance chance;
  Json profiles = Json::array();
  for (int i = 0; i < 40; ++i) {
    profiles.push_back(anyProfile(chance));
  }
  setProfiles(profiles);
  const Snapshot snapshot = session.snapshot();
  ASSERT_EQ(snapshot.profiles.size(), profiles.size());
  std::set<Criterion> reasons;
  for (int i = 0; i < 300; ++i) {
    const Parts parts = anyParts(chance);
    const unsigned criteria = chance.oneIn(2) ? static_cast<unsigned>(chance.upTo(0x40)) : 0;
    // The loop asks the library for the profiles that satisfy the filter's first parts, with one
    // more part each time.
    std::map<std::uint64_t, Criterion> stops;
    for (std::size_t count = 1; count <= parts.size(); ++count) {
      const auto found = tokensOf(Manager::getInstance().filter(filterOf(parts, count, criteria)));
      for (const CachedProfile& profile : snapshot.profiles) {
        if (found.count(profile.token) == 0) {
          stops.try_emplace(profile.token, parts[count - 1].first);
        }
      }
    }
    const Filter filter = filterOf(parts, parts.size(), criteria);
    for (const CachedProfile& profile : snapshot.profiles) {
      const auto stop = stops.find(profile.token);
      const Criterion expected = stop == stops.end() ? Criterion::None : stop->second;
      ASSERT_EQ(firstMismatch(profile.settings, filter), expected) << filter.dump() << "\n"
                                                                   << profile.dump;
      reasons.insert(expected);
    }
  }
  EXPECT_EQ(reasons.size(), 18U);
}

}  // namespace
}  // namespace pavo::test
