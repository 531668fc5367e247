// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// LibraryTest runs the library in this process, on a modem of its own, for tests of the tool's
// parts that use it.
#pragma once

#include "ModemProcess.h"
#include "session/Session.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace pavo::test {

// The policies use the process-wide manager, so all tests of a process share one session and one
// modem. Each test begins with the profiles that it puts there.
class LibraryTest : public testing::Test {
 protected:
  LibraryTest();

  // Replaces the modem's profiles, each in the form of a profile file's, and makes the library read
  // them.
  void setProfiles(const nlohmann::json& profiles);
  // Waits until the library has handled all messages that the modem has sent it so far.
  void settle();

  ModemProcess& modem;
  pavoctl::Session& session;
};

}  // namespace pavo::test
