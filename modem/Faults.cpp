#include "Faults.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "Messages.h"
#include "ProfileJson.h"

namespace modem {

using nlohmann::json;

namespace {

constexpr uint64_t i32Max = std::numeric_limits<int32_t>::max();
constexpr uint64_t timesMax = 1'000'000;
constexpr uint64_t delayMsMax = 3'600'000;

struct EffectRow {
  std::string_view name;    // the argument that asks for it
  std::string_view option;  // an argument that only it takes
  Effect (*fromJson)(const json& args);
  void (*toJson)(const Effect& effect, json& out);
};

Effect errorFromJson(const json& args) {
  const uint64_t error = numberFromJson(args["error"], i32Max, "error");
  const uint64_t result = args.contains("result") ? numberFromJson(args["result"], i32Max, "result")
                                                  : static_cast<uint64_t>(resultFailure);
  return AnswerError{static_cast<int32_t>(result), static_cast<int32_t>(error)};
}

void errorToJson(const Effect& effect, json& out) {
  out["error"] = std::get<AnswerError>(effect).error;
  out["result"] = std::get<AnswerError>(effect).result;
}

Effect silentFromJson(const json& args) {
  if (args["silent"] != true) {
    throw JsonError("silent has to be true");
  }
  return StaySilent{};
}

void silentToJson(const Effect&, json& out) { out["silent"] = true; }

Effect delayFromJson(const json& args) {
  return AnswerLate{
      std::chrono::milliseconds(numberFromJson(args["delayMs"], delayMsMax, "delayMs"))};
}

void delayToJson(const Effect& effect, json& out) {
  out["delayMs"] = std::get<AnswerLate>(effect).delay.count();
}

// In the order of the alternatives of Effect.
constexpr std::array<EffectRow, std::variant_size_v<Effect>> effectRows = {{
    {"error", "result", errorFromJson, errorToJson},
    {"silent", "", silentFromJson, silentToJson},
    {"delayMs", "", delayFromJson, delayToJson},
}};

const EffectRow& effectRowOf(const json& args) {
  const EffectRow* asked = nullptr;
  for (const EffectRow& row : effectRows) {
    if (args.contains(std::string(row.name))) {
      if (asked != nullptr) {
        throw JsonError(std::string(asked->name) + " and " + std::string(row.name) +
                        " exclude each other");
      }
      asked = &row;
    }
  }
  if (asked == nullptr) {
    throw JsonError("one of error, silent and delayMs is needed");
  }
  return *asked;
}

bool isRequest(uint16_t messageId) { return messageId != profileChanged; }

// Nothing for "any".
std::optional<uint16_t> messageFromJson(const json& value) {
  if (value == "any") {
    return std::nullopt;
  }
  std::optional<uint16_t> id;
  if (value.is_string()) {
    id = messageIdOf(value.get<std::string>());
  } else {
    id = static_cast<uint16_t>(
        numberFromJson(value, std::numeric_limits<uint16_t>::max(), "message"));
  }
  if (!id || !isRequest(*id)) {
    std::string known;
    for (const MessageName& name : messageNames()) {
      known += isRequest(name.id) ? std::string(name.name) + ", " : "";
    }
    throw JsonError("message has to be the number of a request or one of " + known + "any");
  }
  return id;
}

}  // namespace

void Faults::add(const json& args) {
  const EffectRow& row = effectRowOf(args);
  for (const auto& [name, value] : args.items()) {
    if (name != "message" && name != "count" && name != row.name && name != row.option) {
      throw JsonError("unknown argument \"" + name + "\"");
    }
  }
  if (!args.contains("message")) {
    throw JsonError("message is missing");
  }
  Fault fault;
  fault.messageId = messageFromJson(args["message"]);
  if (args.contains("count")) {
    fault.timesLeft = static_cast<uint32_t>(numberFromJson(args["count"], timesMax, "count"));
    if (fault.timesLeft == 0) {
      throw JsonError("count has to be at least 1");
    }
  }
  fault.effect = row.fromJson(args);
  if (pending.size() == pendingMax) {
    throw JsonError("there are " + std::to_string(pendingMax) + " faults already");
  }
  pending.push_back(fault);
}

std::optional<Effect> Faults::take(uint16_t messageId) {
  const auto met = std::ranges::find_if(pending, [messageId](const Fault& fault) {
    return !fault.messageId || *fault.messageId == messageId;
  });
  if (met == pending.end()) {
    return std::nullopt;
  }
  const Effect effect = met->effect;
  if (--met->timesLeft == 0) {
    pending.erase(met);
  }
  return effect;
}

json Faults::toJson() const {
  json list = json::array();
  for (const Fault& fault : pending) {
    json entry = {{"message", fault.messageId ? messageName(*fault.messageId) : "any"},
                  {"count", fault.timesLeft}};
    effectRows[fault.effect.index()].toJson(fault.effect, entry);
    list.push_back(std::move(entry));
  }
  return list;
}

std::string effectName(const Effect& effect) {
  return std::string(effectRows[effect.index()].name);
}

}  // namespace modem
