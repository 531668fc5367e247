// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// StartedManagerTest is the fixture of tests that use a manager in operation.
#pragma once

#include <pavo/Manager.h>

#include "FakePlatformTest.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pavo::test {

// The manager's client is registered with the modem, and the manager logs to the fake's Android
// log. The record starts empty.
class StartedManagerTest : public FakePlatformTest {
 protected:
  explicit StartedManagerTest(std::shared_ptr<Manager> theManager = std::make_shared<Manager>())
      : owner(std::move(theManager)), manager(*owner) {
    manager.init(/*subscription=*/0, /*useAndroidLog=*/true);
    // This waits for the last line of the registration, after which the worker has nothing to do.
    EXPECT_TRUE(platform.waitForStart());
    platform.clearCalls();
  }

  // Returns the lines so far that begin with the text.
  std::vector<std::string> linesBeginning(const std::string& text) const {
    std::vector<std::string> found;
    for (std::string& line : platform.logMessages()) {
      if (line.starts_with(text)) {
        found.push_back(std::move(line));
      }
    }
    return found;
  }

  // Adds a profile of the library's own, at the modem's next index.
  std::shared_ptr<IProfileKey> add(const std::string& apnName, bool isPersistent = false,
                                   bool isIAProfile = false) {
    AddProfileParams params(isPersistent, isIAProfile);
    params.setApnName(apnName);
    return manager.addProfile(params);
  }

  // Reads the profile that the modem holds at the index, through a refresh.
  std::optional<ProfileParams> readFromModem(
      std::uint8_t index, const wds_get_profile_settings_resp_msg_v01& settings) {
    platform.setProfile(index, settings);
    manager.refresh(PDC_REFRESH_COMPLETED);
    FilterProfileParams byId;
    byId.setFilterByProfileId(index);
    const auto keys = manager.filter(byId);
    return keys.size() == 1 ? manager.getProfile(keys.front()) : std::nullopt;
  }

  const std::shared_ptr<Manager> owner;
  Manager& manager;
};

}  // namespace pavo::test
