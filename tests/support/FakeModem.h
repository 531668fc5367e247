// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// FakeModem is the modem behind the fake platform: a profile table that answers requests.
#pragma once

#include "ModemExchange.h"
#include "wds_v01.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace pavo::test {

// Settings are kept as the response of a read. FakePlatform owns this object and guards it by its
// mutex.
class FakeModem {
 public:
  using Settings = wds_get_profile_settings_resp_msg_v01;

  struct Change {
    std::uint8_t profileIndex;
    wds_profile_event_enum_v01 event;
  };

  // Answers the request, and returns the changes that a real modem would indicate after it.
  std::vector<Change> answer(const ModemExchange& exchange);

  // Sets the index that the next create gets. Later creates count up from it and skip used indices.
  void setNextIndex(std::uint8_t index) { nextIndex = index; }
  void set(std::uint8_t index, const Settings& settings) { profiles[index] = settings; }
  void erase(std::uint8_t index) { profiles.erase(index); }
  std::optional<Settings> get(std::uint8_t index) const;
  std::size_t size() const { return profiles.size(); }

 private:
  std::vector<Change> create(const ModemExchange& exchange);
  std::vector<Change> modify(const ModemExchange& exchange);
  std::vector<Change> remove(const ModemExchange& exchange);
  void read(const ModemExchange& exchange) const;
  void list(const ModemExchange& exchange) const;

  std::map<std::uint8_t, Settings> profiles;
  std::uint8_t nextIndex = 1;
};

}  // namespace pavo::test
