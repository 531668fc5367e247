// Speaks to a modem's control channel. Blocking; for tools and tests, one thread at a time.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "base/UniqueFd.h"
#include "wire/Frame.h"

namespace modem {

using pavo::UniqueFd;
using wire::Frame;
using wire::FrameKind;
using wire::FrameReader;

class ControlClient {
 public:
  // Connects to a modem's socket; throws SocketError. The modem does not wait long for the first
  // call.
  explicit ControlClient(const std::string& socketPath);
  // Uses a connected socket, such as one from connectEmbedded(), and owns it.
  explicit ControlClient(int connectedSocket);

  // The modem's reply, with "ok" and, when that is false, "error". Lists that came in pieces are
  // whole. Throws SocketError when the connection is lost and std::length_error when the request is
  // longer than a frame.
  nlohmann::json call(const std::string& verb,
                      const nlohmann::json& args = nlohmann::json::object());

 private:
  nlohmann::json callOnce(const nlohmann::json& request);

  UniqueFd fd;
  FrameReader reader;
  uint32_t lastTransaction = 0;
};

}  // namespace modem
