// The library's image of one profile of the modem. Held by shared ownership, changed on the worker
// thread only, and destroyed there or with the worker; its end runs the listeners of live keys.
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
  // A profile yet to be created on the modem.
  explicit ModemProfile(const ProfileParams& params);
  // A profile as the modem describes it.
  ModemProfile(int profileId, const wds_get_profile_settings_resp_msg_v01& response);
  ModemProfile(const ModemProfile&) = delete;
  ModemProfile& operator=(const ModemProfile&) = delete;
  virtual ~ModemProfile();

  virtual bool match(const FilterProfileParams& filter) const;
  // Takes over the attributes that changes has; never id, profile name, persistence or count.
  virtual void apply(const std::shared_ptr<ModemProfile>& changes);
  // A profile that holds just what params would change, empty when that is nothing.
  virtual std::shared_ptr<ModemProfile> diff(const ModifyProfileParams& params) const = 0;
  // The client's view.
  virtual ProfileParams get() const = 0;
  virtual wds_create_profile_req_msg_v01 constructAddRequest() const = 0;
  virtual wds_modify_profile_settings_req_msg_v01 constructModifyRequest() const = 0;
  // One line. The password is in clear.
  virtual std::string dump() const;

  int getProfileId() const { return settings.profileId; }
  void setProfileId(int id) { settings.profileId = id; }
  bool getIsPersistent() const { return isPersistent; }
  void setIsPersistent(bool persistent) { isPersistent = persistent; }
  bool getIsPavoCreated() const { return isPavoCreated; }
  void setIsPavoCreated(bool created) { isPavoCreated = created; }

  // The number of keys issued for this object. Going beyond an int ends the process.
  int getRefCount() const { return refCount; }
  void incRefCount();
  void decRefCount();

  // Getters do not check presence; setters make present.
  bool hasApnName() const { return settings.apnName.has_value(); }
  std::string getApnName() const { return settings.apnName.value_or(std::string()); }
  // As given; names are compared in lower case, so give it that way.
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
  // Modem bits.
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
  // Clear the whole message and fill in what every kind of profile has.
  void updateAddParameters(wds_create_profile_req_msg_v01& request) const;
  void updateModifyParameters(wds_modify_profile_settings_req_msg_v01& request) const;

  // Copies what differs from this profile and sets changed.
  void updateDiffParameters(const ModifyProfileParams& params, ProfileParams& changes,
                            bool& changed) const;
  void updateGetParameters(FilterProfileParams& out) const;
  // Every named type of the mask is among the profile's.
  bool matchSubsetApnTypesMask(unsigned int mask) const;
  // The profile's mask is just these types; a modem bit without a client's name spoils the match.
  bool matchExactApnTypesMask(unsigned int mask) const;

  void registerExpirationListener(std::function<void()> callback, std::weak_ptr<IProfileKey> key);
  void clearExpiredListeners();
  // Moves the listeners of a key that is gone to the end of ended; those of all keys that are gone
  // when key is empty.
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
