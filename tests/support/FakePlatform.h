// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// FakePlatform is the platform under unit tests: every C function that the library calls, recorded
// and scriptable, with a small modem behind it. The test program defines these functions, so they
// take the place of the platform's libraries. No socket and no other process is needed.
//
// By default the platform is healthy. The platform thread announces the service as soon as a notify
// callback is registered, and every request succeeds. Creates, modifies and deletes keep a profile
// table that answers the reads. A test changes only the behaviour that it is about.
#pragma once

#include "Deadline.h"
#include "ModemExchange.h"
#include "diag_lsm.h"
#include "ovix_client.h"
#include "wds_v01.h"

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

namespace pavo::test {

// These are Android's log priorities, as AdbWriter passes them.
enum LogPriority : int {
  LogVerbose = 2,
  LogDebug = 3,
  LogInfo = 4,
  LogError = 6,
  LogFatal = 7,
};

// A PlatformCall is one recorded event: a call of the library into the platform. Log lines are
// recorded as calls too, so one sequence holds the order of all events.
struct PlatformCall {
  enum class Kind {
    GetServiceObject,
    NotifierInit,
    RegisterNotifyCb,
    GetAnyService,
    ClientInit,
    RegisterErrorCb,
    Send,
    Decode,
    Release,
    DiagInit,
    DiagDeInit,
    DiagMessage,
    Log,
  };

  Kind kind{};
  std::thread::id thread{};
  // The client or notifier, where the function has one. For DiagInit: the argument.
  ovix_client_type handle = nullptr;
  // Used by Send and Decode.
  unsigned int msgId = 0;
  // For Send: the request structure. For Decode: the encoded message.
  std::vector<std::uint8_t> bytes{};
  // For Send and Decode: the size of the structure to be filled.
  unsigned int outLength = 0;
  // Used by Send.
  unsigned int timeoutMs = 0;
  // The value that the platform returned. For a send it is meaningful once the send is completed.
  int result = 0;
  // For Send: true once the platform has answered.
  bool completed = true;
  // For GetServiceObject: major, minor, library version. For Decode: the message kind in the first.
  int numbers[3] = {0, 0, 0};
  // For Log: the priority. For DiagMessage: the descriptor's mask.
  int priority = 0;
  // Used by Log and DiagMessage.
  std::string tag{};
  std::string format{};
  std::string message{};
  // Used by DiagMessage.
  const diag_msg_descriptor* descriptor = nullptr;

  // Returns the recorded bytes as the structure T. Their length must be exactly that of T.
  template <typename T>
  T as() const {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (bytes.size() == sizeof value) {
      std::memcpy(&value, bytes.data(), sizeof value);
    }
    return value;
  }
};

// A BlockedSend is a send that FakePlatform::blockNext holds up. The destructor releases the send,
// so that a failed assertion does not hang the test.
class BlockedSend {
 public:
  struct Gate;

  explicit BlockedSend(std::shared_ptr<Gate> theGate);
  BlockedSend(BlockedSend&&) noexcept;
  BlockedSend& operator=(BlockedSend&&) = delete;
  ~BlockedSend();

  // Waits until the library is inside the send. Returns false when that did not happen in time.
  bool waitUntilEntered() const;
  // Lets the send continue.
  void release();

 private:
  std::shared_ptr<Gate> gate;
};

// FakePlatform is thread-safe throughout. The instance is immortal, because a process-wide Manager
// releases its handles after the destructors of function-local statics would have run.
//
// The library sees callbacks raised from the test's thread as callbacks from a thread of the
// messaging library. They are synchronous: the callback has returned when the function returns.
class FakePlatform {
 public:
  using Kind = PlatformCall::Kind;

  // A Notifier is a notifier or a client, as the library made it. A test may call its callback
  // directly with its data to break the rules: after the release, with null data, with a null
  // buffer.
  struct Notifier {
    ovix_client_type handle = nullptr;
    ovix_service_object_type serviceObject = nullptr;
    ovix_client_notify_cb callback = nullptr;
    void* data = nullptr;
    bool released = false;
  };
  struct Client {
    ovix_client_type handle = nullptr;
    ovix_service_object_type serviceObject = nullptr;
    ovix_client_ind_cb indicationCallback = nullptr;
    void* indicationData = nullptr;
    ovix_client_error_cb errorCallback = nullptr;
    void* errorData = nullptr;
    bool released = false;
  };

