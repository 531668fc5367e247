// A trace, taken apart: per connection what the client said, and what the modem sent after it.
#pragma once

#include <string>
#include <vector>

#include "modem/trace/Trace.h"
#include "wire/Hello.h"

namespace modem {

using wire::Hello;

// What a client said, and all that the modem sent to it before the client said something else.
struct TraceExchange {
  TraceEvent said;
  std::vector<TraceEvent> sent = {};
};

struct TraceSession {
  Hello hello;
  // The first one is the hello; the others are requests.
  std::vector<TraceExchange> exchanges;
};

// In the order of their hellos. Throws Error with the path, the line and what is wrong with it.
std::vector<TraceSession> readTraceSessions(const std::string& path);

}  // namespace modem
