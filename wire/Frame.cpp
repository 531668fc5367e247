// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "wire/Frame.h"

#include "wire/LittleEndian.h"

#include <stdexcept>
#include <utility>

namespace wire {

std::vector<uint8_t> encodeFrame(const Frame& frame) {
  if (frame.payload.size() > framePayloadBytesMax) {
    throw std::length_error("a frame's payload is longer than the protocol allows");
  }
  std::vector<uint8_t> out;
  out.reserve(frameHeaderBytes + frame.payload.size());
  putLittleEndian(out, static_cast<uint32_t>(frame.payload.size()), /*width=*/4);
  out.push_back(static_cast<uint8_t>(frame.kind));
  out.push_back(protocolVersion);
  putLittleEndian(out, frame.messageId, /*width=*/2);
  putLittleEndian(out, frame.transaction, /*width=*/4);
  out.insert(out.end(), frame.payload.begin(), frame.payload.end());
  return out;
}

void FrameReader::append(const uint8_t* bytes, size_t count) {
  if (!brokenReason.empty()) {
    return;
  }
  // Consumed bytes are dropped here and not frame by frame, so that a burst of small frames is
  // moved once.
  pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(consumed));
  consumed = 0;
  pending.insert(pending.end(), bytes, bytes + count);
}

FrameReader::Status FrameReader::next(Frame& frame) {
  if (!brokenReason.empty()) {
    return Status::Broken;
  }
  const size_t available = pending.size() - consumed;
  if (available < frameHeaderBytes) {
    return Status::NeedMore;
  }
  const uint8_t* header = pending.data() + consumed;
  const uint32_t payloadBytes = getLittleEndian(header, /*width=*/4);
  // The header is checked before the payload arrives. Otherwise a wrong length would make the
  // reader wait for, and hold, as many bytes as the peer sends.
  if (payloadBytes > framePayloadBytesMax) {
    return fail("payload of " + std::to_string(payloadBytes) + " bytes, at most " +
                std::to_string(framePayloadBytesMax) + " are allowed");
  }
  if (header[4] > static_cast<uint8_t>(FrameKind::UncheckedResponse)) {
    return fail("unknown frame kind " + std::to_string(header[4]));
  }
  if (header[5] != protocolVersion) {
    return fail("protocol version " + std::to_string(header[5]) + ", expected " +
                std::to_string(protocolVersion));
  }
  if (available - frameHeaderBytes < payloadBytes) {
    return Status::NeedMore;
  }
  frame.kind = static_cast<FrameKind>(header[4]);
  frame.messageId = static_cast<uint16_t>(getLittleEndian(header + 6, /*width=*/2));
  frame.transaction = getLittleEndian(header + 8, /*width=*/4);
  const uint8_t* payload = header + frameHeaderBytes;
  frame.payload.assign(payload, payload + payloadBytes);
  consumed += frameHeaderBytes + payloadBytes;
  return Status::Ready;
}

FrameReader::Status FrameReader::fail(std::string why) {
  brokenReason = std::move(why);
  pending.clear();
  consumed = 0;
  return Status::Broken;
}

}  // namespace wire
