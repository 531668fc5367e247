// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "World.h"

#include <algorithm>
#include <array>

namespace pavo::test::model {

namespace {

constexpr const char* ours = "pavo_profile";
constexpr const char* oursForAttach = "pavo_profile_ia";
constexpr Token noToken = ~Token{0};

// A wish and a profile hold these attributes under the same names.
constexpr std::array same = {"user",     "password",       "auth",        "class",
                             "clat",     "maxPdnPerBlock", "maxPdnTimer", "pdnWaitInterval",
                             "disabled", "emergency"};

// Each pair holds the client's bit and the modem's bit of a type.
constexpr std::array<std::pair<unsigned int, std::uint64_t>, 13> typeBits = {{{0x1, 0x1},
                                                                              {0x2, 0x4},
                                                                              {0x4, 0x10},
                                                                              {0x8, 0x8},
                                                                              {0x10, 0x20},
                                                                              {0x20, 0x40},
                                                                              {0x40, 0x2},
                                                                              {0x80, 0x80},
                                                                              {0x100, 0x100},
                                                                              {0x200, 0x200},
                                                                              {0x400, 0x800},
                                                                              {0x800, 0x400},
                                                                              {0x8000, 0x1000}}};

constexpr unsigned int homeSubset = 0x1;
constexpr unsigned int roamSubset = 0x2;
constexpr unsigned int nameSubset = 0x4;
constexpr unsigned int typesSubset = 0x8;
constexpr unsigned int homeSuperset = 0x10;
constexpr unsigned int roamSuperset = 0x20;

std::optional<int> bitsIn(const json& object, const char* name) {
  return object.contains(name) ? std::optional(ipBits(object[name])) : std::nullopt;
}

std::optional<int> homeOf(const json& profile) {
  const auto overriding = bitsIn(profile, "overrideHome");
  return overriding && *overriding != 0 ? overriding : bitsIn(profile, "pdpType");
}

// Returns a type only when both networks have one and the two are equal.
std::optional<int> commonRoamOf(const json& profile) {
  const auto lte = bitsIn(profile, "lteRoam");
  return lte == bitsIn(profile, "umtsRoam") ? lte : std::nullopt;
}

// Returns the roaming type with which a filter is compared.
std::optional<int> matchedRoamOf(const json& profile) {
  return profile.contains("lteRoam") || profile.contains("umtsRoam") ? commonRoamOf(profile)
                                                                     : bitsIn(profile, "pdpType");
}

bool fits(int wanted, std::optional<int> held, bool mayBeLess, bool mayBeMore) {
  return held && (wanted == *held || (mayBeLess && (wanted & *held) == wanted) ||
                  (mayBeMore && (*held & ~wanted) == 0));
}

// Adds the changes of the modem's IP types that a wish needs. A home type that differs from the
// roaming type needs an override. An existing override is removed when the two are equal again.
void planIpTypes(const json& wish, const json& profile, json& changes) {
  const auto home = wish.contains("home") ? bitsIn(wish, "home") : homeOf(profile);
  const auto roam = wish.contains("roam") ? bitsIn(wish, "roam") : commonRoamOf(profile);
  const auto set = [&](const char* name, int bits) {
    if (bitsIn(profile, name) != bits) {
      changes[name] = ipName(bits);
    }
  };
  if (home) {
    set("pdpType", roam && home != roam ? 3 : *home);
  }
  if (roam) {
    set("lteRoam", *roam);
    set("umtsRoam", *roam);
  }
  if (home && roam && home != roam) {
    set("overrideHome", *home);
  } else if (home && roam && profile.contains("overrideHome")) {
    set("overrideHome", 0);
  }
}

// Returns the changes that a wish makes to a profile as the cache knows it; empty for no change.
json changesOf(const json& wish, const json& profile) {
  json changes = json::object();
  for (const char* const name : same) {
    if (wish.contains(name) && (!profile.contains(name) || profile[name] != wish[name])) {
      changes[name] = wish[name];
    }
  }
  if (wish.contains("apn") && profile.value("apn", json()) != lowered(wish["apn"])) {
    changes["apn"] = lowered(wish["apn"]);
  }
  if (wish.contains("types") &&
      (!profile.contains("apnTypes") || clientTypes(profile["apnTypes"]) != wish["types"])) {
    changes["apnTypes"] = modemTypes(wish["types"]);
  }
  planIpTypes(wish, profile, changes);
  return changes;
}

json only(const json& wish, std::initializer_list<const char*> names) {
  json part = json::object();
  for (const char* const name : names) {
    if (wish.contains(name)) {
      part[name] = wish[name];
    }
  }
  return part;
}

bool isCarriedOut(Fate fate) { return fate != Fate::Refused && fate != Fate::PowerLostBefore; }
bool isAnswered(Fate fate) { return fate == Fate::AsUsual || fate == Fate::OtherSettings; }

json written(json profile, Fate fate) {
  if (fate == Fate::OtherSettings) {
    profile.update(otherSettings());
  }
  return profile;
}

std::optional<Token> firstOf(const std::vector<Token>& tokens) {
  return tokens.empty() ? std::nullopt : std::optional(tokens.front());
}

}  // namespace

int ipBits(const json& name) {
  return name == "V4" ? 1 : name == "V6" ? 2 : name == "V4V6" ? 3 : 0;
}

const char* ipName(int bits) {
  return std::array{"UNSPECIFIED", "V4", "V6", "V4V6"}.at(static_cast<std::size_t>(bits));
}

json otherSettings() { return {{"apn", "other"}, {"user", "other"}}; }

std::uint64_t modemTypes(unsigned int types) {
  std::uint64_t mask = 0;
  for (const auto& [client, modem] : typeBits) {
    mask |= (types & client) != 0 ? modem : 0;
  }
  return mask;
}

unsigned int clientTypes(std::uint64_t types) {
  unsigned int mask = 0;
  for (const auto& [client, modem] : typeBits) {
    mask |= (types & modem) != 0 ? client : 0;
  }
  return mask;
}

std::string lowered(std::string text) {
  for (char& c : text) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  }
  return text;
}

