// The first words of a connection: what a client says it is for, and the modem's answer.
//
// Both ends use this. A refusal stands for what the platform would answer its caller if the service
// were not to be had; the connection is of no use after it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace modem {

// Only an open connection carries messages. The others ask whether the service is there.
enum class Purpose : uint8_t {
  Open,    // a client that will send requests
  Find,    // is the service there now?
  Watch,   // it is there for as long as this connection stands
  Object,  // does the platform know the service at all?
};

// "open" and so on.
std::string_view purposeName(Purpose purpose);

struct Hello {
  Purpose purpose = Purpose::Open;
  bool sawAbsence = false;  // the process has been without a modem since it last opened a client
};

std::vector<uint8_t> encodeHello(Hello hello);
std::optional<Hello> decodeHello(std::span<const uint8_t> payload);

struct HelloAnswer {
  uint32_t boot = 0;
  int32_t refusal = 0;  // 0: welcome
};

std::vector<uint8_t> encodeHelloAnswer(HelloAnswer answer);
std::optional<HelloAnswer> decodeHelloAnswer(std::span<const uint8_t> payload);

}  // namespace modem
