// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// One connection of the server: it reads frames and writes frames, and never blocks.
//
//               first frame
//   Unknown --- hello -----------> Client
//           \-- control request -> Control
//
// A closed connection stays closed until the server removes it.
#pragma once

#include "base/UniqueFd.h"
#include "modem/server/ClientHandler.h"
#include "wire/Frame.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace modem {

using pavo::UniqueFd;
using wire::Frame;
using wire::FrameKind;
using wire::FrameReader;

enum class Role { Unknown, Client, Control };

class Connection {
 public:
  // A connection is closed when more bytes than this wait for a peer that does not read.
  static constexpr size_t outputBytesMax = 1 << 20;

  using Clock = std::chrono::steady_clock;

  // speakBy: the deadline of the first frame.
  explicit Connection(UniqueFd socket, Clock::time_point speakBy = Clock::time_point::max())
      : firstFrameDeadline(speakBy), fd(std::move(socket)) {}

  int get() const { return fd.get(); }
  bool isOpen() const { return fd.isOpen(); }
  bool hasOutput() const { return output.size() > outputDone; }

  // Reads once. Returns false when the peer has ended its side; frames may precede the end.
  bool receive();
  // Takes the next whole frame. A broken stream closes the connection.
  bool nextFrame(Frame& frame);

  // Writes what the socket accepts now and keeps the rest.
  void send(const Frame& frame);
  void flush();

  // why: the line for the log; empty for an ordinary end.
  void close(ClosedBy closedBy, std::string why);
  const std::string& closeReason() const { return reason; }
  ClosedBy whoClosed() const { return closedBy; }

  bool isMidFrame() const { return reader.isMidFrame(); }

  // The time at which this connection is closed if its first frame has not arrived.
  Clock::time_point closeDeadline() const {
    return role == Role::Unknown ? firstFrameDeadline : Clock::time_point::max();
  }

  Role role = Role::Unknown;
  ClientNumber client = 0;  // of the role Client only

 private:
  const Clock::time_point firstFrameDeadline;
  UniqueFd fd;
  FrameReader reader;
  std::vector<uint8_t> output;
  size_t outputDone = 0;
  std::string reason;
  ClosedBy closedBy = ClosedBy::Client;
};

}  // namespace modem
