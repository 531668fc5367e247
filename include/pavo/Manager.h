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
/// Every operation may be called on any thread; it hands a request to the library's one worker
/// thread and blocks until that has answered. Modem requests take up to one second each (then they
/// have failed): add, modify and delete cost one, a completed refresh one and one more for each
/// profile, filter, match and get none. Callers on several threads take turns, so the wait is for
/// those before and for what the worker has in hand too: profiles that the modem says have changed
/// (up to 200 ms and one request; the worker serves callers before it goes on with the rest),
/// registering with a modem that has come back (three requests), or reading all profiles after its
/// power-up (one and one for each).
///
/// Failures show only as empty results and in the log: before init(), during a refresh and when the
/// modem refuses, keys and lists are empty, flags false, values absent. Nothing throws. On the
/// library's worker thread (in an expiration listener) every operation but dump() logs one error
/// and answers empty.
///
/// A child process that was forked after init() shares the descriptors and the modem connection of
/// its parent and has no worker. In it, every operation of this Manager, init() included, logs one
/// error and answers empty, and the destructor and the drop of a key leave everything alone. A child
/// that needs the library makes a Manager of its own.
class PAVO_API Manager {
 public:
  /// The process-wide instance, made on first use and destroyed at process exit. Any thread.
  /// Whoever hosts the library calls its init(); everybody else only uses it.
  PAVO_API static Manager& getInstance() {
    static Manager& mgr = processWide();
    return mgr;
  }

  /// A Manager apart from the process-wide one has a worker, a cache and a connection to the modem
  /// of its own; the log is shared. On any Manager's worker thread all of them refuse.
  Manager();
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;
  /// Stops the worker, waiting for one modem request in progress. Listeners of keys that are still
  /// held run here, on this thread; the keys' profiles stay on the modem. Writes "wake()" to
  /// standard output, as every end of a worker does. On this Manager's own worker thread (a listener
  /// has called exit()) the worker cannot be waited for and goes on until the process has ended.
  ~Manager();

  /// Starts the worker, or replaces it and with it the whole cache: earlier keys are then unknown,
  /// their listeners run on this thread, and their profiles, also those that are not persistent,
  /// stay on the modem. The cache is empty until the first refresh, asked for or brought about by
  /// the modem. Blocks until an earlier worker has ended, for one modem request. Ends the process
  /// (abort, terminate) when the system has no file descriptor, thread or memory to watch a
  /// descriptor left.
  /// @param subscription the subscription to serve, sent to the modem unchanged
  /// @param useAndroidLog true: log to the Android log; false: to the modem's diagnostic channel
  void init(int subscription, bool useAndroidLog) noexcept;

  /// Creates a profile on the modem. Keep the key: dropping the last one of a profile that is not
  /// persistent deletes it.
  /// @return empty when the modem refused, or did not answer
  std::shared_ptr<IProfileKey> addProfile(const AddProfileParams& params) noexcept;

  /// Brings a profile's attributes in line with params; asks the modem only for what differs. The
  /// two flags of params are not attributes and count for nothing.
  /// @return true when the key is known, also when the modem refused the change (the log tells)
  bool modifyProfile(const ModifyProfileParams& params, std::shared_ptr<IProfileKey> key) noexcept;

  /// Deletes a profile from the modem, whoever else holds a key of it: those keys are then unknown,
  /// and the profile's listeners run.
  /// @return false when the key is unknown or the modem refused or did not answer
  bool deleteProfile(std::shared_ptr<IProfileKey> key) noexcept;

  /// A new key for every profile that matches, in no particular order.
  std::list<std::shared_ptr<IProfileKey>> filter(const FilterProfileParams& params) noexcept;

  /// What the cache knows of a profile; the modem is not asked.
  /// @return absent when the key is unknown, or the profile could not be read from the modem
  std::optional<ProfileParams> getProfile(std::shared_ptr<IProfileKey> key) noexcept;

  /// Whether the key's profile matches.
  bool match(const FilterProfileParams& params, std::shared_ptr<IProfileKey> key) noexcept;

  /// Announces a phase of a modem configuration refresh. Between started and completed every other
  /// operation is refused, releases of keys too. Completed reads all profiles from the modem: every
  /// earlier key is then unknown and its listeners run.
  void refresh(PDCRefreshStatus status) noexcept;

  /// The cache and the recent log, as lines: "Cache:" with a line for each profile by its token,
  /// "Pending:" with the indications that are expected, an empty line, "Logs:" with at most 201
  /// lines, oldest first. Without a worker there is no cache. Any thread at any moment, also in a
  /// listener; does not wait for the modem. Holds passwords in clear.
  std::vector<std::string> dump() noexcept;

 private:
  // In the library, where every client of the process finds the same one: a program and what it
  // loads with local names have an inline function's variables once each.
  static Manager& processWide();

  // Copied and replaced under a lock of the library's.
  std::shared_ptr<ClientRequestManager> worker;
};

}  // namespace pavo
