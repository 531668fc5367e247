// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The modem's profiles by index. Indices run from 1 to the capacity, and a new profile gets the
// lowest free one. The table is a plain value: the modem changes a copy and replaces the table by
// it when the change has been stored.
#pragma once

#include "modem/core/Profile.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace modem {

using ProfilesByIndex = std::map<uint8_t, Profile>;

ProfilesByIndex persistentOf(const ProfilesByIndex& profiles);

class ProfileTable {
 public:
  static constexpr size_t capacityMax = 255;
  static constexpr size_t capacityDefault = 16;

  // Throws std::invalid_argument unless capacity is 1 to capacityMax.
  explicit ProfileTable(size_t capacity = capacityDefault);

  size_t capacity() const { return indexMax; }
  const ProfilesByIndex& all() const { return profiles; }

  std::optional<uint8_t> lowestFreeIndex() const;
  bool isFree(uint8_t index) const;
  Profile* find(uint8_t index);
  const Profile* find(uint8_t index) const;

  // The index has to be free.
  void put(uint8_t index, Profile profile);
  void erase(uint8_t index);
  void clear();

 private:
  size_t indexMax;
  ProfilesByIndex profiles;
};

}  // namespace modem
