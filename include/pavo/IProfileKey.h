#pragma once

#include <pavo/Export.h>

#include <functional>
#include <string>

namespace pavo {

/// A caller's hold on one profile in the library's cache. Only the library makes keys.
///
/// Dropping the last handle of a key releases the profile: when that was the last key of a
/// non-persistent profile that the library created, it is deleted from the modem. It stays there
/// when it was read again meanwhile (a refresh, another client's change), when the modem refuses,
/// during a configuration refresh, and when the worker was replaced. Dropping a key is a call into
/// the library: it waits as every operation does (see Manager) and then for up to one second of
/// modem time, so do not do it under a lock that a listener also takes. On the library's worker
/// thread (in a listener) the release is put off until the event in hand is done.
///
/// A key may outlive the library's worker (a second Manager::init, process exit); it is then
/// harmless and unknown. A key that is dropped while its worker ends waits for the end of the
/// worker's cache, so that its listener is over when the drop returns. The drop does not wait on a
/// worker thread, on the thread that ends the worker, and on a thread that the ending thread waits
/// for.
class PAVO_API IProfileKey {
 public:
  virtual ~IProfileKey();

  /// The modem's profile index. Constant; any thread.
  virtual int getProfileId() = 0;

  /// Has listener called once when the cached profile goes: it was deleted, changed by the modem or
  /// another client, or dropped by a refresh. It runs on the library's worker thread (or on the
  /// thread that replaces or destroys the worker) while this key exists, and not at all after.
  /// When the key is dropped, listener is destroyed on the dropping thread; when the profile goes,
  /// on the thread that has run it, where neither it nor what it captures may take a lock that is
  /// held around a call of the library.
  /// On the worker thread the library's operations answer empty; on the thread that replaces the
  /// worker, this key's do, and the Manager's go to the new worker. An empty listener is ignored;
  /// what a listener throws is swallowed. Blocks until the worker has stored it; on the worker
  /// thread nothing is stored. A refresh in progress, or a profile that is no longer cached, loses
  /// the registration; only the log tells.
  virtual void registerExpirationListener(std::function<void()> listener) = 0;

  /// The profile id, " token=" and the cache token, as in the log. Any thread.
  virtual std::string dump() = 0;

 protected:
  IProfileKey();
  IProfileKey(const IProfileKey&);
  IProfileKey& operator=(const IProfileKey&);
};

}  // namespace pavo
