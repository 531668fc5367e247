// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// These tests run the real library against a modem with faults. Every caller must be answered,
// whatever the fault. When the modem is well again, a refresh must make the library's view equal to
// the modem's table.
#pragma once

#include <pavo/Manager.h>

#include "FaultEffects.h"
#include "SystemTest.h"

#include <string>

namespace pavo::test {

class FaultTest : public SystemTest {
 protected:
  // The modem starts with one profile of its own. A power cycle leaves this profile as it is.
  FaultTest();

  // Initialises the manager again, as a client does when it finds that it has no modem, and waits
  // until the modem knows the manager.
  void initAgain();
  // Ends the faults, waits for the power, reads the modem and compares. If comesBack is true, the
  // library recovers by itself; otherwise it is initialised again.
  void recover(bool comesBack = true);
  // Deletes all profiles but the modem's own, and reads the modem.
  void deleteOthers();
};

// This is the index of the modem's own profile, in which every setting that a fault can damage is
// set.
inline constexpr int ownIndex = 1;

}  // namespace pavo::test
