// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Records the messages between the modem and its clients in the transcript and, if there is one, in
// the trace.
#pragma once

#include "modem/server/ClientHandler.h"
#include "modem/trace/Trace.h"
#include "modem/trace/Transcript.h"

#include <memory>
#include <string>

namespace modem {

using wire::Frame;

class Recorder {
 public:
  // trace may be null. When its file cannot be written, the problem is reported to the link, the
  // trace ends and the transcript continues.
  Recorder(ClientLink& link, std::unique_ptr<TraceWriter> trace);

  void add(Direction direction, ClientNumber client, const Frame& frame, std::string fault = {});
  void addEnd(ClientNumber client, ClosedBy closedBy);
  // Messages that were not sent or not accepted are recorded in the trace only.
  void addLost(ClientNumber client, const Frame& frame);
  void addRejected(ClientNumber client, const Frame& hello);

  Transcript& transcript() { return messages; }

 private:
  template <typename Write>
  void toTrace(const Write& write);

  ClientLink& link;
  std::unique_ptr<TraceWriter> trace;
  Transcript messages;
};

}  // namespace modem
