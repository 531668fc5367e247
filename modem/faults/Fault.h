// One fault: what is befallen, when, and by what.
//
// A subject is something that happens on a connection: a request comes, the modem sends an
// indication, somebody says hello. A selector picks subjects, a trigger counts them, an effect says
// what the chosen ones meet. docs/modem.md has the table of all effects.
//
// A further effect is one more alternative of Effect, its row in FaultJson.cpp and its case where
// it takes place: Service.cpp (what becomes of a request), Outbox.cpp (of a message on its way out)
// or Distort.cpp (of its bytes).
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>

#include "modem/core/Profile.h"
#include "modem/faults/PowerCycle.h"

namespace modem {

struct Subject {
  enum class Kind { Message, Indication, Service };
  Kind kind;
  uint32_t code;  // a request's message id, an indication's event, a hello's purpose
};

struct Selector {
  Subject::Kind kind = Subject::Kind::Message;
  std::optional<uint32_t> code = {};  // empty: any
};

// Requests.

// Refuses without looking at the request.
struct AnswerError {
  int32_t result;
  int32_t error;
};
// Takes up the request later; other requests go ahead meanwhile.
struct TakeUpLate {
  std::chrono::milliseconds delay;
};
// Writes, or reads, a profile with these settings in the place of its own.
struct UseSettings {
  Profile settings;
};

// Hellos.

// The platform answers its caller with this code.
struct RefuseHello {
  int32_t code;
};

// Requests, hellos and indications.

// Loses what came: nothing is done, nothing is answered.
struct StaySilent {};
struct LosePower {
  enum class Moment { Before, Unanswered, After };
  Moment moment;
  PowerCycle cycle;
};

// Answers and indications on their way out.

struct Lose {};
struct Double {};
struct SendLate {
  std::chrono::milliseconds delay;
};
struct CutTo {
  size_t bytes;
};
struct Spoil {
  enum class How { Noise, Twice, Overrun, Wide };
  How how;
};
struct LeaveOutField {
  uint8_t tag;
};
struct SendAsMessage {
  uint16_t messageId;
};

// Indications.

struct SendEarly {};  // before the answer to the request that brought it about
struct HoldBack {};   // until the client's next indication is out
struct TellIndex {
  uint8_t index;
};
struct TellEvent {
  uint32_t event;
};

// Answers that hold a list or texts.

struct Overcount {
  uint16_t count;
  bool isUnchecked;
};
struct LeaveUnterminated {
  bool isUnchecked;
};

using Effect =
    std::variant<AnswerError, StaySilent, TakeUpLate, UseSettings, LosePower, RefuseHello, Lose,
                 Double, SendLate, CutTo, Spoil, LeaveOutField, SendAsMessage, SendEarly, HoldBack,
                 TellIndex, TellEvent, Overcount, LeaveUnterminated>;

struct Trigger {
  uint32_t passes = 0;                // how many subjects it lets go by first
  std::optional<uint32_t> times = 1;  // how often it takes effect; empty: without end
  double probability = 1;
  // Of the dice that decide when it is less than certain; empty: the script's seed decides.
  std::optional<uint64_t> seed = {};
};

struct Fault {
  Selector selector;
  Trigger trigger;
  Effect effect;
};

}  // namespace modem
