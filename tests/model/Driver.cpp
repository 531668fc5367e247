// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "Driver.h"

#include <pavo/Manager.h>
#include <pavo/Util.h>

#include "Deadline.h"
#include "LogWatch.h"
#include "ModemProcess.h"
#include "Wishes.h"

#include <algorithm>
#include <array>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace pavo::test::model {

namespace {

using Key = std::shared_ptr<IProfileKey>;

class Difference : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// These indices are beyond the table. The deletion of such a profile changes nothing and leaves a
// line in the log.
constexpr int fenceFirst = 202;
constexpr int fenceCount = 53;

template <typename Value>
void require(const char* what, const Value& actual, const Value& expected) {
  if (!(actual == expected)) {
    std::ostringstream text;
    text << what << "\n  is       " << json(actual).dump() << "\n  expected "
         << json(expected).dump();
    throw Difference(text.str());
  }
}

// A Session runs the library and its model side by side.
class Session {
 public:
  Session(Counts& theCounts, int theWaitingPercent)
      : counts(theCounts), waitingPercent(theWaitingPercent), environment(modem.socketPath()) {}

  void begin() {
    // One profile is enough to learn the counter's current token.
    const json profile = {{"apn", "internet"}, {"pdpType", "V4V6"}, {"persistent", true}};
    modem.control("create", profile);
    world.createByOther(profile);
    manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
    awaitRegistration();
    settle();
    // The library reads everything. The model counts its tokens from there on.
    manager.refresh(PDC_REFRESH_COMPLETED);
    World known;
    known.table = world.table;
    world = std::move(known);
    world.refresh(/*isStarted=*/false);
    settle();
    adoptTokens();
    modem.control("clear-transcript");
  }

  std::string perform(const Step& step);
  void verify();
  // Ends the faults and edits, and then checks the rules that hold whatever happened before.
  void endQuietly();
  // Adds this session's numbers to the counts.
  void count();

 private:
  // Each action returns a description of its work.
  using Action = std::string (Session::*)(Wishes&);
  struct Kind {
    Action action;
    int weight;
  };
  static const std::array<Kind, 24>& kinds();

  std::string addProfile(Wishes& wishes);
  std::string modifyProfile(Wishes& wishes);
  std::string deleteProfile(Wishes& wishes);
  std::string filterProfiles(Wishes& wishes);
  std::string readProfile(Wishes& wishes);
  std::string matchProfile(Wishes& wishes);
  std::string dropKey(Wishes& wishes);
  std::string dropAllKeys(Wishes& wishes);
  std::string registerListener(Wishes& wishes);
  std::string startRefresh(Wishes& wishes);
  std::string completeRefresh(Wishes& wishes);
  std::string createByOther(Wishes& wishes);
  std::string modifyByOther(Wishes& wishes);
  std::string deleteByOther(Wishes& wishes);
  std::string raiseEvent(Wishes& wishes);
  std::string failNext(Wishes& wishes);
  std::string editUnderFault(Wishes& wishes);
  std::string twistIndication(Wishes& wishes);
  std::string cyclePower(Wishes& wishes);
  std::string allowUpdates(Wishes& wishes);
  std::string setupDataCall(Wishes& wishes);
  std::string setupEmergency(Wishes& wishes);
  std::string attach(Wishes& wishes);
  std::string maintain(Wishes& wishes);

  void awaitRegistration() {
    if (!waitUntil([&] { return modem.control("show")["registered"] == 1; })) {
      throw Difference("the library has not registered with the modem");
    }
  }

  void settle() {
    awaitLateOnes();
    world.settle();
    clearLog();
    const int index = fenceFirst + fence++ % fenceCount;
    const std::string line = "ProfileCache: onIndication < " + std::to_string(index) + " Delete";
    // Indications behind one that cannot be decoded wait for the wake-up of the next.
    const std::chrono::milliseconds limit(isSpoiled ? 50 : 1000);
    const bool isSettled = waitUntil([&] {
      return modem.control("indicate", {{"event", 2}, {"index", index}})["told"] > 0 &&
             awaitLine(line, limit);
    });
    if (!isSettled) {
      throw Difference("the library no longer hears the modem");
    }
    isSpoiled = false;
    // This call goes through the worker, which has then finished the event.
    manager.getProfile(nullptr);
  }

