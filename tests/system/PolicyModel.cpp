#include "PolicyModel.h"

#include <pavo/FilterProfileParams.h>

#include <functional>
#include <set>

namespace pavo::test {

namespace {

constexpr int v4 = 1;
constexpr int v6 = 2;
constexpr const char* ours = "pavo_profile";
constexpr const char* oursForAttach = "pavo_profile_ia";

using Test = std::function<bool(const ModelProfile&)>;

bool contains(int types, int others) { return (types | others) == types; }
bool isClose(int types, int others) { return contains(types, others) || contains(others, types); }

int roamOf(const ModelProfile& profile) { return profile.roam.value_or(profile.home); }

std::optional<int> first(const std::map<int, ModelProfile>& profiles,
                         const PolicyModel::Order& order, const Test& fits) {
  for (const int index : order) {
    if (fits(profiles.at(index))) {
      return index;
    }
  }
  return std::nullopt;
}

void giveSettings(const ModelProfile& wanted, ModelProfile& profile) {
  profile.user = wanted.user ? wanted.user : profile.user;
  profile.password = wanted.password ? wanted.password : profile.password;
  profile.auth = wanted.auth ? wanted.auth : profile.auth;
  profile.types = wanted.types;
}

void giveIpTypes(const ModelProfile& wanted, ModelProfile& profile) {
  profile.home = wanted.home;
  profile.roam = wanted.roam ? wanted.roam : profile.roam;
}

}  // namespace

int PolicyModel::create(ModelProfile wanted, const char* name, bool isPersistent) {
  int index = 1;
  while (profiles.count(index) > 0) {
    ++index;
  }
  wanted.apn = lowered(wanted.apn);
  wanted.name = name;
  wanted.isPersistent = isPersistent;
  profiles[index] = std::move(wanted);
  return index;
}

int PolicyModel::dataCall(const ModelProfile& wanted, const Order& order) {
  const Test named = [&](const auto& p) { return p.apn == lowered(wanted.apn); };
  const Test exact = [&](const auto& p) { return named(p) && p.home == wanted.home; };
  const Test close = [&](const auto& p) { return named(p) && isClose(p.home, wanted.home); };
  std::optional<int> found = first(profiles, order, isUpdateAllowed ? named : exact);
  if (!found && !isUpdateAllowed) {
    found = first(profiles, order, close);
  }
  if (!found) {
    return create(wanted, ours, /*isPersistent=*/false);
  }
  if (isUpdateAllowed) {
    giveSettings(wanted, profiles[*found]);
    giveIpTypes(wanted, profiles[*found]);
  }
  return *found;
}

int PolicyModel::attach(const ModelProfile& wanted, const Order& order) {
  const Test named = [&](const auto& p) { return p.apn == lowered(wanted.apn); };
  const Test exact = [&](const auto& p) {
    return named(p) && p.home == wanted.home && (!wanted.roam || roamOf(p) == *wanted.roam);
  };
  const Test closeOfModem = [&](const auto& p) {
    return named(p) && p.name != ours && p.name != oursForAttach && isClose(p.home, wanted.home) &&
           (!wanted.roam || isClose(roamOf(p), *wanted.roam));
  };
  const Test initial = [](const auto& p) { return p.name == oursForAttach; };
  const Test namedInitial = [&](const auto& p) { return named(p) && initial(p); };
  const auto usable = [&](std::optional<int> index) {
    return index && profiles[*index].name != ours ? index : std::nullopt;
  };

  if (const auto found = usable(first(profiles, order, exact))) {
    giveSettings(wanted, profiles[*found]);
    return *found;
  }
  if (const auto found = usable(first(profiles, order, isUpdateAllowed ? named : closeOfModem))) {
    giveSettings(wanted, profiles[*found]);
    if (isUpdateAllowed) {
      giveIpTypes(wanted, profiles[*found]);
    }
    return *found;
  }
  std::optional<int> found = first(profiles, order, namedInitial);
  if (!found) {
    found = first(profiles, order, initial);
  }
  if (!found) {
    return create(wanted, oursForAttach, /*isPersistent=*/true);
  }
  giveSettings(wanted, profiles[*found]);
  giveIpTypes(wanted, profiles[*found]);
  profiles[*found].apn = lowered(wanted.apn);
  return *found;
}

bool PolicyModel::giveTypes(const std::string& apn, int home, unsigned int types) {
  bool found = false;
  for (auto& [index, profile] : profiles) {
    if (profile.apn == apn && profile.home == home) {
      profile.types = types;
      found = true;
    }
  }
  return found;
}

void PolicyModel::distributeTypes(const std::vector<ModelProfile>& wanted) {
  std::map<std::string, std::map<int, unsigned int>> wishes;
  for (const ModelProfile& wish : wanted) {
    wishes[lowered(wish.apn)][wish.home] |= wish.types;
  }
  for (auto& [apn, types] : wishes) {
    if (isUpdateAllowed) {
      for (const int home : {v4, v6, v4 | v6}) {
        giveTypes(apn, home, types[v4] | types[v6] | types[v4 | v6]);
      }
      continue;
    }
    // What finds no profile of its type, the one of both types is to take, ...
    unsigned int rest = types[v4 | v6];
    if (types[v4] != 0 && !giveTypes(apn, v4, types[v4])) {
      rest |= types[v4];
    }
    const unsigned int restWithoutV6 = rest;
    if (types[v6] != 0 && !giveTypes(apn, v6, types[v6])) {
      rest |= types[v6];
    }
    // ... and where there is none, everybody else.
    if (rest != 0 && !giveTypes(apn, v4 | v6, rest)) {
      giveTypes(apn, v4, rest | types[v4]);
      giveTypes(apn, v6, restWithoutV6 | types[v6]);
    }
  }
}

std::vector<std::string> PolicyModel::texts() const {
  std::vector<std::string> texts;
  for (const auto& [index, profile] : profiles) {
    FilterProfileParams params;
    params.setApnName(profile.apn);
    if (profile.user) {
      params.setUserName(*profile.user);
    }
    if (profile.password) {
      params.setPassword(*profile.password);
    }
    if (profile.auth) {
      params.setAuthType(static_cast<AuthType>(*profile.auth));
    }
    params.setHomeIPType(static_cast<IPType>(profile.home));
    if (profile.roam) {
      params.setRoamIPType(static_cast<IPType>(*profile.roam));
    }
    params.setApnTypesMask(profile.types);
    params.setFilterByIsIAProfile(profile.name == oursForAttach);
    params.setFilterByIsPavoProfile(profile.name == ours || profile.name == oursForAttach);
    texts.push_back(std::to_string(index) + ": " + textOf(ProfileParams(params)) +
                    (profile.isPersistent ? " lasts" : ""));
  }
  return texts;
}

std::vector<std::string> PolicyModel::textsWithPersistence(const ModemTable& table) {
  std::vector<std::string> texts;
  for (const auto& [index, profile] : table) {
    texts.push_back(std::to_string(index) + ": " + textOf(paramsOf(profile)) +
                    (profile.value("persistent", false) ? " lasts" : ""));
  }
  return texts;
}

}  // namespace pavo::test
