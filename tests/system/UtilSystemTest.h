// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This fixture runs the process-wide Manager and its policies on a modem process.
#pragma once

#include <pavo/Util.h>

#include "ProcessWideManager.h"
#include "SystemTest.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace pavo::test {

class UtilSystemTest : public SystemTest {
 protected:
  UtilSystemTest()
      : SystemTest({.profiles = nullptr, .arguments = {"--capacity", "100"}}, processWideManager) {
    connect();
  }

  // Makes these the only profiles on the modem and in the cache, with indices from 1.
  void put(const std::vector<nlohmann::json>& profiles) {
    for (const auto& [index, profile] : table()) {
      control("delete", {{"index", index}});
    }
    // The modem assigns the lowest free index.
    for (const nlohmann::json& profile : profiles) {
      control("create", profile);
    }
    settle();
    refresh();
  }
};

}  // namespace pavo::test
