// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// ProfileCache holds the library's images of the modem's profiles and makes the keys to them.
//
// The worker owns the cache. Apart from dump(), only the worker's thread uses it. The destructor of
// a profile runs its listeners. Therefore a profile is always taken out of the containers first,
// and is destroyed after they are consistent again.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/IProfileKey.h>
#include <pavo/ModifyProfileParams.h>
#include <pavo/ProfileParams.h>

#include "EventManager.h"
#include "LogLevel.h"
#include "ModemProfile.h"
#include "OvixWdsProxy.h"
#include "ProfileChangedInd.h"
#include "ProfileKey.h"
#include "RequestFunction.h"
#include "ThreadChecker.h"
#include "base/Mutex.h"

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace pavo {

class ProfileCache {
 public:
  // The cache is empty until the first refresh. Every key gets a copy of sendRequest.
  ProfileCache(EventManager& eventManager, int subscription, requestFunction sendRequest);
  ProfileCache(const ProfileCache&) = delete;
  ProfileCache& operator=(const ProfileCache&) = delete;
  ~ProfileCache() = default;

  // Creates the profile on the modem. Returns an empty pointer when that fails.
  std::shared_ptr<ProfileKey> add(const AddProfileParams& params);
  // Returns true even when the modem refuses, and false only for a key that is not cached.
  bool modify(const ModifyProfileParams& params, const std::shared_ptr<ProfileKey>& key);
  bool remove(const std::shared_ptr<ProfileKey>& key);
  bool match(const FilterProfileParams& params, const std::shared_ptr<ProfileKey>& key);
  std::optional<ProfileParams> get(const std::shared_ptr<ProfileKey>& key);
  // Returns a new key, which is counted, for every profile that matches.
  std::list<std::shared_ptr<ProfileKey>> filter(const FilterProfileParams& params);
  // Forgets all profiles and reads them again. Always returns true.
  bool refresh();
  // Always returns false: the result has never said whether the listener is in place.
  bool registerExpirationListener(std::function<void()> listener, std::weak_ptr<IProfileKey> key,
                                  token entryToken);
  // Handles the end of a key. The end of the last key deletes a non-persistent profile that the
  // library created. The key's listeners move to ended, so that the caller decides where the
  // clients' closures are destroyed.
  bool releaseProfile(token entryToken, const std::weak_ptr<IProfileKey>& key,
                      std::list<ExpirationListener>& ended);
  // Does the same, and destroys the listeners of all keys that are gone.
  bool releaseProfile(token entryToken);
  // Moves the listeners of a key that is gone to ended, without a log line. Does nothing for a
  // token that is not cached.
  void takeEndedListeners(token entryToken, const std::weak_ptr<IProfileKey>& key,
                          std::list<ExpirationListener>& ended);
  void onIndication(ProfileChangedInd ind);
  // Handles a loss of indications: reads all profiles, and no longer expects the indications of
  // earlier changes.
  void onIndicationsLost();

  // Thread-safe at any time. Does not wait for the modem.
  std::vector<std::string> dump() EXCLUDES(dumpMutex);

  // Returns 0, 1, 2, ... over the whole process. Thread-safe. Aborts when no token is left.
  static token generateToken();

 private:
  using Profile = std::shared_ptr<ModemProfile>;
  // A mapped value is empty when the profile could not be read.
  using ProfileMap = std::unordered_map<token, Profile>;

  Profile* find(const std::shared_ptr<ProfileKey>& key);
  Profile* find(token entryToken, LogLevel notFoundLevel = LogLevel::Error);
  void insert(token entryToken, Profile profile) EXCLUDES(dumpMutex);
  Profile take(token entryToken) EXCLUDES(dumpMutex);
  void addPending(int profileId, ProfileChangedEvent event) EXCLUDES(dumpMutex);
  bool confirmPending(const ProfileChangedInd& ind) EXCLUDES(dumpMutex);
  void forget(int profileId);
  void readAgain(int profileId);

  const EventManager& eventManager;
  const requestFunction sendRequest;
  OvixWdsProxy proxy;
  // Guards changes of the containers and of what a cached profile's dump shows. Only the worker
  // changes them, so it reads them without the lock. This is a leaf lock: it is not held across
  // modem requests, log lines or the destruction of a profile.
  Mutex dumpMutex;
  ProfileMap profileMap;
  // The indications that the library's own changes are expected to cause, in order.
  std::list<ProfileChangedInd> pendingTransactions;
  ThreadChecker workerThread;
};

// Returns the counter's value and increments it. Thread-safe. Aborts instead of wrapping around.
token nextToken(std::atomic<token>& counter);

}  // namespace pavo
