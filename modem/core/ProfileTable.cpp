// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/core/ProfileTable.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace modem {

ProfilesByIndex persistentOf(const ProfilesByIndex& profiles) {
  ProfilesByIndex persistent = profiles;
  std::erase_if(persistent, [](const auto& entry) { return !entry.second.isPersistent(); });
  return persistent;
}

ProfileTable::ProfileTable(size_t capacity) : indexMax(capacity) {
  if (capacity < 1 || capacity > capacityMax) {
    throw std::invalid_argument("the capacity has to be 1 to " + std::to_string(capacityMax));
  }
}

std::optional<uint8_t> ProfileTable::lowestFreeIndex() const {
  for (size_t index = 1; index <= indexMax; ++index) {
    if (isFree(static_cast<uint8_t>(index))) {
      return static_cast<uint8_t>(index);
    }
  }
  return std::nullopt;
}

bool ProfileTable::isFree(uint8_t index) const {
  return index >= 1 && index <= indexMax && !profiles.contains(index);
}

Profile* ProfileTable::find(uint8_t index) {
  return const_cast<Profile*>(std::as_const(*this).find(index));
}

const Profile* ProfileTable::find(uint8_t index) const {
  const auto found = profiles.find(index);
  return found == profiles.end() ? nullptr : &found->second;
}

void ProfileTable::put(uint8_t index, Profile profile) {
  if (!isFree(index)) {
    throw std::logic_error("profile index " + std::to_string(index) + " is not free");
  }
  profiles.emplace(index, std::move(profile));
}

void ProfileTable::erase(uint8_t index) { profiles.erase(index); }

void ProfileTable::clear() { profiles.clear(); }

}  // namespace modem
