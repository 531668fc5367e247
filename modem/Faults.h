// What the modem was told to do wrong, and how often still.
//
// A fault says when (which requests), how often and what. Faults are tried in the order in which
// they were added; a request meets one at most. A further kind of fault is one more alternative of
// Effect, its row in the table of Faults.cpp and its case where the server acts on it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace modem {

// Refuses without looking at the request.
struct AnswerError {
  int32_t result;
  int32_t error;
};
// Loses the request: nothing is done, nothing is answered.
struct StaySilent {};
// Takes up the request later; other requests go ahead meanwhile.
struct AnswerLate {
  std::chrono::milliseconds delay;
};

using Effect = std::variant<AnswerError, StaySilent, AnswerLate>;

struct Fault {
  std::optional<uint16_t> messageId;  // empty: any request
  uint32_t timesLeft = 1;
  Effect effect;
};

class Faults {
 public:
  static constexpr size_t pendingMax = 64;  // so that all of them can be told in one reply

  // From the arguments of the control verb; throws JsonError and then adds nothing.
  void add(const nlohmann::json& args);

  // What befalls this request; uses up one time of the fault.
  std::optional<Effect> take(uint16_t messageId);

  nlohmann::json toJson() const;
  void clear() { pending.clear(); }

 private:
  std::vector<Fault> pending;
};

// "error", "silent" or "delayMs", as the control verb calls it.
std::string effectName(const Effect& effect);

}  // namespace modem
