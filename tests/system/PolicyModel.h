// What the policies have to make of a modem's profiles, told again in plain words and independently
// of the library: no criteria, no requests, just which profile and what becomes of it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ModemTable.h"

namespace pavo::test {

/// A profile, or what is wanted of one. IP types are 1 for IPv4, 2 for IPv6, 3 for both.
struct ModelProfile {
  std::string apn;
  std::optional<std::string> user;
  std::optional<std::string> password;
  std::optional<int> auth;
  int home = 0;
  std::optional<int> roam;
  unsigned int types = 0;
  /// Whose it is: the modem's when it is none of the library's two names.
  std::string name;
  bool isPersistent = false;
};

/// Names in lower case, as the library keeps them. Of several profiles that fit, the first in the
/// library's order is taken, which the caller has to observe before each call.
class PolicyModel {
 public:
  using Order = std::vector<int>;

  std::map<int, ModelProfile> profiles;
  bool isUpdateAllowed = false;

  /// These return the index of the profile to use.
  int dataCall(const ModelProfile& wanted, const Order& order);
  int attach(const ModelProfile& wanted, const Order& order);
  void distributeTypes(const std::vector<ModelProfile>& wanted);

  /// The table in the form of textsOf(table), and whether each profile lasts.
  std::vector<std::string> texts() const;
  static std::vector<std::string> textsWithPersistence(const ModemTable& table);

 private:
  int create(ModelProfile wanted, const char* name, bool isPersistent);
  bool giveTypes(const std::string& apn, int home, unsigned int types);
};

}  // namespace pavo::test
