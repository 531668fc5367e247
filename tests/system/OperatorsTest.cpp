// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests run the policies on the access points of real operators and compare with the model.
#include "UtilSystemTest.h"
#include "WishParams.h"
#include "lists/ApnFile.h"
#include "lists/ApnMapping.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <unordered_set>

namespace pavo::test {
namespace {

using model::World;
using nlohmann::json;
using pavoctl::ApnEntry;
using Wishes = std::vector<json>;

constexpr const char* operatorList = "/usr/share/mobile-broadband-provider-info/apns-conf.xml";

// The list contains no IP types, so these take turns.
constexpr const char* ipTypeTurns[] = {"V4", "V6", "V4V6"};

std::map<std::string, std::vector<ApnEntry>> entriesByOperator() {
  std::map<std::string, std::vector<ApnEntry>> operators;
  for (ApnEntry& entry : pavoctl::readApnFile(operatorList).entries) {
    const std::string plmn = pavoctl::plmnOf(entry.valueOf("mcc"), entry.valueOf("mnc"));
    operators[plmn].push_back(std::move(entry));
  }
  return operators;
}

std::set<std::string> valuesOf(const std::vector<ApnEntry>& entries, const std::string& attribute) {
  std::set<std::string> values;
  for (const ApnEntry& entry : entries) {
    values.insert(entry.valueOf(attribute));
  }
  return values;
}

std::set<std::string> namesOf(const std::vector<ApnEntry>& entries) {
  std::set<std::string> names;
  for (const ApnEntry& entry : entries) {
    names.insert(lowered(entry.valueOf("apn")));
  }
  return names;
}

// Returns a few operators, one for each property that makes a difference.
std::map<std::string, std::vector<ApnEntry>> chosenOperators() {
  using Entries = std::vector<ApnEntry>;
  const std::function<bool(const Entries&)> kinds[] = {
      // The operator has one name in two spellings.
      [](const Entries& e) { return valuesOf(e, "apn").size() > namesOf(e).size(); },
      // The operator has one name several times.
      [](const Entries& e) { return e.size() > namesOf(e).size(); },
      // The operator has several names with the same types.
      [](const Entries& e) { return e.size() > valuesOf(e, "type").size() + 2; },
      // The operator has several credentials.
      [](const Entries& e) { return valuesOf(e, "user").size() > 2; },
      // The operator has many types in one entry.
      [](const Entries& e) {
        const std::set<std::string> types = valuesOf(e, "type");
        return std::any_of(types.begin(), types.end(), [](const std::string& t) {
          return std::count(t.begin(), t.end(), ',') > 1;
        });
      },
      [](const Entries& e) { return e.size() > 7; },
      [](const Entries& e) { return e.size() == 1; },
  };
  constexpr int ofOneKind = 9;
  std::map<std::string, Entries> chosen;
  const auto all = entriesByOperator();
  for (const auto& isOfKind : kinds) {
    int count = 0;
    for (const auto& [plmn, entries] : all) {
      if (count < ofOneKind && chosen.count(plmn) == 0 && isOfKind(entries)) {
        chosen[plmn] = entries;
        ++count;
      }
    }
    EXPECT_GT(count, 0) << "no operator of a kind";
  }
  return chosen;
}

// Returns a client's wishes for the operator's access points; the last wish has no name.
Wishes wishesOf(const std::vector<ApnEntry>& entries) {
  Wishes wishes;
  for (const ApnEntry& entry : entries) {
    json wish = model::viewOf(pavoctl::mapApn(entry).params);
    for (const char* const other : {"isPavo", "isIA", "class", "clat", "disabled", "emergency",
                                    "maxPdnPerBlock", "maxPdnTimer", "pdnWaitInterval"}) {
      wish.erase(other);
    }
    wishes.push_back(wish);
  }
  wishes.push_back({{"apn", ""}, {"types", DEFAULT}});
  for (std::size_t i = 0; i < wishes.size(); ++i) {
    wishes[i]["home"] = ipTypeTurns[(i + 1) % 3];
    wishes[i].erase("roam");
    if (i % 4 != 0) {
      wishes[i]["roam"] = ipTypeTurns[i / 2 % 3];
    }
  }
  return wishes;
}

// Returns the profiles that are on the modem already: most of the access points, as the operator's
// own, with the types in another order than in the wishes.
std::vector<json> storedOf(const Wishes& wishes) {
  std::vector<json> stored;
  for (std::size_t i = 0; i < wishes.size(); ++i) {
    if (i % 4 == 2) {
      continue;
    }
    stored.push_back({{"apn", wishes[i]["apn"]},
                      {"pdpType", ipTypeTurns[i % 3]},
                      {"password", "operator"},
                      {"apnTypes", i % 2 == 0 ? 4 : 1}});
    for (const char* const same : {"user", "auth"}) {
      if (wishes[i].contains(same)) {
        stored.back()[same] = wishes[i][same];
      }
    }
  }
  return stored;
}

class OperatorsTest : public UtilSystemTest {
 protected:
  // Returns the world's profiles in the order in which filters find them.
  std::vector<model::Token> order(const World& world) {
    std::vector<model::Token> tokens;
    for (const Key& key : manager->filter(FilterProfileParams())) {
      const auto entry = std::find_if(
          world.cache.begin(), world.cache.end(),
          [&](const auto& cached) { return cached.second->id == key->getProfileId(); });
      EXPECT_NE(entry, world.cache.end());
      tokens.push_back(entry->first);
    }
    return tokens;
  }

