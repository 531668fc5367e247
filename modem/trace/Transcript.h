// Everything that went between the modem and its clients, for tests and people to read back.
//
// Messages are kept as they were on the wire and decoded when somebody asks. The oldest ones go
// when there are too many, or too many bytes of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "modem/server/ClientHandler.h"
#include "modem/trace/MessageJson.h"
#include "wire/Frame.h"

namespace modem {

using wire::Frame;

class Transcript {
 public:
  static constexpr size_t entriesMax = 4096;
  static constexpr size_t payloadBytesMax = 16 << 20;
  // An entry that would be longer as JSON is given without its fields and with the beginning of its
  // payload only, so that any entry fits into one control frame.
  static constexpr size_t entryJsonBytesMax = 24 << 10;

  // fault: the name of what the modem was told to do wrong with it, else empty.
  void add(Direction direction, ClientNumber client, const Frame& frame, std::string fault = {});
  void clear();

  // Sequence numbers start at 1 and go on over clear().
  uint64_t firstSequence() const { return nextSequence - entries.size(); }
  uint64_t endSequence() const { return nextSequence; }
  nlohmann::json entryToJson(uint64_t sequence) const;

  // How many were pushed out by newer ones since the last clear().
  uint64_t dropped() const { return droppedCount; }

 private:
  struct Entry {
    Direction direction;
    ClientNumber client;
    Frame frame;
    std::string fault;
  };

  std::deque<Entry> entries;
  size_t payloadBytes = 0;
  uint64_t nextSequence = 1;
  uint64_t droppedCount = 0;
};

}  // namespace modem
