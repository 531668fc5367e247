// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The attributes of a profile, each with values, and what the modem keeps of them.
#pragma once

#include <pavo/ProfileParams.h>

#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace pavo::test {

struct AttributeCase {
  std::string description;
  std::function<void(ProfileParams&)> set;
  // The settings of the modem's profile that it makes, as the control channel shows them.
  nlohmann::json settings;
  // false: the modem keeps something else than what was set, so that reading it again changes what
  // the library knows.
  bool isKeptWhole = true;
};

// Every attribute but the IP types, with ordinary values and those at its limits.
std::vector<AttributeCase> attributeCases();

struct IpTypeCase {
  IPType home;
  IPType roam;
  // Whether the client gives it.
  bool hasHome;
  bool hasRoam;
  // What the modem is asked to keep when the profile is created.
  nlohmann::json settings;

  std::string description() const;
  void set(ProfileParams& params) const;
};

// Every combination of a home and a roaming type, absent ones included.
std::vector<IpTypeCase> ipTypeCases();

}  // namespace pavo::test
