// The policies on the access points of real operators, held against a model of their intent.
#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "PolicyModel.h"
#include "PolicyTest.h"
#include "lists/ApnFile.h"
#include "lists/ApnMapping.h"

namespace pavo::test {
namespace {

using nlohmann::json;
using pavoctl::ApnEntry;
using Wishes = std::vector<ModelProfile>;

constexpr const char* operatorList = "/usr/share/mobile-broadband-provider-info/apns-conf.xml";

// The list says nothing of IP types, so they take turns.
constexpr int ipTypeTurns[] = {1, 2, 3};
constexpr const char* ipTypeNames[] = {"", "V4", "V6", "V4V6"};

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

// A few operators of every kind that makes a difference.
std::map<std::string, std::vector<ApnEntry>> chosenOperators() {
  using Entries = std::vector<ApnEntry>;
  const std::function<bool(const Entries&)> kinds[] = {
      // One name in two spellings.
      [](const Entries& e) { return valuesOf(e, "apn").size() > namesOf(e).size(); },
      // One name several times.
      [](const Entries& e) { return e.size() > namesOf(e).size(); },
      // Several names with the same types.
      [](const Entries& e) { return e.size() > valuesOf(e, "type").size() + 2; },
      // Several credentials.
      [](const Entries& e) { return valuesOf(e, "user").size() > 2; },
      // Many types in one entry.
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

// What a client wants of the operator's access points; the last has no name.
Wishes wishesOf(const std::vector<ApnEntry>& entries) {
  Wishes wishes;
  for (const ApnEntry& entry : entries) {
    const ProfileParams params = pavoctl::mapApn(entry).params;
    ModelProfile& wish = wishes.emplace_back();
    wish.apn = params.getApnName();
    wish.types = params.getApnTypesMask();
    if (params.hasUserName()) {
      wish.user = params.getUserName();
    }
    if (params.hasPassword()) {
      wish.password = params.getPassword();
    }
    if (params.hasAuthType()) {
      wish.auth = static_cast<int>(params.getAuthType());
    }
  }
  wishes.emplace_back().types = DEFAULT;
  for (std::size_t i = 0; i < wishes.size(); ++i) {
    wishes[i].home = ipTypeTurns[(i + 1) % 3];
    if (i % 4 != 0) {
      wishes[i].roam = ipTypeTurns[i / 2 % 3];
    }
  }
  return wishes;
}

ProfileParams paramsOf(const ModelProfile& wish) {
  ProfileParams params;
  params.setApnName(wish.apn);
  params.setApnTypesMask(wish.types);
  params.setHomeIPType(static_cast<IPType>(wish.home));
  if (wish.user) {
    params.setUserName(*wish.user);
  }
  if (wish.password) {
    params.setPassword(*wish.password);
  }
  if (wish.auth) {
    params.setAuthType(static_cast<AuthType>(*wish.auth));
  }
  if (wish.roam) {
    params.setRoamIPType(static_cast<IPType>(*wish.roam));
  }
  return params;
}

class OperatorsTest : public PolicyTest {
 protected:
  // Most of the access points are on the modem already, as the operator's own, with types in
  // another order than they are wanted.
  void putOnModem(const Wishes& wishes) {
    std::vector<json> settings;
    model.profiles.clear();
    for (std::size_t i = 0; i < wishes.size(); ++i) {
      if (i % 4 == 2) {
        continue;
      }
      ModelProfile own = wishes[i];
      own.apn = lowered(own.apn);
      own.home = ipTypeTurns[i % 3];
      own.roam.reset();
      own.password = "operator";
      own.types = i % 2 == 0 ? MMS : DEFAULT;
      json& profile = settings.emplace_back();
      profile = {{"apn", wishes[i].apn},
                 {"pdpType", ipTypeNames[own.home]},
                 {"password", "operator"},
                 {"apnTypes", i % 2 == 0 ? 4 : 1}};
      if (own.user) {
        profile["user"] = *own.user;
      }
      if (own.auth) {
        profile["auth"] = *own.auth;
      }
      model.profiles[static_cast<int>(settings.size())] = own;
    }
    put(settings);
  }

  void expectModel() { EXPECT_EQ(PolicyModel::textsWithPersistence(table()), model.texts()); }

  PolicyModel model;
};

TEST_F(OperatorsTest, EveryPolicy_OnRealAccessPoints_LeavesWhatTheModelSays) {
  const auto operators = chosenOperators();
  ASSERT_GE(operators.size(), 30U);
  for (const auto& [plmn, entries] : operators) {
    for (const bool isUpdateAllowed : {false, true}) {
      SCOPED_TRACE(plmn + (isUpdateAllowed ? ", updates allowed" : ""));
      const Wishes wishes = wishesOf(entries);
      putOnModem(wishes);
      expectModel();
      model.isUpdateAllowed = isUpdateAllowed;
      Util util;
      util.setProfileUpdateAllowed(isUpdateAllowed);
      // A data call's profile goes with its key.
      std::vector<Key> keys;
      std::list<ProfileParams> all;
      for (const ModelProfile& wish : wishes) {
        const ProfileParams& params = all.emplace_back(paramsOf(wish));
        SCOPED_TRACE(params.dump());
        PolicyModel::Order order = cacheOrder();
        keys.push_back(util.findOrCreateProfileForSetupDataCall(params));
        ASSERT_NE(keys.back(), nullptr);
        EXPECT_EQ(keys.back()->getProfileId(), model.dataCall(wish, order));
        order = cacheOrder();
        keys.push_back(util.findOrCreateProfileForLteAttach(params));
        ASSERT_NE(keys.back(), nullptr);
        EXPECT_EQ(keys.back()->getProfileId(), model.attach(wish, order));
      }
      expectModel();
      util.updateAPNTypeBitmaskOnModemProfile(all);
      model.distributeTypes(wishes);
      expectModel();
      expectCacheEqualsTable();
      if (HasFailure()) {
        return;
      }
    }
  }
}

}  // namespace
}  // namespace pavo::test
