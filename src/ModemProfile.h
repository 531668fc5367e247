// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// ModemProfile is the library's image of one profile of the modem. Shared pointers own it. Only the
// worker's thread changes it. It is destroyed on that thread or together with the worker, and its
// destructor runs the listeners of live keys.
#pragma once

#include <pavo/FilterProfileParams.h>
#include <pavo/IProfileKey.h>
#include <pavo/ModifyProfileParams.h>
#include <pavo/ProfileParams.h>

#include "ExpirationListener.h"
#include "matching/ProfileSettings.h"
#include "wds_v01.h"

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>

namespace pavo {

class ModemProfile {
 public:
  // Describes a profile that is yet to be created on the modem.
  explicit ModemProfile(const ProfileParams& params);
  // Describes a profile that the modem has reported.
  ModemProfile(int profileId, const wds_get_profile_settings_resp_msg_v01& response);
  ModemProfile(const ModemProfile&) = delete;
  ModemProfile& operator=(const ModemProfile&) = delete;
  virtual ~ModemProfile();

  virtual bool match(const FilterProfileParams& filter) const;
  // Copies the attributes that changes holds, but never the id, the profile name, the persistence
  // or the count.
  virtual void apply(const std::shared_ptr<ModemProfile>& changes);
  // Returns a profile that holds only what params would change, or an empty pointer when that is
  // nothing.
  virtual std::shared_ptr<ModemProfile> diff(const ModifyProfileParams& params) const = 0;
  // Returns the profile as the client sees it.
  virtual ProfileParams get() const = 0;
  virtual wds_create_profile_req_msg_v01 constructAddRequest() const = 0;
  virtual wds_modify_profile_settings_req_msg_v01 constructModifyRequest() const = 0;
  // Returns one line. It shows the password in clear.
  virtual std::string dump() const;

  int getProfileId() const { return settings.profileId; }
  void setProfileId(int id) { settings.profileId = id; }
  bool getIsPersistent() const { return isPersistent; }
  void setIsPersistent(bool persistent) { isPersistent = persistent; }
  bool getIsPavoCreated() const { return isPavoCreated; }
  void setIsPavoCreated(bool created) { isPavoCreated = created; }

  // Count the keys issued for this object. Going beyond the range of an int ends the process.
  int getRefCount() const { return refCount; }
  void incRefCount();
  void decRefCount();

  // A getter returns a default for an absent attribute. A setter makes the attribute present.
  bool hasApnName() const { return settings.apnName.has_value(); }
  std::string getApnName() const { return settings.apnName.value_or(std::string()); }
  // Keeps the name as given. Pass it in lower case, because names are compared in lower case.
  void setApnName(std::string name) { settings.apnName = std::move(name); }
  bool hasUserName() const { return settings.userName.has_value(); }
  std::string getUserName() const { return settings.userName.value_or(std::string()); }
  void setUserName(std::string name) { settings.userName = std::move(name); }
  bool hasPassword() const { return settings.password.has_value(); }
  std::string getPassword() const { return settings.password.value_or(std::string()); }
  void setPassword(std::string newPassword) { settings.password = std::move(newPassword); }
  bool hasAuthType() const { return settings.authType.has_value(); }
  AuthType getAuthType() const { return settings.authType.value_or(AuthType::NONE); }
  void setAuthType(AuthType type) { settings.authType = type; }
  // The mask consists of the modem's bits.
  bool hasApnTypesMask() const { return settings.apnTypesMask.has_value(); }
  unsigned long long getApnTypesMask() const { return settings.apnTypesMask.value_or(0); }
  void setApnTypesMask(unsigned long long mask) { settings.apnTypesMask = mask; }
  bool hasApnClass() const { return settings.apnClass.has_value(); }
  ApnClass getApnClass() const { return settings.apnClass.value_or(ApnClass::UNCLASSIFIED); }
  void setApnClass(ApnClass newClass) { settings.apnClass = newClass; }
  bool hasIsClatEnabled() const { return settings.isClatEnabled.has_value(); }
  bool getIsClatEnabled() const { return settings.isClatEnabled.value_or(false); }
  void setIsClatEnabled(bool enabled) { settings.isClatEnabled = enabled; }
  bool hasCommonIPType() const { return settings.commonIPType.has_value(); }
  IPType getCommonIPType() const { return settings.commonIPType.value_or(IPType::UNKNOWN); }
  void setCommonIPType(IPType type) { settings.commonIPType = type; }
  bool hasOverrideHomeIPType() const { return settings.overrideHomeIPType.has_value(); }
  IPType getOverrideHomeIPType() const {
    return settings.overrideHomeIPType.value_or(IPType::UNKNOWN);
  }
  void setOverrideHomeIPType(IPType type) { settings.overrideHomeIPType = type; }

  wds_profile_identifier_type_v01 constructProfileIdentifier() const;
  // These functions clear the whole message and fill in the attributes that every kind of profile
  // has.
  void updateAddParameters(wds_create_profile_req_msg_v01& request) const;
  void updateModifyParameters(wds_modify_profile_settings_req_msg_v01& request) const;

  // Copies the attributes of params that differ from this profile's to changes, and then sets
  // changed.
  void updateDiffParameters(const ModifyProfileParams& params, ProfileParams& changes,
                            bool& changed) const;
  void updateGetParameters(FilterProfileParams& out) const;
  // Returns whether the profile has every named type of the mask.
  bool matchSubsetApnTypesMask(unsigned int mask) const;
  // Returns whether the profile has exactly the types of the mask. A modem bit without a client's
  // name prevents a match.
  bool matchExactApnTypesMask(unsigned int mask) const;

  void registerExpirationListener(std::function<void()> callback, std::weak_ptr<IProfileKey> key);
  void clearExpiredListeners();
  // Moves the listeners of key, if key is gone, to the end of ended. If key is empty, moves the
  // listeners of all keys that are gone.
  void takeEndedListeners(const std::weak_ptr<IProfileKey>& key,
                          std::list<ExpirationListener>& ended);

 protected:
  ModemProfile() = default;

  ProfileSettings settings;

 private:
  void notifyListeners() noexcept;

  bool isPersistent = false;
  bool isPavoCreated = false;
  int refCount = 0;
  std::list<ExpirationListener> listeners;
};

}  // namespace pavo
