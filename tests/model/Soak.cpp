// Runs the model's random sequences without end, or for a time, and says how far it has come.
//   soak [SECONDS [FIRST_SEED]]
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Driver.h"

namespace {

using pavo::test::model::Counts;
using pavo::test::model::LeftBehind;
using Clock = std::chrono::steady_clock;

constexpr std::size_t stepsPerSeed = 300;

std::uint64_t of(const Counts& counts, LeftBehind why) {
  const auto found = counts.leftBehind.find(why);
  return found != counts.leftBehind.end() ? found->second : 0;
}

void tell(std::uint64_t seed, const Counts& counts, double seconds) {
  std::fprintf(
      stderr,
      "seed %llu: %llu steps (%.0f/s), %llu checks; survived %llu refusals, %llu power "
      "cycles; %llu listeners ran; left on the modem: %llu read again, %llu refused by the "
      "modem, %llu refused during a refresh\n",
      static_cast<unsigned long long>(seed), static_cast<unsigned long long>(counts.steps),
      static_cast<double>(counts.steps) / seconds, static_cast<unsigned long long>(counts.checks),
      static_cast<unsigned long long>(counts.refusals),
      static_cast<unsigned long long>(counts.powerCycles),
      static_cast<unsigned long long>(counts.listenerRuns),
      static_cast<unsigned long long>(of(counts, LeftBehind::ReadAgain)),
      static_cast<unsigned long long>(of(counts, LeftBehind::RefusedByModem)),
      static_cast<unsigned long long>(of(counts, LeftBehind::RefusedDuringRefresh)));
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
    const std::string difference = pavo::test::model::check(seed, stepsPerSeed, counts);
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