json clientView(const json& profile) {
  json view = json::object();
  for (const char* const name : same) {
    if (profile.contains(name)) {
      view[name] = profile[name];
    }
  }
  if (profile.contains("apn")) {
    view["apn"] = lowered(profile["apn"]);
  }
  if (profile.contains("apnTypes")) {
    view["types"] = clientTypes(profile["apnTypes"]);
  }
  if (const auto home = homeOf(profile)) {
    view["home"] = ipName(*home);
  }
  if (const auto roam = commonRoamOf(profile)) {
    view["roam"] = ipName(*roam);
  }
  const std::string name = profile.value("name", "");
  view["isIA"] = name == oursForAttach;
  view["isPavo"] = name == ours || name == oursForAttach;
  return view;
}

std::string dumpText(const Picture* picture) {
  if (picture == nullptr) {
    return "null";
  }
  static const std::vector<std::pair<const char*, const char*>> entries = {
      {"ApnName", "apn"},
      {"UserName", "user"},
      {"Password", "password"},
      {"AuthType", "auth"},
      {"CommonIPType", "pdpType"},
      {"ApnTypesMask", "apnTypes"},
      {"ApnClass", "class"},
      {"IsClatEnabled", "clat"},
      {"OverrideHomeIPType", "overrideHome"},
      {"LteRoamIP", "lteRoam"},
      {"UmtsRoamIP", "umtsRoam"},
      {"MaxPdnsConnPerBlock", "maxPdnPerBlock"},
      {"MaxPdnConnTimer", "maxPdnTimer"},
      {"PdnReqWaitInterval", "pdnWaitInterval"},
      {"IsApnDisabled", "disabled"},
      {"IsEmergencySupported", "emergency"},
      {"ProfileName", "name"}};
  static constexpr std::array authNames = {"NONE", "PAP", "CHAP", "PAP_CHAP"};
  static constexpr std::array classNames = {"0", "IMS", "ADMN", "INET", "APP"};
  std::string text = "ProfileId=" + std::to_string(picture->id) + ",";
  for (const auto& [key, member] : entries) {
    if (!picture->profile.contains(member)) {
      continue;
    }
    const json& value = picture->profile[member];
    const std::string name = member;
    text += std::string(key) + "=";
    if (name == "auth") {
      text += authNames.at(value.get<std::size_t>());
    } else if (name == "class") {
      text += classNames.at(value.get<std::size_t>());
    } else if (value.is_boolean()) {
      text += value.get<bool>() ? "1" : "0";
    } else if (value == "UNSPECIFIED") {
      text += "UNKNOWN";
    } else {
      text += value.is_string() ? value.get<std::string>() : value.dump();
    }
    text += ",";
  }
  return text;
}

