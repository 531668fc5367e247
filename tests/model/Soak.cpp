// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This program runs the model's random sequences without end, or for a time, and reports its
// progress.
//   soak [SECONDS [FIRST_SEED]]
#include "Driver.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using pavo::test::model::Counts;
using Clock = std::chrono::steady_clock;

constexpr std::size_t stepsPerSeed = 300;
constexpr int waitingPercent = 10;

void tell(std::uint64_t seed, const Counts& counts, double seconds) {
  std::fprintf(stderr, "seed %llu (%.0f steps/s): %s\n", static_cast<unsigned long long>(seed),
               static_cast<double>(counts.steps) / seconds,
               pavo::test::model::textOf(counts).c_str());
}

}  // namespace

int main(int argc, char** argv) {
  const double limit = argc > 1 ? std::atof(argv[1]) : 0;
  std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, /*base=*/10) : 0;
  // The library's lines on standard output would hide the progress.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) {
    return EXIT_FAILURE;
  }
  const auto begin = Clock::now();
  auto told = begin;
  Counts counts;
  for (;; ++seed) {
    const std::string difference =
        pavo::test::model::check(seed, stepsPerSeed, waitingPercent, counts);
    const auto now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - begin).count();
    const bool isOver = !difference.empty() || (limit > 0 && seconds >= limit);
    if (isOver || now - told >= std::chrono::seconds(1)) {
      tell(seed, counts, seconds);
      told = now;
    }
    if (!difference.empty()) {
      std::fprintf(stderr, "%s", difference.c_str());
      return EXIT_FAILURE;
    }
    if (isOver) {
      return EXIT_SUCCESS;
    }
  }
}
