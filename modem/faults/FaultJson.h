// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The JSON form of faults: the arguments of the control verb "fail" and the elements of a script.
#pragma once

#include "modem/faults/Fault.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace modem {

// Throws Error.
Fault faultFromJson(const nlohmann::json& args);

// Returns arguments from which faultFromJson makes the same fault.
nlohmann::json toJson(const Fault& fault);

// The largest number of faults at one time.
inline constexpr size_t faultsMax = 256;

// A script is {"seed": number, "faults": [fault, ...]}.
struct FaultScript {
  std::optional<uint64_t> seed = {};
  std::vector<Fault> faults = {};
};

// Throws Error with the place of the mistake, such as "faults[2]".
FaultScript faultScriptFromJson(const nlohmann::json& script);

// Reads a script from a file. Throws Error with the path and the place.
FaultScript readFaultScript(const std::string& path);

// The largest number that every reader of JSON represents exactly.
inline constexpr uint64_t seedMax = (uint64_t{1} << 53) - 1;

}  // namespace modem
