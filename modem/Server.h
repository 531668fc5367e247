// Serves one modem to any number of clients and control connections, all on the thread that is in
// run(). Connections come from a listening socket, from adopt(), or from both.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Connection.h"
#include "Control.h"
#include "Faults.h"
#include "Modem.h"
#include "Transcript.h"
#include "UniqueFd.h"

namespace modem {

class Server final : private ControlHost {
 public:
  static constexpr size_t connectionsMax = 256;

  struct Options {
    Modem::Options modem;
    int listenFd = -1;     // the caller's, outlives the server; -1: adopted connections only
    bool canQuit = false;  // whether the control verb quit ends run()
    // Told in one line why connections end, when that is the peer's fault. May be empty.
    std::function<void(const std::string&)> complain;
  };

  // Throws FileError when the store cannot be used and SocketError when there is no descriptor.
  explicit Server(Options options);

  void run();

  // Any thread: serve this connected socket too.
  void adopt(UniqueFd socket);

  // Any thread and any signal handler: end run().
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  // ControlHost.
  void deliver(const std::vector<Indication>& indications) override;
  void powerCycle(std::chrono::milliseconds offTime) override;
  bool canQuit() const override { return quitAllowed; }
  void quit() override { stop(); }

  void waitForEvents();
  void drainWake();
  void acceptAll();
  void serve(Connection& connection);
  void sweepClosed();
  void runTimers();
  int timeoutMs() const;

  void onFrame(Connection& connection, const Frame& frame);
  void onFirstFrame(Connection& connection, const Frame& frame);
  void onControl(Connection& connection, const Frame& frame);
  void onRequest(Connection& connection, const Frame& request);
  void carryOut(ClientNumber client, const Frame& request);
  void sendToClient(Connection& connection, Frame frame, std::string fault = {});
  Connection* findClient(ClientNumber client);

  Modem modem;
  Faults faults;
  Transcript transcript;
  Control control;
  const int listenFd;
  const bool quitAllowed;
  const std::function<void(const std::string&)> complain;
  const UniqueFd wake;  // an eventfd: something was adopted, or the end was asked for
  std::vector<std::unique_ptr<Connection>> connections;
  std::multimap<Clock::time_point, std::function<void()>> timers;
  Clock::time_point acceptAgainAt = Clock::time_point::min();
  ClientNumber lastClient = 0;

  // Set by stop(); lock-free, for the sake of signal handlers.
  std::atomic<bool> isStopping = false;
  static_assert(std::atomic<bool>::is_always_lock_free);

  std::mutex adoptedMutex;
  std::vector<UniqueFd> adopted;  // guarded by adoptedMutex
};

}  // namespace modem
