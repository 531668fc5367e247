// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A RawModem is a modem that handles frames only: it answers hellos and leaves everything else to
// the test. It serves each connection on a thread of its own until it is destroyed.
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

  // Sends any bytes. Returns false when the other end is gone.
  bool send(const Bytes& bytes);
  bool respond(const RawFrame& request, const Bytes& payload);
  bool indicate(unsigned messageId, const Bytes& payload);
  void hangUp();
  // Returns false at the end of the connection.
  bool receive(RawFrame& frame);

 private:
  bool read(Bytes& bytes);

  const int fd;
};

class RawModem {
 public:
  // The handler is called for each frame after the hello.
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
  // Ends all connections and removes the path.
  ~RawModem();

  std::vector<RawFrame> requests();
  // Returns the payloads of the hellos, in order.
  std::vector<Bytes> hellos();
  // Returns the latest connection that has said hello.
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
