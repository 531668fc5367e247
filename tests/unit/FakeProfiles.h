// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A table of profiles that answers the policies' operations in the order of its numbers, and notes
// what happens.
#pragma once

#include "Aliases.h"
#include "matching/ProfileSettings.h"
#include "policy/Policies.h"

#include <map>

namespace pavo::test {

class FakeProfiles final : public policy::ProfileOperations, public policy::PolicyObserver {
 public:
  std::list<Key> filter(const FilterProfileParams& params) override;
  std::optional<ProfileParams> get(const Key& key) override;
  bool match(const FilterProfileParams& params, const Key& key) override;
  bool modify(const ModifyProfileParams& params, const Key& key) override;
  Key add(const AddProfileParams& params) override;
  void log(policy::LineLevel level, const char* line) override;

  std::map<int, ProfileSettings> table;
  // As a modem that refuses every change: the operation is done, the table stays as it is.
  bool isRefusing = false;
  // The operations with their answers and, with the level's letter in front, the lines for the
  // log.
  Lines lines;
  // What the modem was asked for.
  Lines changes;

 private:
  ProfileSettings& profileOf(const Key& key) { return table.at(key->getProfileId()); }
};

}  // namespace pavo::test
