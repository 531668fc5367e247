// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This fixture runs a policy on a table of profiles, and compares every operation, every line for
// the log and every change.
#pragma once

#include "FakeProfiles.h"
#include "ProfileBuilders.h"

#include <gmock/gmock.h>

#include <functional>
#include <initializer_list>

namespace pavo::test {

class PoliciesTest : public testing::Test {
 protected:
  using Policy = std::function<std::string(const policy::Run& run)>;
  using KeyPolicy = Key (*)(const policy::Run& run, const ProfileParams& params);

  struct Expected {
    // The expected operations and lines, in the format of FakeProfiles.
    Lines lines = {};
    // The changes that the modem is asked for.
    Lines changes = {};
    std::string result = {};
  };

  // Sets the modem's profiles, numbered from 1.
  void put(const std::vector<ProfileSettings>& profiles) {
    table.clear();
    for (const ProfileSettings& profile : profiles) {
      const int id = static_cast<int>(table.size()) + 1;
      table[id] = profile;
      table[id].profileId = id;
    }
  }

  // Runs the policy on the table, once for each switch.
  void expect(const Policy& policy, const Expected& expected) const {
    for (const bool updateAllowed : switches) {
      SCOPED_TRACE(updateAllowed ? "updates allowed" : "updates not allowed");
      FakeProfiles profiles;
      profiles.table = table;
      profiles.isRefusing = isRefusing;
      EXPECT_EQ(policy({profiles, profiles, updateAllowed}), expected.result);
      EXPECT_EQ(profiles.lines, expected.lines);
      EXPECT_EQ(profiles.changes, expected.changes);
    }
  }

  // Expects the first and the last line as well, which every policy that returns a key logs.
  void expect(const std::string& name, KeyPolicy policy, const ProfileParams& wanted,
              Expected expected) const {
    Lines& lines = expected.lines;
    lines.insert(lines.begin(), "H " + name + " > " + wanted.dump());
    lines.push_back("H " + name + " < " + expected.result);
    expect(
        [&](const policy::Run& run) {
          const Key key = policy(run, wanted);
          return key != nullptr ? key->dump() : "";
        },
        expected);
  }

  std::vector<bool> switches{false};
  bool isRefusing = false;

 private:
  std::map<int, ProfileSettings> table;
};

}  // namespace pavo::test
