// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "modem/trace/Recorder.h"

#include <utility>

namespace modem {

Recorder::Recorder(ClientLink& clientLink, std::unique_ptr<TraceWriter> traceWriter)
    : link(clientLink), trace(std::move(traceWriter)) {}

template <typename Write>
void Recorder::toTrace(const Write& write) {
  if (trace == nullptr) {
    return;
  }
  try {
    write(*trace);
  } catch (const Error& error) {
    trace.reset();
    link.report(std::string("the trace ends here: ") + error.what());
  }
}

void Recorder::add(Direction direction, ClientNumber client, const Frame& frame,
                   std::string fault) {
  toTrace([&](TraceWriter& writer) { writer.add(direction, client, frame, fault); });
  messages.add(direction, client, frame, std::move(fault));
}

void Recorder::addEnd(ClientNumber client, ClosedBy closedBy) {
  toTrace([&](TraceWriter& writer) { writer.addEnd(client, closedBy); });
}

void Recorder::addLost(ClientNumber client, const Frame& frame) {
  toTrace([&](TraceWriter& writer) { writer.addLost(client, frame); });
}

void Recorder::addRejected(ClientNumber client, const Frame& hello) {
  toTrace([&](TraceWriter& writer) { writer.add(Direction::In, client, hello, /*fault=*/{}); });
}

}  // namespace modem
