// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// One client of the service: a connection, the requests under way on it and its callbacks.
//
//   constructed --start--> connected --the modem ends the connection, or a broken frame--> lost
//        |                     |                                                            |
//        +---------------------+---------------------- stop --------------------------------+-->
//        stopped
//
// A lost client stays lost: its user releases it and opens another. The handle registry and the
// calls under way own it. Every function but start() may be called from any thread, from inside a
// callback too; callbacks run with no lock held.
//
// A reader thread takes frames off the connection. It hands responses to the senders that wait for
// them, and indications to the callback queue. It never runs a callback, so a slow callback delays
// no response.
#pragma once

#include "CallbackQueue.h"
#include "ModemConnection.h"
#include "ServiceObject.h"
#include "base/Mutex.h"
#include "base/Poll.h"
#include "ovix_client.h"

#include <cstdint>
#include <map>
#include <optional>
#include <thread>
#include <vector>

namespace ovix {

class Client {
 public:
  // A null callback drops the indications.
  Client(const ovix_service_object& serviceObject, ModemConnection connection,
         ovix_client_ind_cb callback, void* callbackData);
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client();

  // To be called once, with the handle that is passed to the callbacks. Throws when the system has
  // no thread left.
  void start(ovix_client_type ownHandle) EXCLUDES(mutex);

  // Does the work of ovix_client_register_error_cb.
  void setErrorCallback(ovix_client_error_cb callback, void* data) EXCLUDES(mutex);

  // Does the work of ovix_client_send_msg_sync.
  ovix_client_error_type send(uint32_t messageId, const void* request, uint32_t requestSize,
                              void* response, uint32_t responseSize, uint32_t timeoutMs)
      EXCLUDES(mutex);

  // Does the work of ovix_client_message_decode.
  ovix_client_error_type decode(int kind, uint32_t messageId, const void* source,
                                uint32_t sourceSize, void* target, uint32_t targetSize) const;

  // Ends the connection; senders under way fail. Once stop() has returned, no callback runs or will
  // run, except the one that called it.
  void stop() EXCLUDES(mutex);

 private:
  // A request whose response is awaited; it lies on the sender's stack.
  struct Waiter {
    uint16_t messageId;
    std::optional<wire::Frame> response;
  };
  enum class WriteResult { Written, TimedOut, Broken };

  const Message* findMessage(uint32_t messageId) const;

  void read();
  void accept(wire::Frame& frame);
  void acceptResponse(wire::Frame& frame) EXCLUDES(mutex);
  void markLost() EXCLUDES(mutex);
  void reportError() REQUIRES(mutex);

  uint32_t nextTransaction() REQUIRES(mutex);
  ovix_client_error_type exchange(Waiter& waiter, std::vector<uint8_t> payload,
                                  pavo::Deadline deadline) EXCLUDES(mutex);
  // Releases the mutex while it waits and writes.
  ovix_client_error_type write(const std::vector<uint8_t>& bytes, pavo::Deadline deadline)
      REQUIRES(mutex);
  WriteResult writeAll(const std::vector<uint8_t>& bytes, pavo::Deadline deadline) const;

  // Constant from start() on.
  const ovix_service_object& service;
  const pavo::UniqueFd socket;
  const ovix_client_ind_cb indicationCallback;
  void* const indicationData;
  ovix_client_type handle = nullptr;

  // Used by the reader alone.
  wire::FrameReader frames;

  CallbackQueue callbacks;

  pavo::Mutex mutex;
  pavo::CondVar changed;  // Signals changes of the waiters' responses, of isWriting and of isLost.
  std::map<uint32_t, Waiter*> waiters GUARDED_BY(mutex);  // By transaction.
  uint32_t lastTransaction GUARDED_BY(mutex) = 0;
  bool isWriting GUARDED_BY(mutex) = false;  // A sender is putting a frame on the connection.
  bool isLost GUARDED_BY(mutex) = false;
  bool isStopping GUARDED_BY(mutex) = false;
  bool isErrorReported GUARDED_BY(mutex) = false;
  ovix_client_error_cb errorCallback GUARDED_BY(mutex) = nullptr;
  void* errorData GUARDED_BY(mutex) = nullptr;
  std::thread reader GUARDED_BY(mutex);
};

}  // namespace ovix
