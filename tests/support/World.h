// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// World models the state that a caller, the library's cache and the modem must have. It is much
// simpler than the library: it has no threads, no messages and no structures. The modem answers at
// once, and its indications are handled at the end of the step (settle).
//
// Profiles are JSON objects. A modem's profile has the members of the modem's control channel. A
// client's wish ("wish") has home, roam and types (the client's bits) in place of the modem's.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace pavo::test::model {

using nlohmann::json;
using Token = std::uint64_t;

// IP types as bits: 1 is IPv4, 2 is IPv6.
int ipBits(const json& name);
const char* ipName(int bits);
std::uint64_t modemTypes(unsigned int clientTypes);
unsigned int clientTypes(std::uint64_t modemTypes);
std::string lowered(std::string text);

// A Filter holds the criteria of a filter, beside the attributes of a wish.
struct Filter {
  json wish = json::object();
  unsigned int criteria = 0;
  std::optional<int> id = {};
  std::optional<bool> isPavo = {};
  std::optional<bool> isIA = {};
};

// A Picture is the cache's picture of one profile. It ends when it is replaced, forgotten or read
// again.
struct Picture {
  int id = 0;
  json profile;
  int keyCount = 0;
  bool isOurs = false;                         // made by add, and not read again since
  std::vector<std::pair<int, int>> listeners;  // listener, key
};

enum Event : int { created = 1, deleted = 2, modified = 3, subscriptionChanged = 4, ready = 5 };

// LeftBehind is the reason why a non-persistent profile of the library still exists without a key.
enum class LeftBehind { ReadAgain, RefusedByModem, RefusedDuringRefresh, Unanswered, ToldGone };

// Fate is the result of a request on which a fault takes effect.
enum class Fate {
  AsUsual,              // the answer comes, late or twice
  Refused,              // not carried out
  Unanswered,           // carried out, but the library does not learn of it
  OtherSettings,        // written, or read, with otherSettings()
  PowerLostBefore,      // not carried out; the power goes and comes
  PowerLostUnanswered,  // carried out; the power goes and comes before it is answered or indicated
};
json otherSettings();

// Twist is the change of an indication on which a fault takes effect.
struct Twist {
  enum class Kind { InItsPlace, Lost, Doubled, Late, OtherIndex, OtherEvent };
  Kind kind = Kind::Lost;
  int passes = 0;  // how many indications pass before the fault
  int index = 0;
  Event event = ready;
};

class World {
 public:
  static constexpr int capacityDefault = 16;

  // A client's operations. Keys and listeners are numbers that the caller chooses.
  bool add(int key, const json& wish, bool isPersistent, bool isIA);
  bool modify(std::optional<int> key, const json& wish);
  bool remove(std::optional<int> key);
  std::optional<json> get(std::optional<int> key) const;
  bool match(const Filter& filter, std::optional<int> key) const;
  // Returns the tokens of the pictures that match, in the order given.
  std::vector<Token> filter(const Filter& filter, const std::vector<Token>& order) const;
  void keep(int key, Token token);
  void drop(int key);
  void listen(int listener, int key);
  void refresh(bool isStarted);

  // Each policy assigns the key to the profile that it returns, or to none.
  bool setupDataCall(int key, const json& wish, const std::vector<Token>& order);
  bool emergency(int key, const json& wish, const std::vector<Token>& order);
  bool matchAttach(int id, const json& wish, const std::vector<Token>& order);
  bool attach(int key, const json& wish, const std::vector<Token>& order);
  void byApnClass(const std::vector<json>& wishes, const std::vector<Token>& order);
  void typesByName(const std::vector<json>& wishes, const std::vector<std::string>& names,
                   const std::vector<Token>& order);

  // These functions are edits by other clients and by the modem. They return false when the modem
  // refuses.
  bool createByOther(json profile);
  bool modifyByOther(int index, const json& changes);
  bool deleteByOther(int index);
  void raise(int index, Event event);
  void powerCycle();

  // These functions set faults: of the next request of that name, and of an indication.
  void failNext(const std::string& message, Fate fate) { fates.push_back({message, fate}); }
  void twistNext(const Twist& how) { twist = how; }
  void forgetFaults();
  // Returns whether one profile has two entries. Then the order of a hash map decides which of them
  // a failed read hits.
  bool hasTwins() const;

  void settle();
  // Counts the profiles that are left behind, and returns the indices of those without a known
  // reason.
  std::vector<int> account();

  int capacity = capacityDefault;  // of the table
  std::map<int, json> table;
  std::map<Token, std::shared_ptr<Picture>> cache;  // null: a profile that could not be read
  Token nextToken = 0;
  std::deque<std::pair<int, Event>> pending;
  bool isRefreshing = false;
  bool isUpdateAllowed = false;
  std::map<int, std::pair<int, Token>> keys;  // modem's index and token
  std::vector<std::string> requests;          // since the caller cleared them
  std::map<int, int> runs;                    // of each listener
  std::map<LeftBehind, int> leftBehind;
  int powerCycles = 0;
  int faultyRequests = 0;  // the number of faults that took effect
  int faultyIndications = 0;

 private:
  // A non-persistent profile that the library has made and that is still there.
  struct Made {
    std::optional<LeftBehind> excuse;
    bool isCounted = false;
  };
  Picture* find(std::optional<int> key) const;
  bool matches(const Filter& filter, const Picture& picture) const;
  std::vector<Token> look(Filter filter, const std::vector<Token>& order) const;
  bool modifyToken(Token token, const json& wish);
  Token addedToken(const json& wish, bool isPersistent, bool isIA);
  bool giveTypes(const std::string& apn, std::optional<int> home, unsigned int types,
                 const std::vector<Token>& order);
  void reload();
  void forget(std::shared_ptr<Picture> picture);
  void hear(int index, Event event);

  std::optional<int> create(json profile);
  void excuse(int index, LeftBehind why);

  Fate ask(const std::string& message);
  void endOf(Fate fate);
  std::optional<int> askCreate(const json& profile);
  bool askModify(int index, const json& changes);
  bool askDelete(int index);
  std::shared_ptr<Picture> askRead(int index);

  std::deque<std::pair<int, Event>> events;
  std::optional<std::pair<int, Event>> late;
  std::deque<std::pair<std::string, Fate>> fates;
  std::optional<Twist> twist;
  std::map<int, Made> made;
};

// Returns the client's view of a modem's profile: a wish, with name.
json clientView(const json& profile);
// Returns the cache's line of a profile in Manager::dump.
std::string dumpText(const Picture* picture);

}  // namespace pavo::test::model
