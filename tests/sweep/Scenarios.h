// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// What happens in the life of a data-call service, as a list of scenarios to go through.
#pragma once

#include <pavo/Manager.h>
#include <pavo/Util.h>

#include "ModemProcess.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace pavo::test {

// What a scenario works with.
struct Stage {
  Manager& manager;
  Util& util;
  ModemProcess& modem;
  bool isFaulted;

  // As another client; without a word when there is no such profile any more, or no modem.
  void edit(const std::string& verb, const nlohmann::json& args) const;
  // Until the library has registered with the modem, or has met the fault on its way there.
  void awaitModem() const;
};

struct Scenario {
  const char* name;
  // What the modem begins with.
  std::vector<nlohmann::json> profiles;
  std::function<void(const Stage&)> run;
  // The APN names on the modem when nothing has failed.
  std::multiset<std::string> expected;
  bool startsWithoutModem = false;
  // The modem comes back at any moment: one run has more requests than another.
  bool racesWithTheModem = false;
};

// Its name.
std::ostream& operator<<(std::ostream& out, const Scenario& scenario);

const std::vector<Scenario>& scenarios();

}  // namespace pavo::test
