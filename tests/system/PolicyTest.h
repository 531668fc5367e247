// Policies of Util, a case a call: what the modem holds before, what is asked for, and every line,
// request and change that has to follow.
#pragma once

#include <pavo/Util.h>

#include <functional>
#include <list>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "SystemTest.h"

namespace pavo::test {

/// In the texts "#1" stands for the index, "@1" for the key's dump and "%1" for the attributes of
/// the first profile in the cache's order, "@+" for the key's dump of the one that the call creates
/// and "$1" for the first record of the parameters.
struct PolicyCase {
  const char* name;
  bool isUpdateAllowed;
  /// The modem's profiles in the order in which filters find them, an object a line.
  const char* modem;
  /// What the policy is given, a record a line in the form of its dump.
  const char* params;
  /// What the caller's thread logs, a line each: "H <text>", "E <text>", "D <text>" or, for a call
  /// of the Manager and its answer, which are two lines:
  ///   filter <params> -> <numbers of the profiles found>
  ///   get <number>
  ///   modify <number> <params>
  ///   match <number> <params> -> true
  ///   add <params>    or, when it fails,    fail to add <params>
  /// A policy that returns a key has a first and a last line besides.
  const char* log;
  /// The requests that reach the modem, a line each: "modify <index> <settings>" or
  /// "create <settings>". Unless it refuses them, they are what becomes of its table.
  const char* requests = "";
  /// What the policy returns: the key's dump, "true" or "false".
  const char* result = "";
  /// The kind of request that the modem refuses.
  const char* refused = nullptr;
};

class PolicyTest : public SystemTest {
 protected:
  using Params = std::list<ProfileParams>;
  using Policy = std::function<std::string(Util& util, const Params& params)>;
  using KeyPolicy = std::shared_ptr<IProfileKey> (Util::*)(const ProfileParams&) noexcept;

  PolicyTest();

  void expectCases(const Policy& policy, const std::vector<PolicyCase>& cases);
  /// @param name by which the policy calls itself in its first and last line
  void expectCases(const std::string& name, KeyPolicy policy, const std::vector<PolicyCase>& cases);

  /// Leaves just these profiles on the modem and in the cache, with indices from 1.
  void put(const std::vector<nlohmann::json>& profiles);
  /// The same, with indices such that filters find them in this order.
  void place(const std::vector<nlohmann::json>& profiles);
  /// The indices of the cache's profiles in the order in which filters find them.
  std::vector<int> cacheOrder();
  /// What this thread has logged since the position, but for the end of keys.
  std::vector<std::string> ownLinesSince(std::size_t position);
  /// The requests since the transcript was cleared, as in PolicyCase.
  std::vector<std::string> requestLines();

  /// The indices of the profiles last placed, in the order in which filters find them.
  std::vector<int> placed;

 private:
  void expectCase(const Policy& policy, const PolicyCase& c, const std::string& logText);
  std::map<std::string, std::string> textsOfPlaced();
  void expectTable(ModemTable expected, const std::vector<std::string>& requests);

  /// What the policy has returned, which holds the profile.
  Key held;
};

}  // namespace pavo::test
