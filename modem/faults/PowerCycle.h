// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A loss and return of the power, once or several times.
#pragma once

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>

namespace modem {

struct PowerCycle {
  std::chrono::milliseconds off{0};  // without power; 0: it returns before a client can connect
  std::chrono::milliseconds on{0};   // with power, before the next loss
  uint32_t times = 1;
};

// Reads the arguments offMs, onMs and times. Throws Error.
PowerCycle powerCycleFromJson(const nlohmann::json& args);
void powerCycleToJson(const PowerCycle& cycle, nlohmann::json& out);

}  // namespace modem