// The functions of this group are the modem.

Fate World::ask(const std::string& message) {
  requests.push_back(message);
  const auto found = std::find_if(fates.begin(), fates.end(),
                                  [&](const auto& one) { return one.first == message; });
  if (found == fates.end()) {
    return Fate::AsUsual;
  }
  const Fate fate = found->second;
  fates.erase(found);
  ++faultyRequests;
  return fate;
}

void World::endOf(Fate fate) {
  if (fate == Fate::PowerLostBefore || fate == Fate::PowerLostUnanswered) {
    powerCycle();
  }
}

std::optional<int> World::askCreate(const json& profile) {
  const Fate fate = ask("create-profile");
  const auto index = isCarriedOut(fate) ? create(written(profile, fate)) : std::nullopt;
  if (index && !profile.value("persistent", false)) {
    made[*index] = {isAnswered(fate) ? std::nullopt : std::optional(LeftBehind::Unanswered)};
  }
  endOf(fate);
  return isAnswered(fate) ? index : std::nullopt;
}

bool World::askModify(int index, const json& changes) {
  const Fate fate = ask("modify-profile");
  const bool isDone = isCarriedOut(fate) && modifyByOther(index, written(changes, fate));
  endOf(fate);
  return isDone && isAnswered(fate);
}

bool World::askDelete(int index) {
  const Fate fate = ask("delete-profile");
  const bool isDone = isCarriedOut(fate) && deleteByOther(index);
  endOf(fate);
  return isDone && isAnswered(fate);
}

std::shared_ptr<Picture> World::askRead(int index) {
  const Fate fate = ask("profile-settings");
  if (!isAnswered(fate) || table.count(index) == 0) {
    return nullptr;
  }
  auto picture = std::make_shared<Picture>();
  picture->id = index;
  picture->profile = written(table[index], fate);
  if (picture->profile.contains("apn")) {
    picture->profile["apn"] = lowered(picture->profile["apn"]);
  }
  for (const char* const roam : {"lteRoam", "umtsRoam"}) {
    if (picture->profile.value(roam, "") == "UNSPECIFIED") {
      picture->profile.erase(roam);
    }
  }
  return picture;
}

std::optional<int> World::create(json profile) {
  int index = 1;
  while (table.count(index) != 0) {
    ++index;
  }
  if (index > capacity) {
    return std::nullopt;
  }
  table[index] = std::move(profile);
  raise(index, created);
  raise(index, modified);
  return index;
}

bool World::createByOther(json profile) { return create(std::move(profile)).has_value(); }

bool World::modifyByOther(int index, const json& changes) {
  const auto profile = table.find(index);
  if (profile == table.end()) {
    return false;
  }
  profile->second.update(changes);
  raise(index, modified);
  return true;
}

bool World::deleteByOther(int index) {
  if (table.erase(index) == 0) {
    return false;
  }
  made.erase(index);
  raise(index, deleted);
  return true;
}

