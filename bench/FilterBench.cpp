// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This benchmark filters by APN name over n profiles, none of which matches. It compares this with
// a bare walk over a hash map of records whose names are normalised already. It also measures the
// cost to make and drop one key.
#include "ClientRequest.h"
#include "ClientResponse.h"
#include "EventManager.h"
#include "LogWrapper.h"
#include "ProfileCache.h"
#include "ProfileKey.h"
#include "RequestPort.h"
#include "matching/ApnName.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>

namespace pavo::bench {
namespace {

// Returns names as operators give them: of many lengths, some alike.
std::string apnName(long number) {
  static constexpr const char* names[] = {"internet",     "ims",       "mms",
                                          "wap.operator", "broadband", "payandgo.operator.example",
                                          "sos",          "fast.t"};
  const auto kind = static_cast<std::size_t>(number) % std::size(names);
  std::string name = names[kind];
  if (static_cast<std::size_t>(number) >= std::size(names)) {
    name += '.';
    name += std::to_string(number / static_cast<long>(std::size(names)));
  }
  return name;
}

constexpr const char* wantedName = "Internet.99";

void filterCache(benchmark::State& state) {
  LogWrapper::getInstance().setLogWriter(nullptr);
  EventManager eventManager;
  ProfileCache cache(eventManager, /*subscription=*/1, requestFunction());
  for (long i = 0; i < state.range(0); ++i) {
    ProfileParams params;
    params.setApnName(apnName(i));
    params.setHomeIPType(IPType::V4V6);
    cache.add(AddProfileParams(params, /*isPersistent=*/true, /*isIAProfile=*/false));
  }
  FilterProfileParams filter;
  filter.setApnName(wantedName);
  for (auto _ : state) {
    benchmark::DoNotOptimize(cache.filter(filter));
  }
}
BENCHMARK(filterCache)->Name("Filter")->Arg(16)->Arg(255);

struct Record {
  std::string name;
};

void walkMap(benchmark::State& state) {
  std::unordered_map<unsigned long long, std::shared_ptr<Record>> records;
  for (long i = 0; i < state.range(0); ++i) {
    records.emplace(i, std::make_shared<Record>(Record{apnName(i)}));
  }
  const std::string given = wantedName;
  for (auto _ : state) {
    const std::string wanted = convertToLower(given);
    std::list<unsigned long long> hits;
    for (const auto& [number, record] : records) {
      if (record->name == wanted) {
        hits.push_back(number);
      }
    }
    benchmark::DoNotOptimize(hits);
  }
}
BENCHMARK(walkMap)->Name("WalkMap")->Arg(16)->Arg(255);

using Response = std::shared_ptr<ClientResponse>;

struct Submitter {
  Response submit(const std::shared_ptr<ClientRequest>& /*request*/) { return nullptr; }
};

void makeKeys(benchmark::State& state, const requestFunction& function) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::make_shared<ProfileKey>(1, 2, function));
  }
}

void keyWithPort(benchmark::State& state) {
  const std::shared_ptr<RequestPort> port = RequestPort::create();
  const requestFunction function = port->getRequestFunction();
  port->end();
  makeKeys(state, function);
}
BENCHMARK(keyWithPort)->Name("Key");

void keyWithBind(benchmark::State& state) {
  makeKeys(state,
           std::bind(&Submitter::submit, std::make_shared<Submitter>(), std::placeholders::_1));
}
BENCHMARK(keyWithBind)->Name("BoundKey");

}  // namespace
}  // namespace pavo::bench