  std::vector<json> heard() {
    return modem.control("transcript", {{"since", transcriptEnd}})["entries"];
  }
  // Waits for the answers and effects that the step's fault has delayed, so that they end with the
  // step.
  void awaitLateOnes() {
    if (!std::exchange(isLate, false)) {
      return;
    }
    const bool hasCome = waitUntil([&] {
      const std::vector<json> entries = heard();
      const auto countOf = [&](const char* kind) {
        return std::count_if(entries.begin(), entries.end(),
                             [&](const json& entry) { return entry["kind"] == kind; });
      };
      const auto isLateOne = [](const json& entry) { return entry.value("fault", "") == "lateMs"; };
      return countOf("request") == countOf("response") &&
             (isTakenUpLate || std::any_of(entries.begin(), entries.end(), isLateOne));
    });
    require("whether what was late has come", hasCome, true);
    isTakenUpLate = false;
  }
  void forgetFaults() {
    world.forgetFaults();
    modem.control("clear");
  }

  // Returns "token: profile" for each entry, as Manager::dump has them, or the pending changes.
  std::vector<std::string> dumpPart(const char* from, const char* to) {
    const std::vector<std::string> lines = manager.dump();
    const auto begin = std::find(lines.begin(), lines.end(), from);
    return {std::next(begin), std::find(begin, lines.end(), to)};
  }
  std::vector<Token> order() {
    std::vector<Token> tokens;
    for (const std::string& line : dumpPart("Cache:", "Pending:")) {
      tokens.push_back(std::stoull(line));
    }
    return tokens;
  }
  void adoptTokens() {
    const std::vector<Token> tokens = order();
    if (tokens.size() != world.cache.size()) {
      throw Difference("the first refresh read " + std::to_string(tokens.size()) + " profiles of " +
                       std::to_string(world.cache.size()));
    }
    const Token first = *std::min_element(tokens.begin(), tokens.end());
    std::map<Token, std::shared_ptr<Picture>> cache;
    for (auto& [token, picture] : world.cache) {
      cache[first + token] = std::move(picture);
    }
    world.cache = std::move(cache);
    world.nextToken += first;
    world.requests.clear();
  }

  std::optional<int> anyKey(Wishes& wishes) {
    if (keys.empty() || wishes.chance(3)) {
      return std::nullopt;
    }
    return std::next(keys.begin(), wishes.number(static_cast<int>(keys.size())))->first;
  }
  Key keyOf(std::optional<int> number) { return number ? keys.at(*number) : nullptr; }
  static std::string named(std::optional<int> number) {
    return number ? "key " + std::to_string(*number) : "no key";
  }
  int anyIndex(Wishes& wishes) {
    if (world.table.empty() || wishes.chance(5)) {
      return 1 + wishes.number(World::capacityDefault);
    }
    return std::next(world.table.begin(), wishes.number(static_cast<int>(world.table.size())))
        ->first;
  }
  // Compares the result of an operation with the model's result.
  void requireKey(int number, const Key& key, bool isExpected) {
    require("whether there is a key", key != nullptr, isExpected);
    if (key != nullptr) {
      keys[number] = key;
      const auto& [id, token] = world.keys.at(number);
      require("the key", key->dump(), std::to_string(id) + " token=" + std::to_string(token));
    }
  }

