// One client of the service: a connection, the requests under way on it and its callbacks.
//
//   constructed --start--> connected --the modem ends the connection, or talks nonsense--> lost
//        |                     |                                                            |
//        +---------------------+---------------------- stop --------------------------------+-->
//        stopped
//
// A lost client stays lost: its user releases it and opens another. Owned by the handle registry
// and by the calls under way. Every function but start() may be called from any thread, from inside
// a callback too; callbacks run with no lock held.
//
// A reader thread takes frames off the connection: responses go to the senders that wait for them,
// indications to the callback queue. It never runs a callback, so a slow one delays no response.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "CallbackQueue.h"
#include "Connection.h"
#include "ServiceObject.h"
#include "base/Poll.h"
#include "ovix_client.h"

namespace ovix {

class Client {
 public:
  // A null callback drops the indications.
  Client(const ovix_service_object& service, Connection connection, ovix_client_ind_cb callback,
         void* callbackData);
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client();

  // Once, with the handle that the callbacks are told. Throws when there are no threads to be had.
  void start(ovix_client_type handle);

  // As ovix_client_register_error_cb.
  void setErrorCallback(ovix_client_error_cb callback, void* data);

  // As ovix_client_send_msg_sync.
  ovix_client_error_type send(uint32_t messageId, const void* request, uint32_t requestSize,
                              void* response, uint32_t responseSize, uint32_t timeoutMs);

  // As ovix_client_message_decode.
  ovix_client_error_type decode(int kind, uint32_t messageId, const void* source,
                                uint32_t sourceSize, void* target, uint32_t targetSize) const;

  // Ends the connection; senders under way fail. When it has returned no callback runs or will
  // run, but for the one that it was called from.
  void stop();

 private:
  // A sender's place in the list of those who wait; lives on the sender's stack.
  struct Waiter {
    uint16_t messageId;
    std::optional<modem::Frame> response;
  };
  enum class WriteResult { Written, TimedOut, Broken };

  const Message* findMessage(uint32_t messageId) const;

  void read();
  void accept(modem::Frame& frame);
  void acceptResponse(modem::Frame& frame);
  void markLost();
  void tellError();  // With the mutex held.

  uint32_t nextTransaction();  // With the mutex held.
  ovix_client_error_type exchange(Waiter& waiter, std::vector<uint8_t> payload, Deadline deadline);
  ovix_client_error_type write(std::unique_lock<std::mutex>& lock,
                               const std::vector<uint8_t>& bytes, Deadline deadline);
  WriteResult writeAll(const std::vector<uint8_t>& bytes, Deadline deadline) const;

  // Constant from start() on.
  const ovix_service_object& service;
  const modem::UniqueFd socket;
  const ovix_client_ind_cb indicationCallback;
  void* const indicationData;
  ovix_client_type handle = nullptr;

  // The reader's alone.
  modem::FrameReader frames;

  CallbackQueue callbacks;

  std::mutex mutex;
  // Guarded by the mutex.
  std::condition_variable changed;  // Of the waiters' responses, of writing and of lost.
  std::map<uint32_t, Waiter*> waiters;
  uint32_t lastTransaction = 0;
  bool writing = false;  // A sender is putting a frame on the connection.
  bool lost = false;
  bool stopping = false;
  bool errorTold = false;
  ovix_client_error_cb errorCallback = nullptr;
  void* errorData = nullptr;
  std::thread reader;
};

}  // namespace ovix
