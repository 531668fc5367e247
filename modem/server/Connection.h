// One connection of the server: bytes in, frames out, and the other way round. Never blocks.
//
//               first frame
//   Unknown --- hello -----------> Client
//           \-- control request -> Control
//
// A connection that is closed for whatever reason stays closed and is swept away by the server.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "base/UniqueFd.h"
#include "modem/server/ClientHandler.h"
#include "wire/Frame.h"

namespace modem {

using pavo::UniqueFd;
using wire::Frame;
using wire::FrameKind;
using wire::FrameReader;

enum class Role { Unknown, Client, Control };

class Connection {
 public:
  // A peer that does not read is given up when this much waits for it.
  static constexpr size_t outputBytesMax = 1 << 20;

  using Clock = std::chrono::steady_clock;

  // speakBy: when the first frame has to be there.
  explicit Connection(UniqueFd socket, Clock::time_point speakBy = Clock::time_point::max())
      : silenceEnd(speakBy), fd(std::move(socket)) {}

  int get() const { return fd.get(); }
  bool isOpen() const { return fd.isOpen(); }
  bool hasOutput() const { return output.size() > outputDone; }

  // Reads once. False when the peer has ended its side; frames may have come before that.
  bool receive();
  // The next whole frame; a broken stream closes the connection.
  bool nextFrame(Frame& frame);

  // Writes what the socket takes now and keeps the rest.
  void send(const Frame& frame);
  void flush();

  // why is empty when nobody is to be blamed.
  void close(ClosedBy closedBy, std::string why);
  const std::string& closeReason() const { return reason; }
  ClosedBy whoClosed() const { return closedBy; }

  bool isMidFrame() const { return reader.isMidFrame(); }

  // When this connection is to be closed, unless it has said by then what it is.
  Clock::time_point closedForSilenceAt() const {
    return role == Role::Unknown ? silenceEnd : Clock::time_point::max();
  }

  Role role = Role::Unknown;
  ClientNumber client = 0;  // of a Client

 private:
  const Clock::time_point silenceEnd;
  UniqueFd fd;
  FrameReader reader;
  std::vector<uint8_t> output;
  size_t outputDone = 0;
  std::string reason;
  ClosedBy closedBy = ClosedBy::Client;
};

}  // namespace modem
