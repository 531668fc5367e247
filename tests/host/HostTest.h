// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The tests of the messaging library share this header: the environment variable that names the
// modem, handles that release themselves, and one way to open a client.
#pragma once

#include "RawModem.h"
#include "ovix_client.h"
#include "support/Deadline.h"
#include "support/TemporaryFolder.h"
#include "wds_v01.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace pavo::test {

// Sets an environment variable for the length of a scope, or unsets it when value is null.
class ScopedVariable {
 public:
  ScopedVariable(const char* variable, const char* value) : name(variable) {
    if (const char* before = std::getenv(variable)) {
      old = before;
      wasSet = true;
    }
    set(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { set(wasSet ? old.c_str() : nullptr); }

 private:
  void set(const char* value) {
    if (value == nullptr) {
      ::unsetenv(name);
    } else {
      ::setenv(name, value, /*replace=*/1);
    }
  }

  const char* const name;
  std::string old;
  bool wasSet = false;
};

// A Handle owns a client or a notifier.
class Handle {
 public:
  Handle() = default;
  explicit Handle(ovix_client_type owned) : handle(owned) {}
  Handle(Handle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
  }
  ~Handle() { release(); }

  ovix_client_type get() const { return handle; }
  // Returns the handle; the caller has to release it.
  ovix_client_type disown() { return std::exchange(handle, nullptr); }
  ovix_client_error_type release() {
    return handle == nullptr ? 0 : ovix_client_release(std::exchange(handle, nullptr));
  }

 private:
  ovix_client_type handle = nullptr;
};

// Sets OVIX_MODEM for the length of a scope (unset when path is null), and holds the service of
// that modem. The service object is requested before there is a modem that could be asked for it.
class ScopedModem {
 public:
  explicit ScopedModem(const char* path)
      : variable("OVIX_MODEM", path),
        outer(std::exchange(current, wds_get_service_object_internal_v01(1, 257, 6))) {}
  ScopedModem(const ScopedModem&) = delete;
  ScopedModem& operator=(const ScopedModem&) = delete;
  ~ScopedModem() { current = outer; }

  // Returns the service of the innermost scope.
  static ovix_service_object_type service() { return current; }

 private:
  static inline ovix_service_object_type current = nullptr;

  const ScopedVariable variable;
  const ovix_service_object_type outer;
};

inline ovix_service_object_type wdsService() { return ScopedModem::service(); }

inline ovix_client_error_type tryOpen(ovix_client_type& client,
                                      ovix_client_ind_cb callback = nullptr, void* data = nullptr) {
  ovix_service_info info{};
  ovix_client_os_params params{};
  return ovix_client_init(&info, wdsService(), callback, data, &params, &client);
}

inline Handle openClient(ovix_client_ind_cb callback = nullptr, void* data = nullptr) {
  ovix_client_type client = nullptr;
  EXPECT_EQ(tryOpen(client, callback, data), OVIX_CLIENT_NO_ERROR);
  EXPECT_NE(client, nullptr);
  return Handle(client);
}

inline constexpr unsigned longTimeoutMs = 30000;

// Sends a delete request for one profile index, the simplest request that there is.
inline ovix_client_error_type sendDelete(ovix_client_type client, uint8_t index,
                                         unsigned timeoutMs = longTimeoutMs,
                                         wds_delete_profile_resp_msg_v01* response = nullptr) {
  wds_delete_profile_req_msg_v01 request{};
  request.profile.profile_index = index;
  wds_delete_profile_resp_msg_v01 unused{};
  response = response == nullptr ? &unused : response;
  return ovix_client_send_msg_sync(client, OVIX_WDS_DELETE_PROFILE_REQ_V01, &request,
                                   sizeof request, response, sizeof *response, timeoutMs);
}

// This fixture has a path for a modem's socket, named by OVIX_MODEM. No modem listens there yet.
class HostTest : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  const std::string path = folder.file("modem");
  const ScopedModem named{path.c_str()};
};

}  // namespace pavo::test
