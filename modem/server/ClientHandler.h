// What stands between the sockets and whoever speaks for the modem: the modem itself (Service) or a
// recording of one (Replay). All of it happens on the server's thread.
#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "wire/Frame.h"
#include "wire/Hello.h"

namespace modem {

using wire::Frame;
using wire::FrameKind;
using wire::Hello;
using wire::Purpose;

using ClientNumber = uint32_t;

// The clients' connections, as the handler may use them. A number of a client that has left is
// nothing wrong: what is sent to it is lost.
class ClientLink {
 public:
  virtual bool isConnected(ClientNumber client) const = 0;
  virtual void send(ClientNumber client, const Frame& frame) = 0;
  virtual void hangUp(ClientNumber client) = 0;
  virtual void hangUpAll() = 0;
  virtual void after(std::chrono::microseconds delay, std::function<void()> action) = 0;
  // Ends the server's run.
  virtual void stop() = 0;
  // Tells the people in one line what is not as it should be.
  virtual void report(const std::string& line) = 0;

  virtual ~ClientLink() = default;
};

enum class Direction { In, Out };  // from a client, to a client
enum class ClosedBy { Client, Modem };

class ClientHandler {
 public:
  // The numbers of clients go up from 1 and are never used again.
  virtual void onHello(ClientNumber client, Hello hello) = 0;
  virtual void onRequest(ClientNumber client, const Frame& request) = 0;
  // Once for each client that said hello.
  virtual void onEnd(ClientNumber client, ClosedBy closedBy) = 0;
  // The payload of a control request; the payload of its response.
  virtual nlohmann::json onControl(std::string_view request) = 0;

  virtual ~ClientHandler() = default;
};

}  // namespace modem