void World::powerCycle() {
  ++powerCycles;
  events.clear();
  made.clear();
  for (auto profile = table.begin(); profile != table.end();) {
    profile =
        profile->second.value("persistent", false) ? std::next(profile) : table.erase(profile);
  }
  for (const char* const message :
       {"bind-subscription", "indication-register", "configure-events"}) {
    ask(message);
  }
  raise(255, ready);
}

void World::raise(int index, Event event) {
  if (!twist || twist->passes-- > 0) {
    events.push_back({index, event});
    return;
  }
  ++faultyIndications;
  switch (twist->kind) {
    case Twist::Kind::InItsPlace:
      events.push_back({index, event});
      break;
    case Twist::Kind::Lost:
      break;
    case Twist::Kind::Doubled:
      events.insert(events.end(), 2, {index, event});
      break;
    case Twist::Kind::Late:
      late = {index, event};
      break;
    case Twist::Kind::OtherIndex:
      events.push_back({twist->index, event});
      break;
    case Twist::Kind::OtherEvent:
      events.push_back({index, twist->event});
      break;
  }
  twist.reset();
}

void World::forgetFaults() {
  fates.clear();
  twist.reset();
}

// The functions of this group account for profiles that are left behind.

// Only the first excuse of a profile counts.
void World::excuse(int index, LeftBehind why) {
  const auto found = made.find(index);
  if (found != made.end() && !found->second.excuse) {
    found->second.excuse = why;
  }
}

std::vector<int> World::account() {
  std::vector<int> unexplained;
  for (auto& [index, one] : made) {
    const bool isHeld = std::any_of(keys.begin(), keys.end(), [index = index](const auto& key) {
      return key.second.first == index;
    });
    if (isHeld || one.isCounted) {
      continue;
    }
    if (one.excuse) {
      ++leftBehind[*one.excuse];
      one.isCounted = true;
    } else {
      unexplained.push_back(index);
    }
  }
  return unexplained;
}

// The functions of this group are the cache.

Picture* World::find(std::optional<int> key) const {
  const auto known = key ? keys.find(*key) : keys.end();
  const auto entry = known != keys.end() ? cache.find(known->second.second) : cache.end();
  return entry != cache.end() ? entry->second.get() : nullptr;
}

// The listeners of the picture run if their keys are alive.
void World::forget(std::shared_ptr<Picture> picture) {
  if (picture == nullptr) {
    return;
  }
  for (const auto& [listener, key] : picture->listeners) {
    if (keys.count(key) != 0) {
      ++runs[listener];
    }
  }
}

void World::reload() {
  for (const auto& [index, one] : made) {
    excuse(index, LeftBehind::ReadAgain);
  }
  const auto before = std::move(cache);
  cache.clear();
  for (const auto& [token, picture] : before) {
    forget(picture);
  }
  if (!isAnswered(ask("profile-list"))) {
    return;
  }
  for (const auto& [index, profile] : table) {
    auto picture = askRead(index);
    cache[nextToken++] = std::move(picture);
  }
}

bool World::hasTwins() const {
  std::set<int> ids;
  return std::any_of(cache.begin(), cache.end(), [&ids](const auto& entry) {
    return entry.second != nullptr && !ids.insert(entry.second->id).second;
  });
}

void World::settle() {
  if (late) {
    events.push_back(*late);
    late.reset();
  }
  while (!events.empty()) {
    const auto [index, event] = events.front();
    events.pop_front();
    hear(index, event);
  }
}

void World::hear(int index, Event event) {
  const auto expected = std::find(pending.begin(), pending.end(), std::pair(index, event));
  if (expected != pending.end()) {
    pending.erase(expected);
    return;
  }
  if (event == subscriptionChanged || event == ready) {
    reload();
    return;
  }
  if (event == created) {
    const Token token = nextToken++;
    cache[token] = askRead(index);
    return;
  }
  for (auto entry = cache.begin(); entry != cache.end();) {
    const std::shared_ptr<Picture> picture = entry->second;
    if (picture == nullptr || picture->id != index) {
      ++entry;
      continue;
    }
    excuse(index, event == deleted ? LeftBehind::ToldGone : LeftBehind::ReadAgain);
    if (event == deleted) {
      entry = cache.erase(entry);
    } else {
      entry->second = askRead(index);
      ++entry;
    }
    forget(picture);
  }
}

