// The library's picture of the modem's profiles, and the keys that callers hold of them.
//
// Owned by the worker and, but for dump(), used on its thread only. A profile's end runs its
// listeners, so a profile object is always taken out of the containers first and dies after they
// are consistent again.
#pragma once

#include <pavo/AddProfileParams.h>
#include <pavo/FilterProfileParams.h>
#include <pavo/IProfileKey.h>
#include <pavo/ModifyProfileParams.h>
#include <pavo/ProfileParams.h>

#include "EventManager.h"
#include "LogLevel.h"
#include "ModemProfile.h"
#include "Mutex.h"
#include "OvixWdsProxy.h"
#include "ProfileChangedInd.h"
#include "ProfileKey.h"
#include "RequestFunction.h"
#include "ThreadChecker.h"

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
  // Empty until the first refresh. sendRequest goes into every key.
  ProfileCache(EventManager& eventManager, int subscription, requestFunction sendRequest);
  ProfileCache(const ProfileCache&) = delete;
  ProfileCache& operator=(const ProfileCache&) = delete;
  ~ProfileCache() = default;

  // Creates the profile on the modem; empty when that fails.
  std::shared_ptr<ProfileKey> add(const AddProfileParams& params);
  // True also when the modem refuses; false only for a key that is not cached.
  bool modify(const ModifyProfileParams& params, const std::shared_ptr<ProfileKey>& key);
  bool remove(const std::shared_ptr<ProfileKey>& key);
  bool match(const FilterProfileParams& params, const std::shared_ptr<ProfileKey>& key);
  std::optional<ProfileParams> get(const std::shared_ptr<ProfileKey>& key);
  // A new key, counted, for every profile that matches.
  std::list<std::shared_ptr<ProfileKey>> filter(const FilterProfileParams& params);
  // Forgets everything and reads all profiles. Always true.
  bool refresh();
  // Always false: keys have never been told whether their listener is in place.
  bool registerExpirationListener(std::function<void()> listener, std::weak_ptr<IProfileKey> key,
                                  token entryToken);
  // A key is gone. The last one deletes a non-persistent profile of the library's own making. The
  // key's listeners move to ended, so that the caller decides where the clients' closures end.
  bool releaseProfile(token entryToken, const std::weak_ptr<IProfileKey>& key,
                      std::list<ExpirationListener>& ended);
  // The same; ends the listeners of all keys that are gone.
  bool releaseProfile(token entryToken);
  // Moves the listeners of a key that is gone to ended, without a log line; does nothing for a
  // token that is not cached.
  void takeEndedListeners(token entryToken, const std::weak_ptr<IProfileKey>& key,
                          std::list<ExpirationListener>& ended);
  void onIndication(ProfileChangedInd ind);
  // Indications have been lost: reads everything, and expects none of the earlier changes any more.
  void onIndicationsLost();

  // Any thread, at any moment; does not wait for the modem.
  std::vector<std::string> dump() EXCLUDES(dumpMutex);

  // 0, 1, 2, ... over the whole process. Any thread. Running out of them ends the process.
  static token generateToken();

 private:
  using Profile = std::shared_ptr<ModemProfile>;
  // Mapped values are empty where a profile could not be read.
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
  // The worker changes the containers, and what a cached profile's dump shows, under dumpMutex, and
  // reads them without: nobody else changes them. A leaf: not held across modem I/O, a log line or
  // the end of a profile.
  Mutex dumpMutex;
  ProfileMap profileMap;
  // The indications that our own changes are expected to bring, in order.
  std::list<ProfileChangedInd> pendingTransactions;
  ThreadChecker workerThread;
};

// The counter's value, and counts on. Any thread. Going beyond a token ends the process.
token nextToken(std::atomic<token>& counter);

}  // namespace pavo
