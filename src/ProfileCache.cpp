// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

#include "ProfileCache.h"

#include "LogWrapper.h"
#include "Modem3gppProfile.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace pavo {

namespace {

// All caches share this counter, because two of them are in use during a second init().
std::atomic<token> tokenCounter{0};

constexpr const char* notFoundText = "ProfileCache: token is not present or expired";

std::string textOf(const std::shared_ptr<ModemProfile>& profile) {
  return profile != nullptr ? profile->dump() : "null";
}

bool isOf(const std::shared_ptr<ModemProfile>& profile, int profileId) {
  return profile != nullptr && profile->getProfileId() == profileId;
}

}  // namespace

ProfileCache::ProfileCache(EventManager& eventManager, int subscription,
                           requestFunction sendRequest)
    : eventManager(eventManager),
      sendRequest(std::move(sendRequest)),
      proxy(eventManager, subscription) {
  proxy.registerProfileChangedInd([this](ProfileChangedInd ind) { onIndication(ind); });
  proxy.registerIndicationsLost([this] { onIndicationsLost(); });
}

token nextToken(std::atomic<token>& counter) {
  token current = counter.load();
  do {
    if (current == std::numeric_limits<token>::max()) {
      std::abort();
    }
  } while (!counter.compare_exchange_weak(current, current + 1));
  return current;
}

token ProfileCache::generateToken() { return nextToken(tokenCounter); }

ProfileCache::Profile* ProfileCache::find(token entryToken, LogLevel notFoundLevel) {
  workerThread.check();
  const auto found = profileMap.find(entryToken);
  if (found == profileMap.end()) {
    LogWrapper::log(notFoundLevel, logTag, "%s", notFoundText);
    return nullptr;
  }
  return &found->second;
}

// An empty key has no entry. This is not worth a log line.
ProfileCache::Profile* ProfileCache::find(const std::shared_ptr<ProfileKey>& key) {
  return key != nullptr ? find(key->getToken()) : nullptr;
}

void ProfileCache::insert(token entryToken, Profile profile) {
  const MutexLock lock(dumpMutex);
  profileMap.emplace(entryToken, std::move(profile));
}

ProfileCache::Profile ProfileCache::take(token entryToken) {
  const MutexLock lock(dumpMutex);
  const auto node = profileMap.extract(entryToken);
  return node ? std::move(node.mapped()) : nullptr;
}

void ProfileCache::addPending(int profileId, ProfileChangedEvent event) {
  const MutexLock lock(dumpMutex);
  pendingTransactions.push_back({profileId, event});
}

std::shared_ptr<ProfileKey> ProfileCache::add(const AddProfileParams& params) {
  workerThread.check();
  const token newToken = generateToken();
  const auto profile = std::make_shared<Modem3gppProfile>(params);
  profile->setProfileName(params.getIsIAProfile() ? Modem3gppProfile::pavoIAProfileName
                                                  : Modem3gppProfile::pavoProfileName);
  profile->setIsPersistent(params.getIsPersistent());
  profile->setIsPavoCreated(true);
  if (!proxy.add(*profile)) {
    return nullptr;
  }
  profile->incRefCount();
  insert(newToken, profile);
  // After a create, the modem also announces a modify of the same profile.
  addPending(profile->getProfileId(), ProfileChangedEvent::Create);
  addPending(profile->getProfileId(), ProfileChangedEvent::Modify);
  LogWrapper::log(LogLevel::High, logTag, "Added: %s", profile->dump().c_str());
  return std::make_shared<ProfileKey>(profile->getProfileId(), newToken, sendRequest);
}

bool ProfileCache::modify(const ModifyProfileParams& params,
                          const std::shared_ptr<ProfileKey>& key) {
  if (key == nullptr) {
    return false;
  }
  // A stale key is normal here, because callers modify profiles that they found a while ago.
  Profile* const entry = find(key->getToken(), /*notFoundLevel=*/LogLevel::High);
  if (entry == nullptr) {
    return false;
  }
  ModemProfile* const profile = entry->get();
  if (profile == nullptr) {
    return true;
  }
  const Profile difference = profile->diff(params);
  if (difference == nullptr) {
    LogWrapper::log(LogLevel::High, logTag, "ProfileCache: profile is unchanged");
    return true;
  }
  if (!proxy.modify(*difference, profile->getProfileId())) {
    // The result is true nevertheless, because callers take false to mean that the profile is gone.
    LogWrapper::log(LogLevel::Error, logTag, "ProfileCache: failed to modify modem profile");
    return true;
  }
  {
    const MutexLock lock(dumpMutex);
    profile->apply(difference);
  }
  LogWrapper::log(LogLevel::High, logTag, "Diff: %s", difference->dump().c_str());
  addPending(profile->getProfileId(), ProfileChangedEvent::Modify);
  return true;
}

