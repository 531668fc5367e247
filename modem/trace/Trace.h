// A transcript as a file: written while a modem serves, read by people, and served again by Replay.
//
// One line an event, in the order in which they happened:
//
//   0.004211  2 > request   create-profile  4 {"apn":"ims","type":0} 0104000000...
//
// seconds since the start, the client's number, > from the client or < to it, the kind, the
// message, the transaction, what it says for people, and its bytes ("-" for none). A kind of "end"
// says who ended the connection. Lines that begin with # are for people.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "base/UniqueFd.h"
#include "modem/common/File.h"
#include "modem/server/ClientHandler.h"
#include "modem/trace/MessageJson.h"
#include "wire/Frame.h"

namespace modem {

using pavo::UniqueFd;
using wire::Frame;
using wire::FrameKind;

struct TraceEvent {
  std::chrono::microseconds time{0};
  ClientNumber client = 0;
  Direction direction = Direction::In;
  bool isEnd = false;  // of the connection, by the side that the direction comes from
  Frame frame = {};
  size_t line = 0;  // in the file that it was read from, from 1
};

class TraceWriter {
 public:
  // Replaces what was there; throws Error.
  explicit TraceWriter(std::string path);

  // fault: the name of what the modem was told to do wrong with it, else empty. They throw
  // Error when the file takes no more.
  void add(Direction direction, ClientNumber client, const Frame& frame, const std::string& fault);
  void addEnd(ClientNumber client, ClosedBy closedBy);
  // For people: what would have been sent, had the fault not lost it.
  void addLost(ClientNumber client, const Frame& frame);

 private:
  void addEvent(const TraceEvent& event, const std::string& meaning);
  void writeLine(const std::string& line);

  const std::string path;
  const std::chrono::steady_clock::time_point start;
  UniqueFd fd;
};

// Throws Error with the path, the line and what is wrong with it.
std::vector<TraceEvent> readTrace(const std::string& path);

// What a message says, in one line for people.
std::string meaningOf(Direction direction, const Frame& frame);

}  // namespace modem
