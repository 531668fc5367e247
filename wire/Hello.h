// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The first frame in each direction of a connection: the client states the purpose of the
// connection, and the modem answers. Both ends use these functions.
//
// A refusal is the code with which the platform answers its caller. The connection carries nothing
// after it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wire {

// The purpose of a connection. Only an open connection carries messages. The others ask whether the
// service is there.
enum class Purpose : uint8_t {
  Open,    // a client that will send requests
  Find,    // asks whether the service is there now
  Watch,   // the service is there for as long as this connection stands
  Object,  // asks whether the platform has the service's message tables
};

// "open", "find", "watch" or "object".
std::string_view purposeName(Purpose purpose);

struct Hello {
  Purpose purpose = Purpose::Open;
  bool sawAbsence = false;  // the process has been without a modem since it last opened a client
};

std::vector<uint8_t> encodeHello(Hello hello);
std::optional<Hello> decodeHello(std::span<const uint8_t> payload);

struct HelloAnswer {
  uint32_t boot = 0;
  int32_t refusal = 0;  // 0 when the client is welcome
};

std::vector<uint8_t> encodeHelloAnswer(HelloAnswer answer);
std::optional<HelloAnswer> decodeHelloAnswer(std::span<const uint8_t> payload);

}  // namespace wire
