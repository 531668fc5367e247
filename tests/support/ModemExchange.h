// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A request in the hands of the fake modem.
#pragma once

#include "ovix_client.h"
#include "wds_v01.h"

#include <cstdint>
#include <cstring>
#include <functional>

namespace pavo::test {

// The request's and the response's memory are the library's and valid during the send only.
struct ModemExchange {
  ovix_client_type client = nullptr;
  unsigned int msgId = 0;
  const void* req = nullptr;
  unsigned int requestLength = 0;
  void* resp = nullptr;
  unsigned int responseLength = 0;
  unsigned int timeoutMs = 0;

  // A copy of the request; all zero when its length is not that of T.
  template <typename T>
  T request() const {
    T value{};
    if (req != nullptr && requestLength == sizeof value) {
      std::memcpy(&value, req, sizeof value);
    }
    return value;
  }

  // Fills the response; nothing when its length is not that of T.
  template <typename T>
  void respond(const T& value) const {
    if (resp != nullptr && responseLength == sizeof value) {
      std::memcpy(resp, &value, sizeof value);
    }
  }

  // Fills the result that opens every response; 0 is success.
  void respondResult(std::int32_t result, std::int32_t error = 0) const {
    const ovix_response_type_v01 opening{result, error};
    if (resp != nullptr && responseLength >= sizeof opening) {
      std::memcpy(resp, &opening, sizeof opening);
    }
  }
};

// Answers a request: fills the response and returns what ovix_client_send_msg_sync returns. Runs
// on the thread that sends, with no lock held, so it may block, raise callbacks and call the fake.
using ModemHandler = std::function<ovix_client_error_type(ModemExchange&)>;

}  // namespace pavo::test
