// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A modem that is nothing but frames: it says hello and leaves everything else to the test. Serves
// each connection on a thread of its own until it is destroyed.
#pragma once

#include "Bytes.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace pavo::test {

struct RawFrame {
  unsigned kind;
  unsigned messageId;
  uint32_t transaction;
  Bytes payload;
};

class RawPeer {
 public:
  explicit RawPeer(int connected) : fd(connected) {}
  RawPeer(const RawPeer&) = delete;
  RawPeer& operator=(const RawPeer&) = delete;
  ~RawPeer();

  // Whatever bytes; false when the other end is gone.
  bool send(const Bytes& bytes);
  bool respond(const RawFrame& request, const Bytes& payload);
  bool indicate(unsigned messageId, const Bytes& payload);
  void hangUp();
  // False at the end of the connection.
  bool receive(RawFrame& frame);

 private:
  bool read(Bytes& bytes);

  const int fd;
};

class RawModem {
 public:
  // Called for each frame after the hello.
  using Handler = std::function<void(RawPeer&, const RawFrame&)>;

  static void succeed(RawPeer& peer, const RawFrame& request);
  static void ignore(RawPeer&, const RawFrame&) {}
  static Bytes refusal(int code) {
    return rawFrame(rawHello, 0, 0, u32(/*boot=*/7) + u32(static_cast<uint32_t>(code)));
  }
  static Bytes hello() { return rawFrame(rawHello, 0, 0, u32(/*boot=*/7)); }

  explicit RawModem(const std::string& path, Handler handler = succeed,
                    const Bytes& helloAnswer = hello());
  RawModem(const RawModem&) = delete;
  RawModem& operator=(const RawModem&) = delete;
  // Ends all connections; the path is gone.
  ~RawModem();

  std::vector<RawFrame> requests();
  // The payloads of the hellos, in order.
  std::vector<Bytes> hellos();
  // The connection made last of those that have said hello.
  std::shared_ptr<RawPeer> lastPeer();

 private:
  void acceptAll();
  void serve(const std::shared_ptr<RawPeer>& peer);

  const std::string path;
  const Handler handler;
  const Bytes helloAnswer;
  const int listener;

  std::mutex mutex;
  std::vector<RawFrame> seen;
  std::vector<Bytes> said;
  std::shared_ptr<RawPeer> last;
  std::vector<std::shared_ptr<RawPeer>> peers;
  std::vector<std::thread> threads;
  std::thread accepter;
};

}  // namespace pavo::test
