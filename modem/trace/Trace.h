// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The trace file: the messages of a modem, written while it serves and served again by Replay.
//
// The file has one line for each event, in the order in which they happened:
//
//   0.004211  2 > request   create-profile  4 {"apn":"ims","type":0} 0104000000...
//
// The columns are the seconds since the start, the client's number, the direction (> from the
// client, < to it), the kind, the message, the transaction, the decoded message for readers, and
// its bytes
// ("-" for none). The kind "end" ends a connection; its direction is the side that closed it. Lines
// that begin with # are comments.
#pragma once

#include "base/UniqueFd.h"
#include "modem/common/File.h"
#include "modem/server/ClientHandler.h"
#include "modem/trace/MessageJson.h"
#include "wire/Frame.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace modem {

using pavo::UniqueFd;
using wire::Frame;
using wire::FrameKind;

struct TraceEvent {
  std::chrono::microseconds time{0};
  ClientNumber client = 0;
  Direction direction = Direction::In;
  bool isEnd = false;  // of the connection; the direction says which side closed it
  Frame frame = {};
  size_t line = 0;  // in the file that it was read from, counted from 1
};

class TraceWriter {
 public:
  // Replaces an existing file. Throws Error.
  explicit TraceWriter(std::string path);

  // These throw Error when the file cannot be written. A line is written at once, so that a modem
  // that is killed leaves whole lines. fault: the name of the effect on this message, or empty.
  void add(Direction direction, ClientNumber client, const Frame& frame, const std::string& fault);
  void addEnd(ClientNumber client, ClosedBy closedBy);
  // Writes a comment about a message that a fault has lost.
  void addLost(ClientNumber client, const Frame& frame);

 private:
  void addEvent(const TraceEvent& event, const std::string& meaning);
  void writeLine(const std::string& line);

  const std::string path;
  const std::chrono::steady_clock::time_point start;
  UniqueFd fd;
};

// Throws Error with the path and the line.
std::vector<TraceEvent> readTrace(const std::string& path);

// Returns the decoded message on one line for readers.
std::string meaningOf(Direction direction, const Frame& frame);

}  // namespace modem