  // Announcement selects when the service announces itself to a notify callback that is being
  // registered.
  enum class Announcement {
    FromPlatformThread,
    // The announcement happens inside ovix_client_register_notify_cb.
    Synchronous,
    // Only notify() announces the service.
    Never,
  };

  static FakePlatform& instance();

  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;

  // Restores a healthy platform with an empty profile table and no record. Callbacks that wait on
  // the platform thread are dropped; a callback in progress is waited for.
  void reset();

  // The functions of this group set how the platform behaves until it is changed or reset.

  // If false, wds_get_service_object_internal_v01 returns null.
  void setServiceObjectPresent(bool present);
  void setAnnouncement(Announcement announcement);
  // These functions set the results of platform functions. A platform function with a result other
  // than 0 does nothing else, with two exceptions: callbacks are still registered, and a failed
  // client init leaves a number where its handle should be.
  // @param makesNotifier whether the notifier's init makes a notifier in spite of its error
  void setNotifierInitResult(ovix_client_error_type result, bool makesNotifier = false);
  void setRegisterNotifyCbResult(ovix_client_error_type result);
  void setGetAnyServiceResult(ovix_client_error_type result);
  void setClientInitResult(ovix_client_error_type result);
  void setRegisterErrorCbResult(ovix_client_error_type result);
  void setDecodeResult(ovix_client_error_type result);
  // Sets whether creates, modifies and deletes are followed by their indications, as on a real
  // modem: a create by create and modify, a modify by modify, a delete by delete. They come from
  // the platform thread. The default is false.
  void setEmitsIndications(bool emits);
  // Sets a hook that runs with each line of the Android log, on the logging thread and with no lock
  // held.
  void setLogHook(std::function<void(const std::string& message)> hook);

  // The functions of this group script the answers to requests. Scripts for one message are used up
  // in the order in which they were made. The modem itself answers every request that is not
  // scripted.

  void onNext(unsigned int msgId, ModemHandler handler);
  // Answers every request of that message for which onNext has no handler left.
  void onEvery(unsigned int msgId, ModemHandler handler);
  // Answers the nth request from now on, counted from 0 over all messages, before any other script.
  void onNth(std::size_t nth, ModemHandler handler);
  // Makes the next send of that message fail.
  void failNext(unsigned int msgId, ovix_client_error_type error = OVIX_CLIENT_TIMEOUT_ERROR);
  // Makes the modem refuse the next request of that message: result 1 and the error.
  void rejectNext(unsigned int msgId, std::int32_t error = 3);
  // Holds the next send up until it is released (or until patience ends). The script that follows
  // then answers it, or else the modem does.
  [[nodiscard]] BlockedSend blockNext(unsigned int msgId);
  // Gives the modem's own answer, for handlers that only want to add to it.
  ovix_client_error_type answer(ModemExchange& exchange);

  // The functions of this group access the modem's profile table.

  // Sets the index that the next create gets. Later creates count up from it and skip used indices.
  void setNextProfileIndex(std::uint8_t index);
  void setProfile(std::uint8_t index, const wds_get_profile_settings_resp_msg_v01& settings);
  void eraseProfile(std::uint8_t index);
  std::optional<wds_get_profile_settings_resp_msg_v01> profile(std::uint8_t index) const;
  std::size_t profileCount() const;

  // The functions of this group raise callbacks on the calling thread. They return false when no
  // callback is registered.

  // Notifies every armed notifier.
  bool notify(ovix_client_service_event event = OVIX_CLIENT_SERVICE_AVAILABLE);
  // Raises the error on every open client.
  bool raiseError(ovix_client_error_type error = OVIX_CLIENT_SERVICE_ERROR);
  bool indicate(unsigned int msgId, const void* bytes, unsigned int length);
  // Sends the profile-changed indication in the fake's encoding: the bytes of the decoded
  // structure.
  bool indicateProfileChanged(std::uint8_t profileIndex, std::int32_t event);
  bool indicateBytes(const wds_profile_changed_ind_msg_v01& indication);
  static wds_profile_changed_ind_msg_v01 profileChanged(std::uint8_t profileIndex,
                                                        std::int32_t event);

