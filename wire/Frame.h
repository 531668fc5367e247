// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The frames in which a client and the modem talk over a stream: a fixed header and a payload.
//
// Encoding is a pure function. A FrameReader belongs to one connection and one thread: bytes go in
// as they arrive, whole frames come out. A reader cannot recover from a broken frame, because it no
// longer knows where the next frame begins; the connection has to be closed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wire {

inline constexpr size_t frameHeaderBytes = 12;
inline constexpr size_t framePayloadBytesMax = 65536;
inline constexpr uint8_t protocolVersion = 1;

enum class FrameKind : uint8_t {
  Request = 0,
  Response = 1,
  Indication = 2,
  ControlRequest = 3,
  ControlResponse = 4,
  Hello = 5,
  // A response that the messaging library passes on without checking its bounds: a text that fills
  // its place gets no terminator, and the count of a list is the modem's. Some platforms trust
  // their modem in this way.
  UncheckedResponse = 6,
};

struct Frame {
  FrameKind kind = FrameKind::Request;
  uint16_t messageId = 0;
  uint32_t transaction = 0;
  std::vector<uint8_t> payload;
};

// Throws std::length_error when the payload is longer than framePayloadBytesMax.
std::vector<uint8_t> encodeFrame(const Frame& frame);

class FrameReader {
 public:
  enum class Status { NeedMore, Ready, Broken };

  void append(const uint8_t* bytes, size_t count);

  // Takes the next whole frame. A Broken reader stays Broken.
  Status next(Frame& frame);

  // The reason why the reader is broken, in one line; empty while it is not.
  const std::string& reason() const { return brokenReason; }

  // True when the stream would end inside a frame if it ended now.
  bool isMidFrame() const { return pending.size() > consumed; }

 private:
  Status fail(std::string why);

  std::vector<uint8_t> pending;
  size_t consumed = 0;  // bytes of pending that were already handed out
  std::string brokenReason;
};

}  // namespace wire
