// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// This target sends requests to the modem's control channel, one a line: verbs, arguments and
// invalid text. The modem must answer each in one frame that says whether it was done, and must
// continue to serve.
#include "tests/modem/RawClient.h"
#include "tests/modem/ServedModem.h"
#include "wire/Frame.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using nlohmann::json;

// Returns whether the request asks the modem to wait. The fuzzer does not send such requests.
bool asksForTime(const std::string& request) {
  return request.find("Ms\"") != std::string::npos || request.find("times\"") != std::string::npos;
}

void ask(modem::test::RawClient& client, const std::string& request) {
  client.send(modem::FrameKind::ControlRequest, /*messageId=*/{}, {request.begin(), request.end()});
  const auto reply = client.receive();
  if (!reply || reply->kind != modem::FrameKind::ControlResponse) {
    std::fprintf(stderr, "not answered: %s\n", request.c_str());
    std::abort();
  }
  const json answer = json::parse(reply->payload);
  const bool isDone = answer.at("ok");
  const std::string error = isDone ? "none" : answer.at("error").get<std::string>();
  if (error.empty() || error.find('\n') != std::string::npos) {
    std::fprintf(stderr, "this is not one line: %s\n", error.c_str());
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  modem::test::ServedModem served;
  modem::test::RawClient client(served.connect());
  const std::string input(reinterpret_cast<const char*>(data), size);
  for (std::size_t at = 0; at < input.size();) {
    const std::size_t end = std::min(input.find('\n', at), input.size());
    const std::string request = input.substr(at, end - at);
    at = end + 1;
    if (!asksForTime(request)) {
      ask(client, request);
    }
  }
  ask(client, R"({"verb": "show"})");
  return 0;
}
