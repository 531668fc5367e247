// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// FakeProfiles is a table of profiles that answers the policies' operations in the order of its
// numbers. It records the operations and the changes.
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
  // If true, the table acts as a modem that refuses every change: the operation is done, but the
  // table stays as it is.
  bool isRefusing = false;
  // Holds the operations with their answers, and the lines for the log with the level's letter in
  // front.
  Lines lines;
  // Holds the changes that the modem was asked for.
  Lines changes;

 private:
  ProfileSettings& profileOf(const Key& key) { return table.at(key->getProfileId()); }
};

}  // namespace pavo::test
