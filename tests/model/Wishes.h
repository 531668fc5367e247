// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This header makes random profiles from few values, so that they match, differ and clash.
#pragma once

#include "WishParams.h"

#include <random>

namespace pavo::test::model {

class Wishes {
 public:
  explicit Wishes(std::uint32_t seed) : dice(seed) {}

  int number(int below) { return static_cast<int>(dice() % static_cast<unsigned int>(below)); }
  bool chance(int percent) { return number(100) < percent; }

  // Returns a wish that has each attribute with that probability.
  json wish(int percent);
  Filter filter();
  // Returns a profile as another client would create it over the control channel.
  json modemProfile();

  // These functions return effects of the modem's faults: an answer that the library recognises at
  // once as invalid, an answer for which it waits in vain, and an indication with its consequences.
  json spoiledAnswer();
  json awaitedAnswer();
  json twist(Twist& twist, int anyIndex);

 private:
  template <typename Values>
  json oneOf(const Values& values) {
    return values.at(static_cast<std::size_t>(number(static_cast<int>(values.size()))));
  }

  const char* ip() { return ipName(1 + number(3)); }

  std::mt19937 dice;
};

}  // namespace pavo::test::model
