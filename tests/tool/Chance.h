// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Chance makes random tests that are the same in every run.
#pragma once

#include <pavo/ProfileParams.h>

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <random>

namespace pavo::test {

class Chance {
 public:
  bool oneIn(int n) { return upTo(n) == 0; }
  int upTo(int end) { return std::uniform_int_distribution<>(0, end - 1)(engine); }
  template <typename Value>
  Value among(std::initializer_list<Value> values) {
    return *(values.begin() + upTo(static_cast<int>(values.size())));
  }

 private:
  std::mt19937 engine{20261121};  // NOLINT(cert-msc51-cpp): every run is to be the same.
};

// Returns a profile of the modem's, as in a profile file. It uses few values, so that comparisons
// are often close. It uses every combination of the modem's IP types, and texts that look like
// attributes.
nlohmann::json anyProfile(Chance& chance);
// Returns some attributes with the same values.
ProfileParams anyParams(Chance& chance);

}  // namespace pavo::test