  // Runs the action on the platform's own thread, after the actions posted before.
  void post(std::function<void()> action);
  // Waits until all posted actions have run. Returns false when that takes too long. Do not call it
  // on the platform thread.
  bool drainPosted();

  // Forks at a moment when no other thread is inside the fake, so that the child can use it.
  pid_t forkProcess();

  // The functions of this group read the record.

  std::vector<PlatformCall> calls() const;
  std::vector<PlatformCall> calls(Kind kind) const;
  std::size_t count(Kind kind) const;
  // Returns the requests sent, of one message or of all, in order.
  std::vector<PlatformCall> sent() const;
  std::vector<PlatformCall> sent(unsigned int msgId) const;
  std::vector<unsigned int> sentIds() const;
  std::size_t sentCount(unsigned int msgId) const;
  // Returns the lines of the Android log, all or of one priority; the messages are without priority
  // and tag.
  std::vector<PlatformCall> logLines() const;
  std::vector<std::string> logMessages() const;
  std::vector<std::string> logMessages(int priority) const;
  bool logged(std::string_view message) const;
  // Returns how often a handle was released. More than once is misuse by the library.
  std::size_t releaseCount(ovix_client_type handle) const;
  // Returns all notifiers and clients since the reset, oldest first.
  std::vector<Notifier> notifiers() const;
  std::vector<Client> clients() const;
  std::size_t openClientCount() const;
  std::size_t armedNotifierCount() const;
  // Returns the violations of the platform's interface, one line each: a wrong length, a response
  // or parameter block that is not zeroed, a dead handle. The result is empty for a correct
  // library.
  std::vector<std::string> misuses() const;
  // Forgets calls and log lines; keeps scripts, handles and profiles.
  void clearCalls();

  // The functions of this group wait. They return false when the event did not happen within
  // patience.

  // The condition is evaluated without a lock, after each recorded event and every few
  // milliseconds.
  bool waitFor(const std::function<bool()>& condition);
  // Waits until at least that many requests of the message have been answered.
  bool waitForSent(unsigned int msgId, std::size_t atLeast = 1);
  bool waitForCalls(Kind kind, std::size_t atLeast = 1);
  // Waits for log lines with exactly this message.
  bool waitForLog(std::string_view message, std::size_t atLeast = 1);
  // Waits until the worker has logged the last line of its start: that it is registered.
  bool waitForStart();
  // Waits until the library has opened a client and its three registration requests have been
  // answered.
  bool waitForRegistration(std::size_t atLeast = 1);

  // The C functions of the platform follow.

  ovix_service_object_type getServiceObject(int major, int minor, int libraryVersion);
  ovix_client_error_type notifierInit(ovix_service_object_type serviceObject,
                                      ovix_client_os_params* osParams, ovix_client_type* notifier);
  ovix_client_error_type registerNotifyCb(ovix_client_type notifier, ovix_client_notify_cb callback,
                                          void* data);
  ovix_client_error_type getAnyService(ovix_service_object_type serviceObject,
                                       ovix_service_info* serviceInfo);
  ovix_client_error_type clientInit(ovix_service_info* serviceInfo,
                                    ovix_service_object_type serviceObject,
                                    ovix_client_ind_cb callback, void* data,
                                    ovix_client_os_params* osParams, ovix_client_type* client);
  ovix_client_error_type registerErrorCb(ovix_client_type client, ovix_client_error_cb callback,
                                         void* data);
  ovix_client_error_type send(ModemExchange exchange);
  ovix_client_error_type decode(ovix_client_type client, int messageKind, unsigned int msgId,
                                const void* src, unsigned int srcLength, void* dst,
                                unsigned int dstLength);
  ovix_client_error_type release(ovix_client_type handle);
  void record(PlatformCall call);
  void recordLogLine(PlatformCall call);

 private:
  struct State;

  FakePlatform();
  ~FakePlatform() = delete;

  ModemHandler takeHandler(const ModemExchange& exchange);
  void runPosted();
  // Runs a callback of a handle, unless the handle has been released by then.
  bool call(ovix_client_type handle, const std::function<void()>& callback);

  const std::unique_ptr<State> state;
};

}  // namespace pavo::test