  void runPolicies(const Wishes& wishes, bool isUpdateAllowed) {
    World world;
    world.capacity = 100;
    world.isUpdateAllowed = isUpdateAllowed;
    put(storedOf(wishes));
    world.table = table();
    world.refresh(/*isStarted=*/false);
    Util util;
    util.setProfileUpdateAllowed(isUpdateAllowed);
    // A data call's profile is deleted with its key.
    std::vector<Key> keys;
    std::list<ProfileParams> all;
    std::unordered_set<std::string> names;
    const auto expectKey = [&](bool isExpected, Key key) {
      ASSERT_EQ(key != nullptr, isExpected);
      keys.push_back(std::move(key));
      const int number = static_cast<int>(keys.size());
      EXPECT_EQ(keys.back()->getProfileId(), world.keys.at(number).first);
      world.settle();
    };
    for (const json& wish : wishes) {
      SCOPED_TRACE(wish.dump());
      const ProfileParams& params = all.emplace_back(model::paramsOf(wish));
      names.insert(lowered(wish["apn"]));
      const auto next = [&] { return static_cast<int>(keys.size()) + 1; };
      bool isExpected = world.setupDataCall(next(), wish, order(world));
      ASSERT_NO_FATAL_FAILURE(
          expectKey(isExpected, util.findOrCreateProfileForSetupDataCall(params)));
      isExpected = world.attach(next(), wish, order(world));
      ASSERT_NO_FATAL_FAILURE(expectKey(isExpected, util.findOrCreateProfileForLteAttach(params)));
    }
    EXPECT_EQ(table(), world.table);
    world.typesByName(wishes, {names.begin(), names.end()}, order(world));
    util.updateAPNTypeBitmaskOnModemProfile(all);
    EXPECT_EQ(table(), world.table);
    expectCacheEqualsTable();
  }
};

TEST_F(OperatorsTest, EveryPolicy_OnRealAccessPoints_LeavesTheExpectedState) {
  const auto operators = chosenOperators();
  ASSERT_GE(operators.size(), 30U);
  for (const auto& [plmn, entries] : operators) {
    for (const bool isUpdateAllowed : {false, true}) {
      SCOPED_TRACE(plmn + (isUpdateAllowed ? ", updates allowed" : ""));
      runPolicies(wishesOf(entries), isUpdateAllowed);
      if (HasFailure()) {
        return;
      }
    }
  }
}

}  // namespace
}  // namespace pavo::test
