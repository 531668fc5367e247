// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header lists the attributes of a profile with test values, and the settings that the modem
// keeps for them.
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
  // The settings of the resulting modem profile, as the control channel shows them.
  nlohmann::json settings;
  // If false, the modem keeps another value than the one that was set, so reading the profile again
  // changes the library's view.
  bool isKeptWhole = true;
};

// Returns every attribute but the IP types, with ordinary values and those at its limits.
std::vector<AttributeCase> attributeCases();

struct IpTypeCase {
  IPType home;
  IPType roam;
  // Whether the client sets the home type.
  bool hasHome;
  bool hasRoam;
  // The settings that the modem is asked to keep when the profile is created.
  nlohmann::json settings;

  std::string description() const;
  void set(ProfileParams& params) const;
};

// Returns every combination of a home and a roaming type, absent ones included.
std::vector<IpTypeCase> ipTypeCases();

}  // namespace pavo::test
