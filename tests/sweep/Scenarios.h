// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header lists the scenarios in the life of a data-call service.
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

// A Stage holds the objects that a scenario works with.
struct Stage {
  Manager& manager;
  Util& util;
  ModemProcess& modem;
  bool isFaulted;

  // Edits as another client. It ignores a refusal, because the profile or the modem may be gone.
  void edit(const std::string& verb, const nlohmann::json& args) const;
  // Waits until the library has registered with the modem, or the fault has stopped the
  // registration.
  void awaitModem() const;
};

struct Scenario {
  const char* name;
  // The profiles with which the modem begins.
  std::vector<nlohmann::json> profiles;
  std::function<void(const Stage&)> run;
  // The APN names on the modem when nothing has failed.
  std::multiset<std::string> expected;
  bool startsWithoutModem = false;
  // If true, the modem comes back at any moment, so the number of requests differs between runs.
  bool racesWithTheModem = false;
};

// Writes the scenario's name.
std::ostream& operator<<(std::ostream& out, const Scenario& scenario);

const std::vector<Scenario>& scenarios();

}  // namespace pavo::test
