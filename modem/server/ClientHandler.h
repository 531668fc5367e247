// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The interfaces between the server, which owns the connections, and the handler of the messages:
// an emulated modem (Service) or a replayed trace (Replay). All calls are made on the server's
// thread.
#pragma once

#include "wire/Frame.h"
#include "wire/Hello.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace modem {

using wire::Frame;
using wire::FrameKind;
using wire::Hello;
using wire::Purpose;

using ClientNumber = uint32_t;

// The clients' connections, as the handler may use them. The number of a client that has left is
// valid; messages to it are dropped.
class ClientLink {
 public:
  virtual bool isConnected(ClientNumber client) const = 0;
  virtual void send(ClientNumber client, const Frame& frame) = 0;
  virtual void hangUp(ClientNumber client) = 0;
  virtual void hangUpAll() = 0;
  virtual void after(std::chrono::microseconds delay, std::function<void()> action) = 0;
  // Ends the server's run.
  virtual void stop() = 0;
  // Reports a problem on one line, for the log.
  virtual void report(const std::string& line) = 0;

  virtual ~ClientLink() = default;
};

enum class Direction { In, Out };  // from a client, to a client
enum class ClosedBy { Client, Modem };

class ClientHandler {
 public:
  // Clients are numbered from 1. A number is never used again.
  virtual void onHello(ClientNumber client, Hello hello) = 0;
  virtual void onRequest(ClientNumber client, const Frame& request) = 0;
  // Called once for each client that has said hello.
  virtual void onEnd(ClientNumber client, ClosedBy closedBy) = 0;
  // Returns the response to a control request.
  virtual nlohmann::json onControl(std::string_view request) = 0;

  virtual ~ClientHandler() = default;
};

}  // namespace modem
