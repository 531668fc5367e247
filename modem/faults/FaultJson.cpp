// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/faults/FaultJson.h"

#include "modem/common/File.h"
#include "modem/common/Json.h"
#include "modem/faults/FaultSelector.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace modem {

using nlohmann::json;

namespace {

constexpr uint64_t timesMax = 1'000'000;
constexpr std::array<std::string_view, 4> triggerNames = {"nth", "count", "probability", "seed"};

uint64_t seedFromJson(const json& value) { return numberFromJson(value, seedMax, "seed"); }

double probabilityFromJson(const json& value) {
  const double probability = value.is_number() ? value.get<double>() : -1;
  if (!(probability > 0 && probability <= 1)) {
    throw Error("probability has to be a number above 0 and not above 1");
  }
  return probability;
}

Trigger triggerFromJson(const json& args) {
  Trigger trigger;
  if (args.contains("nth")) {
    trigger.passes = countFromJson(args["nth"], timesMax, "nth") - 1;
  }
  if (args.contains("probability")) {
    trigger.probability = probabilityFromJson(args["probability"]);
    trigger.times = std::nullopt;
  }
  if (args.contains("count")) {
    trigger.times = countFromJson(args["count"], timesMax, "count");
  }
  if (args.contains("seed")) {
    if (!args.contains("probability")) {
      throw Error("seed is for a fault with a probability");
    }
    trigger.seed = seedFromJson(args["seed"]);
  }
  return trigger;
}

void triggerToJson(const Trigger& trigger, json& out) {
  if (trigger.passes > 0) {
    out["nth"] = trigger.passes + 1;
  }
  if (trigger.times) {
    out["count"] = *trigger.times;
  }
  if (trigger.probability < 1 || !trigger.times) {
    out["probability"] = trigger.probability;
    if (trigger.seed) {
      out["seed"] = *trigger.seed;
    }
  }
}

void refuseUnknownArguments(const json& args, const Fault& fault) {
  for (const auto& [name, value] : args.items()) {
    const bool isKnown = name == selectorName(fault.selector.kind) ||
                         fault.effect->hasArgument(name) ||
                         std::ranges::count(triggerNames, std::string_view(name)) > 0;
    if (!isKnown) {
      throw Error("unknown argument \"" + name + "\"");
    }
  }
}

}  // namespace

Fault faultFromJson(const json& args) {
  if (!args.is_object()) {
    throw Error("a fault has to be an object");
  }
  Fault fault;
  fault.selector = selectorFromJson(args);
  fault.trigger = triggerFromJson(args);
  fault.effect = effectFromJson(args);
  refuseUnknownArguments(args, fault);
  const auto fits = [&](Subject subject) { return fault.effect->fits(subject); };
  if (std::ranges::none_of(subjectsOf(fault.selector), fits)) {
    throw Error(fault.effect->name() + " is no fault of this " + selectorName(fault.selector.kind));
  }
  return fault;
}

json toJson(const Fault& fault) {
  json out = json::object();
  selectorToJson(fault.selector, out);
  triggerToJson(fault.trigger, out);
  out.update(fault.effect->arguments());
  return out;
}

FaultScript faultScriptFromJson(const json& script) {
  if (!script.is_object() || !script.contains("faults") || !script["faults"].is_array()) {
    throw Error("a script has to be an object with the list \"faults\"");
  }
  FaultScript read;
  for (const auto& [name, value] : script.items()) {
    if (name == "seed") {
      read.seed = seedFromJson(value);
    } else if (name != "faults") {
      throw Error("a script has no member \"" + name + "\"");
    }
  }
  if (script["faults"].size() > faultsMax) {
    throw Error("a script has at most " + std::to_string(faultsMax) + " faults");
  }
  for (const json& fault : script["faults"]) {
    const std::string place = "faults[" + std::to_string(read.faults.size()) + "]: ";
    try {
      read.faults.push_back(faultFromJson(fault));
    } catch (const Error& error) {
      throw Error(place + error.what());
    }
  }
  return read;
}

FaultScript readFaultScript(const std::string& path) {
  return readJson(path, readFile(path), faultScriptFromJson);
}

}  // namespace modem
