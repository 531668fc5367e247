// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// The platform under unit tests: every C function that the library calls, recorded and scriptable,
// with a small modem behind it. Its definitions stand in the test program and so take the place of
// the platform's libraries; it needs no socket and no other process.
//
// Out of the box it is a healthy platform: the service is announced from the platform thread as
// soon as a notify callback is registered, every request succeeds, and creates, modifies and
// deletes keep a profile table from which reads are answered. Tests change what they are about.
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

// Android's log priorities, as AdbWriter passes them.
enum LogPriority : int {
  LogVerbose = 2,
  LogDebug = 3,
  LogInfo = 4,
  LogError = 6,
  LogFatal = 7,
};

// One recorded event: a call of the library into the platform. Log lines are calls like any other,
// so that one sequence tells the order of everything.
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
  // The client or notifier, where the function has one. DiagInit: the argument.
  ovix_client_type handle = nullptr;
  // Send and Decode.
  unsigned int msgId = 0;
  // Send: the request structure. Decode: the encoded message.
  std::vector<std::uint8_t> bytes{};
  // Send and Decode: the size of the structure to be filled.
  unsigned int outLength = 0;
  // Send.
  unsigned int timeoutMs = 0;
  // What the platform returned; for a send, meaningful once it is completed.
  int result = 0;
  // Send: the platform has answered.
  bool completed = true;
  // GetServiceObject: major, minor, library version. Decode: the message kind in the first.
  int numbers[3] = {0, 0, 0};
  // Log: the priority. DiagMessage: the descriptor's mask.
  int priority = 0;
  // Log and DiagMessage.
  std::string tag{};
  std::string format{};
  std::string message{};
  // DiagMessage.
  const diag_msg_descriptor* descriptor = nullptr;

  // The recorded bytes as the structure T; they have to be exactly as long.
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

// A send held up by FakePlatform::blockNext. The destructor lets it go on, so that a failed
// assertion does not hang the test.
class BlockedSend {
 public:
  struct Gate;

  explicit BlockedSend(std::shared_ptr<Gate> theGate);
  BlockedSend(BlockedSend&&) noexcept;
  BlockedSend& operator=(BlockedSend&&) = delete;
  ~BlockedSend();

  // Waits until the library is inside the send; false when that did not happen in time.
  bool waitUntilEntered() const;
  // Lets the send go on.
  void release();

 private:
  std::shared_ptr<Gate> gate;
};

// Thread-safe throughout. The instance is immortal: a process-wide Manager releases its handles
// after the destructors of function-local statics would have run.
//
// The test's thread is a thread of its own to the library, so callbacks raised from it are those
// of a messaging library's thread. They are synchronous: when the function returns, the callback
// has.
class FakePlatform {
 public:
  using Kind = PlatformCall::Kind;

  // A notifier or a client, as the library made it. Its callback and data may be called directly,
  // to break the rules: after the release, with null data, with a null buffer.
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

  // When the service announces itself to a notify callback that is being registered.
  enum class Announcement {
    FromPlatformThread,
    // Inside ovix_client_register_notify_cb.
    Synchronous,
    // Only by notify().
    Never,
  };

  static FakePlatform& instance();

  FakePlatform(const FakePlatform&) = delete;
  FakePlatform& operator=(const FakePlatform&) = delete;

  // Back to a healthy platform with an empty profile table and no record. Callbacks that wait on
  // the platform thread are dropped, one in progress is waited for.
  void reset();

  // How the platform behaves, until changed or reset.

  // false: wds_get_service_object_internal_v01 returns null.
  void setServiceObjectPresent(bool present);
  void setAnnouncement(Announcement announcement);
  // What these functions return; with anything but 0 they do nothing else, save that the callbacks
  // are registered and a failed client init leaves a number where its handle should be.
  // @param makesNotifier of the notifier's init: whether it makes one in spite of its error
  void setNotifierInitResult(ovix_client_error_type result, bool makesNotifier = false);
  void setRegisterNotifyCbResult(ovix_client_error_type result);
  void setGetAnyServiceResult(ovix_client_error_type result);
  void setClientInitResult(ovix_client_error_type result);
  void setRegisterErrorCbResult(ovix_client_error_type result);
  void setDecodeResult(ovix_client_error_type result);
  // Whether creates, modifies and deletes are followed by their indications, as on a real modem:
  // create and modify, modify, delete, from the platform thread. Off at first.
  void setEmitsIndications(bool emits);
  // Runs with each line of the Android log, on the thread that logs it and with no lock held.
  void setLogHook(std::function<void(const std::string& message)> hook);

  // How requests are answered. Scripts for one message are used up in the order in which they were
  // made; what is not scripted is answered by the modem itself.

