// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Tests of the real library against a modem with faults: whatever it meets, every caller is
// answered, and when the modem is well again, a refresh makes the library know what the modem
// knows.
#pragma once

#include <pavo/Manager.h>

#include "FaultEffects.h"
#include "SystemTest.h"

#include <string>

namespace pavo::test {

class FaultTest : public SystemTest {
 protected:
  // One profile of the modem's own that a power cycle leaves as it is.
  FaultTest();

  // Has the manager initialised again, as whoever finds that it has no modem would, and waits
  // until the modem knows it.
  void initAgain();
  // Ends the faults, waits for the power, reads the modem and compares.
  // comesBack: the library comes back by itself; else it is initialised again.
  void recover(bool comesBack = true);
  // Deletes all but the modem's own profile, and reads the modem.
  void deleteOthers();
};

// A profile of the modem's own, in every setting of which there is something to go wrong.
inline constexpr int ownIndex = 1;

}  // namespace pavo::test