// The functions of this group are a client's operations.

Token World::addedToken(const json& wish, bool isPersistent, bool isIA) {
  if (isRefreshing) {
    return noToken;
  }
  const Token token = nextToken++;
  auto picture = std::make_shared<Picture>();
  picture->profile = changesOf(wish, json::object());
  picture->profile["name"] = isIA ? oursForAttach : ours;
  json profile = picture->profile;
  profile["persistent"] = isPersistent;
  const auto index = askCreate(profile);
  if (!index) {
    return noToken;
  }
  picture->id = *index;
  picture->profile["persistent"] = isPersistent;
  picture->isOurs = true;
  picture->keyCount = 1;
  cache[token] = std::move(picture);
  pending.push_back({*index, created});
  pending.push_back({*index, modified});
  return token;
}

bool World::add(int key, const json& wish, bool isPersistent, bool isIA) {
  const Token token = addedToken(wish, isPersistent, isIA);
  if (token == noToken) {
    return false;
  }
  keys[key] = {cache[token]->id, token};
  return true;
}

bool World::modifyToken(Token token, const json& wish) {
  if (isRefreshing || cache.count(token) == 0) {
    return false;
  }
  Picture* const picture = cache[token].get();
  const json changes = picture != nullptr ? changesOf(wish, picture->profile) : json::object();
  if (!changes.empty() && askModify(picture->id, changes)) {
    picture->profile.update(changes);
    pending.push_back({picture->id, modified});
  }
  // The operation also succeeds when the modem has refused.
  return true;
}

bool World::modify(std::optional<int> key, const json& wish) {
  return key && modifyToken(keys.at(*key).second, wish);
}

bool World::remove(std::optional<int> key) {
  const Picture* const picture = find(key);
  if (isRefreshing || picture == nullptr || !askDelete(keys.at(*key).first)) {
    return false;
  }
  const auto entry = cache.extract(keys.at(*key).second);
  pending.push_back({picture->id, deleted});
  forget(entry.mapped());
  return true;
}

std::optional<json> World::get(std::optional<int> key) const {
  const Picture* const picture = find(key);
  return isRefreshing || picture == nullptr ? std::nullopt
                                            : std::optional(clientView(picture->profile));
}

bool World::match(const Filter& filter, std::optional<int> key) const {
  const Picture* const picture = find(key);
  return !isRefreshing && picture != nullptr && matches(filter, *picture);
}

bool World::matches(const Filter& filter, const Picture& picture) const {
  const json& wish = filter.wish;
  const json& profile = picture.profile;
  const json view = clientView(profile);
  const auto has = [&](unsigned int bit) { return (filter.criteria & bit) != 0; };
  for (const char* const name : same) {
    if (wish.contains(name) && (!view.contains(name) || view[name] != wish[name])) {
      return false;
    }
  }
  if (wish.contains("apn")) {
    const std::string name = lowered(wish["apn"]);
    const std::string held = view.value("apn", "");
    if (!view.contains("apn") ||
        (has(nameSubset) ? held.find(name) == std::string::npos : held != name)) {
      return false;
    }
  }
  if (wish.contains("types")) {
    const std::uint64_t wanted = modemTypes(wish["types"]);
    const std::uint64_t held = profile.value("apnTypes", std::uint64_t{0});
    if (!profile.contains("apnTypes") ||
        (has(typesSubset) ? (held & wanted) != wanted : held != wanted)) {
      return false;
    }
  }
  return (!wish.contains("home") ||
          fits(ipBits(wish["home"]), homeOf(profile), has(homeSubset), has(homeSuperset))) &&
         (!wish.contains("roam") ||
          fits(ipBits(wish["roam"]), matchedRoamOf(profile), has(roamSubset), has(roamSuperset))) &&
         (!filter.id || *filter.id == picture.id) &&
         (filter.isIA ? view["isIA"] == *filter.isIA
                      : !filter.isPavo || view["isPavo"] == *filter.isPavo);
}

