// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Keeps the messages between the modem and its clients, for tests and for the control channel.
//
// Messages are kept as they were sent and decoded when they are read. The oldest ones are dropped
// when there are too many messages or too many bytes.
#pragma once

#include "modem/server/ClientHandler.h"
#include "modem/trace/MessageJson.h"
#include "wire/Frame.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace modem {

using wire::Frame;

class Transcript {
 public:
  static constexpr size_t entriesMax = 4096;
  static constexpr size_t payloadBytesMax = 16 << 20;
  // A longer entry is returned without its fields and with the beginning of its payload, so that
  // every entry fits into one control frame.
  static constexpr size_t entryJsonBytesMax = 24 << 10;

  // fault: the name of the effect on this message, or empty.
  void add(Direction direction, ClientNumber client, const Frame& frame, std::string fault = {});
  void clear();

  // Sequence numbers start at 1. clear() does not reset them.
  uint64_t firstSequence() const { return nextSequence - entries.size(); }
  uint64_t endSequence() const { return nextSequence; }
  nlohmann::json entryToJson(uint64_t sequence) const;

  // The number of entries that newer ones have replaced since the last clear().
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
