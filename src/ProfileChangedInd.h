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

// What the modem says has happened to a profile.
struct ProfileChangedInd {
  int profileId;
  ProfileChangedEvent event;

  std::string dump() const;
};

}  // namespace pavo
