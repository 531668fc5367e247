// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pavo/Export.h>

#include <functional>
#include <string>

namespace pavo {

/// A caller's hold on one profile in the library's cache. Only the library makes keys: a key of a
/// caller's own class is answered like an empty one.
///
/// Dropping the last handle of a key releases the profile. If it was the last key of a profile that
/// the library created and that is not persistent, the library deletes the profile from the modem.
/// The profile stays on the modem when it was read again meanwhile (a refresh, another client's
/// change), when the modem refuses, during a configuration refresh, and when the worker was
/// replaced.
///
/// Dropping a key is a call into the library: it waits as every operation does (see Manager) and
/// then for up to one second of modem time. Do not drop a key while you hold a lock that a listener
/// takes, too. On the library's worker thread (in a listener) the release is put off until the
/// event in hand is done.
///
/// A key may outlive the library's worker (a second Manager::init, process exit). It is then
/// harmless and unknown. A key that is dropped while its worker ends waits until the worker's cache
/// has been destroyed, so the key's listener is over when the drop returns. Three
/// drops do not wait: on a worker thread, on the thread that ends the worker, and on a thread that
/// ends another worker and that the first one waits for. A listener must not wait for a thread that
/// drops a key.
class PAVO_API IProfileKey {
 public:
  virtual ~IProfileKey();

  /// The modem's profile index. Constant; any thread.
  virtual int getProfileId() = 0;

  /// Has listener called once when the cached profile goes: when it is deleted, changed by the
  /// modem or another client, or dropped by a refresh. The listener runs on the library's worker
  /// thread, or on the thread that replaces or destroys the worker. It runs only while this key
  /// exists: it neither starts nor runs after the drop of the key has returned.
  ///
  /// On the worker thread, all operations of the library answer empty. On a thread that replaces
  /// the worker, those of this key do, and those of the Manager go to the new worker. The library
  /// ignores an empty listener and swallows what a listener throws.
  ///
  /// When the key is dropped, the listener is destroyed on the dropping thread. When the profile
  /// goes, it is destroyed on the thread that has run it. There, neither the listener nor the
  /// destructor of what it captures may take a lock that a thread holds around a call of the
  /// library.
  ///
  /// Blocks until the worker has stored the listener. Nothing is stored on the worker thread,
  /// during a configuration refresh, and for a profile that is no longer cached; only the log shows
  /// that.
  virtual void registerExpirationListener(std::function<void()> listener) = 0;

  /// The profile id, " token=" and the number of the cache entry, as in the log. Any thread.
  virtual std::string dump() = 0;

 protected:
  IProfileKey();
  IProfileKey(const IProfileKey&);
  IProfileKey& operator=(const IProfileKey&);
};

}  // namespace pavo
