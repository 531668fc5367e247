// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Splits a trace into connections, and each connection into exchanges.
#pragma once

#include "modem/trace/Trace.h"
#include "wire/Hello.h"

#include <string>
#include <vector>

namespace modem {

using wire::Hello;

// A hello or a request, and all that the modem sent before the client's next request.
struct TraceExchange {
  TraceEvent said;
  std::vector<TraceEvent> sent = {};
};

struct TraceSession {
  Hello hello;
  // The first one is the hello; the others are requests.
  std::vector<TraceExchange> exchanges;
};

// Returns the connections in the order of their hellos. Throws Error with the path and the line.
std::vector<TraceSession> readTraceSessions(const std::string& path);

}  // namespace modem
