// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

namespace pavo {

enum class ProfileChangedEvent : std::int32_t {
  Create = 0,
  Delete = 1,
  Modify = 2,
  SubscriptionChange = 3,
  ProfileReady = 4,
};

void appendValue(std::string& text, ProfileChangedEvent event);
std::ostream& operator<<(std::ostream& out, ProfileChangedEvent event);

// A change of a profile, as the modem reports it.
struct ProfileChangedInd {
  int profileId;
  ProfileChangedEvent event;

  std::string dump() const;
};

}  // namespace pavo