std::vector<Token> World::filter(const Filter& filter, const std::vector<Token>& order) const {
  std::vector<Token> found;
  for (const Token token : order) {
    const auto entry = cache.find(token);
    if (!isRefreshing && entry != cache.end() && entry->second != nullptr &&
        matches(filter, *entry->second)) {
      found.push_back(token);
    }
  }
  return found;
}

void World::keep(int key, Token token) {
  ++cache.at(token)->keyCount;
  keys[key] = {cache.at(token)->id, token};
}

void World::drop(int key) {
  const auto [id, token] = keys.at(key);
  Picture* const picture = find(key);
  keys.erase(key);
  if (picture == nullptr) {
    return;
  }
  if (isRefreshing) {
    excuse(id, LeftBehind::RefusedDuringRefresh);
  } else if (picture->keyCount >= 2) {
    --picture->keyCount;
  } else if (picture->isOurs && !picture->profile.value("persistent", false)) {
    if (askDelete(picture->id)) {
      pending.push_back({picture->id, deleted});
      forget(cache.extract(token).mapped());
    } else {
      excuse(id, LeftBehind::RefusedByModem);
    }
  }
}

void World::listen(int listener, int key) {
  Picture* const picture = find(key);
  if (!isRefreshing && picture != nullptr) {
    picture->listeners.push_back({listener, key});
  }
}

void World::refresh(bool isStarted) {
  isRefreshing = isStarted;
  if (!isStarted) {
    reload();
  }
}

// The functions of this group are the policies. A policy's keys to profiles that it only reads are
// dropped again and leave no trace.

std::vector<Token> World::look(Filter filter, const std::vector<Token>& order) const {
  return this->filter(filter, order);
}

bool World::setupDataCall(int key, const json& wish, const std::vector<Token>& order) {
  Filter wanted{.wish = isUpdateAllowed ? only(wish, {"apn"}) : only(wish, {"apn", "home"})};
  auto found = firstOf(look(wanted, order));
  if (!found && !isUpdateAllowed) {
    wanted.criteria = homeSubset | homeSuperset;
    found = firstOf(look(wanted, order));
  }
  if (!found) {
    return add(key, wish, /*isPersistent=*/false, /*isIA=*/false);
  }
  if (isUpdateAllowed) {
    modifyToken(*found, wish);
  }
  keep(key, *found);
  return true;
}

bool World::emergency(int key, json const& wish, const std::vector<Token>& order) {
  std::optional<Token> found;
  if (wish.contains("apn")) {
    Filter byName{.wish = only(wish, {"apn"})};
    byName.wish["emergency"] = true;
    found = firstOf(look(byName, order));
  }
  if (!found) {
    found = firstOf(look({.wish = {{"emergency", true}}}, order));
  }
  if (!found) {
    json profile = wish;
    profile["emergency"] = true;
    profile["types"] = 0x200;
    return add(key, profile, /*isPersistent=*/true, /*isIA=*/false);
  }
  keep(key, *found);
  return true;
}

bool World::matchAttach(int id, const json& wish, const std::vector<Token>& order) {
  const auto found = firstOf(look({.id = id}, order));
  if (!found) {
    return false;
  }
  const json view = clientView(cache.at(*found)->profile);
  if (view["isPavo"] == true && view["isIA"] == false) {
    return false;
  }
  Filter wanted{.wish = only(wish, {"apn", "home", "roam", "user", "password", "auth"})};
  if (!isUpdateAllowed && view["isPavo"] == false) {
    wanted.criteria = homeSubset | homeSuperset | roamSubset | roamSuperset;
  }
  return matches(wanted, *cache.at(*found));
}

