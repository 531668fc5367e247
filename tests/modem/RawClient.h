// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A client that speaks the modem's protocol with nothing between it and the bytes.
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

  // Exchanges hellos; the boot number, or nothing when the modem hung up.
  std::optional<uint32_t> hello(bool sawAbsence = false);
  // Registers for the events of all profiles.
  void registerForAll();

  // The payload of the response; indications that come before it are kept. Empty when the modem
  // hung up.
  Payload request(MessageId message, const Payload& payload);

  uint32_t send(FrameKind kind, MessageId message, const Payload& payload);
  void sendBytes(std::span<const uint8_t> bytes);
  // The next frame of whatever kind; nothing when the modem hung up or keeps silent for too long.
  std::optional<Frame> receive();
  // True when nothing but the end of the stream comes.
  bool isHungUp();

  // The next indication as "create/1", waiting for it; "none" when none comes.
  std::string nextEvent();
  // The indications until now. Makes a round trip, so nothing that the modem sent is missed.
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
