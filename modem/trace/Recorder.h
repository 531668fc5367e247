// Keeps what goes between the modem and its clients: in the transcript, and in the trace when one
// is wanted.
#pragma once

#include <memory>
#include <string>

#include "modem/server/ClientHandler.h"
#include "modem/trace/Trace.h"
#include "modem/trace/Transcript.h"

namespace modem {

using wire::Frame;

class Recorder {
 public:
  // trace may be null. link is told when the trace's file takes no more; the rest goes on.
  Recorder(ClientLink& link, std::unique_ptr<TraceWriter> trace);

  void add(Direction direction, ClientNumber client, const Frame& frame, std::string fault = {});
  void addEnd(ClientNumber client, ClosedBy closedBy);
  // What was not sent, and what was not accepted, is for the trace alone.
  void addLost(ClientNumber client, const Frame& frame);
  void addTurnedAway(ClientNumber client, const Frame& hello);

  Transcript& transcript() { return messages; }

 private:
  template <typename Write>
  void toTrace(const Write& write);

  ClientLink& link;
  std::unique_ptr<TraceWriter> trace;
  Transcript messages;
};

}  // namespace modem
