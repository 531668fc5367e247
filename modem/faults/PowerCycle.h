// The power goes and returns, once or over and over.
#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>

namespace modem {

struct PowerCycle {
  std::chrono::milliseconds off{0};  // without power; 0: it is back before anybody can tell
  std::chrono::milliseconds on{0};   // with power, before it goes again
  uint32_t times = 1;
};

// From the arguments offMs, onMs and times; throws Error.
PowerCycle powerCycleFromJson(const nlohmann::json& args);
void powerCycleToJson(const PowerCycle& cycle, nlohmann::json& out);

}  // namespace modem