  Counts& counts;
  const int waitingPercent;
  ModemProcess modem;
  const ModemEnvironment environment;
  Manager& manager = Manager::getInstance();
  Util util;
  World world;
  std::map<int, Key> keys;
  int lastNumber = 0;  // the last number of a key or a listener
  std::map<int, int> runs;
  std::uint64_t transcriptEnd = 0;
  int fence = 0;
  // These flags hold the consequences of the step's fault outside the model: a delay, or a spoiled
  // wake-up.
  bool isLate = false;
  bool isTakenUpLate = false;
  bool isSpoiled = false;
};

const std::array<Session::Kind, 24>& Session::kinds() {
  static constexpr std::array<Kind, 24> all = {{
      {&Session::addProfile, 9},       {&Session::modifyProfile, 8},
      {&Session::deleteProfile, 4},    {&Session::filterProfiles, 7},
      {&Session::readProfile, 4},      {&Session::matchProfile, 5},
      {&Session::dropKey, 10},         {&Session::dropAllKeys, 1},
      {&Session::registerListener, 6}, {&Session::startRefresh, 1},
      {&Session::completeRefresh, 3},  {&Session::createByOther, 4},
      {&Session::modifyByOther, 5},    {&Session::deleteByOther, 4},
      {&Session::raiseEvent, 3},       {&Session::failNext, 5},
      {&Session::cyclePower, 1},       {&Session::allowUpdates, 2},
      {&Session::setupDataCall, 5},    {&Session::setupEmergency, 3},
      {&Session::attach, 6},           {&Session::maintain, 4},
      {&Session::editUnderFault, 4},   {&Session::twistIndication, 5},
  }};
  return all;
}

std::string Session::perform(const Step& step) {
  int sum = 0;
  for (const Kind& kind : kinds()) {
    sum += kind.weight;
  }
  int place = static_cast<int>(step.kind % static_cast<unsigned int>(sum));
  Wishes wishes(step.seed);
  if (world.hasTwins()) {
    forgetFaults();
  }
  for (const Kind& kind : kinds()) {
    if (place < kind.weight) {
      return (this->*kind.action)(wishes);
    }
    place -= kind.weight;
  }
  return "nothing";
}

std::string Session::addProfile(Wishes& wishes) {
  const json wish = wishes.wish(/*percent=*/30);
  const bool isPersistent = wishes.chance(35);
  const bool isIA = wishes.chance(25);
  const int number = ++lastNumber;
  const bool isExpected = world.add(number, wish, isPersistent, isIA);
  requireKey(number, manager.addProfile({paramsOf(wish), isPersistent, isIA}), isExpected);
  return "key " + std::to_string(number) + " = add " + wish.dump() +
         (isPersistent ? " persistent" : "") + (isIA ? " for initial attach" : "");
}

std::string Session::modifyProfile(Wishes& wishes) {
  const auto key = anyKey(wishes);
  const json wish = wishes.wish(/*percent=*/20);
  const bool isExpected = world.modify(key, wish);
  require("modifyProfile", manager.modifyProfile(paramsOf(wish), keyOf(key)), isExpected);
  return "modify " + named(key) + " " + wish.dump();
}

std::string Session::deleteProfile(Wishes& wishes) {
  const auto key = anyKey(wishes);
  const bool isExpected = world.remove(key);
  require("deleteProfile", manager.deleteProfile(keyOf(key)), isExpected);
  return "delete " + named(key);
}

std::string Session::filterProfiles(Wishes& wishes) {
  const Filter filter = wishes.filter();
  const std::vector<Token> expected = world.filter(filter, order());
  const std::list<Key> found = manager.filter(paramsOf(filter));
  require("the number of profiles that match", found.size(), expected.size());
  std::string text = "filter " + paramsOf(filter).dump() + " gives keys";
  auto token = expected.begin();
  for (const Key& key : found) {
    const int number = ++lastNumber;
    world.keep(number, *token++);
    requireKey(number, key, true);
    text += " " + std::to_string(number);
  }
  // Keys above this number are dropped at once.
  while (keys.size() > 2 * World::capacityDefault) {
    const int number = keys.begin()->first;
    world.drop(number);
    keys.erase(number);
  }
  return text;
}

std::string Session::readProfile(Wishes& wishes) {
  const auto key = anyKey(wishes);
  const std::optional<ProfileParams> params = manager.getProfile(keyOf(key));
  require("getProfile", params ? viewOf(*params) : json(), world.get(key).value_or(json()));
  return "read " + named(key);
}

std::string Session::matchProfile(Wishes& wishes) {
  const auto key = anyKey(wishes);
  const Filter filter = wishes.filter();
  require("match", manager.match(paramsOf(filter), keyOf(key)), world.match(filter, key));
  return "match " + named(key) + " " + paramsOf(filter).dump();
}

std::string Session::dropKey(Wishes& wishes) {
  const auto key = anyKey(wishes);
  if (key) {
    world.drop(*key);
    keys.erase(*key);
  }
  return "drop " + named(key);
}

std::string Session::dropAllKeys(Wishes& /*wishes*/) {
  while (!keys.empty()) {
    const int number = keys.begin()->first;
    world.drop(number);
    keys.erase(number);
  }
  return "drop all keys";
}

std::string Session::registerListener(Wishes& wishes) {
  const auto key = anyKey(wishes);
  if (!key) {
    return "no listener";
  }
  const int listener = ++lastNumber;
  world.listen(listener, *key);
  // The listener runs on the worker, and the driver reads the number when the worker is done.
  keys.at(*key)->registerExpirationListener([this, listener] { ++runs[listener]; });
  return "listener " + std::to_string(listener) + " on " + named(key);
}

std::string Session::startRefresh(Wishes& /*wishes*/) {
  world.refresh(/*isStarted=*/true);
  manager.refresh(PDC_REFRESH_STARTED);
  return "refresh started";
}

std::string Session::completeRefresh(Wishes& /*wishes*/) {
  world.refresh(/*isStarted=*/false);
  manager.refresh(PDC_REFRESH_COMPLETED);
  return "refresh completed";
}

std::string Session::createByOther(Wishes& wishes) {
  const json profile = wishes.modemProfile();
  const bool isExpected = world.createByOther(profile);
  bool isDone = true;
  try {
    modem.control("create", profile);
  } catch (const std::runtime_error&) {
    isDone = false;
  }
  require("whether another client can create", isDone, isExpected);
  return "another client creates " + profile.dump();
}

std::string Session::modifyByOther(Wishes& wishes) {
  const int index = anyIndex(wishes);
  json changes = wishes.modemProfile();
  changes.erase("persistent");
  if (world.modifyByOther(index, changes)) {
    json args = changes;
    args["index"] = index;
    modem.control("modify", args);
  }
  return "another client modifies " + std::to_string(index) + " " + changes.dump();
}

std::string Session::deleteByOther(Wishes& wishes) {
  const int index = anyIndex(wishes);
  if (world.deleteByOther(index)) {
    modem.control("delete", {{"index", index}});
  }
  return "another client deletes " + std::to_string(index);
}

std::string Session::raiseEvent(Wishes& wishes) {
  const int index = anyIndex(wishes);
  auto event = static_cast<Event>(1 + wishes.number(5));
  // If one profile has two entries, the order of the map decides which of them a refused read hits.
  const bool isCached = std::any_of(world.cache.begin(), world.cache.end(), [&](const auto& entry) {
    return entry.second != nullptr && entry.second->id == index;
  });
  if (event == created && isCached) {
    event = modified;
  }
  world.raise(index, event);
  modem.control("indicate", {{"event", static_cast<int>(event)}, {"index", index}});
  return "the modem raises event " + std::to_string(event) + " for " + std::to_string(index);
}

// After these faults the library receives no indication that it does not expect. They may therefore
// take effect at any time, also in the middle of a policy.
std::string Session::failNext(Wishes& wishes) {
  static constexpr std::array messages = {"create-profile", "modify-profile", "delete-profile",
                                          "profile-settings", "profile-list"};
  const std::string message = messages.at(static_cast<std::size_t>(wishes.number(messages.size())));
  const bool isRead = message == "profile-settings" || message == "profile-list";
  const bool hasSettings = message != "profile-list" && message != "delete-profile";
  json effect = {{"error", 3}};
  Fate fate = Fate::Refused;
  if (wishes.chance(20)) {
    effect = wishes.chance(50) ? json{{"doubled", true}} : json{{"delayMs", 5}};
    fate = Fate::AsUsual;
  } else if (hasSettings && wishes.chance(20)) {
    effect = {{"settings", otherSettings()}};
    fate = Fate::OtherSettings;
  } else if (isRead && wishes.chance(60)) {
    effect = wishes.spoiledAnswer();
    fate = Fate::Unanswered;
  }
  world.failNext(message, fate);
  effect["message"] = message;
  modem.control("fail", effect);
  return "the modem's next fault: " + effect.dump();
}

// Makes an edit of the library's own under a fault. The modem still indicates the edit if it was
// carried out, so only one request is made until the library has handled the indication.
std::string Session::editUnderFault(Wishes& wishes) {
  struct Edit {
    const char* message;
    Action action;
  };
  static constexpr std::array<Edit, 4> edits = {{{"create-profile", &Session::addProfile},
                                                 {"modify-profile", &Session::modifyProfile},
                                                 {"delete-profile", &Session::deleteProfile},
                                                 {"delete-profile", &Session::dropKey}}};
  const Edit& edit = edits.at(static_cast<std::size_t>(wishes.number(edits.size())));
  forgetFaults();
  json effect = wishes.spoiledAnswer();
  Fate fate = Fate::Unanswered;
  const bool isAwaited = wishes.chance(waitingPercent);
  if (isAwaited) {
    effect = wishes.awaitedAnswer();
    fate = effect.contains("silent") ? Fate::Refused : Fate::Unanswered;
  } else if (wishes.chance(40)) {
    const bool isBefore = wishes.chance(50);
    effect = {{"power", isBefore ? "before" : "unanswered"}};
    fate = isBefore ? Fate::PowerLostBefore : Fate::PowerLostUnanswered;
  }
  world.failNext(edit.message, fate);
  const int powerCycles = world.powerCycles;
  const std::string text = effect.dump();
  effect["message"] = edit.message;
  modem.control("fail", effect);
  std::string done = (this->*edit.action)(wishes);
  const bool isMet = modem.control("faults")["faults"].empty();
  counts.timeouts += isMet && isAwaited ? 1 : 0;
  isTakenUpLate = isMet && effect.contains("delayMs");
  isLate = isMet && (isTakenUpLate || effect.contains("lateMs"));
  if (world.powerCycles != powerCycles) {
    awaitRegistration();
  }
  forgetFaults();
  return done + " under " + text;
}

// Puts a fault on an indication, either of an edit or of the modem's own.
std::string Session::twistIndication(Wishes& wishes) {
  static constexpr std::array<Action, 9> actions = {
      &Session::addProfile,    &Session::modifyProfile, &Session::deleteProfile,
      &Session::dropKey,       &Session::createByOther, &Session::modifyByOther,
      &Session::deleteByOther, &Session::raiseEvent,    &Session::cyclePower};
  const Action action = actions.at(static_cast<std::size_t>(wishes.number(actions.size())));
  forgetFaults();
  Twist twist;
  json effect = wishes.twist(twist, anyIndex(wishes));
  twist.passes = wishes.chance(25) ? 1 : 0;
  world.twistNext(twist);
  const std::string text = effect.dump();
  effect["indication"] = "any";
  effect["nth"] = twist.passes + 1;
  modem.control("fail", effect);
  std::string done = (this->*action)(wishes);
  const bool isMet = modem.control("faults")["faults"].empty();
  isLate = isMet && effect.contains("lateMs");
  isSpoiled = isMet && (effect.contains("undecodable") || effect.contains("cutTo"));
  forgetFaults();
  return done + ", indication " + std::to_string(twist.passes + 1) + " under " + text;
}

std::string Session::cyclePower(Wishes& /*wishes*/) {
  world.settle();
  world.powerCycle();
  modem.control("power-cycle");
  awaitRegistration();
  return "the modem's power goes and comes";
}

std::string Session::allowUpdates(Wishes& wishes) {
  const bool isAllowed = wishes.chance(50);
  world.isUpdateAllowed = isAllowed;
  util.setProfileUpdateAllowed(isAllowed);
  return isAllowed ? "updates allowed" : "updates not allowed";
}

std::string Session::setupDataCall(Wishes& wishes) {
  const json wish = wishes.wish(/*percent=*/25);
  const int number = ++lastNumber;
  const bool isExpected = world.setupDataCall(number, wish, order());
  requireKey(number, util.findOrCreateProfileForSetupDataCall(paramsOf(wish)), isExpected);
  return "key " + std::to_string(number) + " = data call " + wish.dump();
}

std::string Session::setupEmergency(Wishes& wishes) {
  const json wish = wishes.wish(/*percent=*/25);
  const int number = ++lastNumber;
  const bool isExpected = world.emergency(number, wish, order());
  requireKey(number, util.findOrCreateProfileForEmergencyDataCall(paramsOf(wish)), isExpected);
  return "key " + std::to_string(number) + " = emergency " + wish.dump();
}

std::string Session::attach(Wishes& wishes) {
  const json wish = wishes.wish(/*percent=*/25);
  if (wishes.chance(40)) {
    const int index = anyIndex(wishes);
    require("matchLteAttachProfileId", util.matchLteAttachProfileId(index, paramsOf(wish)),
            world.matchAttach(index, wish, order()));
    return "may " + std::to_string(index) + " serve for attach " + wish.dump();
  }
  const int number = ++lastNumber;
  const bool isExpected = world.attach(number, wish, order());
  requireKey(number, util.findOrCreateProfileForLteAttach(paramsOf(wish)), isExpected);
  return "key " + std::to_string(number) + " = attach " + wish.dump();
}

std::string Session::maintain(Wishes& wishes) {
  std::vector<json> list;
  std::list<ProfileParams> params;
  // The names come in the order of a hash set.
  std::unordered_set<std::string> names;
  for (int i = 0, count = 1 + wishes.number(3); i < count; ++i) {
    list.push_back(wishes.wish(/*percent=*/40));
    params.push_back(paramsOf(list.back()));
    if (list.back().contains("apn")) {
      names.insert(lowered(list.back()["apn"]));
    }
  }
  const std::string text = json(list).dump();
  if (wishes.chance(50)) {
    world.byApnClass(list, order());
    util.updateModemProfileByApnClass(params);
    return "by APN class " + text;
  }
  world.typesByName(list, {names.begin(), names.end()}, order());
  util.updateAPNTypeBitmaskOnModemProfile(params);
  return "types by name " + text;
}

void Session::verify() {
  settle();
  require("the listeners that have run", runs, world.runs);

  std::map<int, json> table;
  const json shown = modem.control("show");
  for (json profile : shown["profiles"]) {
    const int index = profile["index"];
    profile.erase("index");
    table[index] = std::move(profile);
  }
  require("the modem's table", table, world.table);

  std::vector<std::string> entries = dumpPart("Cache:", "Pending:");
  std::vector<std::string> expected;
  for (const auto& [token, picture] : world.cache) {
    expected.push_back("  " + std::to_string(token) + ": " + dumpText(picture.get()));
  }
  std::sort(entries.begin(), entries.end());
  std::sort(expected.begin(), expected.end());
  require("the library's cache", entries, expected);
  require("what the library still expects to hear", dumpPart("Pending:", "").size(),
          world.pending.size());

  const json transcript = modem.control("transcript", {{"since", transcriptEnd}});
  std::vector<std::string> requests;
  for (const json& entry : transcript["entries"]) {
    if (entry["direction"] == "in" && entry["kind"] == "request") {
      requests.push_back(entry["message"]);
    }
  }
  transcriptEnd = transcript["next"];
  require("the requests of this step", requests, world.requests);
  counts.requests += requests.size();
  world.requests.clear();
  require("what nobody has a key of, and no reason to be there", world.account(), {});
  counts.checks += 6;
}

void Session::endQuietly() {
  Wishes unused(/*seed=*/0);
  forgetFaults();
  completeRefresh(unused);
  verify();
  // This check does not use the model: the cache must equal the modem's table.
  World fresh;
  const json shown = modem.control("show");
  for (json profile : shown["profiles"]) {
    const int index = profile["index"];
    profile.erase("index");
    fresh.table[index] = std::move(profile);
  }
  fresh.refresh(/*isStarted=*/false);
  std::vector<std::string> expected;
  for (const auto& [token, picture] : fresh.cache) {
    expected.push_back(dumpText(picture.get()));
  }
  std::vector<std::string> entries;
  for (const std::string& line : dumpPart("Cache:", "Pending:")) {
    entries.push_back(line.substr(line.find(": ") + 2));
  }
  std::sort(entries.begin(), entries.end());
  std::sort(expected.begin(), expected.end());
  require("the cache when all is quiet", entries, expected);
  for (const auto& [listener, times] : runs) {
    require("how often a listener has run", times, 1);
  }
  dropAllKeys(unused);
  verify();
  counts.checks += 2;
}

void Session::count() {
  counts.powerCycles += static_cast<std::uint64_t>(world.powerCycles);
  counts.faultyRequests += static_cast<std::uint64_t>(world.faultyRequests);
  counts.faultyIndications += static_cast<std::uint64_t>(world.faultyIndications);
  for (const auto& [why, number] : world.leftBehind) {
    counts.leftBehind[why] += static_cast<std::uint64_t>(number);
  }
  for (const auto& [listener, times] : runs) {
    counts.listenerRuns += static_cast<std::uint64_t>(times);
  }
}

}  // namespace

