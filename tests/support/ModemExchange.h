// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// A ModemExchange is a request that the fake modem is handling.
#pragma once

#include "ovix_client.h"
#include "wds_v01.h"

#include <cstdint>
#include <cstring>
#include <functional>

namespace pavo::test {

// The library owns the memory of the request and the response. It is valid during the send only.
struct ModemExchange {
  ovix_client_type client = nullptr;
  unsigned int msgId = 0;
  const void* req = nullptr;
  unsigned int requestLength = 0;
  void* resp = nullptr;
  unsigned int responseLength = 0;
  unsigned int timeoutMs = 0;

  // Returns a copy of the request, all zero when its length is not that of T.
  template <typename T>
  T request() const {
    T value{};
    if (req != nullptr && requestLength == sizeof value) {
      std::memcpy(&value, req, sizeof value);
    }
    return value;
  }

  // Fills the response. Does nothing when the response's length is not that of T.
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

// A ModemHandler answers a request: it fills the response and returns the result of
// ovix_client_send_msg_sync. It runs on the sending thread with no lock held, so it may block,
// raise callbacks and call the fake.
using ModemHandler = std::function<ovix_client_error_type(ModemExchange&)>;

}  // namespace pavo::test