  void onNext(unsigned int msgId, ModemHandler handler);
  // Every request of that message for which onNext has nothing left.
  void onEvery(unsigned int msgId, ModemHandler handler);
  // The nth request from now on, from 0, whatever message it is, before any other script.
  void onNth(std::size_t nth, ModemHandler handler);
  // The send itself fails.
  void failNext(unsigned int msgId, ovix_client_error_type error = OVIX_CLIENT_TIMEOUT_ERROR);
  // The modem refuses: result 1 and the error.
  void rejectNext(unsigned int msgId, std::int32_t error = 3);
  // Holds the send up until released (or until patience ends), then answers it by the script that
  // follows, or as the modem does.
  [[nodiscard]] BlockedSend blockNext(unsigned int msgId);
  // The modem's own answer, for handlers that only want to add something.
  ovix_client_error_type answer(ModemExchange& exchange);

  // The modem's profile table.

  // The index that the next create gets; the ones after count up from it, past used ones.
  void setNextProfileIndex(std::uint8_t index);
  void setProfile(std::uint8_t index, const wds_get_profile_settings_resp_msg_v01& settings);
  void eraseProfile(std::uint8_t index);
  std::optional<wds_get_profile_settings_resp_msg_v01> profile(std::uint8_t index) const;
  std::size_t profileCount() const;

  // Callbacks, on the calling thread. False when there is nobody to call.

  // To every armed notifier.
  bool notify(ovix_client_service_event event = OVIX_CLIENT_SERVICE_AVAILABLE);
  // To every open client.
  bool raiseError(ovix_client_error_type error = OVIX_CLIENT_SERVICE_ERROR);
  bool indicate(unsigned int msgId, const void* bytes, unsigned int length);
  // The profile-changed indication in the fake's encoding, which is the decoded structure.
  bool indicateProfileChanged(std::uint8_t profileIndex, std::int32_t event);
  bool indicateBytes(const wds_profile_changed_ind_msg_v01& indication);
  static wds_profile_changed_ind_msg_v01 profileChanged(std::uint8_t profileIndex,
                                                        std::int32_t event);

  // Runs the action on the platform's own thread, after those posted before.
  void post(std::function<void()> action);
  // Waits until everything posted has run; false when that takes too long. Not on the platform
  // thread.
  bool drainPosted();

  // fork() at a moment when no other thread is inside the fake, so that the child can use it.
  pid_t forkProcess();

  // The record.

  std::vector<PlatformCall> calls() const;
  std::vector<PlatformCall> calls(Kind kind) const;
  std::size_t count(Kind kind) const;
  // The requests sent, of one message or of all, in order.
  std::vector<PlatformCall> sent() const;
  std::vector<PlatformCall> sent(unsigned int msgId) const;
  std::vector<unsigned int> sentIds() const;
  std::size_t sentCount(unsigned int msgId) const;
  // The lines of the Android log, all or of one priority; messages without priority and tag.
  std::vector<PlatformCall> logLines() const;
  std::vector<std::string> logMessages() const;
  std::vector<std::string> logMessages(int priority) const;
  bool logged(std::string_view message) const;
  // How often a handle was released; more than once is misuse by the library.
  std::size_t releaseCount(ovix_client_type handle) const;
  // All notifiers and clients since the reset, oldest first.
  std::vector<Notifier> notifiers() const;
  std::vector<Client> clients() const;
  std::size_t openClientCount() const;
  std::size_t armedNotifierCount() const;
  // Broken rules of the platform's interface, one line each: a wrong length, a response or
  // parameter block that is not zeroed, a dead handle. Empty for a correct library.
  std::vector<std::string> misuses() const;
  // Forgets calls and log lines; keeps scripts, handles and profiles.
  void clearCalls();

  // Waiting; false when it did not happen within patience.

  // The condition is evaluated without a lock, after each recorded event and every few
  // milliseconds.
  bool waitFor(const std::function<bool()>& condition);
  // At least that many requests of the message have been answered.
  bool waitForSent(unsigned int msgId, std::size_t atLeast = 1);
  bool waitForCalls(Kind kind, std::size_t atLeast = 1);
  // A log line with exactly this message.
  bool waitForLog(std::string_view message, std::size_t atLeast = 1);
  // The worker has said the last word of its start: that it is registered.
  bool waitForStart();
  // The library has opened a client and its three registration requests have been answered.
  bool waitForRegistration(std::size_t atLeast = 1);

  // The C functions.

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
  // Runs a callback of a handle, unless that is released by then.
  bool call(ovix_client_type handle, const std::function<void()>& callback);

  const std::unique_ptr<State> state;
};

}  // namespace pavo::test
