// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// Serves clients and control connections on the thread that is in run(). It moves bytes, frames and
// timers; the handler gives messages their meaning.
//
// Connections come from a listening socket, from adopt(), or from both. A connection from the
// listening socket has to belong to this process's user or to root, and has to send its first frame
// within firstFrameTimeout.
#pragma once

#include "base/Mutex.h"
#include "base/UniqueFd.h"
#include "modem/server/ClientHandler.h"
#include "modem/server/Connection.h"
#include "modem/server/LineLimit.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace modem {

using wire::Frame;

using pavo::UniqueFd;

class Server final : public ClientLink {
 public:
  static constexpr size_t connectionsMax = 256;
  static constexpr std::chrono::seconds firstFrameTimeout{1};

  struct Options {
    int listenFd = -1;  // owned by the caller, outlives the server; -1: none
    // Called with one line for the log when a connection ends by its peer's fault. May be empty.
    std::function<void(const std::string&)> report;
  };

  // Throws Error if the process has no free descriptor.
  explicit Server(Options options);

  // The handler has to outlive the run.
  void run(ClientHandler& handler);

  // Serves this connected socket as well. Callable on any thread.
  void adopt(UniqueFd socket);

  // Ends run(). Callable on any thread and in a signal handler.
  void stop() override;

  // The rest of ClientLink, for the handler on the thread that is in run().
  bool isConnected(ClientNumber client) const override;
  void send(ClientNumber client, const Frame& frame) override;
  void hangUp(ClientNumber client) override;
  void hangUpAll() override;
  void after(std::chrono::microseconds delay, std::function<void()> action) override;
  void report(const std::string& line) override;

 private:
  using Clock = std::chrono::steady_clock;

  void waitForEvents();
  void drainWake();
  void acceptAll();
  void take(UniqueFd socket);
  void serve(Connection& connection);
  void closeOverdue();
  void sweepClosed();
  void reportLimited(const std::string& line);
  void runTimers();
  int timeoutMs() const;

  void onFrame(Connection& connection, const Frame& frame);
  void onFirstFrame(Connection& connection, const Frame& frame);
  void onControl(Connection& connection, const Frame& frame);
  Connection* findClient(ClientNumber client) const;

  ClientHandler* handler = nullptr;  // null outside of run()
  const int listenFd;
  const std::function<void(const std::string&)> reportLine;
  const UniqueFd wake;  // an eventfd, signalled by adopt() and stop()
  std::vector<std::unique_ptr<Connection>> connections;
  std::multimap<Clock::time_point, std::function<void()>> timers;
  LineLimit unknownPeerLines;  // of connections without a first frame
  Clock::time_point acceptAgainAt = Clock::time_point::min();
  ClientNumber lastClient = 0;

  // Set by stop(). It has to be lock-free because a signal handler may set it.
  std::atomic<bool> isStopping = false;
  static_assert(std::atomic<bool>::is_always_lock_free);

  pavo::Mutex adoptedMutex;
  std::vector<UniqueFd> adopted GUARDED_BY(adoptedMutex);
};

}  // namespace modem
