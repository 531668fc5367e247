// Serves any number of clients and control connections, all on the thread that is in run(): bytes
// and frames, rounds and timers, and no idea of what is said. Connections come from a listening
// socket, from adopt(), or from both. Those from the listening socket come from anywhere: they have
// to be of this process's user, or of root, and to say within silenceMax what they are.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/Mutex.h"
#include "modem/UniqueFd.h"
#include "modem/server/ClientHandler.h"
#include "modem/server/Connection.h"
#include "modem/server/LineLimit.h"

namespace modem {

class Server final : public ClientLink {
 public:
  static constexpr size_t connectionsMax = 256;
  static constexpr std::chrono::seconds silenceMax{1};

  struct Options {
    int listenFd = -1;  // the caller's, outlives the server; -1: adopted connections only
    // Told in one line why connections end, when that is the peer's fault. May be empty.
    std::function<void(const std::string&)> report;
  };

  // Throws Error when there is no descriptor.
  explicit Server(Options options);

  // The handler outlives the run.
  void run(ClientHandler& handler);

  // Any thread: serve this connected socket too.
  void adopt(UniqueFd socket);

  // Any thread and any signal handler: end run().
  void stop() override;

  // The rest of ClientLink: for the handler, on the thread that is in run().
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
  void closeSilent();
  void sweepClosed();
  void reportLimited(const std::string& line);
  void runTimers();
  int timeoutMs() const;

  void onFrame(Connection& connection, const Frame& frame);
  void onFirstFrame(Connection& connection, const Frame& frame);
  void onControl(Connection& connection, const Frame& frame);
  Connection* findClient(ClientNumber client) const;

  ClientHandler* handler = nullptr;  // while in run()
  const int listenFd;
  const std::function<void(const std::string&)> reportLine;
  const UniqueFd wake;  // an eventfd: something was adopted, or the end was asked for
  std::vector<std::unique_ptr<Connection>> connections;
  std::multimap<Clock::time_point, std::function<void()>> timers;
  LineLimit unknownPeerLines;  // of connections that end before they have said what they are
  Clock::time_point acceptAgainAt = Clock::time_point::min();
  ClientNumber lastClient = 0;

  // Set by stop(); lock-free, for the sake of signal handlers.
  std::atomic<bool> isStopping = false;
  static_assert(std::atomic<bool>::is_always_lock_free);

  pavo::Mutex adoptedMutex;
  std::vector<UniqueFd> adopted GUARDED_BY(adoptedMutex);
};

}  // namespace modem
