// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/PowerCycle.h"

#include "modem/common/Json.h"

namespace modem {

using nlohmann::json;
using std::chrono::milliseconds;

namespace {

constexpr uint64_t pauseMsMax = 3'600'000;
constexpr uint64_t timesMax = 1'000'000;

milliseconds pauseFromJson(const json& args, const std::string& name) {
  return milliseconds(args.contains(name) ? numberFromJson(args[name], pauseMsMax, name) : 0);
}

}  // namespace

PowerCycle powerCycleFromJson(const json& args) {
  PowerCycle cycle{pauseFromJson(args, "offMs"), pauseFromJson(args, "onMs"), /*times=*/1};
  if (args.contains("times")) {
    cycle.times = countFromJson(args["times"], timesMax, "times");
  } else if (args.contains("onMs")) {
    throw Error("onMs is for a power cycle with times");
  }
  return cycle;
}

void powerCycleToJson(const PowerCycle& cycle, json& out) {
  out["offMs"] = cycle.off.count();
  if (cycle.times != 1) {
    out["onMs"] = cycle.on.count();
    out["times"] = cycle.times;
  }
}

}  // namespace modem