Sequence sequenceOf(std::uint64_t seed, std::size_t count, int waitingPercent) {
  std::mt19937_64 dice(seed);
  std::vector<Step> steps(count);
  for (Step& step : steps) {
    step = {static_cast<unsigned int>(dice()), static_cast<std::uint32_t>(dice())};
  }
  return {std::move(steps), waitingPercent};
}

Outcome run(const Sequence& sequence, Counts& counts) {
  Outcome outcome;
  Session session(counts, sequence.waitingPercent);
  try {
    session.begin();
    for (const Step& step : sequence.steps) {
      outcome.done.emplace_back("(what failed inside)");
      outcome.done.back() = session.perform(step);
      session.verify();
      ++counts.steps;
    }
    session.endQuietly();
    session.count();
  } catch (const std::exception& difference) {
    outcome.difference = difference.what();
    outcome.log = recentLog();
  }
  return outcome;
}

Sequence shrink(Sequence sequence) {
  Counts unused;
  std::vector<Step>& steps = sequence.steps;
  for (std::size_t piece = steps.size() / 2; piece != 0; piece /= 2) {
    for (std::size_t at = 0; at < steps.size();) {
      Sequence fewer = sequence;
      const auto begin = fewer.steps.begin() + static_cast<std::ptrdiff_t>(at);
      const std::size_t count = std::min(piece, steps.size() - at);
      fewer.steps.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
      if (!run(fewer, unused).difference.empty()) {
        steps = std::move(fewer.steps);
      } else {
        at += piece;
      }
    }
  }
  return sequence;
}

