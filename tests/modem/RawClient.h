// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A RawClient is a client that reads and writes the bytes of the modem's protocol directly.
#pragma once

#include "Payloads.h"
#include "base/UniqueFd.h"
#include "wire/Frame.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace modem::test {

using namespace wire;
using pavo::UniqueFd;

class RawClient {
 public:
  explicit RawClient(UniqueFd connected) : fd(std::move(connected)) {}

  // Exchanges hellos. Returns the boot number, or nothing when the modem hung up.
  std::optional<uint32_t> hello(bool sawAbsence = false);
  // Registers for the events of all profiles.
  void registerForAll();

  // Returns the payload of the response, or an empty one when the modem hung up. Indications that
  // come before the response are kept.
  Payload request(MessageId message, const Payload& payload);

  uint32_t send(FrameKind kind, MessageId message, const Payload& payload);
  void sendBytes(std::span<const uint8_t> bytes);
  // Returns the next frame of any kind, or nothing when the modem hung up or stays silent for too
  // long.
  std::optional<Frame> receive();
  // Returns true when only the end of the stream comes.
  bool isHungUp();

  // Waits for the next indication and returns it as "create/1"; returns "none" when none comes.
  std::string nextEvent();
  // Returns the indications until now. It makes a round trip, so it misses no earlier indication.
  std::vector<std::string> eventsUntilNow();

  int get() const { return fd.get(); }
  void endSending();
  void close() { fd.reset(); }

 private:
  bool receiveSome();

  UniqueFd fd;
  FrameReader reader;
  std::deque<Frame> indications;
  uint32_t lastTransaction = 0;
  bool isEnded = false;
};

}  // namespace modem::test