bool World::attach(int key, const json& wish, const std::vector<Token>& order) {
  json settings = only(wish, {"user", "password", "auth", "types", "maxPdnPerBlock", "maxPdnTimer",
                              "pdnWaitInterval"});
  const auto usable = [&](std::optional<Token> token) {
    const json view = token ? clientView(cache.at(*token)->profile) : json();
    return token && (view["isPavo"] == false || view["isIA"] == true) ? token : std::nullopt;
  };
  auto found = usable(firstOf(look({.wish = only(wish, {"apn", "home", "roam"})}, order)));
  if (!found) {
    Filter loose{.wish = only(wish, {"apn"})};
    if (isUpdateAllowed) {
      settings.update(only(wish, {"home", "roam"}));
    } else {
      loose = {.wish = only(wish, {"apn", "home", "roam"}), .isPavo = false};
      loose.criteria = (wish.contains("home") ? homeSubset | homeSuperset : 0) |
                       (wish.contains("roam") ? roamSubset | roamSuperset : 0);
    }
    found = usable(firstOf(look(loose, order)));
  }
  if (!found) {
    settings.update(only(wish, {"home", "roam"}));
    found = firstOf(look({.wish = only(wish, {"apn"}), .isPavo = true, .isIA = true}, order));
  }
  if (!found) {
    found = firstOf(look({.isPavo = true, .isIA = true}, order));
    settings.update(found ? only(wish, {"apn"}) : json::object());
  }
  if (!found) {
    return add(key, wish, /*isPersistent=*/true, /*isIA=*/true);
  }
  modifyToken(*found, settings);
  keep(key, *found);
  return true;
}

void World::byApnClass(const std::vector<json>& wishes, const std::vector<Token>& order) {
  std::vector<Token> known = order;
  for (const json& wish : wishes) {
    if (!wish.contains("class")) {
      continue;
    }
    const auto found = look({.wish = only(wish, {"class"})}, known);
    for (const Token token : found) {
      modifyToken(token, wish);
    }
    if (found.empty()) {
      const Token token = addedToken(wish, /*isPersistent=*/true, /*isIA=*/false);
      if (token != noToken) {
        known.push_back(token);
      }
    }
  }
}

bool World::giveTypes(const std::string& apn, std::optional<int> home, unsigned int types,
                      const std::vector<Token>& order) {
  Filter named{.wish = {{"apn", apn}}};
  if (home) {
    named.wish["home"] = ipName(*home);
  }
  const auto found = look(named, order);
  for (const Token token : found) {
    modifyToken(token, {{"types", types}});
  }
  return !found.empty();
}

void World::typesByName(const std::vector<json>& wishes, const std::vector<std::string>& names,
                        const std::vector<Token>& order) {
  for (const std::string& name : names) {
    std::array<unsigned int, 4> types{};
    for (const json& wish : wishes) {
      if (wish.contains("apn") && lowered(wish["apn"]) == name) {
        types.at(wish.contains("home") ? static_cast<std::size_t>(ipBits(wish["home"])) : 3) |=
            wish.value("types", 0U);
      }
    }
    if (isUpdateAllowed) {
      giveTypes(name, std::nullopt, types[1] | types[2] | types[3], order);
      continue;
    }
    unsigned int both = types[3];
    if (types[1] != 0 && !giveTypes(name, 1, types[1], order)) {
      both |= types[1];
    }
    const unsigned int bothWithoutV6 = both;
    bool isV6Missing = false;
    if (types[2] != 0 && !giveTypes(name, 2, types[2], order)) {
      both |= types[2];
      isV6Missing = true;
    }
    if ((bothWithoutV6 == 0 && !isV6Missing) || giveTypes(name, 3, both, order)) {
      continue;
    }
    giveTypes(name, 1, both | types[1], order);
    giveTypes(name, 2, bothWithoutV6 | types[2], order);
  }
}

}  // namespace pavo::test::model