std::string check(std::uint64_t seed, std::size_t count, int waitingPercent, Counts& counts) {
  Sequence sequence = sequenceOf(seed, count, waitingPercent);
  Outcome outcome = run(sequence, counts);
  if (outcome.difference.empty()) {
    return "";
  }
  sequence.steps.resize(outcome.done.size());
  const std::string first = outcome.difference;
  sequence = shrink(std::move(sequence));
  Counts unused;
  outcome = run(sequence, unused);
  std::string text = "seed " + std::to_string(seed) + ": " + first + "\nThe fewest steps:\n";
  for (const std::string& done : outcome.done) {
    text += "  " + done + "\n";
  }
  text += outcome.difference + "\nThe library's last lines:\n";
  for (const std::string& line : outcome.log) {
    text += "  " + line + "\n";
  }
  return text;
}

std::string textOf(const Counts& counts) {
  static const std::map<LeftBehind, const char*> names = {
      {LeftBehind::ReadAgain, "read again"},
      {LeftBehind::RefusedByModem, "refused by the modem"},
      {LeftBehind::RefusedDuringRefresh, "refused during a refresh"},
      {LeftBehind::Unanswered, "never answered"},
      {LeftBehind::ToldGone, "told gone"}};
  std::ostringstream text;
  text << counts.steps << " steps, " << counts.checks << " checks, " << counts.requests
       << " requests; survived " << counts.powerCycles << " power cycles, " << counts.faultyRequests
       << " faulty requests (" << counts.timeouts << " timeouts), " << counts.faultyIndications
       << " faulty indications";
  text << "; " << counts.listenerRuns << " listeners ran; left on the modem:";
  for (const auto& [why, name] : names) {
    const auto found = counts.leftBehind.find(why);
    text << " " << (found != counts.leftBehind.end() ? found->second : 0) << " " << name;
  }
  return text.str();
}

}  // namespace pavo::test::model