bool ProfileCache::remove(const std::shared_ptr<ProfileKey>& key) {
  const Profile* const entry = find(key);
  if (entry == nullptr) {
    return false;
  }
  if (*entry == nullptr) {
    // The profile could not be read, so it is unknown whether the modem still has it.
    LogWrapper::log(LogLevel::Error, logTag, "%s", notFoundText);
    return false;
  }
  if (!proxy.remove(key->getProfileId())) {
    LogWrapper::log(LogLevel::Error, logTag, "ProfileCache: Failed to remove profile");
    return false;
  }
  const int profileId = (*entry)->getProfileId();
  take(key->getToken());
  addPending(profileId, ProfileChangedEvent::Delete);
  return true;
}

bool ProfileCache::match(const FilterProfileParams& params,
                         const std::shared_ptr<ProfileKey>& key) {
  const Profile* const entry = find(key);
  return entry != nullptr && *entry != nullptr && (*entry)->match(params);
}

std::optional<ProfileParams> ProfileCache::get(const std::shared_ptr<ProfileKey>& key) {
  const Profile* const entry = find(key);
  if (entry == nullptr || *entry == nullptr) {
    return std::nullopt;
  }
  return (*entry)->get();
}

std::list<std::shared_ptr<ProfileKey>> ProfileCache::filter(const FilterProfileParams& params) {
  workerThread.check();
  std::list<std::shared_ptr<ProfileKey>> keys;
  for (const auto& [entryToken, profile] : profileMap) {
    if (profile == nullptr) {
      LogWrapper::log(LogLevel::Error, logTag, "ProfileCache: null profile");
    } else if (profile->match(params)) {
      profile->incRefCount();
      keys.push_back(
          std::make_shared<ProfileKey>(profile->getProfileId(), entryToken, sendRequest));
    }
  }
  return keys;
}

bool ProfileCache::refresh() {
  workerThread.check();
  {
    // The listeners run while the cache is empty, before the modem is asked.
    ProfileMap forgotten;
    {
      const MutexLock lock(dumpMutex);
      profileMap.swap(forgotten);
    }
  }
  for (Profile& profile : proxy.getAllProfiles()) {
    insert(generateToken(), std::move(profile));
  }
  LogWrapper::log(LogLevel::High, logTag, "Refreshed Profiles:");
  for (const auto& [entryToken, profile] : profileMap) {
    LogWrapper::log(LogLevel::High, logTag, "%s", textOf(profile).c_str());
  }
  return true;
}

bool ProfileCache::registerExpirationListener(std::function<void()> listener,
                                              std::weak_ptr<IProfileKey> key, token entryToken) {
  LogWrapper::log(LogLevel::Verbose, logTag, "ProfileCache: registerExpirationListener %d",
                  static_cast<int>(entryToken));
  const Profile* const entry = find(entryToken);
  if (entry != nullptr && *entry != nullptr) {
    (*entry)->registerExpirationListener(std::move(listener), std::move(key));
  }
  return false;
}

bool ProfileCache::releaseProfile(token entryToken) {
  std::list<ExpirationListener> ended;
  return releaseProfile(entryToken, /*key=*/{}, ended);
}

bool ProfileCache::releaseProfile(token entryToken, const std::weak_ptr<IProfileKey>& key,
                                  std::list<ExpirationListener>& ended) {
  LogWrapper::log(LogLevel::High, logTag, "ProfileCache: releaseProfile token=%d",
                  static_cast<int>(entryToken));
  const Profile* const entry = find(entryToken);
  if (entry == nullptr || *entry == nullptr) {
    return false;
  }
  ModemProfile& profile = **entry;
  profile.takeEndedListeners(key, ended);
  if (profile.getRefCount() >= 2) {
    profile.decRefCount();
    return true;
  }
  if (profile.getIsPersistent() || !profile.getIsPavoCreated()) {
    // The count is deliberately not decremented: the next key that filter() issues increments it
    // further.
    LogWrapper::log(LogLevel::High, logTag,
                    "ProfileCache: ignoring non-persistent or non-pavo created");
    return true;
  }
  const int profileId = profile.getProfileId();
  if (!proxy.remove(profileId)) {
    LogWrapper::log(LogLevel::Error, logTag, "ProfileCache: failed to release profile");
    return false;
  }
  profile.decRefCount();
  LogWrapper::log(LogLevel::High, logTag, "Released profile %d", profileId);
  addPending(profileId, ProfileChangedEvent::Delete);
  take(entryToken);
  return true;
}

