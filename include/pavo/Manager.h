// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/Export.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/IProfileKey.h>
#include <pavo/ModifyProfileParams.h>
#include <pavo/PDCRefreshStatus.h>
#include <pavo/ProfileParams.h>

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pavo {

class ClientRequestManager;

/// Manages the modem's packet-data profiles.
///
/// Any thread may call any operation. An operation hands a request to the worker, the library's one
/// thread, and blocks until the worker has answered. A modem request takes up to one second; after
/// that it has failed. Add, modify and delete cost one request, a completed refresh costs one and
/// one more for each profile, filter, match and get cost none. Callers on several threads take
/// turns. A caller also waits for what the worker has in hand:
///  - profiles that the modem says have changed: up to 200 ms and one request, after which the
///  worker
///    serves callers before it goes on with the rest,
///  - the registration with a modem that has come back: three requests,
///  - reading all profiles after the modem's power-up: one request and one for each profile.
///
/// Failures show only as empty results and in the log. Before init(), during a configuration
/// refresh and when the modem refuses, keys and lists are empty, flags are false and values are
/// absent. An empty key, a key of a caller's own class and a key of another Manager are unknown:
/// operations answer false or absent. Nothing throws; running out of memory ends the process. On
/// the worker thread (in an expiration listener) every operation but dump() logs one error and
/// answers empty.
///
/// A child process that was forked after init() shares the descriptors and the modem connection of
/// its parent and has no worker. In it, every operation of this Manager, init() included, logs one
/// error and answers empty. The destructor and the drop of a key leave everything alone. A child
/// that needs the library starts a program with exec().
///
/// @code
/// pavo::Manager& manager = pavo::Manager::getInstance();
/// manager.init(/*subscription=*/1, /*useAndroidLog=*/true);
/// pavo::AddProfileParams params(/*isPersistent=*/false, /*isIAProfile=*/false);
/// params.setApnName("internet");
/// auto key = manager.addProfile(params);  // empty until the modem is up
/// if (key) key->registerExpirationListener([] { /* the profile has changed or gone */ });
/// @endcode
class PAVO_API Manager {
 public:
  /// The process-wide instance, made on first use and destroyed at process exit. Any thread. The
  /// service that hosts the library calls its init(); all other code only uses it.
  // Exported by itself, too: an inline member of an exported class may be hidden by the client's
  // flags.
  PAVO_API static Manager& getInstance() {
    static Manager& mgr = processWide();
    return mgr;
  }

  /// A Manager apart from the process-wide one has a worker, a cache and a connection to the modem
  /// of its own. The log is shared. On the worker thread of one Manager, the operations of all
  /// Managers are refused.
  Manager();
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;
  /// Stops the worker, waiting for one modem request in progress. Listeners of keys that are still
  /// held run here, on this thread; the keys' profiles stay on the modem. Writes "wake()" to
  /// standard output, as every end of a worker does. On this Manager's own worker thread (a
  /// listener has called exit()) the worker cannot be waited for and goes on until the process has
  /// ended.
  ~Manager();

  /// Starts the worker, or replaces it and with it the whole cache. Earlier keys are then unknown
  /// and their listeners run on this thread. Their profiles stay on the modem, also those that are
  /// not persistent. The cache is empty until the first refresh, called for or caused by the modem.
  /// Blocks until an earlier worker has ended, for one modem request at most. Ends the process
  /// (abort, terminate) when the system has no file descriptor or thread left, or cannot watch a
  /// descriptor.
  /// @param subscription the subscription to serve, sent to the modem unchanged
  /// @param useAndroidLog true: log to the Android log; false: to the modem's diagnostic channel
  void init(int subscription, bool useAndroidLog) noexcept;

  /// Creates a profile on the modem. Keep the key: dropping the last key of a profile that is not
  /// persistent deletes the profile.
  /// @return empty when the modem refused or did not answer
  std::shared_ptr<IProfileKey> addProfile(const AddProfileParams& params) noexcept;

  /// Brings a profile's attributes in line with params. The request to the modem holds only what
  /// differs; there is none when nothing does. The two flags of params are ignored.
  /// @return true when the key is known, also when the modem refused the change (the log shows
  /// that)
  bool modifyProfile(const ModifyProfileParams& params, std::shared_ptr<IProfileKey> key) noexcept;

  /// Deletes a profile from the modem, also when other callers hold keys of it. These keys are then
  /// unknown, and the profile's listeners run.
  /// @return false when the key is unknown or the modem refused or did not answer
  bool deleteProfile(std::shared_ptr<IProfileKey> key) noexcept;

  /// A new key for every profile that matches. The order is unspecified and may change from call to
  /// call.
  std::list<std::shared_ptr<IProfileKey>> filter(const FilterProfileParams& params) noexcept;

  /// The profile as the cache knows it. The modem is not asked.
  /// @return absent when the key is unknown, or the profile could not be read from the modem
  std::optional<ProfileParams> getProfile(std::shared_ptr<IProfileKey> key) noexcept;

  /// Whether the key's profile matches.
  bool match(const FilterProfileParams& params, std::shared_ptr<IProfileKey> key) noexcept;

  /// Announces a phase of a configuration refresh. Between started and completed, every other
  /// operation is refused, and so are the releases of keys. Completed reads all profiles from the
  /// modem: every earlier key is then unknown, and its listeners run.
  void refresh(PDCRefreshStatus status) noexcept;

  /// The cache and the recent log, as lines: "Cache:" and a line for each entry, "Pending:" and a
  /// line for each indication that the library's own changes are to bring, an empty line, "Logs:"
  /// and at most 201 lines of the log, oldest first. Without a worker, the lines of the cache are
  /// left out. Any thread may call it at any moment, a listener too; it does not wait for the
  /// modem. The lines hold passwords in clear.
  std::vector<std::string> dump() noexcept;

 private:
  // Owns the one instance of the process. It is defined in libpavor.so because getInstance() is
  // inline: a static variable of an inline function exists once per object that was loaded with
  // RTLD_LOCAL.
  static Manager& processWide();

  // A mutex inside the library guards it.
  std::shared_ptr<ClientRequestManager> worker;
};

}  // namespace pavo
