// Faults as JSON: the arguments of the control verb "fail", and the elements of a script.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "modem/faults/Fault.h"

namespace modem {

// Throws Error, which names what is wrong in one line.
Fault faultFromJson(const nlohmann::json& args);

// What faultFromJson would make the same fault of.
nlohmann::json toJson(const Fault& fault);

// How many there may be at once.
inline constexpr size_t faultsMax = 256;

// A script is {"seed": number, "faults": [fault, ...]}.
struct FaultScript {
  std::optional<uint64_t> seed = {};
  std::vector<Fault> faults = {};
};

// Throws Error with the place of what is wrong, such as "faults[2]".
FaultScript faultScriptFromJson(const nlohmann::json& script);

// The same from a file; throws Error with the path and the place.
FaultScript readFaultScript(const std::string& path);

// What every program that reads JSON can hold.
inline constexpr uint64_t seedMax = (uint64_t{1} << 53) - 1;

}  // namespace modem