void ProfileCache::takeEndedListeners(token entryToken, const std::weak_ptr<IProfileKey>& key,
                                      std::list<ExpirationListener>& ended) {
  workerThread.check();
  const auto entry = profileMap.find(entryToken);
  if (entry != profileMap.end() && entry->second != nullptr) {
    entry->second->takeEndedListeners(key, ended);
  }
}

bool ProfileCache::confirmPending(const ProfileChangedInd& ind) {
  const auto pending =
      std::find_if(pendingTransactions.begin(), pendingTransactions.end(),
                   [&ind](const ProfileChangedInd& expected) {
                     return expected.profileId == ind.profileId && expected.event == ind.event;
                   });
  if (pending == pendingTransactions.end()) {
    return false;
  }
  const MutexLock lock(dumpMutex);
  pendingTransactions.erase(pending);
  return true;
}

void ProfileCache::onIndication(ProfileChangedInd ind) {
  workerThread.check();
  LogWrapper::log(LogLevel::High, logTag, "ProfileCache: onIndication < %s", ind.dump().c_str());
  if (confirmPending(ind)) {
    LogWrapper::log(LogLevel::High, logTag, "ProfileCache: pending transaction confirmed");
    return;
  }
  LogWrapper::log(LogLevel::High, logTag, "ProfileCache: updating cache due to indication!");
  switch (ind.event) {
    case ProfileChangedEvent::Create: {
      const token newToken = generateToken();
      insert(newToken, proxy.get(ind.profileId));
      break;
    }
    case ProfileChangedEvent::Delete:
      forget(ind.profileId);
      break;
    case ProfileChangedEvent::Modify:
      readAgain(ind.profileId);
      break;
    case ProfileChangedEvent::SubscriptionChange:
    case ProfileChangedEvent::ProfileReady:
      refresh();
      break;
    default:
      LogWrapper::log(LogLevel::Error, logTag, "Invalid ProfileChangedEvent");
      break;
  }
}

void ProfileCache::onIndicationsLost() {
  workerThread.check();
  {
    // An expected indication may be among the lost ones. If it stayed in the list, it would swallow
    // the next indication of another client's change.
    const MutexLock lock(dumpMutex);
    pendingTransactions.clear();
  }
  refresh();
}

void ProfileCache::forget(int profileId) {
  std::list<Profile> forgotten;
  {
    const MutexLock lock(dumpMutex);
    for (auto entry = profileMap.begin(); entry != profileMap.end();) {
      if (isOf(entry->second, profileId)) {
        forgotten.push_back(std::move(entry->second));
        entry = profileMap.erase(entry);
      } else {
        ++entry;
      }
    }
  }
  // The listeners run one by one, in the order of the entries.
  while (!forgotten.empty()) {
    forgotten.pop_front();
  }
}

// The new object takes over neither the count of keys nor the listeners. The listeners of the old
// object run, and the keys read the new values from then on.
void ProfileCache::readAgain(int profileId) {
  for (auto& [entryToken, profile] : profileMap) {
    if (!isOf(profile, profileId)) {
      continue;
    }
    Profile replaced = proxy.get(profileId);
    {
      const MutexLock lock(dumpMutex);
      profile.swap(replaced);
    }
    // The destructor runs the listeners here, without dumpMutex.
    replaced.reset();
    if (eventManager.isStopRequested()) {
      return;
    }
  }
}

std::vector<std::string> ProfileCache::dump() {
  std::vector<std::string> lines;
  const MutexLock lock(dumpMutex);
  lines.emplace_back("Cache:");
  for (const auto& [entryToken, profile] : profileMap) {
    lines.push_back("  " + std::to_string(entryToken) + ": " + textOf(profile));
  }
  lines.emplace_back("Pending:");
  for (const ProfileChangedInd& pending : pendingTransactions) {
    lines.push_back("  " + pending.dump());
  }
  return lines;
}

}  // namespace pavo
