// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This benchmark compares init, one call and destruction with the life of a bare loop: thread,
// epoll, eventfd, one round trip, join.
#include <pavo/Manager.h>

#include "BareHandOff.h"
#include "LogWrapper.h"

#include <benchmark/benchmark.h>

namespace pavo::bench {
namespace {

void managerLife(benchmark::State& state) {
  for (auto _ : state) {
    Manager manager;
    manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
    LogWrapper::getInstance().setLogWriter(nullptr);
    benchmark::DoNotOptimize(manager.getProfile(nullptr));
  }
}
BENCHMARK(managerLife)->Name("Life")->UseRealTime();

void bareLife(benchmark::State& state) {
  for (auto _ : state) {
    BareHandOff handOff;
    benchmark::DoNotOptimize(handOff.call(1));
  }
}
BENCHMARK(bareLife)->Name("BareLife")->UseRealTime();

}  // namespace
}  // namespace pavo::bench
