// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A client of a modem's control channel, for tools and tests. Its calls block; one thread may use
// it.
#pragma once

#include "base/UniqueFd.h"
#include "wire/Frame.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

namespace modem {

using pavo::UniqueFd;
using wire::Frame;
using wire::FrameKind;
using wire::FrameReader;

class ControlClient {
 public:
  // Connects to a modem's socket. Throws SocketError. The modem closes the connection if the first
  // call does not come within a second.
  explicit ControlClient(const std::string& socketPath);
  // Uses a connected socket, such as one from connectEmbedded(), and owns it.
  explicit ControlClient(int connectedSocket);

  // Returns the modem's reply, with "ok" and, if that is false, "error". Lists in several pieces
  // are put together. Throws SocketError if the connection is lost and std::length_error if the
  // request is longer than a frame.
  nlohmann::json call(const std::string& verb,
                      const nlohmann::json& args = nlohmann::json::object());

 private:
  nlohmann::json callOnce(const nlohmann::json& request);

  UniqueFd fd;
  FrameReader reader;
  uint32_t lastTransaction = 0;
};

}  // namespace modem
