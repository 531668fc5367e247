// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This benchmark compares one getProfile with a bare hand-off of the same shape. Both threads run
// on one processor, or each on its own.
#include <pavo/Manager.h>

#include "Affinity.h"
#include "Allocations.h"
#include "BareHandOff.h"
#include "LogWrapper.h"
#include "NullWriter.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace pavo::bench {
namespace {

class PerCall {
 public:
  explicit PerCall(benchmark::State& measured)
      : state(measured), allocations(allocationCount()), switches(contextSwitchCount()) {}
  PerCall(const PerCall&) = delete;
  PerCall& operator=(const PerCall&) = delete;
  ~PerCall() {
    const auto calls = static_cast<double>(state.iterations());
    state.counters["allocations"] = static_cast<double>(allocationCount() - allocations) / calls;
    state.counters["switches"] = static_cast<double>(contextSwitchCount() - switches) / calls;
  }

 private:
  benchmark::State& state;
  const std::uint64_t allocations;
  const std::uint64_t switches;
};

// The worker inherits the processor of the thread that starts it.
void pinWorker(const benchmark::State& state) { pinToCpu(state.range(0) == 1 ? 0 : 1); }
void pinCaller() { pinToCpu(0); }

void getProfile(benchmark::State& state) {
  Manager manager;
  pinWorker(state);
  manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
  LogWrapper::getInstance().setLogWriter(std::make_unique<NullWriter>());
  pinCaller();
  ProfileParams params;
  params.setApnName("internet");
  params.setHomeIPType(IPType::V4V6);
  params.setApnTypesMask(DEFAULT | SUPL);
  {
    const std::shared_ptr<IProfileKey> key =
        manager.addProfile(AddProfileParams(params, true, false));
    const PerCall counters(state);
    for (auto _ : state) {
      benchmark::DoNotOptimize(manager.getProfile(key));
    }
  }
  unpin();
}
BENCHMARK(getProfile)->Name("GetProfile")->Arg(1)->Arg(2)->UseRealTime();

void bareHandOff(benchmark::State& state) {
  pinWorker(state);
  BareHandOff handOff;
  pinCaller();
  {
    const PerCall counters(state);
    for (auto _ : state) {
      benchmark::DoNotOptimize(handOff.call(1));
    }
  }
  unpin();
}
BENCHMARK(bareHandOff)->Name("BareHandOff")->Arg(1)->Arg(2)->UseRealTime();

}  // namespace
}  // namespace pavo::bench
